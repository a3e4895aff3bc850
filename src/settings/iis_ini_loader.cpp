#include "settings/iis_ini_loader.h"

#include <array>
#include <limits>
#include <new>
#include <optional>

#include "settings/settings_file.h"
#include "settings/uninstall_information.h"
#include "support/case_insensitive.h"
#include "support/decimal.h"
#include "support/format.h"
#include "support/status_codes.h"

namespace status = qm::status;
using webrig::settings::SettingsFile;
using webrig::settings::SettingsReader;

namespace {

constexpr char16_t kGlobalOptions[] = u"GlobalOptions";
constexpr char16_t kComponents[] = u"Components";
constexpr char16_t kFeatureComponents[] = u"FeatureComponents";
constexpr char16_t kProgressMessages[] = u"ProgressMessages";
constexpr char16_t kUninstallProps[] = u"UninstallProps";
constexpr char16_t kRemoveUninstProps[] = u"RemoveUninstProps";
constexpr char16_t kDefaultProgressText[] = u"Configuring IIS...";

// Read in this order; the texts are shown by the install and uninstall steps.
constexpr std::array<const char16_t*, 21> kProgressIdentifiers = {
    u"PROGMSG_IIS_CREATEVROOT",
    u"PROGMSG_IIS_CREATEVROOTS",
    u"PROGMSG_IIS_CREATEAPPPOOLS",
    u"PROGMSG_IIS_CREATEAPPPOOL",
    u"PROGMSG_IIS_CREATEWEBSERVICEEXTENSIONS",
    u"PROGMSG_IIS_CREATEWEBSERVICEEXTENSION",
    u"PROGMSG_IIS_EXTRACT",
    u"PROGMSG_IIS_EXTRACTDONE",
    u"PROGMSG_IIS_REMOVEVROOT",
    u"PROGMSG_IIS_REMOVEVROOTS",
    u"PROGMSG_IIS_REMOVEAPPPOOL",
    u"PROGMSG_IIS_REMOVEAPPPOOLS",
    u"PROGMSG_IIS_REMOVEWEBSERVICEEXTENSION",
    u"PROGMSG_IIS_REMOVEWEBSERVICEEXTENSIONS",
    u"PROGMSG_IIS_REMOVESITE",
    u"PROGMSG_IIS_ROLLBACKVROOTS",
    u"PROGMSG_IIS_ROLLBACKAPPPOOLS",
    u"PROGMSG_IIS_ROLLBACKWEBSERVICEEXTENSIONS",
    u"PROGMSG_IIS_REMOVEWEBSITES",
    u"PROGMSG_IIS_CREATEWEBSITE",
    u"PROGMSG_IIS_CREATEWEBSITES",
};

qm::wstring Numbered(const char16_t* format, int32_t index) {
    return qm::format(format, index);
}

// A list inside a section: a count, then the entries "<prefix>1".."<prefix><count>", each naming
// the section of one list item.
struct NumberedList {
    const char16_t* countName;
    size_t countLimit;
    int32_t countEmpty;
    const char16_t* entryFormat;
    int32_t entryMissing;
};

// A text entry read resolved into its record through the record's setter.
template <class Record>
struct ResolvedField {
    const char16_t* name;
    const char16_t* fallback;
    int32_t (Record::*set)(qm::wstring);
};

// Reads the fields in order; the first setter that refuses its text ends the reading.
template <class Record, size_t Count>
int32_t SetResolvedFields(const SettingsReader& reader, const qm::wstring& section, Record& record,
                          const ResolvedField<Record> (&fields)[Count]) {
    for (const ResolvedField<Record>& field : fields) {
        if (const int32_t result =
                (record.*field.set)(reader.Resolved(section, field.name, field.fallback));
            result != 0) {
            return result;
        }
    }
    return 0;
}

// Gives each listed section to `readItem`; returns the first non-zero status.
template <class ReadItem>
int32_t ForEachListed(const SettingsReader& reader, const qm::wstring& section,
                      const NumberedList& list, ReadItem&& readItem) {
    const qm::wstring count = reader.Raw(section, list.countName, list.countLimit, u"0");
    if (count.empty()) {
        return list.countEmpty;
    }
    const int32_t entries = qm::read_decimal(count);
    for (int32_t i = 1; i <= entries; ++i) {
        const qm::wstring item =
            reader.Raw(section, Numbered(list.entryFormat, i), SettingsReader::kNameLimit, u"");
        if (item.empty()) {
            return list.entryMissing;
        }
        if (const int32_t result = readItem(item); result != 0) {
            return result;
        }
    }
    return 0;
}

}  // namespace

