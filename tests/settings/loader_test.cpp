#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>

#include "settings/iis_pro_ini_loader.h"
#include "settings/password_scrambling.h"
#include "settings/uninstall_information.h"
#include "support/status_codes.h"
#include "testing/file_bytes.h"
#include "testing/settings_file_builder.h"
#include "testing/temp_machine.h"
#include "testing/test_host.h"

namespace webrig::settings {
namespace {

namespace fs = std::filesystem;
using testing::LineEnding;
using testing::SettingsEncoding;

// A settings file as sections of entries that a test can change before writing it.
struct Project {
    using Entries = std::map<std::string, std::string>;

    Project& Set(const std::string& section, const std::string& name, const std::string& value) {
        sections[section][name] = value;
        return *this;
    }
    std::vector<std::byte> Bytes(SettingsEncoding encoding) const {
        testing::SettingsFileBuilder builder;
        for (const auto& [name, entries] : sections) {
            builder.Section(std::string_view(name));
            for (const auto& [key, value] : entries) {
                builder.Entry(qm::from_utf8(key), qm::from_utf8(value));
            }
        }
        return builder.Bytes(encoding, LineEnding::CrLf);
    }

    std::map<std::string, Entries> sections;
};

// One component "Web" with one of everything, every required key present and the optional
// ones absent.
Project ValidProject() {
    Project p;
    p.sections = {
        {"GlobalOptions", {{"IISVERSION", "10"}, {"ProductCode", "{PRODUCT}"}}},
        {"Components", {{"Count", "1"}, {"c1", "Web"}}},
        {"FeatureComponents", {{"Web", "MainFeature"}}},
        {"Web_VRoots", {{"ActionState", "3"}, {"Count", "1"}, {"v1", "VRoot_Shop"}}},
        {"VRoot_Shop",
         {{"QMIISCommon", "Shop"},
          {"VRootProps", "0"},
          {"ParentSite", "Store"},
          {"DisplayName", "Shop"},
          {"ItemType", "1"},
          {"RootDir", "C:\\inetpub\\shop"},
          {"Attributes", "0"},
          {"MetaDataPropCount", "1"},
          {"mdp1", "MD_1"},
          {"AppMapCount", "1"},
          {"a1", "AM_1"},
          {"MimeMapCount", "1"},
          {"mm1", "MM_1"},
          {"Parent", "Website_Store"}}},
        {"MD_1", {{"Prop", "6016"}, {"Type", "1"}, {"UserType", "1"}, {"Value", "513"}}},
        {"AM_1",
         {{"VRootAppMapKey", ".aspx"},
          {"Extension", ".aspx"},
          {"ExecPath", "C:\\isapi.dll"},
          {"Verb", "GET,POST"},
          {"AppMapProps", "1"}}},
        {"MM_1", {{"Extension", ".json"}, {"Type", "application/json"}}},
        {"Web_AppPools", {{"ActionState", "3"}, {"Count", "1"}, {"a1", "Pool_Orders"}}},
        {"Pool_Orders", {{"Name", "Orders"}}},
        {"Web_WebServiceExtensions", {{"ActionState", "3"}, {"Count", "1"}, {"w1", "Ext_1"}}},
        {"Ext_1", {{"File", "C:\\ext.dll"}, {"Description", "Ext"}, {"Group", "Group"}}},
        {"Web_WebSites", {{"ActionState", "3"}, {"Count", "1"}, {"ws1", "Website_Store"}}},
        {"Website_Store",
         {{"QMIISCommon", "Store"},
          {"Port", "8080"},
          {"SiteNumber", "5"},
          {"DisplayName", "Store"},
          {"ItemType", "0"},
          {"RootDir", "C:\\inetpub\\store"},
          {"IsComponentBased", "1"}}},
    };
    return p;
}

class LoaderTest : public ::testing::Test {
  protected:
    // Writes `bytes` as the settings file and loads it into `into` (the fixture's bag).
    int32_t Load(const std::vector<std::byte>& bytes, uint32_t hostContext = 0,
                 platform::ModuleHandle hostModule = platform::kNoModule,
                 CIISPropertyBag* into = nullptr) {
        fs::create_directories(temp.path() / "drive_c" / "Temp");
        testing::WriteBytes(temp.path() / "drive_c" / "Temp" / "setup.ini", bytes);
        CIISProIniLoader loader(machine, u"C:\\Temp\\setup.ini", hostModule, hostContext);
        return loader.Load(into != nullptr ? *into : bag);
    }
    int32_t Load(const Project& project,
                 SettingsEncoding encoding = SettingsEncoding::Utf16LeWithBom) {
        return Load(project.Bytes(encoding));
    }
    int32_t LoadText(const std::string& ascii) { return Load(testing::Bytes(ascii)); }
    CIISComponentProp& Component(const qm::wstring& name) { return *bag.components.at(name); }

