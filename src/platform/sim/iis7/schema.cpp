#include "platform/sim/iis7/schema.h"

#include <algorithm>
#include <array>
#include <atomic>

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

template <typename Item>
const Item* FindByUtf8Name(const std::vector<Item>& items, std::string_view name) {
    for (const Item& item : items) {
        if (item.utf8Name == name) {
            return &item;
        }
    }
    return nullptr;
}

uint32_t NewSchemaId() {
    static std::atomic<uint32_t> last{0};
    uint32_t id = ++last;
    return id != 0 ? id : ++last;  // 0 marks an unchecked element
}

void FillUtf8Names(ElementSchema& element) {
    element.utf8Name = qm::to_utf8(element.name);
    if (element.collection) {
        element.collection->utf8Remove = qm::to_utf8(element.collection->removeElement);
        element.collection->utf8Clear = qm::to_utf8(element.collection->clearElement);
    }
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

const AttributeSchema* ElementSchema::FindAttribute(std::u16string_view attribute) const {
    return FindByName(attributes, attribute);
}

const ElementSchema* ElementSchema::FindChild(std::u16string_view child) const {
    return FindByName(children, child);
}

const ElementSchema* ElementSchema::FindEntry(std::u16string_view entryName) const {
    return FindByName(entries, entryName);
}

const AttributeSchema* ElementSchema::FindExactAttribute(std::string_view spelled) const {
    return FindByUtf8Name(attributes, spelled);
}

const ElementSchema* ElementSchema::FindExactChild(std::string_view spelled) const {
    return FindByUtf8Name(children, spelled);
}

const ElementSchema* ElementSchema::FindExactEntry(std::string_view spelled) const {
    return FindByUtf8Name(entries, spelled);
}

Schema::Schema(std::vector<SectionSchema> sections)
    : m_sections(std::move(sections)), m_id(NewSchemaId()) {
    for (size_t i = 0; i < m_sections.size(); ++i) {
        SectionSchema& section = m_sections[i];
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
        m_index.emplace(section.name, i);
    }
}

Schema::Schema(Schema&&) noexcept = default;
Schema& Schema::operator=(Schema&&) noexcept = default;
Schema::~Schema() = default;

const Schema& Schema::BuiltIn() {
    static const Schema schema = FromFiles(BuiltInFiles());
    return schema;
}

const std::vector<SchemaFile>& Schema::BuiltInFiles() {
    static const std::vector<SchemaFile> files = [] {
        std::vector<SchemaFile> list;
        for (const BuiltInSchemaFile& file : kBuiltInSchemaFiles) {
            list.push_back({std::string(file.name), file.text});
        }
        std::sort(list.begin(), list.end(), [](const SchemaFile& a, const SchemaFile& b) {
            return qm::to_upper(qm::from_utf8(a.name)) < qm::to_upper(qm::from_utf8(b.name));
        });
        return list;
    }();
    return files;
}

const SectionSchema* Schema::FindSection(std::u16string_view sectionName) const {
    const auto found = m_index.find(sectionName);
    return found == m_index.end() ? nullptr : &m_sections[found->second];
}

SchemaProvider FixedSchema(const Schema& schema) {
    // Not owned: the caller keeps the schema alive for as long as the provider is used.
    const std::shared_ptr<const Schema> shared(&schema, [](const Schema*) {});
    return [shared] { return shared; };
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
