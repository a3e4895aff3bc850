#include "platform/sim/iis7/schema.h"

#include <array>

#include "platform/sim/iis7/builtin_schema_text.h"
#include "support/case_insensitive.h"

namespace webrig::sim::iis7 {
namespace {

// The exact spelling first, then any letter case.
template <typename Item>
const Item* FindByName(const std::vector<Item>& items, std::u16string_view name) {
    for (const Item& item : items) {
        if (item.name == name) {
            return &item;
        }
    }
    for (const Item& item : items) {
        if (qm::iequals(item.name, name)) {
            return &item;
        }
    }
    return nullptr;
}

}  // namespace

const AttributeSchema* ElementSchema::FindAttribute(std::u16string_view attribute) const {
    return FindByName(attributes, attribute);
}

const ElementSchema* ElementSchema::FindChild(std::u16string_view child) const {
    return FindByName(children, child);
}

const ElementSchema* ElementSchema::FindEntry(std::u16string_view entryName) const {
    return FindByName(entries, entryName);
}

namespace {

void FillUtf8Names(ElementSchema& element) {
    for (AttributeSchema& attribute : element.attributes) {
        attribute.utf8Name = qm::to_utf8(attribute.name);
        attribute.utf8Default = qm::to_utf8(attribute.defaultValue);
    }
    for (ElementSchema& child : element.children) {
        FillUtf8Names(child);
    }
    for (ElementSchema& entry : element.entries) {
        FillUtf8Names(entry);
    }
}

}  // namespace

Schema::Schema(std::vector<SectionSchema> sections) : m_sections(std::move(sections)) {
    for (SectionSchema& section : m_sections) {
        FillUtf8Names(section.root);
        section.utf8Name = qm::to_utf8(section.name);
        section.elementNames.clear();
        size_t start = 0;
        while (true) {
            const size_t slash = section.utf8Name.find('/', start);
            section.elementNames.push_back(
                section.utf8Name.substr(start, slash == std::string::npos ? slash : slash - start));
            if (slash == std::string::npos) {
                break;
            }
            start = slash + 1;
        }
    }
}

const Schema& Schema::BuiltIn() {
    static const Schema schema = Parse(kBuiltInSchemaText);
    return schema;
}

const SectionSchema* Schema::FindSection(std::u16string_view sectionName) const {
    for (const SectionSchema& section : m_sections) {
        if (section.name == sectionName) {
            return &section;
        }
    }
    return nullptr;
}

bool IsConfigurationSystemAttribute(std::u16string_view name) noexcept {
    static constexpr std::array<std::u16string_view, 6> kNames = {
        u"lockAttributes", u"lockAllAttributesExcept",
        u"lockElements",   u"lockAllElementsExcept",
        u"lockItem",       u"configSource"};
    for (const std::u16string_view known : kNames) {
        if (name == known) {
            return true;
        }
    }
    return false;
}

}  // namespace webrig::sim::iis7
