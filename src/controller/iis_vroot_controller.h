#pragma once
// The one interface through which installs and uninstalls reach IIS. Its backend operations are
// done by one of two backends (the IIS 6 metabase, the IIS 7+ configuration system), bound to it
// by the concrete controllers; the rest is logic both backends share and the services they call
// back into. A controller lives for one export call.

#include <cstdint>
#include <memory>
#include <vector>

#include "host/iis_event.h"
#include "platform/metabase.h"
#include "platform/platform.h"
#include "settings/iis_property_bag.h"

class CIISVRootController {
  public:
    using MetadataHandle = webrig::platform::MetadataHandle;
    using MetadataRecord = webrig::platform::MetadataRecord;
    using MimeMaps = std::vector<std::unique_ptr<CIISMimeMapProp>>;

    // A website whose SiteNumber is this asks for a new site number.
    static constexpr char16_t kNewSiteNumberMarker[] = u"QUILLMARK_IIS_NEXT_NEW_SITE_NUMBER";

    CIISVRootController(const CIISVRootController&) = delete;
    CIISVRootController& operator=(const CIISVRootController&) = delete;

    // The fifty operations, in slot order (the comments give the slot numbers).
    virtual IIISEvent* SetEventSink(IIISEvent* sink) = 0;  // 0: returns `sink`
    virtual bool IsInstallState(int32_t actionState) = 0;
    virtual bool IsRemoveState(int32_t actionState) = 0;

    // 3-6: metabase keys.
    virtual int32_t CloseKey(MetadataHandle handle) = 0;
    virtual int32_t OpenKeyLog(MetadataHandle parent, const qm::wstring& path, uint32_t permissions,
                               uint32_t timeoutMilliseconds, MetadataHandle& handle) = 0;
    virtual int32_t GetData(MetadataHandle handle, const qm::wstring& path, MetadataRecord& record,
                            uint32_t& requiredSize) = 0;
    virtual int32_t EnumKeys(MetadataHandle handle, const qm::wstring& path, qm::wstring& name,
                             uint32_t index) = 0;

    virtual int32_t InitIISObject() = 0;  // 7: connects the backend
    virtual int32_t AddWebSiteFunction(CIISWebsiteProp& website) = 0;
    virtual int32_t SetVRtStrProperty(MetadataHandle handle, uint32_t identifier, uint32_t userType,
                                      uint32_t attributes, const qm::wstring& value,
                                      const qm::wstring& subPath) = 0;
    virtual int32_t RemoveWebsite(CIISWebsiteProp& website) = 0;  // 10
    virtual int32_t AppCreate(CIISWebsiteProp& website, CIISVRootProp* vroot) = 0;
    virtual int32_t CreateApplication(CIISWebsiteProp& website, CIISVRootProp* vroot) = 0;
    virtual int32_t CreateVirtualDirectory(CIISWebsiteProp& website, CIISVRootProp& vroot) = 0;
    virtual int32_t CreateAppPoolFunction(CIISAppPoolProp& pool) = 0;
    virtual int32_t RemoveLegacyApplication(CIISWebsiteProp& website, CIISVRootProp& vroot) = 0;
    virtual int32_t RemoveApplication(CIISWebsiteProp& website, CIISVRootProp& vroot) = 0;
    virtual int32_t RemoveVirtualDirectory(CIISWebsiteProp& website, CIISVRootProp& vroot) = 0;
    virtual int32_t RemoveAppPoolFunction(CIISAppPoolProp& pool) = 0;  // 18

    // 19-23: item settings as metabase properties.
    virtual int32_t SetVRtDelimMultiszProperty(MetadataHandle handle, uint32_t identifier,
                                               uint32_t userType,
                                               const qm::wstring& delimitedText) = 0;
    virtual int32_t SetVRtMultiszProperty(MetadataHandle handle, uint32_t identifier,
                                          uint32_t userType, const char16_t* data,
                                          uint32_t byteLength, const qm::wstring& subPath) = 0;
    virtual int32_t SetVRtDWProperty(MetadataHandle handle, uint32_t identifier, uint32_t userType,
                                     uint32_t value) = 0;
    virtual int32_t SetVRtBinProperty(MetadataHandle handle, uint32_t identifier, uint32_t userType,
                                      const std::byte* data, uint32_t byteLength) = 0;
    virtual int32_t SetDynamicMetaDataProperties(MetadataHandle handle, CIISCommonProp& item) = 0;

