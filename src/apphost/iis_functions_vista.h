#pragma once
// The IIS 7+ configuration backend: sites, applications, virtual directories and application
// pools in the IIS configuration system, and item settings translated into its sections. It is
// the second base of CBrindleVistaController, which gives it the services declared first below.
// Metabase key handles appear only where the controller passes them through; they are ignored.
//
// Every change goes through one writable administration manager, created on first use and
// dropped after every commit: its commit path picks the file that receives the changes
// (applicationHost.config at "MACHINE/WEBROOT/APPHOST", a web.config below it). Operations
// that catch exceptions say so; the others let a qm::com_exception of a failed configuration
// call reach the controller operation that called them, which catches it.

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "platform/iis_config.h"
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
    using ElementPtr = std::shared_ptr<webrig::platform::ConfigElement>;
    using CollectionPtr = std::shared_ptr<webrig::platform::ElementCollection>;
    using PropertyPtr = std::shared_ptr<webrig::platform::ConfigProperty>;
    using ManagerPtr = std::shared_ptr<webrig::platform::AdminManager>;

    // The configuration path of applicationHost.config.
    static constexpr char16_t kAppHostPath[] = u"MACHINE/WEBROOT/APPHOST";

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

    // The session: a probe for the metabase compatibility layer (for the log; always 0), and
    // the configuration location (commit path) of a website or one of its virtual directories;
    // the main configuration file without a website.
    int32_t InitIISObject();
    int32_t OpenKeyToWebsite(CIISWebsiteProp* website, MetadataHandle* ignored,
                             CIISVRootProp* vroot);

    // Sites. A site found or created becomes the current site, which the application and
    // virtual directory operations work on.
    int32_t AddWebSiteFunction(CIISWebsiteProp& website);
    int32_t RemoveWebsite(CIISWebsiteProp& website);
    bool FindSiteWithId(CIISWebsiteProp& website);
    bool FindSiteWithPort(CIISWebsiteProp& website);
    // The walk both lookups share: the first site `matches` accepts becomes the current site.
    bool FindSite(CIISWebsiteProp& website, const std::function<bool(const ElementPtr&)>& matches);
    // Gives the website the next free site id.
    void GetNextWebsiteId(CIISWebsiteProp& website);

    // Applications, virtual directories and application pools. "Already exists" answers 183
    // for applications and virtual directories, 0x800700B7 for pools.
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

    // Item settings, given as metabase property identifiers. Each translated setting is its
    // own commit at the commit path it found (the forms authentication mode rides on the next
    // commit); identifiers without a translation are logged and answer 0.
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
    // Binds the website's certificate (its hash) to the site's port.
    int32_t SetSsl(uint32_t userType, const std::byte* hash, uint32_t size);

    // The helpers the item settings share. Attributes are written in the map's key order.
    using AttributeMap = std::map<qm::wstring, qm::wstring>;
    // PutPropertyValue on the element that GetConfigElement reaches.
    int32_t SetSectionElementProperty(const qm::wstring& sectionName,
                                      const qm::wstring& elementPath, const qm::wstring& attribute,
                                      const qm::wstring& value);
    // Each entry updates the collection's entry with the same key values, or is added at the
    // end; entries without the (first) key are skipped, and nothing is ever removed. The
    // second key is compared only for entries that have it.
    int32_t MergeCollectionEntries(const qm::wstring& sectionName, const qm::wstring& elementPath,
                                   const qm::wstring& newElementName,
                                   const qm::wstring& keyAttribute,
                                   const std::vector<AttributeMap>& entries);
    int32_t MergeCollectionEntries(const qm::wstring& sectionName, const qm::wstring& elementPath,
                                   const qm::wstring& newElementName,
                                   const qm::wstring& keyAttribute1,
                                   const qm::wstring& keyAttribute2,
                                   const std::vector<AttributeMap>& entries);
    // Writes the attributes on `existing`, or on a new entry that is then added at the end.
    int32_t AddOrUpdateCollectionEntry(const CollectionPtr& collection, const ElementPtr& existing,
                                       const qm::wstring& newElementName,
                                       const AttributeMap& attributes);

    // Value conversions.
    // "true" and "false" (exactly) become booleans, other text a string (normalized as a
    // virtual path with `isPath`).
    static webrig::platform::Variant MakePropertyVariant(const qm::wstring& text, bool isPath);
    // Backslashes to slashes and a leading slash: "a\b" gives "/a/b", "" gives "/".
    static qm::wstring NormalizeVirtualPath(qm::wstring_view text);
    static qm::wstring FormatNumber(int32_t number);
    // "hh:mm:ss", hours not wrapped at a day: 90061 gives "25:01:01".
    static qm::wstring FormatTimeSpanFromSeconds(int32_t seconds);
    // "[d.]hh:mm:00": 1500 gives "1.01:00:00". The count is unsigned, as the DWORD it comes from.
    static qm::wstring FormatTimeSpanFromMinutes(uint32_t minutes);
    // IIS 6 access flags as the flags text of "accessPolicy": 0x205 gives "Script, Execute, Read".
    static qm::wstring FormatAccessPolicy(uint32_t flags);

    // The primitives the item operations and the item settings are built on.
    // The session (administration manager, commit path, sections, commits).
    // A counted reference to the manager, created when there is none; null when it cannot be.
    ManagerPtr GetAdminManager();
    // "" when it cannot be read.
    qm::wstring GetCommitPath();
    int32_t PutCommitPath(const qm::wstring& path);
    // 0 when `path` is the commit path already; else `path` gets slashes for its backslashes
    // and is put.
    int32_t ChangeCommitPath(qm::wstring& path);
    int32_t SetCommitPath(const qm::wstring& siteName, const qm::wstring& appPath);
    // Null when the section cannot be had, even after one retry in the main configuration file.
    ElementPtr GetAdminSection(const qm::wstring& sectionName, const qm::wstring& path,
                               bool retried = false);
    // Drops `element` and the manager, unless the commit path is the main configuration file
    // already: then `failure` is returned.
    int32_t UseMainConfigurationFile(ElementPtr& element, int32_t failure);
    // Commits and drops the manager; excuses a failure after a write that changed nothing, and
    // 0x800700B7.
    int32_t CommitChanges();

    // Elements, collections and properties.
    PropertyPtr GetPropertyByName(const ElementPtr& element, const qm::wstring& name);
    int32_t PutPropertyCommon(const ElementPtr& element, const qm::wstring& name,
                              const qm::wstring& value, bool isPath);
    // PutPropertyCommon, repeated at the application host level when the level of the commit
    // path may not hold the attribute (0x80070021).
    int32_t PutPropertyValue(ElementPtr element, const qm::wstring& name, const qm::wstring& value,
                             bool isPath);
    int32_t PutPropertyValueAtAppHostLevel(const qm::wstring& path, const qm::wstring& sectionName,
                                           const qm::wstring& name, const qm::wstring& value,
                                           bool isPath);
    ElementPtr CreateNewElement(const CollectionPtr& collection, const qm::wstring& name);
    // Position -1 appends; an entry that exists already counts as added.
    int32_t AddElement(const CollectionPtr& collection, const ElementPtr& element,
                       int32_t position);
    CollectionPtr GetElementCollection(const ElementPtr& element);
    ElementPtr GetSubElement(const ElementPtr& parent, const qm::wstring& name);
    // The first entry of the parent's collection whose attributes match, ignoring letter case
    // (`attribute2` empty: only the first). With `deleteIt` the entry is deleted and null is
    // returned.
    ElementPtr FindElementInCollection(const ElementPtr& parent, const qm::wstring& attribute1,
                                       const qm::wstring& value1, const qm::wstring& attribute2,
                                       const qm::wstring& value2, bool deleteIt);
    // The section at the commit path (for the application pools section, the entry of
    // m_sAppPoolName), then the child elements of `subPath` ("processModel",
    // "recycling/periodicRestart"). 0 or -2116.
    int32_t GetConfigElement(const qm::wstring& sectionName, const qm::wstring& subPath,
                             ElementPtr& element);
    int32_t GetConfigElementCollection(const qm::wstring& sectionName, const qm::wstring& subPath,
                                       ElementPtr* element, CollectionPtr* collection);
    ElementPtr GetAppPoolElement(const CIISAppPoolProp& pool);

    // Sites.
    qm::wstring GetBindingInformationString(const CIISWebsiteProp& website);
    CollectionPtr GetBindingsCollection(const ElementPtr& site);
    bool SiteHasPort(const ElementPtr& site, const qm::wstring& port);
    void RememberSite(const CIISWebsiteProp& website);
    qm::wstring GetNextWebsiteId();

    // Applications and virtual directories of the current site.
    int32_t CreateVirtualDirVista(const ElementPtr& application, const qm::wstring& physicalPath,
                                  const qm::wstring& virtualPath);
    // The application that holds `virtualPath`, which becomes the path relative to it.
    ElementPtr FindParentApplication(qm::wstring& virtualPath, qm::wstring& containingPath);
    int32_t CreateNestedVirtualDirectory(const qm::wstring& physicalPath,
                                         const qm::wstring& nestedPath);
    // Metadata entries of the IIS 6 compatibility layer and location tags left for the site or
    // virtual directory; nothing is committed.
    void RemoveApplicationLeftovers(const CIISWebsiteProp& website, const CIISVRootProp* vroot);

  protected:
    explicit CIisFunctionsVista(webrig::platform::Platform& platform);

    webrig::platform::Platform& platform() noexcept { return m_platform; }

    // The backend's state; see the operations that set each.
    ElementPtr m_spSiteElement;
    ManagerPtr m_spAppHostAdminManager;
    qm::wstring m_sParentAppPath;
    qm::wstring m_sAppPoolName;
    qm::wstring m_sPhysicalPath;
    qm::wstring m_sConfigDirectory;
    qm::wstring m_sSiteName;
    qm::wstring m_sSitePort;
    qm::wstring m_sSiteIPAddress;
    qm::wstring m_sSectionName;
    bool m_bValueChanged = true;

  private:
    // The translations behind the setters: the result of a translated setting, or nothing for
    // an identifier that is not written (logged, no commit).
    std::optional<int32_t> TranslateDWordProperty(uint32_t identifier, uint32_t value);
    std::optional<int32_t> TranslateStrProperty(uint32_t identifier, const qm::wstring& value);
    std::optional<int32_t> TranslateListProperty(uint32_t identifier, const qm::wstring& value);
    // The frame of the setters: the commit path is kept before the log line, a translated
    // setting is committed, and after a successful commit the kept commit path is put back.
    template <typename Translate>
    int32_t SetProperty(const qm::wstring& logLine, Translate translate);
    void LogUnsupportedProperty();

    // Application pool settings of the current pool.
    std::optional<int32_t> SetAppPoolDWordProperty(uint32_t identifier, uint32_t value);
    int32_t SetRecycleSchedule(const qm::wstring& recycleTimes);

    // Virtual directory and website settings at the commit path.
    int32_t SetAuthentication(uint32_t flags);
    int32_t SetSectionAttribute(const qm::wstring& sectionName, const qm::wstring& attribute,
                                const qm::wstring& value);
    int32_t SetAspLimit(const qm::wstring& childName, const qm::wstring& attribute,
                        const qm::wstring& value);
    int32_t SetDefaultDocuments(const qm::wstring& documents);
    int32_t SetCustomErrors(const qm::wstring& customErrors);
    int32_t SetHandlerMappings(const qm::wstring& appMaps);

    // Why the manager could not be created, for the calls that needed it.
    qm::hresult ManagerFailure() const noexcept { return m_managerCreation; }
    // The body of RemoveApplication and RemoveLegacyApplication.
    int32_t RemoveApplicationAt(CIISWebsiteProp& website, CIISVRootProp& vroot);

    webrig::platform::Platform& m_platform;
    qm::hresult m_managerCreation = qm::hr::ok;
};
