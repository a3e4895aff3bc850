#pragma once
// Reads the settings file into the property bag: every section in a fixed order, stopping at the
// first error, whose status it returns (records read before it stay in the bag). How a value is
// resolved through the host engine is left to the derived loader.

#include <cstdint>

#include "platform/platform.h"
#include "settings/iis_loader.h"
#include "settings/iis_property_bag.h"
#include "settings/settings_reader.h"

class CIISIniLoader : public CIISLoader {
  public:
    int32_t Load(CIISPropertyBag& bag) override;

    // A settings file larger than this is refused like one that cannot be read: a 32-bit process
    // could not hold it together with its decoded text.
    static constexpr uint64_t kLargestSettingsFile = uint64_t{256} << 20;

  protected:
    CIISIniLoader(webrig::platform::Platform& platform, qm::wstring settingsFile,
                  webrig::platform::ModuleHandle hostModule, uint32_t hostContext)
        : m_sSettingsFile(std::move(settingsFile)),
          m_hHostModule(hostModule),
          m_hostContext(hostContext),
          m_platform(platform) {}

    webrig::platform::Platform& platform() { return m_platform; }

    qm::wstring m_sSettingsFile;
    CIISPropertyBag* m_pBag = nullptr;
    webrig::platform::ModuleHandle m_hHostModule;
    uint32_t m_hostContext;

  private:
    using Reader = webrig::settings::SettingsReader;
    using ItemReader = int32_t (CIISIniLoader::*)(const Reader&, CIISComponentProp&,
                                                  const qm::wstring&);

    // One of a component's four item lists: the section "<component><suffix>" with the entries
    // "<prefix>1".."<prefix>Count", each naming an item's own section.
    struct ItemList {
        const char16_t* sectionSuffix;
        const char16_t* entryFormat;
        int32_t entryMissing;
        ItemReader readItem;
    };

    void ReadGlobalOptions(const Reader& reader);
    int32_t ReadComponents(const Reader& reader);
    int32_t ReadItemList(const Reader& reader, const qm::wstring& component, const ItemList& list);
    int32_t ReadComponentWebsite(const Reader& reader, CIISComponentProp& component,
                                 const qm::wstring& section);
    int32_t ReadVRoot(const Reader& reader, CIISComponentProp& component,
                      const qm::wstring& section);
    int32_t ReadWebsite(const Reader& reader, const qm::wstring& section, CIISVRootProp* vroot,
                        CIISComponentProp* component);
    int32_t ReadCommon(const Reader& reader, CIISCommonProp& record, const qm::wstring& section);
    int32_t ReadMetaData(const Reader& reader, CIISCommonProp& record, const qm::wstring& section);
    int32_t ReadAppMaps(const Reader& reader, CIISCommonProp& record, const qm::wstring& section);
    int32_t ReadMimeMaps(const Reader& reader, CIISCommonProp& record, const qm::wstring& section);
    int32_t ReadAppPool(const Reader& reader, CIISComponentProp& component,
                        const qm::wstring& section);
    int32_t ReadWebServiceExtension(const Reader& reader, CIISComponentProp& component,
                                    const qm::wstring& section);
    int32_t ReadProgressMessages(const Reader& reader);
    void ReadUninstallProps(const Reader& reader);

    webrig::platform::Platform& m_platform;
};