int32_t CIISIniLoader::Load(CIISPropertyBag& bag) {
    m_pBag = &bag;
    std::optional<SettingsFile> file;
    try {
        std::vector<std::byte> bytes;
        if (m_platform.files().ReadWholeFile(m_sSettingsFile, kLargestSettingsFile, bytes) !=
            qm::win32::success) {
            return status::settings_file_unreadable;
        }
        file.emplace(SettingsFile::Parse(bytes, m_platform.ansiCodePage()));
    } catch (const std::bad_alloc&) {
        return status::settings_file_unreadable;
    }
    const Reader reader(*file, *this, m_platform.ansiCodePage());

    ReadGlobalOptions(reader);
    if (const int32_t result = ReadComponents(reader); result != 0) {
        return result;
    }
    if (const int32_t result = ReadProgressMessages(reader); result != 0) {
        return result;
    }
    bag.SetRestartW3svc(reader.Resolved(kGlobalOptions, u"RESTARTW3SVC", u"0"));
    ReadUninstallProps(reader);
    return 0;
}

void CIISIniLoader::ReadGlobalOptions(const Reader& reader) {
    CIISPropertyBag& bag = *m_pBag;
    bag.ignoreIIS = qm::read_decimal(reader.Resolved(kGlobalOptions, u"IGNOREIIS", u"0"));
    bag.SetSsiProperty(reader.Resolved(kGlobalOptions, u"QUILLMARK_SSI_PROP", u"0"));
    bag.iisMajorVersion = qm::read_decimal(reader.Resolved(kGlobalOptions, u"IISVERSION", u"0"));
    bag.SetPreferLegacyObjects(reader.Resolved(kGlobalOptions, u"IISPREFERLEGACYOBJECTS", u"0"));
    bag.SetProductCode(reader.Resolved(kGlobalOptions, u"ProductCode", u""));
    // Not read by earlier releases: lets a project name further properties whose values must
    // never reach a log.
    bag.SetMsiHiddenProperties(reader.Resolved(kGlobalOptions, u"MsiHiddenProperties", u""));
}

int32_t CIISIniLoader::ReadComponents(const Reader& reader) {
    static constexpr ItemList kLists[] = {
        {u"_VRoots", u"v%d", status::vroot_entry_missing, &CIISIniLoader::ReadVRoot},
        {u"_AppPools", u"a%d", status::app_pool_entry_missing, &CIISIniLoader::ReadAppPool},
        {u"_WebServiceExtensions", u"w%d", status::extension_entry_missing,
         &CIISIniLoader::ReadWebServiceExtension},
        {u"_WebSites", u"ws%d", status::website_entry_missing,
         &CIISIniLoader::ReadComponentWebsite},
    };
    const int32_t count =
        qm::read_decimal(reader.Raw(kComponents, u"Count", Reader::kNumberLimit, u"0"));
    for (int32_t i = 1; i <= count; ++i) {
        const qm::wstring name =
            reader.Raw(kComponents, Numbered(u"c%d", i), Reader::kNameLimit, u"");
        if (name.empty()) {
            return status::component_entry_missing;
        }
        for (const ItemList& list : kLists) {
            if (const int32_t result = ReadItemList(reader, name, list); result != 0) {
                return result;
            }
        }
    }
    return 0;
}

