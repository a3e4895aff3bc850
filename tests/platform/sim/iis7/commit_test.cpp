// Committing: atomic writes that never overwrite another writer's change or a malformed file,
// and the cache that spares a fresh manager from parsing an unchanged file again.

#include <gtest/gtest.h>

#include "testing/iis_config_machine.h"

namespace webrig::sim::iis7 {
namespace {

using platform::Variant;
using testing::IisConfigMachine;

constexpr std::u16string_view kAppHost = testing::kAppHostPath;
constexpr std::u16string_view kSite = testing::kDefaultSitePath;
constexpr std::u16string_view kDirectoryBrowse = u"system.webServer/directoryBrowse";

TEST(Commit, AFileChangedOnDiskSinceItWasReadIsNotOverwritten) {
    IisConfigMachine machine;
    auto manager = machine.NewManager();
    ASSERT_EQ(
        testing::PutAttribute(*manager, kDirectoryBrowse, kAppHost, u"enabled", Variant{true}), 0);
    // Another writer commits first.
    auto other = machine.NewManager();
    ASSERT_EQ(testing::PutAttribute(*other, u"system.webServer/httpErrors", kAppHost, u"dummy",
                                    Variant{u"x"}),
              qm::hr::invalid_index);
    ASSERT_EQ(testing::PutAttribute(*other, u"system.webServer/defaultDocument", kAppHost,
                                    u"enabled", Variant{false}),
              0);
    ASSERT_EQ(other->CommitChanges(), 0);
    const std::string theirs = machine.ReadAppHost();
    EXPECT_EQ(manager->CommitChanges(), qm::hr::sharing_violation);
    EXPECT_NE(qm::to_utf8(manager->LastErrorDescription()).find("changed on disk"),
              std::string::npos);
    EXPECT_EQ(machine.ReadAppHost(), theirs);
    EXPECT_NE(theirs.find("<defaultDocument enabled=\"false\">"), std::string::npos);
    EXPECT_EQ(theirs.find("<directoryBrowse enabled=\"true\" />"), std::string::npos);
}

TEST(Commit, ATouchedFileWithTheSameBytesIsNoConflict) {
    IisConfigMachine machine;
    auto manager = machine.NewManager();
    ASSERT_EQ(
        testing::PutAttribute(*manager, kDirectoryBrowse, kAppHost, u"enabled", Variant{true}), 0);
    const std::string text = machine.ReadAppHost();
    std::filesystem::remove(machine.AppHostPath());
    machine.WriteAppHost(text);
    ASSERT_EQ(manager->CommitChanges(), 0);
    EXPECT_NE(machine.ReadAppHost().find("<directoryBrowse enabled=\"true\" />"),
              std::string::npos);
}

TEST(Commit, AWebConfigCreatedMeanwhileIsNotOverwritten) {
    IisConfigMachine machine;
    auto manager = machine.NewManager();
    ASSERT_EQ(manager->PutCommitPath(kSite), 0);
    ASSERT_EQ(testing::PutAttribute(*manager, kDirectoryBrowse, kSite, u"enabled", Variant{true}),
              0);
    const std::string theirs = "<configuration />";
    IisConfigMachine::WriteText(machine.DrivePath("inetpub/wwwroot/web.config"), theirs);
    EXPECT_EQ(manager->CommitChanges(), qm::hr::sharing_violation);
    EXPECT_EQ(IisConfigMachine::ReadText(machine.DrivePath("inetpub/wwwroot/web.config")), theirs);
}

TEST(Commit, AChangeMadeAndUndoneWritesNothing) {
    IisConfigMachine machine;
    const auto before = std::filesystem::last_write_time(machine.AppHostPath());
    auto manager = machine.NewManager();
    ASSERT_EQ(
        testing::PutAttribute(*manager, kDirectoryBrowse, kAppHost, u"enabled", Variant{true}), 0);
    ASSERT_EQ(
        testing::PutAttribute(*manager, kDirectoryBrowse, kAppHost, u"enabled", Variant{false}), 0);
    ASSERT_EQ(manager->CommitChanges(), 0);
    EXPECT_EQ(std::filesystem::last_write_time(machine.AppHostPath()), before);
    EXPECT_EQ(machine.ReadAppHost(), testing::TestAppHostConfig());
}

TEST(Commit, AFailedWriteLeavesTheFileAndTheChangesPending) {
    IisConfigMachine machine;
    auto manager = machine.NewManager();
    ASSERT_EQ(
        testing::PutAttribute(*manager, kDirectoryBrowse, kAppHost, u"enabled", Variant{true}), 0);
    machine.FailWrites(true);
    EXPECT_EQ(manager->CommitChanges(), qm::hresult_from_win32(qm::win32::write_fault));
    EXPECT_EQ(machine.ReadAppHost(), testing::TestAppHostConfig());
    EXPECT_EQ(manager->PutCommitPath(kSite), qm::hr::checkout_required);
    machine.FailWrites(false);
    ASSERT_EQ(manager->CommitChanges(), 0);
    EXPECT_NE(machine.ReadAppHost().find("<directoryBrowse enabled=\"true\" />"),
              std::string::npos);
}

struct MalformedCase {
    const char* name;
    bool webConfig;
    std::string text;
    std::string where;  // expected in the error text
};

class MalformedFiles : public ::testing::TestWithParam<MalformedCase> {};

TEST_P(MalformedFiles, AreReportedWithFileAndLineAndNeverOverwritten) {
    const MalformedCase& test = GetParam();
    IisConfigMachine machine;
    const auto path =
        test.webConfig ? machine.DrivePath("inetpub/wwwroot/web.config") : machine.AppHostPath();
    IisConfigMachine::WriteText(path, test.text);
    auto manager = machine.NewManager();
    ASSERT_EQ(manager->PutCommitPath(test.webConfig ? kSite : kAppHost), 0);
    const std::u16string_view at = test.webConfig ? kSite : kAppHost;
    EXPECT_EQ(testing::PutAttribute(*manager, kDirectoryBrowse, at, u"enabled", Variant{true}),
              qm::hr::invalid_data);
    const std::string error = qm::to_utf8(manager->LastErrorDescription());
    EXPECT_NE(error.find(test.where), std::string::npos) << error;
    EXPECT_EQ(manager->CommitChanges(), 0);
    EXPECT_EQ(IisConfigMachine::ReadText(path), test.text);
}

INSTANTIATE_TEST_SUITE_P(
    Files, MalformedFiles,
    ::testing::Values(
        MalformedCase{"appHostNotXml", false, "this is not XML", "applicationHost.config(1)"},
        MalformedCase{"appHostTruncated", false, testing::TestAppHostConfig().substr(0, 2000),
                      "applicationHost.config("},
        MalformedCase{"appHostWrongRoot", false, "<?xml version=\"1.0\"?>\n\n<settings />",
                      "applicationHost.config(3): the root element must be <configuration>"},
        MalformedCase{"appHostUndeclaredSection", false,
                      "<configuration>\n<system.webServer>\n<directoryBrowse />\n"
                      "</system.webServer>\n</configuration>",
                      "applicationHost.config(2): unrecognized configuration section "
                      "system.webServer"},
        MalformedCase{"webConfigNotXml", true, "<configuration>\n<a>\n</configuration>",
                      "web.config(3)"},
        MalformedCase{"webConfigUndeclaredSection", true,
                      "<configuration>\n  <system.webServer>\n\n    <rewrite />\n"
                      "  </system.webServer>\n</configuration>",
                      "web.config(4): unrecognized configuration section system.webServer/rewrite"},
        MalformedCase{"webConfigWrongRoot", true, "<config />", "web.config(1)"}),
    [](const ::testing::TestParamInfo<MalformedCase>& item) { return item.param.name; });

TEST(Commit, AFreshManagerOnAnUnchangedFileParsesNothing) {
    IisConfigMachine machine;
    std::u16string value;
    ASSERT_EQ(testing::ReadAttribute(*machine.NewManager(), kDirectoryBrowse, kAppHost, u"enabled",
                                     value),
              0);
    EXPECT_EQ(machine.cache().parseCount(), 1u);
    for (int i = 0; i < 3; ++i) {
        auto manager = machine.NewManager();
        ASSERT_EQ(testing::PutAttribute(*manager, kDirectoryBrowse, kAppHost, u"enabled",
                                        Variant{i % 2 == 0}),
                  0);
        ASSERT_EQ(manager->CommitChanges(), 0);
    }
    // Its own commits keep the cache current.
    EXPECT_EQ(machine.cache().parseCount(), 1u);
    ASSERT_EQ(testing::ReadAttribute(*machine.NewManager(), kDirectoryBrowse, kAppHost, u"enabled",
                                     value),
              0);
    EXPECT_EQ(value, u"true");
    EXPECT_EQ(machine.cache().parseCount(), 1u);
    // A change by hand is read again.
    std::string text = machine.ReadAppHost();
    text.replace(text.find("<directoryBrowse enabled=\"true\""), 32,
                 "<directoryBrowse enabled=\"false\"");
    std::filesystem::remove(machine.AppHostPath());
    machine.WriteAppHost(text);
    ASSERT_EQ(testing::ReadAttribute(*machine.NewManager(), kDirectoryBrowse, kAppHost, u"enabled",
                                     value),
              0);
    EXPECT_EQ(value, u"false");
    EXPECT_EQ(machine.cache().parseCount(), 2u);
}

// Managers remember where applicationHost.config lies; Windows paths ignore letter case, so a
// folder renamed to other capitals still holds it, and a file that is gone is reported as such.
TEST(Commit, ManagersFindApplicationHostConfigAgainWhenItsFolderIsRenamed) {
    IisConfigMachine machine;
    std::u16string value;
    ASSERT_EQ(testing::ReadAttribute(*machine.NewManager(), kDirectoryBrowse, kAppHost, u"enabled",
                                     value),
              0);
    const std::u16string before = value;
    const std::filesystem::path folder = machine.AppHostPath().parent_path();
    std::filesystem::rename(folder, folder.parent_path() / "CONFIG");
    value.clear();
    EXPECT_EQ(testing::ReadAttribute(*machine.NewManager(), kDirectoryBrowse, kAppHost, u"enabled",
                                     value),
              0);
    EXPECT_EQ(value, before);
    std::filesystem::remove(folder.parent_path() / "CONFIG" / "applicationHost.config");
    auto manager = machine.NewManager();
    std::shared_ptr<platform::ConfigElement> section;
    EXPECT_EQ(manager->GetAdminSection(kDirectoryBrowse, kAppHost, section),
              qm::hr::file_not_found);
    EXPECT_NE(qm::to_utf8(manager->LastErrorDescription()).find("applicationHost.config"),
              std::string::npos);
}

TEST(Commit, TheMachineOffersManagersOnlyWithIis7OrLater) {
    sim::MachineConfig config;
    config.iisVersion = {6, 0};
    testing::TempMachine iis6(config);
    std::unique_ptr<platform::AdminManager> manager;
    EXPECT_EQ(iis6.machine().iisConfiguration().CreateAdminManager(manager),
              qm::hr::class_not_registered);
    EXPECT_EQ(manager, nullptr);
    testing::TempMachine iis10;
    ASSERT_EQ(iis10.machine().iisConfiguration().CreateAdminManager(manager), 0);
    std::u16string path;
    ASSERT_EQ(manager->GetCommitPath(path), 0);
    EXPECT_EQ(path, kAppHost);
}

}  // namespace
}  // namespace webrig::sim::iis7
