#include "settings/iis_property_bag.h"

using webrig::settings::Added;

Added<CIISComponentProp*> CIISPropertyBag::GetOrAddComponent(const qm::wstring& name) {
    auto& slot = components[name];
    if (slot) {
        return {0, slot.get()};
    }
    slot = std::make_unique<CIISComponentProp>();
    return {slot->SetName(name), slot.get()};
}

Added<CIISWebsiteProp*> CIISPropertyBag::AddWebsite(const qm::wstring& key) {
    auto website = std::make_shared<CIISWebsiteProp>();
    website->SetKey(key);  // an empty key is stored as it is, without complaint
    CIISWebsiteProp* const record = website.get();
    websites[key] = std::move(website);
    return {0, record};
}

void CIISPropertyBag::ReplaceWebsite(const qm::wstring& key,
                                     std::shared_ptr<CIISWebsiteProp> website) {
    websites[key] = std::move(website);
}

void CIISPropertyBag::SetUninstallProp(const qm::wstring& name, qm::wstring value) {
    uninstallProps[name] = std::move(value);
}

void CIISPropertyBag::SetProgressMessage(const qm::wstring& identifier, qm::wstring text) {
    progressMessages[identifier] = std::move(text);
}
