// Commit paths, configuration paths and the HRESULTs of paths that lead nowhere.

#include <gtest/gtest.h>

#include "testing/iis_config_machine.h"

namespace webrig::sim::iis7 {
namespace {

using platform::Variant;
using testing::IisConfigMachine;

constexpr std::u16string_view kAppHost = testing::kAppHostPath;
constexpr std::u16string_view kSite = testing::kDefaultSitePath;
constexpr std::u16string_view kDirectoryBrowse = u"system.webServer/directoryBrowse";

TEST(ConfigPaths, AFreshManagerStartsAtTheMainFileWithNothingPending) {
    IisConfigMachine machine;
    const auto before = std::filesystem::last_write_time(machine.AppHostPath());
    auto manager = machine.NewManager();
    std::u16string path;
    ASSERT_EQ(manager->GetCommitPath(path), 0);
    EXPECT_EQ(path, kAppHost);
    // Nothing pending: the commit path may change, and committing writes nothing.
    EXPECT_EQ(manager->PutCommitPath(kSite), 0);
    EXPECT_EQ(manager->CommitChanges(), 0);
    EXPECT_EQ(std::filesystem::last_write_time(machine.AppHostPath()), before);
    EXPECT_EQ(machine.ReadAppHost(), testing::TestAppHostConfig());
    EXPECT_FALSE(std::filesystem::exists(machine.DrivePath("inetpub/wwwroot/web.config")));
}

TEST(ConfigPaths, TheCommitPathCannotChangeWhileChangesArePending) {
    IisConfigMachine machine;
    auto manager = machine.NewManager();
    ASSERT_EQ(
        testing::PutAttribute(*manager, kDirectoryBrowse, kAppHost, u"enabled", Variant{true}), 0);
    EXPECT_EQ(manager->PutCommitPath(kSite), qm::hr::checkout_required);
    std::u16string path;
    ASSERT_EQ(manager->GetCommitPath(path), 0);
    EXPECT_EQ(path, kAppHost);
    ASSERT_EQ(manager->CommitChanges(), 0);
    EXPECT_EQ(manager->PutCommitPath(kSite), 0);
    EXPECT_NE(machine.ReadAppHost().find("<directoryBrowse enabled=\"true\" />"),
              std::string::npos);
}

TEST(ConfigPaths, AManagerReleasedWithoutCommitWritesNothing) {
    IisConfigMachine machine;
    {
        auto manager = machine.NewManager();
        ASSERT_EQ(manager->PutCommitPath(kSite), 0);
        ASSERT_EQ(
            testing::PutAttribute(*manager, kDirectoryBrowse, kSite, u"enabled", Variant{true}), 0);
    }
    EXPECT_EQ(machine.ReadAppHost(), testing::TestAppHostConfig());
    EXPECT_FALSE(std::filesystem::exists(machine.DrivePath("inetpub/wwwroot/web.config")));
}

struct PathCase {
    const char* name;
    std::u16string_view commitPath;
    std::u16string_view section;
    std::u16string_view path;
    qm::hresult result;
};

class SectionPaths : public ::testing::TestWithParam<PathCase> {};

TEST_P(SectionPaths, GetAdminSectionAnswersAsIis) {
    IisConfigMachine machine;
    std::filesystem::remove_all(machine.DrivePath("inetpub/shop"));
    auto manager = machine.NewManager();
    ASSERT_EQ(manager->PutCommitPath(GetParam().commitPath), 0);
    std::shared_ptr<platform::ConfigElement> section;
    EXPECT_EQ(manager->GetAdminSection(GetParam().section, GetParam().path, section),
              GetParam().result);
    EXPECT_EQ(section != nullptr, GetParam().result == 0);
    if (GetParam().result != 0) {
        EXPECT_FALSE(manager->LastErrorDescription().empty());
    }
    EXPECT_EQ(manager->CommitChanges(), 0);
    EXPECT_EQ(machine.ReadAppHost(), testing::TestAppHostConfig());
}

INSTANTIATE_TEST_SUITE_P(
    Paths, SectionPaths,
    ::testing::Values(
        PathCase{"mainFile", kAppHost, kDirectoryBrowse, kAppHost, 0},
        PathCase{"siteBelowMainFile", kAppHost, kDirectoryBrowse, kSite, 0},
        PathCase{"siteNameInAnyCase", kAppHost, kDirectoryBrowse,
                 u"MACHINE/WEBROOT/APPHOST/default web SITE", 0},
        PathCase{"subFolderOfSite", kAppHost, kDirectoryBrowse,
                 u"MACHINE/WEBROOT/APPHOST/Default Web Site/missing", qm::hr::path_not_found},
        PathCase{"applicationFolderMissing", kSite, kDirectoryBrowse,
                 u"MACHINE/WEBROOT/APPHOST/Default Web Site/shop", qm::hr::path_not_found},
        PathCase{"commitPathFolderMissing", u"MACHINE/WEBROOT/APPHOST/Default Web Site/shop",
                 kDirectoryBrowse, u"MACHINE/WEBROOT/APPHOST/Default Web Site/shop",
                 qm::hr::path_not_found},
        PathCase{"noSuchSite", kAppHost, kDirectoryBrowse, u"MACHINE/WEBROOT/APPHOST/Nowhere",
                 qm::hr::file_not_found},
        PathCase{"unknownSection", kAppHost, u"system.webServer/teleport", kAppHost,
                 qm::hr::not_supported},
        PathCase{"declaredButNotInSchema", kAppHost, u"system.applicationHost", kAppHost,
                 qm::hr::not_supported},
        PathCase{"sectionNameIsExact", kAppHost, u"system.webServer/DirectoryBrowse", kAppHost,
                 qm::hr::not_supported},
        PathCase{"outsideTheCommitPath", kSite, kDirectoryBrowse, kAppHost, qm::hr::invalid_arg},
        PathCase{"notAConfigurationPath", kAppHost, kDirectoryBrowse, u"MACHINE/WEBROOT",
                 qm::hr::invalid_arg}),
    [](const ::testing::TestParamInfo<PathCase>& item) { return item.param.name; });

TEST(ConfigPaths, APhysicalPathWithVariablesResolvesOnTheMachine) {
    IisConfigMachine machine;
    auto manager = machine.NewManager();
    // The root virtual directory is %SystemDrive%\inetpub\wwwroot.
    ASSERT_EQ(manager->PutCommitPath(u"MACHINE/WEBROOT/APPHOST/Default Web Site/docs"), 0);
    std::filesystem::create_directories(machine.DrivePath("inetpub/wwwroot/docs"));
    ASSERT_EQ(testing::PutAttribute(*manager, kDirectoryBrowse,
                                    u"MACHINE/WEBROOT/APPHOST/Default Web Site/docs", u"enabled",
                                    Variant{true}),
              0);
    ASSERT_EQ(manager->CommitChanges(), 0);
    EXPECT_TRUE(std::filesystem::exists(machine.DrivePath("inetpub/wwwroot/docs/web.config")));
}

TEST(ConfigPaths, AMissingFolderFailsTheCommitAndWritesNothing) {
    IisConfigMachine machine;
    auto manager = machine.NewManager();
    ASSERT_EQ(manager->PutCommitPath(u"MACHINE/WEBROOT/APPHOST/Default Web Site/shop"), 0);
    ASSERT_EQ(testing::PutAttribute(*manager, kDirectoryBrowse,
                                    u"MACHINE/WEBROOT/APPHOST/Default Web Site/shop", u"enabled",
                                    Variant{true}),
              0);
    std::filesystem::remove_all(machine.DrivePath("inetpub/shop"));
    EXPECT_EQ(manager->CommitChanges(), qm::hr::path_not_found);
    EXPECT_FALSE(std::filesystem::exists(machine.DrivePath("inetpub/shop")));
    EXPECT_EQ(machine.ReadAppHost(), testing::TestAppHostConfig());
}

// IIS compares location paths without regard to case, for reading, writing and delegation.
TEST(ConfigPaths, ALocationPathInAnotherCaseIsTheSamePath) {
    std::string text = testing::TestAppHostConfig();
    text.insert(text.rfind("</configuration>"),
                "    <location path=\"default web site/SHOP\" overrideMode=\"Allow\">\r\n"
                "        <system.webServer>\r\n"
                "            <asp />\r\n"
                "            <directoryBrowse enabled=\"true\" />\r\n"
                "        </system.webServer>\r\n"
                "    </location>\r\n");
    IisConfigMachine machine(text);
    constexpr std::u16string_view kShop = u"MACHINE/WEBROOT/APPHOST/Default Web Site/shop";
    auto manager = machine.NewManager();
    std::u16string enabled;
    ASSERT_EQ(testing::ReadAttribute(*manager, kDirectoryBrowse, kShop, u"enabled", enabled), 0);
    EXPECT_EQ(enabled, u"true");
    ASSERT_EQ(
        testing::PutAttribute(*manager, kDirectoryBrowse, kShop, u"showFlags", Variant{u"Date"}),
        0);
    ASSERT_EQ(manager->CommitChanges(), 0);
    text.replace(text.find("enabled=\"true\" />"), 17, "enabled=\"true\" showFlags=\"Date\" />");
    EXPECT_EQ(machine.ReadAppHost(), text);
    // The tag unlocks asp for the application's own web.config.
    ASSERT_EQ(manager->PutCommitPath(kShop), 0);
    EXPECT_EQ(testing::PutAttribute(*manager, u"system.webServer/asp", kShop, u"enableParentPaths",
                                    Variant{true}),
              0);
}

}  // namespace
}  // namespace webrig::sim::iis7