int32_t CIISIniLoader::ReadItemList(const Reader& reader, const qm::wstring& componentName,
                                    const ItemList& list) {
    const auto [added, component] = m_pBag->GetOrAddComponent(componentName);
    if (added != 0) {
        return added;
    }
    const qm::wstring section = componentName + list.sectionSuffix;
    const qm::wstring actionState = reader.Raw(section, u"ActionState", Reader::kNumberLimit, u"0");
    if (actionState.empty()) {
        return status::list_action_state_empty;
    }
    component->actionState = qm::read_decimal(actionState);
    const qm::wstring count = reader.Raw(section, u"Count", Reader::kNumberLimit, u"0");
    if (count.empty()) {
        return status::list_count_empty;
    }
    component->SetFeature(reader.Resolved(kFeatureComponents, componentName, u""));

    const int32_t entries = qm::read_decimal(count);
    for (int32_t i = 1; i <= entries; ++i) {
        const qm::wstring itemSection =
            reader.Raw(section, Numbered(list.entryFormat, i), Reader::kNameLimit, u"");
        if (itemSection.empty()) {
            return list.entryMissing;
        }
        if (const int32_t result = (this->*list.readItem)(reader, *component, itemSection);
            result != 0) {
            return result;
        }
    }
    return 0;
}

int32_t CIISIniLoader::ReadVRoot(const Reader& reader, CIISComponentProp& component,
                                 const qm::wstring& section) {
    const auto [added, vroot] =
        component.AddVRoot(reader.Raw(section, u"QMIISCommon", Reader::kNameLimit, u""));
    if (added != 0) {
        return added;
    }
    if (const int32_t result = vroot->SetComponent(component.Name); result != 0) {
        return result;
    }
    const qm::wstring vrootProps = reader.Raw(section, u"VRootProps", Reader::kNumberLimit, u"0");
    if (vrootProps.empty()) {
        return status::vroot_props_empty;
    }
    vroot->VRootProps = qm::read_decimal(vrootProps);
    const qm::wstring parentSite = reader.Raw(section, u"ParentSite", Reader::kNameLimit, u"");
    if (parentSite.empty()) {
        return status::parent_site_missing;
    }
    if (const int32_t result = vroot->SetParentSite(parentSite); result != 0) {
        return result;
    }
    if (const int32_t result = ReadCommon(reader, *vroot, section); result != 0) {
        return result;
    }

    // The parent is a website of its own (read here, belonging to no component) unless its
    // section says it belongs to a component or is not a website section at all.
    const qm::wstring parent = reader.Raw(section, u"Parent", Reader::kNameLimit, u"");
    const qm::wstring componentBased =
        reader.Raw(parent, u"IsComponentBased", Reader::kNameLimit, u"");
    const bool isComponentBased = !componentBased.empty() && qm::read_decimal(componentBased) != 0;
    if (!isComponentBased && qm::istarts_with(parent, u"Website_")) {
        return ReadWebsite(reader, parent, vroot, nullptr);
    }
    vroot->SetParentKey(reader.Raw(parent, u"QMIISCommon", Reader::kNameLimit, u""));
    return 0;
}

int32_t CIISIniLoader::ReadComponentWebsite(const Reader& reader, CIISComponentProp& component,
                                            const qm::wstring& section) {
    return ReadWebsite(reader, section, nullptr, &component);
}

