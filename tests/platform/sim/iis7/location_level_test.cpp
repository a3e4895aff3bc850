// A section held in <location path=""> is the section of the file's own level; a second
// definition of one section for one path is refused.

#include <gtest/gtest.h>

#include "testing/iis_config_machine.h"

namespace webrig::sim::iis7 {
namespace {

using platform::Variant;
using testing::IisConfigMachine;

constexpr std::u16string_view kAppHost = testing::kAppHostPath;
constexpr std::u16string_view kHandlers = u"system.webServer/handlers";
constexpr std::string_view kTopHandlers =
    "        <handlers accessPolicy=\"Read, Script\">\r\n"
    "            <add name=\"StaticFile\" path=\"*\" verb=\"*\" modules=\"StaticFileModule\" "
    "resourceType=\"Either\" />\r\n"
    "        </handlers>\r\n";

// The test file with its handlers moved into a `<location ...>` tag for each of `tags`.
std::string HandlersIn(std::initializer_list<std::string_view> tags, bool keepTopLevel = false) {
    std::string text = testing::TestAppHostConfig();
    if (!keepTopLevel) {
        text.erase(text.find(kTopHandlers), kTopHandlers.size());
    }
    std::string indented;
    for (size_t line = 0; line < kTopHandlers.size();) {
        const size_t end = kTopHandlers.find('\n', line) + 1;
        indented += "    " + std::string(kTopHandlers.substr(line, end - line));
        line = end;
    }
    for (const std::string_view tag : tags) {
        text.insert(text.rfind("</configuration>"),
                    "    <location " + std::string(tag) + ">\r\n        <system.webServer>\r\n" +
                        indented + "        </system.webServer>\r\n    </location>\r\n");
    }
    return text;
}

TEST(LocationLevel, AnEmptyPathHoldsTheServersSectionForReadingAndWriting) {
    IisConfigMachine machine(HandlersIn({"path=\"\" overrideMode=\"Allow\""}));
    const std::string before = machine.ReadAppHost();
    auto manager = machine.NewManager();
    std::u16string policy;
    ASSERT_EQ(testing::ReadAttribute(*manager, kHandlers, kAppHost, u"accessPolicy", policy), 0);
    EXPECT_EQ(policy, u"Read, Script");
    ASSERT_EQ(
        testing::PutAttribute(*manager, kHandlers, kAppHost, u"accessPolicy", Variant{u"Read"}), 0);
    ASSERT_EQ(testing::ReadAttribute(*manager, kHandlers, kAppHost, u"accessPolicy", policy), 0);
    EXPECT_EQ(policy, u"Read");
    std::shared_ptr<platform::ConfigElement> section;
    ASSERT_EQ(manager->GetAdminSection(kHandlers, kAppHost, section), 0);
    std::shared_ptr<platform::ElementCollection> handlers;
    ASSERT_EQ(section->GetCollection(handlers), 0);
    std::shared_ptr<platform::ConfigElement> entry;
    ASSERT_EQ(handlers->CreateNewElement(u"add", entry), 0);
    for (const auto& [name, value] :
         {std::pair{u"name", u"ASP"}, {u"path", u"*.asp"}, {u"verb", u"*"}}) {
        std::shared_ptr<platform::ConfigProperty> property;
        ASSERT_EQ(entry->GetPropertyByName(name, property), 0);
        ASSERT_EQ(property->PutValue(Variant{qm::wstring(value)}), 0);
    }
    ASSERT_EQ(handlers->AddElement(entry, -1), 0);
    ASSERT_EQ(handlers->DeleteElement(0), 0);  // StaticFile
    uint32_t count = 0;
    ASSERT_EQ(handlers->Count(count), 0);
    EXPECT_EQ(count, 1u);
    ASSERT_EQ(manager->CommitChanges(), 0);
    std::string expected = before;
    expected.replace(expected.find("accessPolicy=\"Read, Script\""), 27, "accessPolicy=\"Read\"");
    const size_t staticFile = expected.find("                <add name=\"StaticFile\"");
    expected.replace(staticFile, expected.find('\n', staticFile) + 1 - staticFile,
                     "                <add name=\"ASP\" path=\"*.asp\" verb=\"*\" />\r\n");
    EXPECT_EQ(machine.ReadAppHost(), expected);
}

struct Duplicate {
    const char* name;
    std::string appHost;
    int line;  // of the second definition
};

class SecondDefinitions : public ::testing::TestWithParam<Duplicate> {};

TEST_P(SecondDefinitions, AreRefusedWithTheLineOfTheSecond) {
    IisConfigMachine machine(GetParam().appHost);
    auto manager = machine.NewManager();
    std::shared_ptr<platform::ConfigElement> section;
    EXPECT_EQ(manager->GetAdminSection(kHandlers, testing::kDefaultSitePath, section),
              qm::hr::already_exists);
    EXPECT_NE(qm::to_utf8(manager->LastErrorDescription())
                  .find("applicationHost.config(" + std::to_string(GetParam().line) +
                        "): Config section 'system.webServer/handlers' already defined"),
              std::string::npos)
        << qm::to_utf8(manager->LastErrorDescription());
    // Other sections of the file stay readable.
    EXPECT_EQ(manager->GetAdminSection(u"system.webServer/directoryBrowse", kAppHost, section), 0);
}

INSTANTIATE_TEST_SUITE_P(
    OnePath, SecondDefinitions,
    ::testing::Values(
        Duplicate{"topAndEmptyPath", HandlersIn({"path=\"\""}, true), 73},
        Duplicate{"emptyPathAndDot", HandlersIn({"path=\"\"", "path=\".\""}), 77},
        Duplicate{"siteInAnotherCase",
                  HandlersIn({"path=\"Default Web Site\"", "path=\"default web site/\""}), 77}),
    [](const ::testing::TestParamInfo<Duplicate>& item) { return item.param.name; });

}  // namespace
}  // namespace webrig::sim::iis7
