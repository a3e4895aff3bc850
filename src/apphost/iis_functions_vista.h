#pragma once
// The IIS 7+ configuration backend: sites, applications, virtual directories and application
// pools in the IIS configuration system, and item settings translated into its sections. It is
// the second base of CBrindleVistaController, which gives it the services declared first below.
// Metabase key handles appear only where the controller passes them through; they are ignored.

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

class CIisFunctionsVista {
  public:
    using MetadataHandle = webrig::platform::MetadataHandle;

    CIisFunctionsVista(const CIisFunctionsVista&) = delete;
    CIisFunctionsVista& operator=(const CIisFunctionsVista&) = delete;

    // Services of the controller, in this slot order.
    virtual void LogMessage(const qm::wstring& text) = 0;
    virtual bool WebsiteExists(CIISWebsiteProp& website) = 0;
    virtual qm::wstring GetPortFromBindingInfo(const qm::wstring& binding) = 0;
    virtual qm::wstring GetBasePath(const CIISWebsiteProp& website, const qm::wstring& subPath) = 0;
    virtual qm::wstring MaskPasswordValue(qm::wstring name, const qm::wstring& value) = 0;
    // Drops the administration session.
    virtual ~CIisFunctionsVista();

    // The session: a probe for the metabase compatibility layer, and the configuration location
    // (commit path) of a website or one of its virtual directories; the main configuration file
    // without a website.
    int32_t InitIISObject();
    int32_t OpenKeyToWebsite(CIISWebsiteProp* website, MetadataHandle* ignored,
                             CIISVRootProp* vroot);

    // Sites.
    int32_t AddWebSiteFunction(CIISWebsiteProp& website);
    int32_t RemoveWebsite(CIISWebsiteProp& website);
    bool FindSiteWithId(CIISWebsiteProp& website);
    bool FindSiteWithPort(CIISWebsiteProp& website);
    // Gives the website the next free site id.
    void GetNextWebsiteId(CIISWebsiteProp& website);

    // Applications, virtual directories and application pools.
    int32_t AppCreate(CIISWebsiteProp& website, CIISVRootProp* vroot);
    int32_t CreateApplication(CIISWebsiteProp& website, CIISVRootProp* vroot);
    int32_t CreateVirtualDirectory(CIISWebsiteProp& website, CIISVRootProp& vroot);
    int32_t CreateAppPoolFunction(CIISAppPoolProp& pool);
    int32_t RemoveLegacyApplication(CIISWebsiteProp& website, CIISVRootProp& vroot);
    int32_t RemoveApplication(CIISWebsiteProp& website, CIISVRootProp& vroot);
    int32_t RemoveVirtualDirectory(CIISWebsiteProp& website, CIISVRootProp& vroot);
    int32_t RemoveAppPoolFunction(CIISAppPoolProp& pool);
    // Whether the current site holds no application but its root one.
    bool CanDeletePath();

    // Item settings, given as metabase property identifiers.
    int32_t SetVRtStrProperty(uint32_t identifier, uint32_t userType, uint32_t attributes,
                              const qm::wstring& value, const qm::wstring& subPath);
    int32_t SetVRtDelimMultiszProperty(uint32_t identifier, uint32_t userType,
                                       const qm::wstring& delimitedText);
    int32_t SetVRtMultiszProperty(uint32_t identifier, uint32_t userType, const char16_t* data,
                                  uint32_t byteLength, const qm::wstring& subPath);
    int32_t SetVRtDWProperty(uint32_t identifier, uint32_t userType, uint32_t value);
    int32_t SetVRtBinProperty(uint32_t identifier, uint32_t userType, const std::byte* data,
                              uint32_t byteLength);
    int32_t SetDynamicMetaDataProperties(CIISCommonProp& item);
    int32_t InstallMimeTypes(MetadataHandle ignored,
                             const std::vector<std::unique_ptr<CIISMimeMapProp>>& mimeMaps);
    int32_t SetFormsAuthentication(bool effective, bool own);
    int32_t SetAppPoolProperties(CIISAppPoolProp& pool);
    bool CheckAspNetBitness(const qm::wstring& poolName, const qm::wstring& requestedBitness);

  protected:
    explicit CIisFunctionsVista(webrig::platform::Platform& platform);

    webrig::platform::Platform& platform() noexcept { return m_platform; }

  private:
    webrig::platform::Platform& m_platform;
};
