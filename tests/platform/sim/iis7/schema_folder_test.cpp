// The schema comes from the machine's schema folder, read when the configuration system starts,
// as IIS reads it: a file copied in adds its sections at the next start, a bad file or a missing
// folder is reported, and a folder whose files have not changed is not read or parsed again.

#include "platform/sim/iis7/schema_folder.h"

#include <gtest/gtest.h>

#include "testing/iis_config_machine.h"
#include "testing/temp_folder.h"

namespace webrig::sim::iis7 {
namespace {

using testing::IisConfigMachine;
using testing::SchemaSource;

constexpr std::u16string_view kAppHost = testing::kAppHostPath;
constexpr std::u16string_view kFeature = u"system.webServer/myFeature";

std::string WithMyFeature(const std::string& value) {
    std::string text = testing::TestAppHostConfig();
    text.insert(text.find("<section name=\"asp\""),
                "<section name=\"myFeature\" overrideModeDefault=\"Allow\" />\r\n");
    text.insert(text.find("<asp />"), "<myFeature level=\"" + value + "\" />\r\n");
    return text;
}

std::pair<qm::hresult, std::string> ReadLevel(IisConfigMachine& machine, std::u16string& value) {
    auto manager = machine.NewManager();
    const qm::hresult hr = testing::ReadAttribute(*manager, kFeature, kAppHost, u"level", value);
    return {hr, qm::to_utf8(manager->LastErrorDescription())};
}

TEST(SchemaFolder, AFileCopiedInAddsItsSection) {
    IisConfigMachine machine(WithMyFeature("3"), SchemaSource::schemaFolder);
    std::u16string level;
    EXPECT_EQ(ReadLevel(machine, level).first, qm::hr::not_supported);
    const auto folder = machine.AppHostPath().parent_path() / "schema";
    IisConfigMachine::WriteText(folder / "myFeature_schema.xml",
                                R"(<configSchema><sectionSchema name="system.webServer/myFeature">)"
                                R"(<attribute name="level" type="uint" defaultValue="1" />)"
                                R"(</sectionSchema></configSchema>)");
    EXPECT_EQ(ReadLevel(machine, level).first, qm::hr::not_supported);
    machine.Restart();
    ASSERT_EQ(ReadLevel(machine, level).first, 0);
    EXPECT_EQ(level, u"3");
    machine.WriteAppHost(WithMyFeature("three"));
    const auto [hr, message] = ReadLevel(machine, level);
    EXPECT_EQ(hr, qm::hr::invalid_data);
    EXPECT_NE(message.find("): Invalid integer value"), std::string::npos) << message;
}

TEST(SchemaFolder, ABadFileOrNoFolderIsReported) {
    IisConfigMachine machine(WithMyFeature("3"), SchemaSource::schemaFolder);
    const auto folder = machine.AppHostPath().parent_path() / "schema";
    IisConfigMachine::WriteText(folder / "bad_schema.xml",
                                "<configSchema>\n<sectionSchema name=\"x\">\n"
                                "<attribute name=\"a\" type=\"integer\" />\n"
                                "</sectionSchema></configSchema>");
    std::u16string level;
    auto [hr, message] = ReadLevel(machine, level);
    EXPECT_EQ(hr, qm::hr::invalid_data);
    EXPECT_EQ(message,
              "C:\\Windows\\System32\\inetsrv\\config\\schema\\bad_schema.xml(3): "
              "section 'x': a: unknown type 'integer'");
    std::filesystem::remove_all(folder);
    std::tie(hr, message) = ReadLevel(machine, level);
    EXPECT_EQ(hr, qm::hr::path_not_found);
    EXPECT_NE(message.find("C:\\Windows\\System32\\inetsrv\\config\\schema"), std::string::npos);
}

TEST(SchemaFolder, IsReadOnceAndSharedUntilAFileChanges) {
    testing::TempFolder drive;
    const auto folder = drive.path() / "Windows/System32/inetsrv/config/schema";
    std::filesystem::create_directories(folder);
    const std::string text = R"(<configSchema><sectionSchema name="s/t" /></configSchema>)";
    IisConfigMachine::WriteText(folder / "a.xml", text);
    const auto start = [&] { return SchemaFolder(drive.path(), u"C:\\Windows").Current(); };
    SchemaFolder running(drive.path(), u"C:\\Windows");
    const std::shared_ptr<const Schema> first = running.Current();
    EXPECT_NE(first->FindSection(u"s/t"), nullptr);
    EXPECT_EQ(start(), first);
    // The same bytes written again: the same schema, without parsing it again.
    IisConfigMachine::WriteText(folder / "a.xml", text);
    EXPECT_EQ(start(), first);
    IisConfigMachine::WriteText(folder / "a.xml",
                                R"(<configSchema><sectionSchema name="s/uu" /></configSchema>)");
    const std::shared_ptr<const Schema> changed = start();
    EXPECT_EQ(changed->FindSection(u"s/t"), nullptr);
    EXPECT_NE(changed->FindSection(u"s/uu"), nullptr);
    EXPECT_EQ(running.Current(), first);
}

}  // namespace
}  // namespace webrig::sim::iis7