    // 0 when the virtual directory in IIS points at the package's folder.
    virtual int32_t CompareDirValues(CIISWebsiteProp& website, CIISVRootProp& vroot) = 0;  // 24
    virtual int32_t OpenKeyToWebsite(CIISWebsiteProp* website, MetadataHandle* handle,
                                     CIISVRootProp* vroot) = 0;
    virtual bool FindSiteWithId(CIISWebsiteProp& website) = 0;
    virtual bool FindSiteWithPort(CIISWebsiteProp& website) = 0;
    virtual bool CanDeletePath(const qm::wstring& path, const qm::wstring& ignoredKey) = 0;
    virtual void GetNextWebsiteId(CIISWebsiteProp& website) = 0;  // 29: sets its SiteNumber
    virtual int32_t InstallMimeTypes(MetadataHandle handle, const MimeMaps& mimeMaps) = 0;
    virtual bool CheckAspNetBitness(const qm::wstring& poolName,
                                    const qm::wstring& requestedBitness) = 0;
    // 32: the backend's own part of a pool's settings. Reached with a const record, so that a
    // call with a pool record the install may change runs the whole of them (below).
    virtual int32_t SetAppPoolProperties(const CIISAppPoolProp& pool) = 0;
    virtual bool IsVistaBackend() = 0;  // 33

    // 34-39: services, also offered to the backends.
    virtual void LogMessage(const qm::wstring& text);
    virtual void ReportError(const qm::wstring& text, int32_t code);
    virtual bool WebsiteExists(CIISWebsiteProp& website);
    virtual qm::wstring GetPortFromBindingInfo(const qm::wstring& binding);
    virtual qm::wstring GetBasePath(const CIISWebsiteProp& website, const qm::wstring& subPath);
    virtual qm::wstring MaskPasswordValue(qm::wstring name, const qm::wstring& value);

    // 40-43: item-created records for the host; nothing at this level.
    virtual void VRootCreated(const qm::wstring& /*name*/) {}
    virtual void AppPoolCreated(const qm::wstring& /*name*/) {}
    virtual void WebServiceExtensionCreated(const qm::wstring& /*name*/) {}
    virtual void WebSiteCreated(const qm::wstring& /*name*/) {}
    virtual int32_t Reserved44() { return 0; }
    virtual int32_t Reserved45() { return 0; }
    virtual void ComponentFileInfo(uint32_t /*hostContext*/, const qm::wstring& /*feature*/,
                                   const qm::wstring& /*component*/) {}  // 46
    virtual int32_t WriteUninstallProps();                               // 47
    virtual int32_t RemoveUninstallProps();                              // 48
    virtual int32_t SetFormsAuthentication(MetadataHandle handle, bool effective,
                                           bool own) = 0;  // 49

    virtual ~CIISVRootController();

    // Keeps the bag and connects the backend (InitIISObject); its status, 0 to go on.
    int32_t SetPropertyBag(CIISPropertyBag& bag);
    // Shows a progress text of the bag's table; the sink's answer, 0 without a sink.
    int32_t ProgressMessage(const qm::wstring& identifier, const qm::wstring& insertion);
    // Whether the user has asked to cancel.
    bool UserCancelled();

    // Application pool settings, as metabase properties through the property setters. Each
    // returns 0, the setter's or backend's own failure, -2252 for a failed CPU, identity or
    // schedule write, or -2116 for an exception.
    // The pool's settings in order, then the backend's own part; the first failure ends them.
    int32_t SetAppPoolProperties(CIISAppPoolProp& pool);
    // One DWORD setting; -1 writes `defaultValue`.
    int32_t SetAppPoolProperty(MetadataHandle handle, int32_t value, uint32_t identifier,
                               int32_t defaultValue);
    int32_t SetRecycleTimes(MetadataHandle handle, const CIISAppPoolProp& pool);
    // Reads "limit,interval,action" of CPUMon (empty pieces are 0, the limit in thousandths of
    // a percent) and writes the three.
    int32_t SetCpuMon(MetadataHandle handle, const CIISAppPoolProp& pool);
    // -1 leaves a setting untouched.
    int32_t SetCpuMonProperties(MetadataHandle handle, int32_t action, int32_t limit,
                                int32_t interval);
    // The identity type from the pool's Attributes, and the account for a specific user.
    int32_t SetIdentity(MetadataHandle handle, const CIISAppPoolProp& pool);

