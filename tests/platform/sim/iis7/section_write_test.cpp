// Writing attributes: the value grammar, the level a write lands at, and the file it changes.

#include <gtest/gtest.h>

#include "platform/sim/host_process/sim_automation.h"
#include "testing/iis_config_machine.h"

namespace webrig::sim::iis7 {
namespace {

using platform::Variant;
using testing::IisConfigMachine;
using testing::WithCrLf;

constexpr std::u16string_view kAppHost = testing::kAppHostPath;
constexpr std::u16string_view kSite = testing::kDefaultSitePath;
constexpr std::u16string_view kShop = u"MACHINE/WEBROOT/APPHOST/Default Web Site/shop";
constexpr std::u16string_view kDirectoryBrowse = u"system.webServer/directoryBrowse";

// `text` with the one occurrence of `from` replaced.
std::string Replaced(std::string text, std::string_view from, std::string_view to) {
    const size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    EXPECT_EQ(text.find(from, at + 1), std::string::npos) << from;
    return text.replace(at, from.size(), to);
}

struct ValueCase {
    const char* name;
    std::u16string_view section;
    std::u16string_view element;  // a child of the section, or empty
    std::u16string_view attribute;
    Variant value;
    qm::hresult result;
    // The attribute as the file holds it afterwards; empty when the file must not change.
    std::string_view written;
};

class AttributeValues : public ::testing::TestWithParam<ValueCase> {};

TEST_P(AttributeValues, AreCheckedAndWrittenAsIisWritesThem) {
    const ValueCase& test = GetParam();
    IisConfigMachine machine;
    const std::string before = machine.ReadAppHost();
    auto manager = machine.NewManager();
    std::shared_ptr<platform::ConfigElement> element;
    ASSERT_EQ(manager->GetAdminSection(test.section, kAppHost, element), 0);
    if (!test.element.empty()) {
        std::shared_ptr<platform::ConfigElement> child;
        ASSERT_EQ(element->GetElementByName(test.element, child), 0);
        element = child;
    }
    std::shared_ptr<platform::ConfigProperty> property;
    ASSERT_EQ(element->GetPropertyByName(test.attribute, property), 0);
    EXPECT_EQ(property->PutValue(test.value), test.result);
    EXPECT_EQ(manager->CommitChanges(), 0);
    const std::string after = machine.ReadAppHost();
    if (test.written.empty()) {
        EXPECT_EQ(after, before);
    } else {
        EXPECT_NE(after.find(test.written), std::string::npos) << after;
        EXPECT_EQ(before.find(test.written), std::string::npos);
    }
}

constexpr std::u16string_view kAsp = u"system.webServer/asp";
constexpr std::u16string_view kHandlers = u"system.webServer/handlers";
constexpr std::u16string_view kAnonymous =
    u"system.webServer/security/authentication/anonymousAuthentication";
constexpr qm::hresult kInvalid = qm::hr::invalid_data;

INSTANTIATE_TEST_SUITE_P(
    Grammar, AttributeValues,
    ::testing::Values(
        ValueCase{"boolTrue",
                  kDirectoryBrowse,
                  {},
                  u"enabled",
                  Variant{true},
                  0,
                  "<directoryBrowse enabled=\"true\" />"},
        ValueCase{"boolTextAnyCase",
                  kDirectoryBrowse,
                  {},
                  u"enabled",
                  Variant{u"TRUE"},
                  0,
                  "<directoryBrowse enabled=\"true\" />"},
        ValueCase{"boolBadText", kDirectoryBrowse, {}, u"enabled", Variant{u"yes"}, kInvalid, {}},
        ValueCase{"boolFromNumber",
                  kDirectoryBrowse,
                  {},
                  u"enabled",
                  Variant{int32_t{1}},
                  0,
                  "<directoryBrowse enabled=\"true\" />"},
        ValueCase{"flagsNames",
                  kDirectoryBrowse,
                  {},
                  u"showFlags",
                  Variant{u"time,date"},
                  0,
                  "showFlags=\"Date, Time\""},
        ValueCase{"flagsNumber",
                  kHandlers,
                  {},
                  u"accessPolicy",
                  Variant{int32_t{0x205}},
                  0,
                  "accessPolicy=\"Read, Execute, Script\""},
        ValueCase{"flagsUnknownName",
                  kHandlers,
                  {},
                  u"accessPolicy",
                  Variant{u"Read, Fly"},
                  kInvalid,
                  {}},
        ValueCase{"enumName",
                  kAnonymous,
                  {},
                  u"logonMethod",
                  Variant{u"network"},
                  0,
                  "logonMethod=\"Network\""},
        ValueCase{"enumNumber",
                  kAnonymous,
                  {},
                  u"logonMethod",
                  Variant{int32_t{1}},
                  0,
                  "logonMethod=\"Batch\""},
        ValueCase{
            "enumUnknownName", kAnonymous, {}, u"logonMethod", Variant{u"Kerberos"}, kInvalid, {}},
        ValueCase{"enumNumberOutOfRange",
                  kAnonymous,
                  {},
                  u"logonMethod",
                  Variant{int32_t{7}},
                  kInvalid,
                  {}},
        ValueCase{"timeSpan", kAsp, u"session", u"timeout", Variant{u"00:30:00"}, 0,
                  "<session timeout=\"00:30:00\" />"},
        ValueCase{"timeSpanOffGranularity",
                  kAsp,
                  u"session",
                  u"timeout",
                  Variant{u"00:30:30"},
                  kInvalid,
                  {}},
        ValueCase{"timeSpanOutOfRange",
                  kAsp,
                  u"session",
                  u"timeout",
                  Variant{u"366.00:00:00"},
                  kInvalid,
                  {}},
        ValueCase{"timeSpanNotATime", kAsp, u"session", u"timeout", Variant{u"soon"}, kInvalid, {}},
        ValueCase{"emptyValue", kAnonymous, {}, u"enabled", Variant{}, kInvalid, {}}),
    [](const ::testing::TestParamInfo<ValueCase>& item) { return item.param.name; });

TEST(SectionWrite, AChangeAltersOnlyItsLine) {
    IisConfigMachine machine;
    const std::string before = machine.ReadAppHost();
    auto manager = machine.NewManager();
    ASSERT_EQ(
        testing::PutAttribute(*manager, kDirectoryBrowse, kAppHost, u"enabled", Variant{true}), 0);
    ASSERT_EQ(manager->CommitChanges(), 0);
    EXPECT_EQ(machine.ReadAppHost(), Replaced(before, "<directoryBrowse enabled=\"false\" />",
                                              "<directoryBrowse enabled=\"true\" />"));
}

TEST(SectionWrite, ADeeperPathWritesALocationAtTheEndOfTheFile) {
    IisConfigMachine machine;
    const std::string before = machine.ReadAppHost();
    auto manager = machine.NewManager();
    ASSERT_EQ(testing::PutAttribute(*manager, kAsp, kShop, u"noSuchAttribute", Variant{true}),
              qm::hr::invalid_index);
    std::shared_ptr<platform::ConfigElement> asp;
    ASSERT_EQ(manager->GetAdminSection(kAsp, kShop, asp), 0);
    std::shared_ptr<platform::ConfigElement> limits;
    ASSERT_EQ(asp->GetElementByName(u"limits", limits), 0);
    std::shared_ptr<platform::ConfigProperty> timeout;
    ASSERT_EQ(limits->GetPropertyByName(u"scriptTimeout", timeout), 0);
    ASSERT_EQ(timeout->PutValue(Variant{u"00:02:00"}), 0);
    // A second section for the same path goes into the same location tag.
    ASSERT_EQ(testing::PutAttribute(*manager, kDirectoryBrowse, kShop, u"enabled", Variant{true}),
              0);
    ASSERT_EQ(manager->CommitChanges(), 0);
    EXPECT_EQ(machine.ReadAppHost(),
              Replaced(before, "    </system.webServer>\r\n</configuration>",
                       "    </system.webServer>\r\n"
                       "    <location path=\"Default Web Site/shop\">\r\n"
                       "        <system.webServer>\r\n"
                       "            <asp>\r\n"
                       "                <limits scriptTimeout=\"00:02:00\" />\r\n"
                       "            </asp>\r\n"
                       "            <directoryBrowse enabled=\"true\" />\r\n"
                       "        </system.webServer>\r\n"
                       "    </location>\r\n"
                       "</configuration>"));
}

TEST(SectionWrite, ASiteCommitPathWritesANewWebConfigInTheSiteFolder) {
    IisConfigMachine machine;
    const std::string appHost = machine.ReadAppHost();
    auto manager = machine.NewManager();
    ASSERT_EQ(manager->PutCommitPath(kSite), 0);
    ASSERT_EQ(testing::PutAttribute(*manager, kDirectoryBrowse, kSite, u"enabled", Variant{true}),
              0);
    ASSERT_EQ(manager->CommitChanges(), 0);
    EXPECT_EQ(machine.ReadAppHost(), appHost);
    EXPECT_EQ(IisConfigMachine::ReadText(machine.DrivePath("inetpub/wwwroot/web.config")),
              WithCrLf("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                       "<configuration>\n"
                       "    <system.webServer>\n"
                       "        <directoryBrowse enabled=\"true\" />\n"
                       "    </system.webServer>\n"
                       "</configuration>\n"));
}

TEST(SectionWrite, AnExistingWebConfigKeepsEverythingElse) {
    IisConfigMachine machine;
    const std::string webConfig =
        "<?xml version=\"1.0\"?>\n<configuration>\n  <!-- mine -->\n  <appSettings>\n"
        "    <add key=\"k\" value=\"v\" />\n  </appSettings>\n  <system.webServer>\n"
        "    <directoryBrowse enabled=\"false\" />\n  </system.webServer>\n</configuration>\n";
    const auto path = machine.DrivePath("inetpub/shop/web.config");
    IisConfigMachine::WriteText(path, webConfig);
    auto manager = machine.NewManager();
    ASSERT_EQ(manager->PutCommitPath(kShop), 0);
    ASSERT_EQ(testing::PutAttribute(*manager, kDirectoryBrowse, kShop, u"enabled", Variant{true}),
              0);
    ASSERT_EQ(manager->CommitChanges(), 0);
    EXPECT_EQ(IisConfigMachine::ReadText(path),
              Replaced(webConfig, "enabled=\"false\"", "enabled=\"true\""));
}

TEST(SectionWrite, ReadsShowInheritedValuesAndWritesStayLocal) {
    IisConfigMachine machine;
    auto manager = machine.NewManager();
    ASSERT_EQ(manager->PutCommitPath(kSite), 0);
    ASSERT_EQ(
        testing::PutAttribute(*manager, kDirectoryBrowse, kSite, u"showFlags", Variant{u"Date"}),
        0);
    ASSERT_EQ(manager->CommitChanges(), 0);
    auto reader = machine.NewManager();
    std::u16string text;
    // From applicationHost.config, through the site's web.config, down to /shop.
    ASSERT_EQ(testing::ReadAttribute(*reader, kDirectoryBrowse, kShop, u"enabled", text), 0);
    EXPECT_EQ(text, u"false");
    ASSERT_EQ(testing::ReadAttribute(*reader, kDirectoryBrowse, kShop, u"showFlags", text), 0);
    EXPECT_EQ(text, u"Date");
    ASSERT_EQ(testing::ReadAttribute(*reader, kDirectoryBrowse, kAppHost, u"showFlags", text), 0);
    EXPECT_EQ(text, u"Date, Time, Size, Extension");
    const std::string webConfig =
        IisConfigMachine::ReadText(machine.DrivePath("inetpub/wwwroot/web.config"));
    EXPECT_NE(webConfig.find("<directoryBrowse showFlags=\"Date\" />"), std::string::npos);
    EXPECT_EQ(webConfig.find("enabled"), std::string::npos);
}

TEST(SectionWrite, TypedValuesReadBackTyped) {
    IisConfigMachine machine;
    auto manager = machine.NewManager();
    std::shared_ptr<platform::ConfigElement> pools;
    ASSERT_EQ(manager->GetAdminSection(u"system.applicationHost/applicationPools", kAppHost, pools),
              0);
    std::shared_ptr<platform::ElementCollection> collection;
    ASSERT_EQ(pools->GetCollection(collection), 0);
    std::shared_ptr<platform::ConfigElement> pool;
    ASSERT_EQ(collection->Item(0, pool), 0);
    std::shared_ptr<platform::ConfigProperty> property;
    Variant value;
    // What the runtime compares before it writes: the value as VariantChangeType makes it text.
    SimAutomation automation;
    const std::pair<std::u16string_view, std::u16string_view> texts[] = {
        {u"queueLength", u"1000"},
        {u"autoStart", u"-1"},
        {u"managedPipelineMode", u"0"},
    };
    for (const auto& [name, text] : texts) {
        std::u16string converted;
        ASSERT_EQ(pool->GetPropertyByName(name, property), 0);
        ASSERT_EQ(property->GetValue(value), 0);
        ASSERT_EQ(automation.ChangeTypeToText(value, converted), 0);
        EXPECT_EQ(converted, text) << qm::to_utf8(name);
    }
    std::shared_ptr<platform::ConfigElement> processModel;
    ASSERT_EQ(pool->GetElementByName(u"processModel", processModel), 0);
    ASSERT_EQ(processModel->GetPropertyByName(u"idleTimeout", property), 0);
    ASSERT_EQ(property->GetValue(value), 0);
    EXPECT_EQ(value, Variant{uint64_t{12'000'000'000}});  // ticks
    // The value read puts back unchanged.
    ASSERT_EQ(property->PutValue(value), 0);
    std::u16string text;
    ASSERT_EQ(property->GetStringValue(text), 0);
    EXPECT_EQ(text, u"00:20:00");
    // Not set on the pool: applicationPoolDefaults supplies it.
    ASSERT_EQ(pool->GetPropertyByName(u"managedRuntimeVersion", property), 0);
    ASSERT_EQ(property->GetValue(value), 0);
    EXPECT_EQ(value, Variant{u"v4.0"});
    ASSERT_EQ(property->GetName(*std::get_if<std::u16string>(&value)), 0);
    EXPECT_EQ(value, Variant{u"managedRuntimeVersion"});
}

TEST(SectionWrite, PasswordsAreStoredEncryptedAndReadBackInClear) {
    IisConfigMachine machine;
    auto manager = machine.NewManager();
    std::shared_ptr<platform::ConfigElement> pools;
    ASSERT_EQ(manager->GetAdminSection(u"system.applicationHost/applicationPools", kAppHost, pools),
              0);
    std::shared_ptr<platform::ElementCollection> collection;
    ASSERT_EQ(pools->GetCollection(collection), 0);
    std::shared_ptr<platform::ConfigElement> pool;
    ASSERT_EQ(collection->Item(0, pool), 0);
    std::shared_ptr<platform::ConfigElement> processModel;
    ASSERT_EQ(pool->GetElementByName(u"processModel", processModel), 0);
    std::shared_ptr<platform::ConfigProperty> password;
    ASSERT_EQ(processModel->GetPropertyByName(u"password", password), 0);
    ASSERT_EQ(password->PutValue(Variant{u"S3cret!"}), 0);
    ASSERT_EQ(manager->CommitChanges(), 0);
    ASSERT_EQ(testing::PutAttribute(*manager, kAnonymous, kAppHost, u"password", Variant{u"pw"}),
              0);
    ASSERT_EQ(manager->CommitChanges(), 0);

    const std::string file = machine.ReadAppHost();
    EXPECT_EQ(file.find("S3cret!"), std::string::npos);
    EXPECT_NE(file.find("<add name=\"DefaultAppPool\">\r\n"
                        "                <processModel password=\"[enc:AesProvider:"),
              std::string::npos)
        << file;
    EXPECT_NE(file.find("userName=\"IUSR\" password=\"[enc:AesProvider:"), std::string::npos);
    auto reader = machine.NewManager();
    std::u16string text;
    ASSERT_EQ(testing::ReadAttribute(*reader, kAnonymous, kAppHost, u"password", text), 0);
    EXPECT_EQ(text, u"pw");
    ASSERT_EQ(reader->GetAdminSection(u"system.applicationHost/applicationPools", kAppHost, pools),
              0);
    ASSERT_EQ(pools->GetCollection(collection), 0);
    ASSERT_EQ(collection->Item(0, pool), 0);
    ASSERT_EQ(pool->GetElementByName(u"processModel", processModel), 0);
    ASSERT_EQ(processModel->GetPropertyByName(u"password", password), 0);
    ASSERT_EQ(password->GetStringValue(text), 0);
    EXPECT_EQ(text, u"S3cret!");
}

}  // namespace
}  // namespace webrig::sim::iis7

namespace webrig::sim::iis7 {
namespace {

// system.web sections are declared by .NET's machine.config, not by applicationHost.config.
TEST(SectionWrite, FrameworkSectionsGoIntoTheWebConfig) {
    IisConfigMachine machine;
    auto manager = machine.NewManager();
    ASSERT_EQ(manager->PutCommitPath(kShop), 0);
    ASSERT_EQ(testing::PutAttribute(*manager, u"system.web/authentication", kShop, u"mode",
                                    Variant{u"forms"}),
              0);
    ASSERT_EQ(manager->CommitChanges(), 0);
    EXPECT_EQ(machine.ReadAppHost(), testing::TestAppHostConfig());
    EXPECT_EQ(IisConfigMachine::ReadText(machine.DrivePath("inetpub/shop/web.config")),
              WithCrLf("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<configuration>\n"
                       "    <system.web>\n        <authentication mode=\"Forms\" />\n"
                       "    </system.web>\n</configuration>\n"));
    std::u16string mode;
    ASSERT_EQ(testing::ReadAttribute(*machine.NewManager(), u"system.web/authentication", kShop,
                                     u"mode", mode),
              0);
    EXPECT_EQ(mode, u"Forms");
}

}  // namespace
}  // namespace webrig::sim::iis7
