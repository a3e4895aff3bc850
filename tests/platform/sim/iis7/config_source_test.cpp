// A section written as <name configSource="file" /> lives in that file, beside the configuration
// file or below it: reads come from it and writes go to it.

#include <gtest/gtest.h>

#include "testing/iis_config_machine.h"

namespace webrig::sim::iis7 {
namespace {

using platform::Variant;
using testing::IisConfigMachine;

constexpr std::u16string_view kDirectoryBrowse = u"system.webServer/directoryBrowse";
constexpr std::string_view kInline = "<directoryBrowse enabled=\"false\" />";

std::string Sourced(std::string_view reference) {
    std::string text = testing::TestAppHostConfig();
    return text.replace(text.find(kInline), kInline.size(),
                        "<directoryBrowse configSource=\"" + std::string(reference) + "\" />");
}

std::filesystem::path ConfigFolder(const IisConfigMachine& machine) {
    return machine.AppHostPath().parent_path();
}

TEST(ConfigSource, ReadsAndWritesTheReferencedFile) {
    IisConfigMachine machine(Sourced("sections\\browse.config"));
    std::filesystem::create_directories(ConfigFolder(machine) / "sections");
    const std::string source = "<!-- kept -->\r\n<directoryBrowse enabled=\"true\" />\r\n";
    IisConfigMachine::WriteText(ConfigFolder(machine) / "sections" / "browse.config", source);
    const std::string appHost = machine.ReadAppHost();
    auto manager = machine.NewManager();
    std::u16string enabled;
    ASSERT_EQ(testing::ReadAttribute(*manager, kDirectoryBrowse, testing::kDefaultSitePath,
                                     u"enabled", enabled),
              0);
    EXPECT_EQ(enabled, u"true");
    ASSERT_EQ(manager->CommitChanges(), 0);
    EXPECT_EQ(IisConfigMachine::ReadText(ConfigFolder(machine) / "sections" / "browse.config"),
              source);
    ASSERT_EQ(testing::PutAttribute(*manager, kDirectoryBrowse, testing::kAppHostPath, u"showFlags",
                                    Variant{u"Date"}),
              0);
    ASSERT_EQ(manager->CommitChanges(), 0);
    EXPECT_EQ(machine.ReadAppHost(), appHost);
    EXPECT_EQ(IisConfigMachine::ReadText(ConfigFolder(machine) / "sections" / "browse.config"),
              "<!-- kept -->\r\n<directoryBrowse enabled=\"true\" showFlags=\"Date\" />\r\n");
}

struct Refused {
    const char* name;
    std::string reference;
    std::string content;  // of browse.config in the configuration folder; empty: no such file
    qm::hresult result;
    std::string_view message;
};

class RefusedSources : public ::testing::TestWithParam<Refused> {};

TEST_P(RefusedSources, MakeTheFileUnreadable) {
    const Refused& test = GetParam();
    IisConfigMachine machine(Sourced(test.reference));
    if (!test.content.empty()) {
        IisConfigMachine::WriteText(ConfigFolder(machine) / "browse.config", test.content);
    }
    auto manager = machine.NewManager();
    std::shared_ptr<platform::ConfigElement> section;
    EXPECT_EQ(manager->GetAdminSection(kDirectoryBrowse, testing::kAppHostPath, section),
              test.result);
    const std::string error = qm::to_utf8(manager->LastErrorDescription());
    EXPECT_NE(error.find(test.message), std::string::npos) << error;
    // Asking again gives the same answer.
    EXPECT_EQ(manager->GetAdminSection(kDirectoryBrowse, testing::kAppHostPath, section),
              test.result);
    EXPECT_EQ(qm::to_utf8(manager->LastErrorDescription()), error);
}

constexpr std::string_view kPathRule = "must be a relative physical path";

INSTANTIATE_TEST_SUITE_P(
    Rules, RefusedSources,
    ::testing::Values(
        Refused{"missing", "browse.config", "", qm::hr::file_not_found,
                "browse.config: Cannot read configuration file"},
        Refused{"malformed", "browse.config", "<directoryBrowse>\r\n<oops>\r\n",
                qm::hr::invalid_data, "browse.config(3)"},
        Refused{"anotherRoot", "browse.config", "<defaultDocument />", qm::hr::invalid_data,
                "browse.config(1): the root element must be <directoryBrowse>"},
        Refused{"parentFolder", "..\\browse.config", "", qm::hr::invalid_data, kPathRule},
        Refused{"absolute", "C:\\browse.config", "", qm::hr::invalid_data, kPathRule},
        Refused{"rooted", "\\browse.config", "", qm::hr::invalid_data, kPathRule},
        Refused{"forwardSlash", "sub/browse.config", "", qm::hr::invalid_data, kPathRule},
        Refused{"itself", "applicationHost.config", "", qm::hr::invalid_data,
                "already read as another configuration file"}),
    [](const ::testing::TestParamInfo<Refused>& item) { return item.param.name; });

TEST(ConfigSource, ASectionThatNamesAFileHoldsNothingElse) {
    std::string text = Sourced("browse.config");
    text.replace(text.find("configSource"), 0, "enabled=\"true\" ");
    IisConfigMachine machine(text);
    IisConfigMachine::WriteText(ConfigFolder(machine) / "browse.config", "<directoryBrowse />");
    std::shared_ptr<platform::ConfigElement> section;
    EXPECT_EQ(
        machine.NewManager()->GetAdminSection(kDirectoryBrowse, testing::kAppHostPath, section),
        qm::hr::invalid_data);
}

}  // namespace
}  // namespace webrig::sim::iis7