    // SSL certificates: the website's certificate file imported into the local machine's "MY"
    // store and its thumbprint written as the site's certificate hash. 0 without a certificate
    // path; -2162 to -2171 otherwise (qm::status::certificate_*).
    int32_t InstallSSLCert(MetadataHandle handle, const CIISWebsiteProp& website);
    // Reads the whole file as a PFX blob: 0 or -2165.
    int32_t GetCertContextFromPfxBlob(const qm::wstring& path, std::vector<std::byte>& blob);
    // Imports the PFX blob with its password and adds its first certificate to "MY"; `context`
    // (where the enumeration starts, none for a PFX) receives that certificate. 0 or -2165.
    int32_t AddToStorePfxBlob(const std::vector<std::byte>& blob,
                              webrig::platform::CertContext& context, const qm::wstring& password);
    // Adds a plain certificate to "MY", replacing a copy there. 0, -2164, -2165 or -2169.
    int32_t AddToStoreLegacy(webrig::platform::CertContext context, uint32_t encoding);

    // ---- Install and removal of a component's items, and their settings.
    // The component's items of one kind, created in key order until the first failure or a
    // cancel (1602); 0 for a component the bag does not hold (component_install.cpp).
    int32_t CreateCompAppPools(const qm::wstring& component);
    int32_t CreateCompWebSites(const qm::wstring& component);
    int32_t CreateCompVRoots(const qm::wstring& component);
    int32_t CreateCompWebServiceExtensions(const qm::wstring& component);
    // One item each: created (or found), given its settings and recorded with the host
    // (item_creation.cpp, web_service_extensions.cpp).
    int32_t CreateAppPool(CIISAppPoolProp& pool);
    int32_t CreateWebSite(CIISWebsiteProp& website);
    int32_t CreateVRoot(CIISVRootProp& vroot);
    int32_t CreateWebServiceExtension(CIISWebServiceExtensionProp& extension);
    // The uninstall exports' lookups: the first item of that name in any component is removed;
    // 0 when none carries it (item_removal.cpp).
    int32_t RemoveVRootNamed(const qm::wstring& name);
    int32_t RemoveCompWebSiteNamed(const qm::wstring& name);
    int32_t RemoveAppPoolNamed(const qm::wstring& name);
    int32_t RemoveWebServiceExtensionNamed(const qm::wstring& description);
    // One item each, behind the guards that keep shared and pre-existing objects.
    int32_t RemoveAppPool(CIISAppPoolProp& pool);
    int32_t RemoveVRoot(CIISVRootProp& vroot);
    int32_t RemoveCompWebSite(CIISWebsiteProp& website);
    bool CanRemoveWebsite(CIISWebsiteProp& website);
    int32_t RemoveWebServiceExtension(CIISWebServiceExtensionProp& extension);
    // Item settings as metabase properties (vroot_settings.cpp, asp_net_version.cpp).
    int32_t SetVRootProperties(CIISVRootProp& vroot);
    int32_t SetWebSiteProperties(CIISWebsiteProp& website);
    int32_t SetCommonProperties(MetadataHandle handle, CIISCommonProp& item);
    int32_t AddAppMaps(MetadataHandle handle, CIISCommonProp& item);
    int32_t SetAspversion(const qm::wstring& path, const qm::wstring& version,
                          const qm::wstring& bitness, const qm::wstring& pool,
                          const qm::wstring& registration);
    int32_t AspVersionChanger(const qm::wstring& command);
    // The server-side-include "#exec cmd" switch of the web service, once per install.
    int32_t SetSSIEnableCmdDirective();
    // The website a virtual directory names as its parent; null when the bag has none.
    CIISWebsiteProp* ParentWebsiteOf(const CIISVRootProp& vroot);

  protected:
    explicit CIISVRootController(webrig::platform::Platform& platform);

    webrig::platform::Platform& platform() noexcept { return m_platform; }

    IIISEvent* m_pEventSink = nullptr;          // not owned
    CIISPropertyBag* m_pPropertyBag = nullptr;  // not owned

  private:
    // Gives a website that asks for one a new site number, and remembers it in the registry.
    void AllocateSiteNumber(CIISWebsiteProp& website);

    webrig::platform::Platform& m_platform;
};