int32_t CIISIniLoader::ReadWebsite(const Reader& reader, const qm::wstring& section,
                                   CIISVRootProp* vroot, CIISComponentProp* component) {
    const qm::wstring key = reader.Raw(section, u"QMIISCommon", Reader::kNameLimit, u"");
    if (vroot != nullptr) {
        vroot->SetParentKey(key);
    }
    CIISWebsiteProp* website = m_pBag->AddWebsite(key).record;
    if (component != nullptr) {
        auto [added, listed] = component->AddWebsite(key);
        if (added != 0) {
            return added;
        }
        if (const int32_t result = listed->SetComponent(component->Name); result != 0) {
            return result;
        }
        website = listed.get();
        m_pBag->ReplaceWebsite(key, std::move(listed));
    }

    static constexpr ResolvedField<CIISWebsiteProp> kFields[] = {
        {u"Port", u"0", &CIISWebsiteProp::SetPort},
        {u"IPAddress", u"", &CIISWebsiteProp::SetIPAddress},
        {u"HostHeaderName", u"", &CIISWebsiteProp::SetHostHeaderName},
        {u"SiteNumber", u"0", &CIISWebsiteProp::SetSiteNumber},
    };
    if (const int32_t result = SetResolvedFields(reader, section, *website, kFields); result != 0) {
        return result;
    }
    if (const int32_t result = website->SetSiteNumberProperty(
            reader.Raw(section, u"SiteNumberProperty", Reader::kNameLimit, u""));
        result != 0) {
        return result;
    }
    // A number an earlier installation of the product stored wins over the file's.
    if (qm::wstring stored; webrig::settings::ReadSiteNumberValue(
            m_platform.registry(), m_pBag->productCode, website->SiteNumberProperty, stored)) {
        if (const int32_t result = website->SetSiteNumber(stored); result != 0) {
            return result;
        }
    }
    const qm::wstring props = reader.Raw(section, u"WebSiteProps", Reader::kNumberLimit, u"0");
    website->WebSiteProps =
        props.empty() ? std::numeric_limits<int32_t>::min() : qm::read_decimal(props);
    return ReadCommon(reader, *website, section);
}

int32_t CIISIniLoader::ReadCommon(const Reader& reader, CIISCommonProp& record,
                                  const qm::wstring& section) {
    if (const int32_t result = record.SetDisplayName(reader.Resolved(section, u"DisplayName", u""));
        result != 0) {
        return result;
    }
    const qm::wstring itemType = reader.Raw(section, u"ItemType", Reader::kNumberLimit, u"");
    if (itemType.empty()) {
        return status::item_type_missing;
    }
    record.ItemType = qm::read_decimal(itemType);
    if (const int32_t result = record.SetRootDir(
            ResolveRootDir(reader.Raw(section, u"RootDir", Reader::kNameLimit, u"")));
        result != 0) {
        return result;
    }
    const qm::wstring attributes = reader.Raw(section, u"Attributes", Reader::kNumberLimit, u"0");
    if (attributes.empty()) {
        return status::attributes_empty;
    }
    record.Attributes = qm::read_decimal(attributes);
    const qm::wstring sessionTimeout =
        reader.Raw(section, u"SessionTimeout", Reader::kNumberLimit, u"20");
    if (sessionTimeout.empty()) {
        return status::session_timeout_empty;
    }
    record.SessionTimeout = qm::read_decimal(sessionTimeout);
    const qm::wstring scriptTimeout =
        reader.Raw(section, u"ScriptTimeout", Reader::kNumberLimit, u"90");
    if (scriptTimeout.empty()) {
        return status::script_timeout_empty;
    }
    record.ScriptTimeout = qm::read_decimal(scriptTimeout);

    using TextSetter = int32_t (CIISCommonProp::*)(qm::wstring);
    struct ResolvedText {
        const char16_t* name;
        TextSetter set;
        bool scrambled;
    };
    static constexpr ResolvedText kTexts[] = {
        {u"DefDoc", &CIISCommonProp::SetDefDoc, false},
        {u"AppPool", &CIISCommonProp::SetAppPool, false},
        {u"AppName", &CIISCommonProp::SetAppName, false},
        {u"Aspversion", &CIISCommonProp::SetAspversion, false},
        {u"AspVersionBitness", &CIISCommonProp::SetAspVersionBitness, false},
        {u"AspNetRegistration", &CIISCommonProp::SetAspNetRegistration, false},
        {u"AnonyUserName", &CIISCommonProp::SetAnonyUserName, false},
        {u"AnonyPasswrd", &CIISCommonProp::SetAnonyPasswrd, true},
        {u"SslPassword", &CIISCommonProp::SetSslPassword, true},
        {u"CustomErrors", &CIISCommonProp::SetCustomErrors, false},
    };
    for (const ResolvedText& text : kTexts) {
        qm::wstring value = text.scrambled ? reader.Scrambled(section, text.name)
                                           : reader.Resolved(section, text.name, u"");
        if (const int32_t result = (record.*text.set)(std::move(value)); result != 0) {
            return result;
        }
    }
    record.FormsAuthentication =
        qm::read_decimal(reader.Resolved(section, u"FormsAuthentication", u"")) != 0;
    record.SetSSLCertPath(
        ResolveCertPath(reader.Raw(section, u"SSLCertPath", Reader::kNameLimit, u"")));

    if (const int32_t result = ReadMetaData(reader, record, section); result != 0) {
        return result;
    }
    if (const int32_t result = ReadAppMaps(reader, record, section); result != 0) {
        return result;
    }
    if (const int32_t result = ReadMimeMaps(reader, record, section); result != 0) {
        return result;
    }
    record.ActionTaken =
        qm::read_decimal(reader.Raw(section, u"ActionTaken", Reader::kNumberLimit, u"0"));
    return 0;
}

