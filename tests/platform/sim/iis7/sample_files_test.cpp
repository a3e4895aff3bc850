// Real and stock applicationHost.config files, read whole with the built-in schema, come back
// byte for byte; a change alters one line.

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>

#include "platform/sim/iis7/schema.h"
#include "platform/sim/iis7/stock_application_host.h"
#include "testing/iis_config_machine.h"

namespace webrig::sim::iis7 {
namespace {

using platform::Variant;
using testing::IisConfigMachine;

constexpr std::u16string_view kAppHost = testing::kAppHostPath;

struct Sample {
    const char* name;
    std::function<std::string()> text;
};

std::string SampleFile(const char* file) {
    const char* data = std::getenv("WEBRIG_TEST_DATA");
    return IisConfigMachine::ReadText(std::filesystem::path(data ? data : "tests/data") /
                                      "iis-samples" / file);
}

// Reads every attribute, child element and collection entry below `element`; returns how many
// values were read, failing the test on any call that does not succeed.
size_t ReadAll(platform::ConfigElement& element, const ElementSchema& schema) {
    size_t read = 0;
    for (const AttributeSchema& attribute : schema.attributes) {
        std::shared_ptr<platform::ConfigProperty> property;
        Variant value;
        std::u16string text;
        EXPECT_EQ(element.GetPropertyByName(attribute.name, property), 0);
        EXPECT_EQ(property->GetValue(value), 0) << qm::to_utf8(attribute.name);
        EXPECT_EQ(property->GetStringValue(text), 0);
        ++read;
    }
    for (const ElementSchema& childSchema : schema.children) {
        std::shared_ptr<platform::ConfigElement> child;
        EXPECT_EQ(element.GetElementByName(childSchema.name, child), 0);
        read += ReadAll(*child, childSchema);
    }
    if (schema.collection) {
        std::shared_ptr<platform::ElementCollection> collection;
        uint32_t count = 0;
        EXPECT_EQ(element.GetCollection(collection), 0);
        EXPECT_EQ(collection->Count(count), 0);
        for (uint32_t i = 0; i < count; ++i) {
            std::shared_ptr<platform::ConfigElement> entry;
            std::u16string name;
            EXPECT_EQ(collection->Item(i, entry), 0);
            EXPECT_EQ(entry->GetName(name), 0);
            read += ReadAll(*entry, *schema.FindEntry(name));
        }
    }
    return read;
}

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    for (size_t start = 0; start < text.size();) {
        const size_t end = std::min(text.find('\n', start), text.size());
        lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

class SampleFiles : public ::testing::TestWithParam<Sample> {};

TEST_P(SampleFiles, ReadWholeAndComeBackByteForByte) {
    const std::string text = GetParam().text();
    IisConfigMachine machine(text, testing::SchemaSource::schemaFolder);
    const auto written = std::filesystem::last_write_time(machine.AppHostPath());
    auto manager = machine.NewManager();
    size_t sections = 0;
    size_t values = 0;
    for (const SectionSchema& schema : Schema::BuiltIn().sections()) {
        std::shared_ptr<platform::ConfigElement> section;
        const qm::hresult hr = manager->GetAdminSection(schema.name, kAppHost, section);
        if (hr == qm::hr::not_supported) {
            continue;  // not declared by this file
        }
        ASSERT_EQ(hr, 0) << qm::to_utf8(schema.name);
        values += ReadAll(*section, schema.root);
        ++sections;
    }
    EXPECT_GE(sections, 30u);
    EXPECT_GE(values, 500u);
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

INSTANTIATE_TEST_SUITE_P(
    Files, SampleFiles,
    ::testing::Values(Sample{"iis10ReverseProxy",
                             [] {
                                 return SampleFile("iis10-reverse-proxy.applicationHost.config");
                             }},
                      Sample{"stockIis75",
                             [] {
                                 return StockApplicationHostConfig({7, 5});
                             }},
                      Sample{"stockIis85",
                             [] {
                                 return StockApplicationHostConfig({8, 5});
                             }},
                      Sample{"stockIis10",
                             [] {
                                 return StockApplicationHostConfig({10, 0});
                             }}),
    [](const ::testing::TestParamInfo<Sample>& item) { return item.param.name; });

}  // namespace
}  // namespace webrig::sim::iis7
