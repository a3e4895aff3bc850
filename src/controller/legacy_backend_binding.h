#pragma once
// Binds the controller interface to the IIS 6 metabase backend, which is the controller's second
// base: the backend operations go to it unchanged, and its services come back to the controller.
// A template over the backend so that tests can bind a double of it in the same way.

#include <type_traits>

#include "controller/iis_pro_vroot_controller.h"
#include "metabase/iis_functions_legacy.h"

namespace webrig::controller {

template <class Backend>
class LegacyBackendBinding : public CIISProVRootController, public Backend {
    static_assert(std::is_base_of_v<CIisFunctionsLegacy, Backend>);

  public:
    explicit LegacyBackendBinding(platform::Platform& platform)
        : CIISProVRootController(platform), Backend(platform) {}

    int32_t CloseKey(MetadataHandle handle) override { return Backend::CloseKey(handle); }
    int32_t OpenKeyLog(MetadataHandle parent, const qm::wstring& path, uint32_t permissions,
                       uint32_t timeoutMilliseconds, MetadataHandle& handle) override {
        return Backend::OpenKeyLog(parent, path, permissions, timeoutMilliseconds, handle);
    }
    int32_t GetData(MetadataHandle handle, const qm::wstring& path, MetadataRecord& record,
                    uint32_t& requiredSize) override {
        return Backend::GetData(handle, path, record, requiredSize);
    }
    int32_t EnumKeys(MetadataHandle handle, const qm::wstring& path, qm::wstring& name,
                     uint32_t index) override {
        return Backend::EnumKeys(handle, path, name, index);
    }
    int32_t InitIISObject() override { return Backend::InitIISObject(); }
    int32_t AddWebSiteFunction(CIISWebsiteProp& website) override {
        return Backend::AddWebSiteFunction(website);
    }
    int32_t SetVRtStrProperty(MetadataHandle handle, uint32_t identifier, uint32_t userType,
                              uint32_t attributes, const qm::wstring& value,
                              const qm::wstring& subPath) override {
        return Backend::SetVRtStrProperty(handle, identifier, userType, attributes, value, subPath);
    }
    int32_t RemoveWebsite(CIISWebsiteProp& website) override {
        return Backend::RemoveWebsite(website);
    }
    int32_t AppCreate(CIISWebsiteProp& website, CIISVRootProp* vroot) override {
        return Backend::AppCreate(website, vroot);
    }
    // The metabase makes an application in one way only.
    int32_t CreateApplication(CIISWebsiteProp& website, CIISVRootProp* vroot) override {
        return Backend::AppCreate(website, vroot);
    }
    int32_t CreateVirtualDirectory(CIISWebsiteProp& website, CIISVRootProp& vroot) override {
        return Backend::CreateVirtualDirectory(website, vroot);
    }
    int32_t CreateAppPoolFunction(CIISAppPoolProp& pool) override {
        return Backend::CreateAppPoolFunction(pool);
    }
    // ... and removes one in one way only.
    int32_t RemoveLegacyApplication(CIISWebsiteProp& website, CIISVRootProp& vroot) override {
        return Backend::RemoveApplication(website, vroot);
    }
    int32_t RemoveApplication(CIISWebsiteProp& website, CIISVRootProp& vroot) override {
        return Backend::RemoveApplication(website, vroot);
    }
    int32_t RemoveVirtualDirectory(CIISWebsiteProp& website, CIISVRootProp& vroot) override {
        return Backend::RemoveVirtualDirectory(website, vroot);
    }
    int32_t RemoveAppPoolFunction(CIISAppPoolProp& pool) override {
        return Backend::RemoveAppPoolFunction(pool);
    }
    int32_t SetVRtDelimMultiszProperty(MetadataHandle handle, uint32_t identifier,
                                       uint32_t userType,
                                       const qm::wstring& delimitedText) override {
        return Backend::SetVRtDelimMultiszProperty(handle, identifier, userType, delimitedText);
    }
    int32_t SetVRtMultiszProperty(MetadataHandle handle, uint32_t identifier, uint32_t userType,
                                  const char16_t* data, uint32_t byteLength,
                                  const qm::wstring& subPath) override {
        return Backend::SetVRtMultiszProperty(handle, identifier, userType, data, byteLength,
                                              subPath);
    }
    int32_t SetVRtDWProperty(MetadataHandle handle, uint32_t identifier, uint32_t userType,
                             uint32_t value) override {
        return Backend::SetVRtDWProperty(handle, identifier, userType, value);
    }
    int32_t SetVRtBinProperty(MetadataHandle handle, uint32_t identifier, uint32_t userType,
                              const std::byte* data, uint32_t byteLength) override {
        return Backend::SetVRtBinProperty(handle, identifier, userType, data, byteLength);
    }
    int32_t SetDynamicMetaDataProperties(MetadataHandle handle, CIISCommonProp& item) override {
        return Backend::SetDynamicMetaDataProperties(handle, item);
    }
    int32_t CompareDirValues(CIISWebsiteProp& website, CIISVRootProp& vroot) override {
        return Backend::CompareDirValues(website, vroot);
    }
    int32_t OpenKeyToWebsite(CIISWebsiteProp* website, MetadataHandle* handle,
                             CIISVRootProp* vroot) override {
        return Backend::OpenKeyToWebsite(website, handle, vroot);
    }
    bool FindSiteWithId(CIISWebsiteProp& website) override {
        return Backend::FindSiteWithId(website);
    }
    bool FindSiteWithPort(CIISWebsiteProp& website) override {
        return Backend::FindSiteWithPort(website);
    }
    bool CanDeletePath(const qm::wstring& path, const qm::wstring& ignoredKey) override {
        return Backend::CanDeletePath(path, ignoredKey);
    }
    void GetNextWebsiteId(CIISWebsiteProp& website) override { Backend::GetNextWebsiteId(website); }
    int32_t InstallMimeTypes(MetadataHandle handle, const MimeMaps& mimeMaps) override {
        return Backend::InstallMimeTypes(handle, mimeMaps);
    }
    bool CheckAspNetBitness(const qm::wstring& poolName,
                            const qm::wstring& requestedBitness) override {
        return Backend::CheckAspNetBitness(poolName, requestedBitness);
    }
    // Pool settings beyond the metabase properties, and forms authentication, are IIS 7+ only.
    int32_t SetAppPoolProperties(const CIISAppPoolProp& /*pool*/) override { return 0; }
    using CIISProVRootController::SetAppPoolProperties;
    bool IsVistaBackend() override { return false; }
    int32_t SetFormsAuthentication(MetadataHandle /*handle*/, bool /*effective*/,
                                   bool /*own*/) override {
        return 0;
    }

    // The backend's services are the controller's own operations.
    void LogMessage(const qm::wstring& text) override { CIISProVRootController::LogMessage(text); }
    void ReportError(const qm::wstring& text, int32_t code) override {
        CIISProVRootController::ReportError(text, code);
    }
    bool WebsiteExists(CIISWebsiteProp& website) override {
        return CIISProVRootController::WebsiteExists(website);
    }
    qm::wstring GetPortFromBindingInfo(const qm::wstring& binding) override {
        return CIISProVRootController::GetPortFromBindingInfo(binding);
    }
    qm::wstring GetBasePath(const CIISWebsiteProp& website, const qm::wstring& subPath) override {
        return CIISProVRootController::GetBasePath(website, subPath);
    }
    qm::wstring MaskPasswordValue(qm::wstring name, const qm::wstring& value) override {
        return CIISProVRootController::MaskPasswordValue(std::move(name), value);
    }
};

}  // namespace webrig::controller
