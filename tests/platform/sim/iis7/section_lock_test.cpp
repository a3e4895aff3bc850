// Sections that lower levels may not override: refused at put time with 0x80070021, readable
// only where they are allowed.

#include <gtest/gtest.h>

#include "testing/iis_config_machine.h"

namespace webrig::sim::iis7 {
namespace {

using platform::Variant;
using testing::IisConfigMachine;

constexpr std::u16string_view kAppHost = testing::kAppHostPath;
constexpr std::u16string_view kSite = testing::kDefaultSitePath;
constexpr std::u16string_view kHandlers = u"system.webServer/handlers";
constexpr std::u16string_view kAnonymous =
    u"system.webServer/security/authentication/anonymousAuthentication";

std::string WithLocation(const std::string& appHost, std::string_view location) {
    std::string text = appHost;
    const std::string end = "</configuration>";
    text.insert(text.rfind(end), std::string(location));
    return text;
}

struct LockCase {
    const char* name;
    std::u16string_view section;
    std::u16string_view attribute;
    Variant value;
    std::string_view location;  // added to applicationHost.config
    qm::hresult result;
};

class LockedSections : public ::testing::TestWithParam<LockCase> {};

TEST_P(LockedSections, AreRefusedAtPutTimeInASiteWebConfig) {
    const LockCase& test = GetParam();
    IisConfigMachine machine(WithLocation(testing::TestAppHostConfig(), test.location));
    const std::string appHost = machine.ReadAppHost();
    auto manager = machine.NewManager();
    ASSERT_EQ(manager->PutCommitPath(kSite), 0);
    std::shared_ptr<platform::ConfigElement> section;
    ASSERT_EQ(manager->GetAdminSection(test.section, kSite, section), 0);
    std::shared_ptr<platform::ConfigProperty> property;
    ASSERT_EQ(section->GetPropertyByName(test.attribute, property), 0);
    EXPECT_EQ(property->PutValue(test.value), test.result);
    if (test.result != 0) {
        EXPECT_NE(qm::to_utf8(manager->LastErrorDescription()).find("cannot be used at this path"),
                  std::string::npos);
    }
    EXPECT_EQ(manager->CommitChanges(), 0);
    EXPECT_EQ(machine.ReadAppHost(), appHost);
    EXPECT_EQ(std::filesystem::exists(machine.DrivePath("inetpub/wwwroot/web.config")),
              test.result == 0);
}

INSTANTIATE_TEST_SUITE_P(
    Delegation, LockedSections,
    ::testing::Values(
        LockCase{"deniedByDefault", kHandlers, u"accessPolicy", Variant{u"Read"}, "",
                 qm::hr::lock_violation},
        LockCase{"authenticationDenied", kAnonymous, u"enabled", Variant{false}, "",
                 qm::hr::lock_violation},
        LockCase{"unlockedForAllPaths", kHandlers, u"accessPolicy", Variant{u"Read"},
                 "    <location path=\"\" overrideMode=\"Allow\">\r\n        <system.webServer>\r\n"
                 "            <handlers />\r\n        </system.webServer>\r\n    </location>\r\n",
                 0},
        LockCase{"unlockedForTheSite", kAnonymous, u"enabled", Variant{false},
                 "    <location path=\"Default Web Site\" overrideMode=\"Allow\" />\r\n", 0},
        LockCase{"unlockedForAnotherSite", kAnonymous, u"enabled", Variant{false},
                 "    <location path=\"Other Site\" overrideMode=\"Allow\" />\r\n",
                 qm::hr::lock_violation},
        LockCase{"theMostSpecificTagWins", kHandlers, u"accessPolicy", Variant{u"Read"},
                 "    <location path=\"Default Web Site\" overrideMode=\"Deny\" />\r\n"
                 "    <location path=\"\" overrideMode=\"Allow\" />\r\n",
                 qm::hr::lock_violation},
        LockCase{"olderAllowOverride", kHandlers, u"accessPolicy", Variant{u"Read"},
                 "    <location path=\"Default Web Site\" allowOverride=\"true\" />\r\n", 0}),
    [](const ::testing::TestParamInfo<LockCase>& item) { return item.param.name; });

TEST(SectionLock, TheMainFileTakesALockedSectionForTheSiteLocation) {
    IisConfigMachine machine;
    auto manager = machine.NewManager();
    ASSERT_EQ(testing::PutAttribute(*manager, kAnonymous, kSite, u"enabled", Variant{false}), 0);
    ASSERT_EQ(manager->CommitChanges(), 0);
    const std::string text = machine.ReadAppHost();
    EXPECT_NE(text.find("    <location path=\"Default Web Site\">\r\n"
                        "        <system.webServer>\r\n"
                        "            <security>\r\n"
                        "                <authentication>\r\n"
                        "                    <anonymousAuthentication enabled=\"false\" />\r\n"),
              std::string::npos)
        << text;
    std::u16string value;
    ASSERT_EQ(testing::ReadAttribute(*machine.NewManager(), kAnonymous, kSite, u"enabled", value),
              0);
    EXPECT_EQ(value, u"false");
    ASSERT_EQ(
        testing::ReadAttribute(*machine.NewManager(), kAnonymous, kAppHost, u"enabled", value), 0);
    EXPECT_EQ(value, u"true");
}

TEST(SectionLock, AppHostOnlySectionsAreRefusedInLocations) {
    IisConfigMachine machine;
    auto manager = machine.NewManager();
    std::shared_ptr<platform::ConfigElement> sites;
    ASSERT_EQ(manager->GetAdminSection(u"system.applicationHost/sites", kSite, sites), 0);
    std::shared_ptr<platform::ElementCollection> collection;
    ASSERT_EQ(sites->GetCollection(collection), 0);
    uint32_t count = 0;
    ASSERT_EQ(collection->Count(count), 0);
    EXPECT_EQ(count, 1u);
    std::shared_ptr<platform::ConfigElement> site;
    EXPECT_EQ(collection->CreateNewElement(u"site", site), qm::hr::lock_violation);
    EXPECT_EQ(manager->CommitChanges(), 0);
    EXPECT_EQ(machine.ReadAppHost(), testing::TestAppHostConfig());
}

TEST(SectionLock, AWebConfigHoldingALockedSectionCannotBeRead) {
    IisConfigMachine machine;
    const std::string webConfig =
        "<configuration>\n  <system.webServer>\n    <directoryBrowse enabled=\"true\" />\n"
        "    <handlers accessPolicy=\"Read\" />\n  </system.webServer>\n</configuration>\n";
    IisConfigMachine::WriteText(machine.DrivePath("inetpub/wwwroot/web.config"), webConfig);
    auto manager = machine.NewManager();
    std::shared_ptr<platform::ConfigElement> section;
    EXPECT_EQ(manager->GetAdminSection(kHandlers, kSite, section), qm::hr::lock_violation);
    const std::string error = qm::to_utf8(manager->LastErrorDescription());
    EXPECT_NE(error.find("web.config(4)"), std::string::npos) << error;
    // Other sections of the same file read as usual; the main file's own level is unaffected.
    std::u16string value;
    ASSERT_EQ(testing::ReadAttribute(*manager, u"system.webServer/directoryBrowse", kSite,
                                     u"enabled", value),
              0);
    EXPECT_EQ(value, u"true");
    EXPECT_EQ(manager->GetAdminSection(kHandlers, kAppHost, section), 0);
    EXPECT_EQ(IisConfigMachine::ReadText(machine.DrivePath("inetpub/wwwroot/web.config")),
              webConfig);
}

}  // namespace
}  // namespace webrig::sim::iis7
