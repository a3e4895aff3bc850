#pragma once
// The IIS 6 metabase backend: websites, applications, virtual directories and application pools
// kept as metabase keys, and item settings written as metabase properties. It is the second base
// of CBrindleLegacyController, which gives it the services declared first below.

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/metabase.h"
#include "platform/platform.h"
#include "settings/iis_app_pool_prop.h"
#include "settings/iis_common_prop.h"
#include "settings/iis_mime_map_prop.h"
#include "settings/iis_vroot_prop.h"
#include "settings/iis_website_prop.h"

class CIisFunctionsLegacy {
  public:
    using MetadataHandle = webrig::platform::MetadataHandle;
    using MetadataRecord = webrig::platform::MetadataRecord;

    CIisFunctionsLegacy(const CIisFunctionsLegacy&) = delete;
    CIisFunctionsLegacy& operator=(const CIisFunctionsLegacy&) = delete;

    // Services of the controller, in this slot order.
    virtual void LogMessage(const qm::wstring& text) = 0;
    virtual void ReportError(const qm::wstring& text, int32_t code) = 0;
    virtual bool WebsiteExists(CIISWebsiteProp& website) = 0;
    virtual qm::wstring GetPortFromBindingInfo(const qm::wstring& binding) = 0;
    virtual qm::wstring GetBasePath(const CIISWebsiteProp& website, const qm::wstring& subPath) = 0;
    virtual qm::wstring MaskPasswordValue(qm::wstring name, const qm::wstring& value) = 0;
    // Closes the metabase session.
    virtual ~CIisFunctionsLegacy();

    // The metabase session and its keys.
    int32_t InitIISObject();
    int32_t OpenKeyLog(MetadataHandle parent, const qm::wstring& path, uint32_t permissions,
                       uint32_t timeoutMilliseconds, MetadataHandle& handle);
    // Opens the key of a website, or of one of its virtual directories; opens nothing and
    // answers 0 without a website.
    int32_t OpenKeyToWebsite(CIISWebsiteProp* website, MetadataHandle* handle,
                             CIISVRootProp* vroot);
    int32_t EnumKeys(MetadataHandle handle, const qm::wstring& path, qm::wstring& name,
                     uint32_t index);
    int32_t GetData(MetadataHandle handle, const qm::wstring& path, MetadataRecord& record,
                    uint32_t& requiredSize);
    int32_t CloseKey(MetadataHandle handle);

    // Websites, applications, virtual directories and application pools.
    int32_t AddWebSiteFunction(CIISWebsiteProp& website);
    int32_t RemoveWebsite(CIISWebsiteProp& website);
    // Also serves as CreateApplication; without a virtual directory, the website's root.
    int32_t AppCreate(CIISWebsiteProp& website, CIISVRootProp* vroot);
    int32_t CreateVirtualDirectory(CIISWebsiteProp& website, CIISVRootProp& vroot);
    int32_t CreateAppPoolFunction(CIISAppPoolProp& pool);
    // Also serves as RemoveLegacyApplication.
    int32_t RemoveApplication(CIISWebsiteProp& website, CIISVRootProp& vroot);
    int32_t RemoveVirtualDirectory(CIISWebsiteProp& website, CIISVRootProp& vroot);
    int32_t RemoveAppPoolFunction(CIISAppPoolProp& pool);
    int32_t CompareDirValues(CIISWebsiteProp& website, CIISVRootProp& vroot);
    bool FindSiteWithId(CIISWebsiteProp& website);
    bool FindSiteWithPort(CIISWebsiteProp& website);
    bool CanDeletePath(const qm::wstring& path, const qm::wstring& ignoredKey);
    // Gives the website the next free site number.
    void GetNextWebsiteId(CIISWebsiteProp& website);

    // Property setters.
    int32_t SetVRtStrProperty(MetadataHandle handle, uint32_t identifier, uint32_t userType,
                              uint32_t attributes, const qm::wstring& value,
                              const qm::wstring& subPath);
    int32_t SetVRtDelimMultiszProperty(MetadataHandle handle, uint32_t identifier,
                                       uint32_t userType, const qm::wstring& delimitedText);
    int32_t SetVRtMultiszProperty(MetadataHandle handle, uint32_t identifier, uint32_t userType,
                                  const char16_t* data, uint32_t byteLength,
                                  const qm::wstring& subPath);
    int32_t SetVRtDWProperty(MetadataHandle handle, uint32_t identifier, uint32_t userType,
                             uint32_t value);
    int32_t SetVRtBinProperty(MetadataHandle handle, uint32_t identifier, uint32_t userType,
                              const std::byte* data, uint32_t byteLength);
    int32_t SetDynamicMetaDataProperties(MetadataHandle handle, CIISCommonProp& item);
    int32_t InstallMimeTypes(MetadataHandle handle,
                             const std::vector<std::unique_ptr<CIISMimeMapProp>>& mimeMaps);
    bool CheckAspNetBitness(const qm::wstring& poolName, const qm::wstring& requestedBitness);

  protected:
    explicit CIisFunctionsLegacy(webrig::platform::Platform& platform);

    webrig::platform::Platform& platform() noexcept { return m_platform; }

  private:
    webrig::platform::Platform& m_platform;
};
