#pragma once
// An installer component and the IIS items it creates.

#include <cstdint>
#include <map>
#include <memory>

#include "settings/iis_app_pool_prop.h"
#include "settings/iis_vroot_prop.h"
#include "settings/iis_web_service_extension_prop.h"
#include "settings/iis_website_prop.h"
#include "settings/record_text.h"
#include "support/status_codes.h"

class CIISComponentProp final {
  public:
    CIISComponentProp() = default;
    CIISComponentProp(const CIISComponentProp&) = delete;
    CIISComponentProp& operator=(const CIISComponentProp&) = delete;

    virtual int32_t SetName(qm::wstring value) {
        return webrig::settings::StoreNonEmptyText(Name, std::move(value),
                                                   qm::status::component_name_empty);
    }
    virtual int32_t SetFeature(qm::wstring value) {
        return webrig::settings::StoreNonEmptyText(feature, std::move(value),
                                                   qm::status::component_name_empty);
    }

    // Each creates a record under `key` (replacing what the key held) and returns the status of
    // the record's SetKey; the record stays in the map even when SetKey refused the key.
    webrig::settings::Added<CIISVRootProp*> AddVRoot(const qm::wstring& key);
    webrig::settings::Added<CIISAppPoolProp*> AddAppPool(const qm::wstring& key);
    webrig::settings::Added<CIISWebServiceExtensionProp*> AddWebServiceExtension(
        const qm::wstring& key);
    // The website is shared: the property bag takes it into its own `websites` (ReplaceWebsite),
    // and the record lives as long as either holds it.
    webrig::settings::Added<std::shared_ptr<CIISWebsiteProp>> AddWebsite(const qm::wstring& key);

    qm::wstring Name;
    int32_t actionState = 3;
    qm::wstring feature;
    std::map<qm::wstring, std::unique_ptr<CIISVRootProp>> vroots;
    std::map<qm::wstring, std::unique_ptr<CIISAppPoolProp>> appPools;
    std::map<qm::wstring, std::unique_ptr<CIISWebServiceExtensionProp>> webServiceExtensions;
    std::map<qm::wstring, std::shared_ptr<CIISWebsiteProp>> componentWebsites;
};
