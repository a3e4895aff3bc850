// Real applicationHost.config files load with webrig's schema files, every section they declare
// reads, they show their sites and pools, and they come back byte for byte; a change alters one
// line.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "platform/sim/iis7/xml_reader.h"
#include "testing/iis_config_machine.h"

namespace webrig::sim::iis7 {
namespace {

using platform::Variant;
using testing::IisConfigMachine;

constexpr std::u16string_view kAppHost = testing::kAppHostPath;

struct Sample {
    const char* file;
    std::vector<std::u16string> sites;
    std::vector<std::u16string> pools;
    size_t declared;  // sections in <configSections>
};

const Sample kSamples[] = {
    {"iis10-reverse-proxy.applicationHost.config", {u"Default Web Site"}, {u"DefaultAppPool"}, 68},
};

std::filesystem::path SampleFolder() {
    const char* data = std::getenv("WEBRIG_TEST_DATA");
    return std::filesystem::path(data ? data : "tests/data") / "iis-samples";
}

std::vector<std::u16string> Names(platform::AdminManager& manager, std::u16string_view section) {
    std::shared_ptr<platform::ConfigElement> element;
    EXPECT_EQ(manager.GetAdminSection(section, kAppHost, element), 0);
    std::shared_ptr<platform::ElementCollection> collection;
    EXPECT_EQ(element->GetCollection(collection), 0);
    uint32_t count = 0;
    EXPECT_EQ(collection->Count(count), 0);
    std::vector<std::u16string> names;
    for (uint32_t i = 0; i < count; ++i) {
        std::shared_ptr<platform::ConfigElement> item;
        std::shared_ptr<platform::ConfigProperty> name;
        std::u16string text;
        EXPECT_EQ(collection->Item(i, item), 0);
        EXPECT_EQ(item->GetPropertyByName(u"name", name), 0);
        EXPECT_EQ(name->GetStringValue(text), 0);
        names.push_back(text);
    }
    return names;
}

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    size_t start = 0;
    while (start < text.size()) {
        const size_t end = text.find('\n', start);
        lines.push_back(text.substr(start, end == std::string::npos ? end : end - start));
        start = end == std::string::npos ? text.size() : end + 1;
    }
    return lines;
}

class SampleFiles : public ::testing::TestWithParam<Sample> {};

TEST_P(SampleFiles, LoadReportAndRoundTrip) {
    const std::string text = IisConfigMachine::ReadText(SampleFolder() / GetParam().file);
    const XmlDocument document = ReadXml(std::make_shared<const std::string>(text));
    EXPECT_EQ(RenderXml(document), text);

    IisConfigMachine machine(text, testing::SchemaSource::schemaFolder);
    const auto written = std::filesystem::last_write_time(machine.AppHostPath());
    auto manager = machine.NewManager();
    const std::vector<std::u16string> sections = testing::DeclaredSections(text);
    EXPECT_GE(sections.size(), GetParam().declared);
    for (const std::u16string& name : sections) {
        for (const std::u16string_view path : {kAppHost, testing::kDefaultSitePath}) {
            std::shared_ptr<platform::ConfigElement> section;
            EXPECT_EQ(manager->GetAdminSection(name, path, section), 0)
                << qm::to_utf8(name) << ": " << qm::to_utf8(manager->LastErrorDescription());
        }
    }
    EXPECT_EQ(Names(*manager, u"system.applicationHost/sites"), GetParam().sites);
    EXPECT_EQ(Names(*manager, u"system.applicationHost/applicationPools"), GetParam().pools);
    std::u16string value;
    ASSERT_EQ(testing::ReadAttribute(*manager, u"system.webServer/handlers", kAppHost,
                                     u"accessPolicy", value),
              0);
    EXPECT_EQ(value, u"Read, Script");
    ASSERT_EQ(manager->CommitChanges(), 0);
    EXPECT_EQ(machine.ReadAppHost(), text);
    EXPECT_EQ(std::filesystem::last_write_time(machine.AppHostPath()), written);

    ASSERT_EQ(testing::PutAttribute(*manager, u"system.webServer/directoryBrowse", kAppHost,
                                    u"enabled", Variant{true}),
              0);
    ASSERT_EQ(manager->CommitChanges(), 0);
    const std::vector<std::string> before = Lines(text);
    const std::vector<std::string> after = Lines(machine.ReadAppHost());
    ASSERT_EQ(after.size(), before.size());
    std::vector<size_t> changed;
    for (size_t i = 0; i < before.size(); ++i) {
        if (before[i] != after[i]) {
            changed.push_back(i);
        }
    }
    ASSERT_EQ(changed.size(), 1u);
    EXPECT_NE(after[changed[0]].find("<directoryBrowse enabled=\"true\" />"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Public, SampleFiles, ::testing::ValuesIn(kSamples),
                         [](const ::testing::TestParamInfo<Sample>& item) {
                             std::string name = item.param.file;
                             name = name.substr(0, name.find('.'));
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

}  // namespace
}  // namespace webrig::sim::iis7