int32_t CIISIniLoader::ReadMetaData(const Reader& reader, CIISCommonProp& record,
                                    const qm::wstring& section) {
    static constexpr NumberedList kList{u"MetaDataPropCount", Reader::kNumberLimit,
                                        status::metadata_count_empty, u"mdp%d",
                                        status::metadata_entry_missing};
    return ForEachListed(reader, section, kList, [&](const qm::wstring& entry) {
        CIISMetaDataProp& metaData = *record.AddMetaData().record;
        struct Number {
            const char16_t* name;
            int32_t CIISMetaDataProp::*field;
            int32_t whenEmpty;
        };
        static constexpr Number kNumbers[] = {
            {u"Prop", &CIISMetaDataProp::Prop, status::metadata_prop_empty},
            {u"Type", &CIISMetaDataProp::Type, status::metadata_type_empty},
            {u"UserType", &CIISMetaDataProp::UserType, status::metadata_user_type_empty},
        };
        for (const Number& number : kNumbers) {
            const qm::wstring text = reader.Raw(entry, number.name, Reader::kNumberLimit, u"0");
            if (text.empty()) {
                return number.whenEmpty;
            }
            metaData.*number.field = qm::read_decimal(text);
        }
        return metaData.SetValue(reader.Resolved(entry, u"Value", u""));
    });
}

int32_t CIISIniLoader::ReadAppMaps(const Reader& reader, CIISCommonProp& record,
                                   const qm::wstring& section) {
    static constexpr NumberedList kList{u"AppMapCount", Reader::kNumberLimit,
                                        status::app_map_count_empty, u"a%d",
                                        status::app_map_entry_missing};
    return ForEachListed(reader, section, kList, [&](const qm::wstring& entry) {
        const auto [added, appMap] =
            record.AddAppMap(reader.Raw(entry, u"VRootAppMapKey", Reader::kNameLimit, u""));
        if (added != 0) {
            return added;
        }
        static constexpr ResolvedField<CIISVRootAppMapProp> kFields[] = {
            {u"Extension", u"", &CIISVRootAppMapProp::SetExtension},
            {u"ExecPath", u"", &CIISVRootAppMapProp::SetExecPath},
            {u"Verb", u"", &CIISVRootAppMapProp::SetVerb},
        };
        if (const int32_t result = SetResolvedFields(reader, entry, *appMap, kFields);
            result != 0) {
            return result;
        }
        const qm::wstring props = reader.Raw(entry, u"AppMapProps", Reader::kNumberLimit, u"0");
        if (props.empty()) {
            return status::app_map_props_empty;
        }
        appMap->AppMapProps = qm::read_decimal(props);
        return 0;
    });
}

int32_t CIISIniLoader::ReadMimeMaps(const Reader& reader, CIISCommonProp& record,
                                    const qm::wstring& section) {
    // The count of MIME maps is read with the longer limit of a name.
    static constexpr NumberedList kList{u"MimeMapCount", Reader::kNameLimit,
                                        status::mime_map_count_empty, u"mm%d",
                                        status::mime_map_entry_missing};
    return ForEachListed(reader, section, kList, [&](const qm::wstring& entry) {
        static constexpr ResolvedField<CIISMimeMapProp> kFields[] = {
            {u"Extension", u"", &CIISMimeMapProp::SetExtension},
            {u"Type", u"", &CIISMimeMapProp::SetType},
        };
        return SetResolvedFields(reader, entry, *record.AddMimeMap().record, kFields);
    });
}