    testing::TempMachine temp;
    sim::Machine& machine = temp.machine();
    CIISPropertyBag bag;
};

TEST_F(LoaderTest, AValidProjectLoadsEveryItem) {
    ASSERT_EQ(Load(ValidProject()), 0);
    EXPECT_EQ(bag.iisMajorVersion, 10);
    EXPECT_EQ(bag.productCode, u"{PRODUCT}");
    CIISComponentProp& web = Component(u"Web");
    EXPECT_EQ(web.Name, u"Web");
    EXPECT_EQ(web.feature, u"MainFeature");
    EXPECT_EQ(web.actionState, 3);

    const CIISVRootProp& shop = *web.vroots.at(u"Shop");
    EXPECT_EQ(shop.Component, u"Web");
    EXPECT_EQ(shop.ParentSite, u"Store");
    EXPECT_EQ(shop.RootDir, u"C:\\inetpub\\shop");
    EXPECT_EQ(shop.ItemType, 1);
    // Absent keys take the loader's defaults.
    EXPECT_EQ(shop.SessionTimeout, 20);
    EXPECT_EQ(shop.ScriptTimeout, 90);
    EXPECT_EQ(shop.ParentKey, u"Store");  // the parent is component based: only its key is taken
    ASSERT_EQ(shop.metaDataProps.size(), 1u);
    EXPECT_EQ(shop.metaDataProps[0]->Prop, 6016);
    EXPECT_EQ(shop.metaDataProps[0]->Value, u"513");
    EXPECT_EQ(shop.appMaps.at(u".aspx")->Verb, u"GET,POST");
    EXPECT_EQ(shop.appMaps.at(u".aspx")->AppMapProps, 1);
    ASSERT_EQ(shop.mimeMaps.size(), 1u);
    EXPECT_EQ(shop.mimeMaps[0]->Type, u"application/json");

    EXPECT_EQ(web.appPools.at(u"Pool_Orders")->Name, u"Orders");
    EXPECT_EQ(web.webServiceExtensions.at(u"Ext_1")->File, u"C:\\ext.dll");

    const auto& store = web.componentWebsites.at(u"Store");
    EXPECT_EQ(bag.websites.at(u"Store"), store);
    EXPECT_EQ(store->Component, u"Web");
    EXPECT_EQ(store->Port, u"8080");
    EXPECT_EQ(store->SiteNumber, u"5");
    EXPECT_EQ(store->WebSiteProps, 0);
    EXPECT_EQ(store->SessionTimeout, 20);
    EXPECT_EQ(store->ScriptTimeout, 90);
}

struct StatusCase {
    const char* what;
    const char* section;
    const char* name;
    std::optional<std::string> value;  // nullopt removes the entry
    int32_t status;
};

class LoaderStatusTest : public LoaderTest, public ::testing::WithParamInterface<StatusCase> {};

TEST_P(LoaderStatusTest, TheFirstBadValueEndsTheLoadWithItsStatus) {
    const StatusCase& c = GetParam();
    Project project = ValidProject();
    if (c.value) {
        project.Set(c.section, c.name, *c.value);
    } else {
        project.sections[c.section].erase(c.name);
    }
    EXPECT_EQ(Load(project), c.status);
}

namespace st = qm::status;
const auto kRemoved = std::nullopt;

INSTANTIATE_TEST_SUITE_P(
    FromTheFile, LoaderStatusTest,
    ::testing::Values(
        StatusCase{"component_empty", "Components", "c1", "", st::component_entry_missing},
        StatusCase{"action_state", "Web_VRoots", "ActionState", "", st::list_action_state_empty},
        StatusCase{"list_count", "Web_AppPools", "Count", "", st::list_count_empty},
        StatusCase{"vroot_entry", "Web_VRoots", "v1", kRemoved, st::vroot_entry_missing},
        StatusCase{"vroot_key", "VRoot_Shop", "QMIISCommon", "", st::item_key_empty},
        StatusCase{"vroot_props", "VRoot_Shop", "VRootProps", "", st::vroot_props_empty},
        StatusCase{"parent_site_empty", "VRoot_Shop", "ParentSite", "", st::parent_site_missing},
        StatusCase{"display_name", "VRoot_Shop", "DisplayName", kRemoved,
                   st::vroot_display_name_empty},
        StatusCase{"item_type_absent", "VRoot_Shop", "ItemType", kRemoved, st::item_type_missing},
        StatusCase{"root_dir", "VRoot_Shop", "RootDir", kRemoved, st::root_dir_empty},
        StatusCase{"attributes", "VRoot_Shop", "Attributes", "", st::attributes_empty},
        StatusCase{"session_timeout", "VRoot_Shop", "SessionTimeout", "",
                   st::session_timeout_empty},
        StatusCase{"script_timeout", "VRoot_Shop", "ScriptTimeout", "", st::script_timeout_empty},
        StatusCase{"metadata_count", "VRoot_Shop", "MetaDataPropCount", "",
                   st::metadata_count_empty},
        StatusCase{"metadata_entry", "VRoot_Shop", "mdp1", kRemoved, st::metadata_entry_missing},
        StatusCase{"metadata_prop", "MD_1", "Prop", "", st::metadata_prop_empty},
        StatusCase{"metadata_type", "MD_1", "Type", "", st::metadata_type_empty},
        StatusCase{"metadata_user_type", "MD_1", "UserType", "", st::metadata_user_type_empty},
        StatusCase{"metadata_value", "MD_1", "Value", kRemoved, st::metadata_value_empty},
        StatusCase{"app_map_count", "VRoot_Shop", "AppMapCount", "", st::app_map_count_empty},
        StatusCase{"app_map_entry", "VRoot_Shop", "a1", kRemoved, st::app_map_entry_missing},
        StatusCase{"app_map_key", "AM_1", "VRootAppMapKey", kRemoved, st::app_map_key_empty},
        StatusCase{"app_map_extension", "AM_1", "Extension", "", st::app_map_extension_empty},
        StatusCase{"app_map_exec_path", "AM_1", "ExecPath", "", st::app_map_exec_path_empty},
        StatusCase{"app_map_verb", "AM_1", "Verb", kRemoved, st::app_map_verb_empty},
        StatusCase{"app_map_props", "AM_1", "AppMapProps", "", st::app_map_props_empty},
        StatusCase{"mime_map_count", "VRoot_Shop", "MimeMapCount", "", st::mime_map_count_empty},
        StatusCase{"mime_map_entry", "VRoot_Shop", "mm1", kRemoved, st::mime_map_entry_missing},
        StatusCase{"mime_map_extension", "MM_1", "Extension", "", st::mime_map_empty},
        StatusCase{"mime_map_type", "MM_1", "Type", kRemoved, st::mime_map_empty},
        StatusCase{"pool_entry", "Web_AppPools", "a1", kRemoved, st::app_pool_entry_missing},
        StatusCase{"pool_name", "Pool_Orders", "Name", "", st::app_pool_name_empty},
        StatusCase{"extension_entry", "Web_WebServiceExtensions", "w1", kRemoved,
                   st::extension_entry_missing},
        StatusCase{"extension_file", "Ext_1", "File", "", st::extension_file_empty},
        StatusCase{"extension_description", "Ext_1", "Description", "",
                   st::extension_description_empty},
        StatusCase{"extension_group", "Ext_1", "Group", "", st::extension_group_empty},
        StatusCase{"website_entry", "Web_WebSites", "ws1", kRemoved, st::website_entry_missing},
        StatusCase{"listed_website_key", "Website_Store", "QMIISCommon", kRemoved,
                   st::item_key_empty},
        StatusCase{"website_port", "Website_Store", "Port", "", st::website_port_empty},
        StatusCase{"website_site_number", "Website_Store", "SiteNumber", "",
                   st::website_site_number_empty},
        StatusCase{"progress_text", "ProgressMessages", "PROGMSG_IIS_EXTRACT", "",
                   st::progress_message_empty}),
    [](const ::testing::TestParamInfo<StatusCase>& param) {
        return std::string(param.param.what);
    });

TEST_F(LoaderTest, AMissingFileOrAFolderIsStatusTwoAndLeavesTheBagEmpty) {
    fs::create_directories(temp.path() / "drive_c" / "Temp" / "dir.ini");
    for (const char16_t* path : {u"C:\\Temp\\nowhere.ini", u"C:\\Temp\\dir.ini"}) {
        CIISProIniLoader loader(machine, path, platform::kNoModule, 0);
        EXPECT_EQ(loader.Load(bag), st::settings_file_unreadable);
    }
    EXPECT_TRUE(bag.components.empty());
    EXPECT_TRUE(bag.progressMessages.empty());
}

TEST_F(LoaderTest, RecordsReadBeforeAFailureStayInTheBag) {
    Project project = ValidProject();
    project.Set("Website_Store", "Port", "");
    ASSERT_EQ(Load(project), st::website_port_empty);
    EXPECT_TRUE(Component(u"Web").vroots.contains(u"Shop"));
    EXPECT_TRUE(Component(u"Web").appPools.contains(u"Pool_Orders"));
}

TEST_F(LoaderTest, AnEmptyFileGivesEveryDefault) {
    ASSERT_EQ(LoadText(""), 0);
    EXPECT_TRUE(bag.components.empty());
    EXPECT_EQ(bag.progressMessages.size(), 21u);
    for (const auto& [identifier, text] : bag.progressMessages) {
        EXPECT_EQ(text, u"Configuring IIS...") << qm::to_utf8(identifier);
    }
    EXPECT_EQ(bag.ignoreIIS, 0);
    EXPECT_EQ(bag.iisMajorVersion, 0);
    EXPECT_EQ(bag.ssiProperty, u"0");
    EXPECT_EQ(bag.preferLegacyObjects, u"0");
    EXPECT_EQ(bag.restartW3svc, u"0");
    EXPECT_EQ(bag.productCode, u"");
    EXPECT_TRUE(bag.uninstallProps.empty());
}

TEST_F(LoaderTest, EveryEncodingLoadsTheSameProject) {
    const Project project = ValidProject();
    for (const auto encoding : {SettingsEncoding::Utf16LeWithBom, SettingsEncoding::Utf16Le,
                                SettingsEncoding::Windows1252}) {
        CIISPropertyBag fresh;
        ASSERT_EQ(Load(project.Bytes(encoding), 0, platform::kNoModule, &fresh), 0)
            << static_cast<int>(encoding);
        EXPECT_EQ(fresh.components.at(u"Web")->vroots.at(u"Shop")->RootDir, u"C:\\inetpub\\shop");
        EXPECT_EQ(fresh.websites.at(u"Store")->Port, u"8080");
        EXPECT_EQ(fresh.productCode, u"{PRODUCT}");
    }
}

TEST_F(LoaderTest, EachListOverwritesTheActionState) {
    Project project = ValidProject();
    project.Set("Web_VRoots", "ActionState", "1").Set("Web_AppPools", "ActionState", "2");
    project.Set("Web_WebServiceExtensions", "ActionState", "5");
    project.Set("Web_WebSites", "ActionState", "4");
    ASSERT_EQ(Load(project), 0);
    EXPECT_EQ(Component(u"Web").actionState, 4);
}

TEST_F(LoaderTest, AParentWebsiteSectionInAnyLetterCaseIsReadAsAWebsiteOfNoComponent) {
    Project project = ValidProject();
    project.Set("VRoot_Shop", "Parent", "website_Outer");
    project.Set("website_Outer", "QMIISCommon", "Outer")
        .Set("website_Outer", "Port", "81")
        .Set("website_Outer", "ItemType", "0")
        .Set("website_Outer", "RootDir", "C:\\outer");
    ASSERT_EQ(Load(project), 0);
    EXPECT_EQ(Component(u"Web").vroots.at(u"Shop")->ParentKey, u"Outer");
    ASSERT_TRUE(bag.websites.contains(u"Outer"));
    EXPECT_EQ(bag.websites.at(u"Outer")->Port, u"81");
    EXPECT_EQ(bag.websites.at(u"Outer")->Component, u"");
    EXPECT_FALSE(Component(u"Web").componentWebsites.contains(u"Outer"));
}

TEST_F(LoaderTest, AComponentBasedParentGivesOnlyItsKey) {
    Project project = ValidProject();
    project.Set("VRoot_Shop", "Parent", "Website_Lonely");
    project.Set("Website_Lonely", "QMIISCommon", "Lonely")
        .Set("Website_Lonely", "IsComponentBased", "1");
    ASSERT_EQ(Load(project), 0);
    EXPECT_EQ(Component(u"Web").vroots.at(u"Shop")->ParentKey, u"Lonely");
    EXPECT_FALSE(bag.websites.contains(u"Lonely"));
}

TEST_F(LoaderTest, AParentThatIsNoWebsiteSectionGivesOnlyItsKey) {
    Project project = ValidProject();
    project.Set("VRoot_Shop", "Parent", "VRoot_Outer").Set("VRoot_Outer", "QMIISCommon", "Outer");
    ASSERT_EQ(Load(project), 0);
    EXPECT_EQ(Component(u"Web").vroots.at(u"Shop")->ParentKey, u"Outer");
    EXPECT_FALSE(bag.websites.contains(u"Outer"));
}

TEST_F(LoaderTest, AWebsiteListedByTwoComponentsIsTheOneReadLastInTheBag) {
    Project project = ValidProject();
    project.Set("Components", "Count", "2").Set("Components", "c2", "Api");
    project.Set("Api_WebSites", "Count", "1").Set("Api_WebSites", "ws1", "Website_Store");
    ASSERT_EQ(Load(project), 0);
    const auto& forWeb = Component(u"Web").componentWebsites.at(u"Store");
    const auto& forApi = Component(u"Api").componentWebsites.at(u"Store");
    EXPECT_NE(forWeb, forApi);
    EXPECT_EQ(forWeb->Component, u"Web");
    EXPECT_EQ(forApi->Component, u"Api");
    EXPECT_EQ(bag.websites.at(u"Store"), forApi);
    EXPECT_EQ(forWeb->Port, u"8080");  // still whole after the bag moved on
}

TEST_F(LoaderTest, WebSitePropsEmptyIsTheSmallestNumberAndAbsentIsZero) {
    Project project = ValidProject();
    project.Set("Website_Store", "WebSiteProps", "");
    ASSERT_EQ(Load(project), 0);
    EXPECT_EQ(bag.websites.at(u"Store")->WebSiteProps, std::numeric_limits<int32_t>::min());
}

TEST_F(LoaderTest, AnAppPoolTakesItsDefaultsAndNeverFailsOnEmptyOptionalTexts) {
    Project project = ValidProject();
    project.Set("Pool_Orders", "ManagedPipelineMode", "").Set("Pool_Orders", "IdleTimeout", "x");
    ASSERT_EQ(Load(project), 0);
    const CIISAppPoolProp& pool = *Component(u"Web").appPools.at(u"Pool_Orders");
    EXPECT_EQ(pool.User, u"0");
    EXPECT_EQ(pool.RecycleTimes, u"0");
    EXPECT_EQ(pool.CPUMon, u"0");
    EXPECT_EQ(pool.ManagedPipelineMode, u"");
    EXPECT_EQ(pool.Attributes, 0);
    EXPECT_EQ(pool.IdleTimeout, 0);
    EXPECT_EQ(pool.MaxProc, 0);
}

TEST_F(LoaderTest, ScrambledPasswordsAreDescrambled) {
    Project project = ValidProject();
    const std::string scrambled = qm::to_utf8(ScramblePassword(u"s3cret!", machine.ansiCodePage()));
    project.Set("Pool_Orders", "UserPassword", scrambled)
        .Set("VRoot_Shop", "AnonyPasswrd", scrambled);
    ASSERT_EQ(Load(project), 0);
    EXPECT_EQ(Component(u"Web").appPools.at(u"Pool_Orders")->UserPassword, u"s3cret!");
    EXPECT_EQ(Component(u"Web").vroots.at(u"Shop")->AnonyPasswrd, u"s3cret!");
    EXPECT_EQ(Component(u"Web").vroots.at(u"Shop")->SslPassword, u"");  // absent: no password
}

TEST_F(LoaderTest, RawValuesAreCutToTheirLimit) {
    Project project = ValidProject();
    project.Set("VRoot_Shop", "QMIISCommon", std::string(300, 'k'));
    project.Set("VRoot_Shop", "DefDoc", std::string(5000, 'd'));
    ASSERT_EQ(Load(project), 0);
    const auto& vroots = Component(u"Web").vroots;
    ASSERT_TRUE(vroots.contains(qm::wstring(259, u'k')));
    EXPECT_EQ(vroots.at(qm::wstring(259, u'k'))->DefDoc, qm::wstring(4095, u'd'));
}

TEST_F(LoaderTest, UninstallPropsAreCopiedButTheRemoveSwitch) {
    ASSERT_EQ(LoadText("[UninstallProps]\r\nINSTALLDIR=C:\\App\r\nremoveuninstprops=9\r\n"
                       "RemoveUninstProps=3\r\nEMPTY=\r\n"),
              0);
    EXPECT_EQ(bag.uninstallProps,
              (std::map<qm::wstring, qm::wstring>{{u"EMPTY", u""}, {u"INSTALLDIR", u"C:\\App"}}));
    EXPECT_EQ(bag.removeUninstProps, 3);
}

// The value is read into a buffer of 260 characters: one that fills it exactly is found, one a
// character longer is not.
TEST_F(LoaderTest, AStoredSiteNumberThatFitsTheBufferWinsOverTheFile) {
    auto& registry = machine.registry();
    ASSERT_TRUE(WriteSiteNumberValue(registry, u"{PRODUCT}", u"StoreSite", u"12"));
    ASSERT_TRUE(WriteSiteNumberValue(registry, u"{PRODUCT}", u"Fills", qm::wstring(260, u'7')));
    ASSERT_TRUE(WriteSiteNumberValue(registry, u"{PRODUCT}", u"TooLong", qm::wstring(261, u'9')));
    const std::pair<const char*, qm::wstring> cases[] = {
        {"StoreSite", u"12"}, {"Fills", qm::wstring(260, u'7')}, {"TooLong", u"5"}, {"None", u"5"}};
    for (const auto& [property, siteNumber] : cases) {
        CIISPropertyBag fresh;
        Project project = ValidProject();
        project.Set("Website_Store", "SiteNumberProperty", property);
        ASSERT_EQ(
            Load(project.Bytes(SettingsEncoding::Utf16LeWithBom), 0, platform::kNoModule, &fresh),
            0);
        EXPECT_EQ(fresh.websites.at(u"Store")->SiteNumber, siteNumber) << property;
    }
}

TEST_F(LoaderTest, AFileTooLargeForTheProcessIsStatusTwoAndIsNotRead) {
    fs::create_directories(temp.path() / "drive_c" / "Temp");
    const fs::path huge = temp.path() / "drive_c" / "Temp" / "huge.ini";
    std::ofstream(huge, std::ios::binary).put('[');
    fs::resize_file(huge, uintmax_t{2} << 30);  // 2 GiB, sparse
    CIISProIniLoader loader(machine, u"C:\\Temp\\huge.ini", platform::kNoModule, 0);
    EXPECT_EQ(loader.Load(bag), st::settings_file_unreadable);
}

TEST_F(LoaderTest, LoneSurrogatesAreKeptAsTheyAre) {
    const qm::wstring name = u"Web\xD800x";
    const qm::wstring text =
        u"[Components]\r\nCount=1\r\nc1=" + name + u"\r\n[" + name + u"_WebSites]\r\nCount=0\r\n";
    std::vector<std::byte> bytes;
    for (const char16_t c : text) {
        bytes.push_back(static_cast<std::byte>(c & 0xFF));
        bytes.push_back(static_cast<std::byte>(c >> 8));
    }
    ASSERT_EQ(Load(bytes), 0);
    EXPECT_TRUE(bag.components.contains(name));
}

class ResolvingLoaderTest : public LoaderTest {
  protected:
    int32_t LoadWithHost(Project project) {
        return Load(project.Bytes(SettingsEncoding::Utf16LeWithBom), host.context(), host.module());
    }
    testing::TestHost host{machine};
};

struct ResolveCase {
    const char* value;
    const char* resolved;
};

class ResolveValueTest : public ResolvingLoaderTest,
                         public ::testing::WithParamInterface<ResolveCase> {};

TEST_P(ResolveValueTest, ResolvesPieceByPieceBetweenBackslashes) {
    host.strings[u"IDS_DIR"] = u"Program Files";
    host.strings[u"IDS_EMPTY"] = u"";
    host.strings[u"IDS_TRAILING"] = u"Orders\\";
    host.substitutions[u"[DRIVE]"] = u"D:";
    Project project = ValidProject();
    project.Set("VRoot_Shop", "DefDoc", GetParam().value);
    ASSERT_EQ(LoadWithHost(project), 0);
    EXPECT_EQ(qm::to_utf8(Component(u"Web").vroots.at(u"Shop")->DefDoc), GetParam().resolved);
}

INSTANTIATE_TEST_SUITE_P(
    Values, ResolveValueTest,
    ::testing::Values(ResolveCase{"IDS_DIR", "Program Files"},
                      ResolveCase{"[DRIVE]\\IDS_DIR\\App", "D:\\Program Files\\App"},
                      ResolveCase{"\\server\\share\\", "server\\share"},
                      ResolveCase{"a\\\\b", "a\\b"}, ResolveCase{"a\\IDS_EMPTY\\b", "a\\b"},
                      ResolveCase{"IDS_TRAILING\\x", "Orders\\x"},
                      ResolveCase{"\\IDS_EMPTY\\", "\\IDS_EMPTY\\"}, ResolveCase{"\\\\", "\\\\"},
                      ResolveCase{"plain", "plain"}));

TEST_F(ResolvingLoaderTest, RootDirectoriesAreSubstitutedButNeverLookedUp) {
    host.strings[u"C:"] = u"wrong";
    host.substitutions[u"[APPDIR]"] = u"C:\\Apps\\Shop";
    Project project = ValidProject();
    project.Set("VRoot_Shop", "RootDir", "[APPDIR]\\www");
    project.Set("VRoot_Shop", "SSLCertPath", "[APPDIR]\\cert.pfx");
    ASSERT_EQ(LoadWithHost(project), 0);
    const CIISVRootProp& shop = *Component(u"Web").vroots.at(u"Shop");
    EXPECT_EQ(shop.RootDir, u"C:\\Apps\\Shop\\www");
    EXPECT_EQ(shop.SSLCertPath, u"C:\\Apps\\Shop\\cert.pfx");
}

TEST_F(ResolvingLoaderTest, ARootDirectoryThatSubstitutesToNothingIsRefused) {
    host.substituteToNull.insert(u"[NOTHING]");
    Project project = ValidProject();
    project.Set("VRoot_Shop", "RootDir", "[NOTHING]");
    EXPECT_EQ(LoadWithHost(project), st::root_dir_empty);
}

TEST_F(LoaderTest, WithoutAHostEveryValueIsItsRawValue) {
    Project project = ValidProject();
    project.Set("VRoot_Shop", "DefDoc", "\\a\\\\b\\");
    ASSERT_EQ(Load(project), 0);
    EXPECT_EQ(Component(u"Web").vroots.at(u"Shop")->DefDoc, u"\\a\\\\b\\");
}

}  // namespace
}  // namespace webrig::settings
