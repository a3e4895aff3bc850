#pragma once
// Everything the settings file says, held in memory for the whole run: the global options, the
// components with their items, the websites, the progress texts and the uninstall properties.

#include <cstdint>
#include <map>
#include <memory>

#include "settings/iis_component_prop.h"
#include "settings/iis_website_prop.h"
#include "settings/record_text.h"

class CIISPropertyBag final {
  public:
    CIISPropertyBag() = default;
    CIISPropertyBag(const CIISPropertyBag&) = delete;
    CIISPropertyBag& operator=(const CIISPropertyBag&) = delete;

    virtual int32_t SetRestartW3svc(qm::wstring value) {
        return webrig::settings::StoreText(restartW3svc, std::move(value));
    }
    virtual int32_t SetPreferLegacyObjects(qm::wstring value) {
        return webrig::settings::StoreText(preferLegacyObjects, std::move(value));
    }
    virtual int32_t SetSsiProperty(qm::wstring value) {
        return webrig::settings::StoreText(ssiProperty, std::move(value));
    }
    virtual int32_t SetMsiHiddenProperties(qm::wstring value) {
        return webrig::settings::StoreText(msiHiddenProperties, std::move(value));
    }
    virtual int32_t SetProductCode(qm::wstring value) {
        return webrig::settings::StoreText(productCode, std::move(value));
    }

    // The component named `name`, created (and named) when the bag has none; the status is that
    // of the new component's SetName, 0 for an existing one.
    webrig::settings::Added<CIISComponentProp*> GetOrAddComponent(const qm::wstring& name);
    // A new website under `key`, pushing out a record stored there before (which lives on as
    // long as a component lists it). Always status 0.
    webrig::settings::Added<CIISWebsiteProp*> AddWebsite(const qm::wstring& key);
    // Stores `website` under `key`; the record stored there before is released.
    void ReplaceWebsite(const qm::wstring& key, std::shared_ptr<CIISWebsiteProp> website);
    void SetUninstallProp(const qm::wstring& name, qm::wstring value);
    void SetProgressMessage(const qm::wstring& identifier, qm::wstring text);

    qm::wstring restartW3svc;
    qm::wstring preferLegacyObjects;
    qm::wstring ssiProperty;
    qm::wstring msiHiddenProperties;
    qm::wstring productCode;
    int32_t ignoreIIS = 0;
    int32_t iisMajorVersion = 0;
    int32_t removeUninstProps = 0;
    std::map<qm::wstring, std::shared_ptr<CIISWebsiteProp>> websites;
    std::map<qm::wstring, std::unique_ptr<CIISComponentProp>> components;
    std::map<qm::wstring, qm::wstring> progressMessages;
    std::map<qm::wstring, qm::wstring> uninstallProps;
};
