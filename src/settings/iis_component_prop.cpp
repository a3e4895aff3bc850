#include "settings/iis_component_prop.h"

using webrig::settings::Added;

namespace {

// Stores a new record under `key` and lets it take the key. A record the key held before is
// destroyed: nothing else refers to vroots, pools or extensions once the next one is read.
template <class Record, class Map>
Added<Record*> AddOwned(Map& map, const qm::wstring& key) {
    auto& slot = map[key];
    slot = std::make_unique<Record>();
    return {slot->SetKey(key), slot.get()};
}

}  // namespace

Added<CIISVRootProp*> CIISComponentProp::AddVRoot(const qm::wstring& key) {
    return AddOwned<CIISVRootProp>(vroots, key);
}

Added<CIISAppPoolProp*> CIISComponentProp::AddAppPool(const qm::wstring& key) {
    return AddOwned<CIISAppPoolProp>(appPools, key);
}

Added<CIISWebServiceExtensionProp*> CIISComponentProp::AddWebServiceExtension(
    const qm::wstring& key) {
    return AddOwned<CIISWebServiceExtensionProp>(webServiceExtensions, key);
}

Added<std::shared_ptr<CIISWebsiteProp>> CIISComponentProp::AddWebsite(const qm::wstring& key) {
    auto website = std::make_shared<CIISWebsiteProp>();
    componentWebsites[key] = website;
    const int32_t status = website->SetKey(key);
    return {status, std::move(website)};
}
