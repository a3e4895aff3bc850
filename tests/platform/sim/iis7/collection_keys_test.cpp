// The keys of collection entries: each unique-key attribute on its own, the combined-key ones
// together, letter case ignored unless the attribute is case-sensitive, defaults filled in.

#include "platform/sim/iis7/collection_keys.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace webrig::sim::iis7 {
namespace {

AttributeSchema Key(std::string name, bool unique, bool caseSensitive = false,
                    std::string defaultValue = "") {
    AttributeSchema attribute;
    attribute.utf8Name = std::move(name);
    attribute.utf8Default = std::move(defaultValue);
    attribute.isUniqueKey = unique;
    attribute.isCombinedKey = !unique;
    attribute.caseSensitive = caseSensitive;
    return attribute;
}

// A site: name and id are each unique. A binding: protocol and information together.
ElementSchema SiteSchema() {
    ElementSchema site;
    site.attributes = {Key("name", true), Key("id", true)};
    return site;
}

ElementSchema BindingSchema() {
    ElementSchema binding;
    binding.attributes = {Key("protocol", false), Key("bindingInformation", false, true, "*:80:")};
    return binding;
}

std::shared_ptr<XmlElement> Entry(std::vector<std::pair<std::string, std::string>> attributes) {
    auto element = NewXmlElement("add");
    for (const auto& [name, value] : attributes) {
        element->SetAttribute(name, value);
    }
    return element;
}

struct ClashCase {
    const char* name;
    bool site;  // else a binding
    std::vector<std::pair<std::string, std::string>> first;
    std::vector<std::pair<std::string, std::string>> second;
    bool clashes;
    std::string text;  // of the clash
};

void PrintTo(const ClashCase& c, std::ostream* os) {
    *os << c.name;
}

class KeyClashes : public ::testing::TestWithParam<ClashCase> {};

TEST_P(KeyClashes, FollowTheKindOfKey) {
    const ClashCase& c = GetParam();
    const ElementSchema schema = c.site ? SiteSchema() : BindingSchema();
    const auto first = Entry(c.first);
    const auto second = Entry(c.second);
    CollectionKeys keys;
    ASSERT_EQ(keys.Add(schema, *first).element, nullptr);
    const CollectionKeys::Clash clash = keys.Add(schema, *second);
    EXPECT_EQ(clash.element, c.clashes ? first.get() : nullptr);
    EXPECT_EQ(SameKey(schema, *first, *second), c.clashes);
    if (c.clashes) {
        EXPECT_EQ(CollectionKeys::ClashText(schema, *second, clash.key), c.text);
        // A refused entry leaves none of its keys behind.
        keys.Remove(schema, *first);
        EXPECT_EQ(keys.Add(schema, *second).element, nullptr);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, KeyClashes,
    ::testing::Values(
        ClashCase{"sameNameOtherId",
                  true,
                  {{"name", "Shop"}, {"id", "2"}},
                  {{"name", "SHOP"}, {"id", "3"}},
                  true,
                  "Cannot add duplicate collection entry of type 'add' with unique key "
                  "attribute 'name' set to 'SHOP'"},
        ClashCase{"sameIdOtherName",
                  true,
                  {{"name", "Shop"}, {"id", "2"}},
                  {{"name", "Blog"}, {"id", "2"}},
                  true,
                  "Cannot add duplicate collection entry of type 'add' with unique key "
                  "attribute 'id' set to '2'"},
        ClashCase{"nonAsciiNameInAnotherCase",
                  true,
                  {{"name", "Caf\xC3\xA9"}, {"id", "2"}},
                  {{"name", "CAF\xC3\x89"}, {"id", "3"}},
                  true,
                  "Cannot add duplicate collection entry of type 'add' with unique key "
                  "attribute 'name' set to 'CAF\xC3\x89'"},
        ClashCase{"neitherKey",
                  true,
                  {{"name", "Shop"}, {"id", "2"}},
                  {{"name", "Blog"}, {"id", "3"}},
                  false,
                  ""},
        ClashCase{"bothCombinedValues",
                  false,
                  {{"protocol", "http"}, {"bindingInformation", "*:80:"}},
                  {{"protocol", "HTTP"}},  // the default information
                  true,
                  "Cannot add duplicate collection entry of type 'add' with combined key "
                  "attributes 'protocol, bindingInformation' respectively set to 'HTTP, *:80:'"},
        ClashCase{"oneCombinedValueDiffers",
                  false,
                  {{"protocol", "http"}, {"bindingInformation", "*:80:"}},
                  {{"protocol", "http"}, {"bindingInformation", "*:81:"}},
                  false,
                  ""},
        ClashCase{"caseSensitiveValueInAnotherCase",
                  false,
                  {{"protocol", "http"}, {"bindingInformation", "*:80:shop"}},
                  {{"protocol", "http"}, {"bindingInformation", "*:80:SHOP"}},
                  false,
                  ""}),
    [](const ::testing::TestParamInfo<ClashCase>& item) { return item.param.name; });

// Many entries, half of them removed and added again, and a clear: what is held is exactly what
// was added and not taken away, through every growth of the table.
TEST(CollectionKeys, RemoveAndClearForgetExactlyTheirEntries) {
    const ElementSchema schema = SiteSchema();
    std::vector<std::shared_ptr<XmlElement>> sites;
    CollectionKeys keys;
    for (int i = 0; i < 3000; ++i) {
        sites.push_back(Entry({{"name", "Site " + std::to_string(i)}, {"id", std::to_string(i)}}));
        ASSERT_EQ(keys.Add(schema, *sites.back()).element, nullptr) << i;
    }
    for (int i = 0; i < 3000; i += 2) {
        keys.Remove(schema, *sites[static_cast<size_t>(i)]);
    }
    for (int i = 0; i < 3000; ++i) {
        const auto again =
            Entry({{"name", "site " + std::to_string(i)}, {"id", std::to_string(i + 5000)}});
        const CollectionKeys::Clash clash = keys.Add(schema, *again);
        if (i % 2 == 0) {
            EXPECT_EQ(clash.element, nullptr) << i;
            keys.Remove(schema, *again);
        } else {
            EXPECT_EQ(clash.element, sites[static_cast<size_t>(i)].get()) << i;
        }
    }
    keys.Clear();
    for (const auto& site : sites) {
        EXPECT_EQ(keys.Add(schema, *site).element, nullptr);
    }
}

}  // namespace
}  // namespace webrig::sim::iis7