int32_t CIISIniLoader::ReadAppPool(const Reader& reader, CIISComponentProp& component,
                                   const qm::wstring& section) {
    const auto [added, pool] = component.AddAppPool(section);
    if (added != 0) {
        return added;
    }
    if (const int32_t result = pool->SetName(reader.Resolved(section, u"Name", u"0"));
        result != 0) {
        return result;
    }
    // From here on nothing fails the load: every setter status is ignored.
    const auto number = [&](const char16_t* name) {
        return qm::read_decimal(reader.Resolved(section, name, u"0"));
    };
    pool->Attributes = number(u"Attributes");
    pool->RecycleRequests = number(u"RecycleRequests");
    pool->SetRecycleTimes(reader.Resolved(section, u"RecycleTimes", u"0"));
    pool->IdleTimeout = number(u"IdleTimeout");
    pool->QueueLimit = number(u"QueueLimit");
    pool->SetCPUMon(reader.Resolved(section, u"CPUMon", u"0"));
    pool->MaxProc = number(u"MaxProc");
    pool->RecycleMinutes = number(u"RecycleMinutes");
    pool->SetUser(reader.Resolved(section, u"User", u"0"));
    pool->SetUserPassword(reader.Scrambled(section, u"UserPassword"));
    pool->ActionTaken =
        qm::read_decimal(reader.Raw(section, u"ActionTaken", Reader::kNumberLimit, u"0"));
    pool->SetManagedPipelineMode(reader.Resolved(section, u"ManagedPipelineMode", u""));
    pool->SetEnable32bitAppOnWin64(reader.Resolved(section, u"Enable32bitAppOnWin64", u""));
    pool->SetManagedRuntimeVersion(reader.Resolved(section, u"ManagedRuntimeVersion", u""));
    pool->SetOverwriteExisting(reader.Resolved(section, u"OverwriteExisting", u""));
    pool->LoadUserProfile = number(u"LoadUserProfile");
    return 0;
}

int32_t CIISIniLoader::ReadWebServiceExtension(const Reader& reader, CIISComponentProp& component,
                                               const qm::wstring& section) {
    const auto [added, extension] = component.AddWebServiceExtension(section);
    if (added != 0) {
        return added;
    }
    static constexpr ResolvedField<CIISWebServiceExtensionProp> kFields[] = {
        {u"File", u"0", &CIISWebServiceExtensionProp::SetFile},
        {u"Description", u"0", &CIISWebServiceExtensionProp::SetDescription},
        {u"Group", u"0", &CIISWebServiceExtensionProp::SetGroup},
    };
    if (const int32_t result = SetResolvedFields(reader, section, *extension, kFields);
        result != 0) {
        return result;
    }
    extension->Attributes = qm::read_decimal(reader.Resolved(section, u"Attributes", u"0"));
    extension->ActionTaken =
        qm::read_decimal(reader.Raw(section, u"ActionTaken", Reader::kNumberLimit, u"0"));
    return 0;
}

int32_t CIISIniLoader::ReadProgressMessages(const Reader& reader) {
    for (const char16_t* identifier : kProgressIdentifiers) {
        qm::wstring text = reader.Raw(kProgressMessages, identifier, Reader::kProgressTextLimit,
                                      kDefaultProgressText);
        if (text.empty()) {
            return status::progress_message_empty;
        }
        m_pBag->SetProgressMessage(identifier, std::move(text));
    }
    return 0;
}

void CIISIniLoader::ReadUninstallProps(const Reader& reader) {
    if (!reader.HasSection(kUninstallProps)) {
        return;
    }
    for (const auto& [name, value] : reader.file().Entries(kUninstallProps)) {
        if (!qm::iequals(name, kRemoveUninstProps)) {
            m_pBag->SetUninstallProp(qm::wstring(name), qm::wstring(value));
        }
    }
    m_pBag->removeUninstProps = reader.IntegerOr(kUninstallProps, kRemoveUninstProps, 0);
}
