#pragma once
// Binds the controller interface to the IIS 7+ configuration backend, which is the controller's
// second base. The backend has no metabase keys: the key operations and the directory comparison
// answer 0 here, the property setters go to it without the key handle, and the path check
// without its arguments. Its services come back to the controller. A template over the backend
// so that tests can bind a double of it in the same way.

#include <type_traits>

#include "apphost/iis_functions_vista.h"
#include "controller/iis_pro_vroot_controller.h"

namespace webrig::controller {

template <class Backend>
class VistaBackendBinding : public CIISProVRootController, public Backend {
    static_assert(std::is_base_of_v<CIisFunctionsVista, Backend>);

  public:
    explicit VistaBackendBinding(platform::Platform& platform)
        : CIISProVRootController(platform), Backend(platform) {}

    int32_t CloseKey(MetadataHandle /*handle*/) override { return 0; }
    int32_t OpenKeyLog(MetadataHandle /*parent*/, const qm::wstring& /*path*/,
                       uint32_t /*permissions*/, uint32_t /*timeoutMilliseconds*/,
                       MetadataHandle& /*handle*/) override {
        return 0;
    }
    int32_t GetData(MetadataHandle /*handle*/, const qm::wstring& /*path*/,
                    MetadataRecord& /*record*/, uint32_t& /*requiredSize*/) override {
        return 0;
    }
    int32_t EnumKeys(MetadataHandle /*handle*/, const qm::wstring& /*path*/, qm::wstring& /*name*/,
                     uint32_t /*index*/) override {
        return 0;
    }
    int32_t InitIISObject() override { return Backend::InitIISObject(); }
    int32_t AddWebSiteFunction(CIISWebsiteProp& website) override {
        return Backend::AddWebSiteFunction(website);
    }
    int32_t SetVRtStrProperty(MetadataHandle /*handle*/, uint32_t identifier, uint32_t userType,
                              uint32_t attributes, const qm::wstring& value,
                              const qm::wstring& subPath) override {
        return Backend::SetVRtStrProperty(identifier, userType, attributes, value, subPath);
    }
    int32_t RemoveWebsite(CIISWebsiteProp& website) override {
        return Backend::RemoveWebsite(website);
    }
    int32_t AppCreate(CIISWebsiteProp& website, CIISVRootProp* vroot) override {
        return Backend::AppCreate(website, vroot);
    }
    int32_t CreateApplication(CIISWebsiteProp& website, CIISVRootProp* vroot) override {
        return Backend::CreateApplication(website, vroot);
    }
    int32_t CreateVirtualDirectory(CIISWebsiteProp& website, CIISVRootProp& vroot) override {
        return Backend::CreateVirtualDirectory(website, vroot);
    }
    int32_t CreateAppPoolFunction(CIISAppPoolProp& pool) override {
        return Backend::CreateAppPoolFunction(pool);
    }
    int32_t RemoveLegacyApplication(CIISWebsiteProp& website, CIISVRootProp& vroot) override {
        return Backend::RemoveLegacyApplication(website, vroot);
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
    int32_t SetVRtDelimMultiszProperty(MetadataHandle /*handle*/, uint32_t identifier,
                                       uint32_t userType,
                                       const qm::wstring& delimitedText) override {
        return Backend::SetVRtDelimMultiszProperty(identifier, userType, delimitedText);
    }
    int32_t SetVRtMultiszProperty(MetadataHandle /*handle*/, uint32_t identifier, uint32_t userType,
                                  const char16_t* data, uint32_t byteLength,
                                  const qm::wstring& subPath) override {
        return Backend::SetVRtMultiszProperty(identifier, userType, data, byteLength, subPath);
    }
    int32_t SetVRtDWProperty(MetadataHandle /*handle*/, uint32_t identifier, uint32_t userType,
                             uint32_t value) override {
        return Backend::SetVRtDWProperty(identifier, userType, value);
    }
    int32_t SetVRtBinProperty(MetadataHandle /*handle*/, uint32_t identifier, uint32_t userType,
                              const std::byte* data, uint32_t byteLength) override {
        return Backend::SetVRtBinProperty(identifier, userType, data, byteLength);
    }
    int32_t SetDynamicMetaDataProperties(MetadataHandle /*handle*/, CIISCommonProp& item) override {
        return Backend::SetDynamicMetaDataProperties(item);
    }
    // The configuration system keeps no second copy of a directory to compare with.
    int32_t CompareDirValues(CIISWebsiteProp& /*website*/, CIISVRootProp& /*vroot*/) override {
        return 0;
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
    // The backend looks at its current site instead of a metabase path.
    bool CanDeletePath(const qm::wstring& /*path*/, const qm::wstring& /*ignoredKey*/) override {
        return Backend::CanDeletePath();
    }
    void GetNextWebsiteId(CIISWebsiteProp& website) override { Backend::GetNextWebsiteId(website); }
    int32_t InstallMimeTypes(MetadataHandle handle, const MimeMaps& mimeMaps) override {
        return Backend::InstallMimeTypes(handle, mimeMaps);
    }
    bool CheckAspNetBitness(const qm::wstring& poolName,
                            const qm::wstring& requestedBitness) override {
        return Backend::CheckAspNetBitness(poolName, requestedBitness);
    }
    // The backend only reads the record.
    int32_t SetAppPoolProperties(const CIISAppPoolProp& pool) override {
        return Backend::SetAppPoolProperties(const_cast<CIISAppPoolProp&>(pool));
    }
    using CIISProVRootController::SetAppPoolProperties;
    bool IsVistaBackend() override { return true; }
    int32_t SetFormsAuthentication(MetadataHandle /*handle*/, bool effective, bool own) override {
        return Backend::SetFormsAuthentication(effective, own);
    }

    // The backend's services are the controller's own operations.
    void LogMessage(const qm::wstring& text) override { CIISProVRootController::LogMessage(text); }
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
