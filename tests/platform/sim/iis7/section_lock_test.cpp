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

constexpr std::u16string_view kAsp = u"system.webServer/asp";

// applicationHost.config with `locations` at its end and, when `aspInLocation`, its <asp /> moved
// into a <location path="" overrideMode="Allow">, as IIS keeps handlers and modules.
std::string WithLocations(bool aspInLocation, std::string_view locations) {
    std::string text = testing::TestAppHostConfig();
    std::string tags(locations);
    if (aspInLocation) {
        text.erase(text.find("        <asp />\r\n"), 17);
        tags =
            "    <location path=\"\" overrideMode=\"Allow\">\r\n        <system.webServer>\r\n"
            "            <asp />\r\n        </system.webServer>\r\n    </location>\r\n" +
            tags;
    }
    text.insert(text.rfind("</configuration>"), tags);
    return text;
}

std::string AspTag(std::string_view attributes) {
    return "    <location path=\"" + std::string(attributes) +
           ">\r\n        <system.webServer>\r\n            <asp />\r\n        "
           "</system.webServer>\r\n"
           "    </location>\r\n";
}

struct LockCase {
    const char* name;
    std::u16string_view section;
    bool aspInLocation;
    std::string locations;  // added to applicationHost.config
    qm::hresult result;
};

class LockedSections : public ::testing::TestWithParam<LockCase> {};

TEST_P(LockedSections, AreRefusedAtPutTimeInASiteWebConfig) {
    const LockCase& test = GetParam();
    IisConfigMachine machine(WithLocations(test.aspInLocation, test.locations));
    const std::string appHost = machine.ReadAppHost();
    auto manager = machine.NewManager();
    ASSERT_EQ(manager->PutCommitPath(kSite), 0);
    const auto [attribute, value] =
        test.section == kAsp        ? std::pair{u"enableParentPaths", Variant{true}}
        : test.section == kHandlers ? std::pair{u"accessPolicy", Variant{u"Read"}}
                                    : std::pair{u"enabled", Variant{false}};
    EXPECT_EQ(testing::PutAttribute(*manager, test.section, kSite, attribute, value), test.result);
    if (test.result != 0) {
        EXPECT_NE(qm::to_utf8(manager->LastErrorDescription()).find("cannot be used at this path"),
                  std::string::npos);
    }
    EXPECT_EQ(manager->CommitChanges(), 0);
    EXPECT_EQ(machine.ReadAppHost(), appHost);
    EXPECT_EQ(std::filesystem::exists(machine.DrivePath("inetpub/wwwroot/web.config")),
              test.result == 0);
}

constexpr qm::hresult kLocked = qm::hr::lock_violation;

// A tag's overrideMode applies to the sections it holds.
INSTANTIATE_TEST_SUITE_P(
    Delegation, LockedSections,
    ::testing::Values(
        LockCase{"deniedByDefault", kHandlers, false, "", kLocked},
        LockCase{"authenticationDenied", kAnonymous, false, "", kLocked},
        LockCase{"unlockedForAllPaths", kAsp, true, "", 0},
        LockCase{"unlockedForTheSite", kAsp, false,
                 AspTag("Default Web Site\" overrideMode=\"Allow\""), 0},
        LockCase{"aTagWithoutTheSectionUnlocksNothing", kAsp, false,
                 "    <location path=\"Default Web Site\" overrideMode=\"Allow\" />\r\n", kLocked},
        LockCase{"anotherSectionStaysLocked", kHandlers, true, "", kLocked},
        LockCase{"unlockedForAnotherSite", kAsp, false,
                 AspTag("Other Site\" overrideMode=\"Allow\""), kLocked},
        LockCase{"theMostSpecificTagWins", kAsp, true,
                 AspTag("Default Web Site\" overrideMode=\"Deny\""), kLocked},
        LockCase{"olderAllowOverride", kAsp, false,
                 AspTag("Default Web Site\" allowOverride=\"true\""), 0}),
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
