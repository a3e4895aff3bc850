// Schema::Parse and Schema::FromFiles: read schema text in the format of IIS's schema files.

#include <algorithm>
#include <initializer_list>
#include <pugixml.hpp>
#include <string>

#include "platform/sim/iis7/attribute_value.h"
#include "platform/sim/iis7/schema.h"

namespace webrig::sim::iis7 {
namespace {

class Reader {
  public:
    Reader(std::string_view text, const std::string& fileName) : m_text(text), m_file(fileName) {}

    SectionSchema ReadSection(const pugi::xml_node& node) {
        m_node = node;
        SectionSchema section;
        m_section = node.attribute("name").value();
        CheckAttributes(node, {"name", "declaredIn", "allowDefinition", "overrideModeDefault",
                               "allowUnrecognizedAttributes"});
        if (m_section.empty()) {
            Fail("a sectionSchema has no name");
        }
        section.name = qm::from_utf8(m_section);
        if (const pugi::xml_attribute declaredIn = node.attribute("declaredIn")) {
            if (std::string_view(declaredIn.value()) != "machine.config") {
                Fail("declaredIn names something other than machine.config");
            }
            MachineConfigDeclaration declaration;
            if (const pugi::xml_attribute value = node.attribute("allowDefinition")) {
                declaration.allowDefinition = qm::from_utf8(value.value());
            }
            if (const pugi::xml_attribute value = node.attribute("overrideModeDefault")) {
                declaration.overrideModeDefault = qm::from_utf8(value.value());
            }
            section.machineConfigDeclaration = declaration;
        } else if (node.attribute("allowDefinition") || node.attribute("overrideModeDefault")) {
            Fail("only sections declared in machine.config carry their declaration here");
        }
        section.root.allowUnrecognizedAttributes =
            ReadBool(node, "allowUnrecognizedAttributes", false);
        ReadContent(node, section.root);
        return section;
    }

    [[noreturn]] void Fail(const std::string& what) const {
        const size_t offset = std::min(
            static_cast<size_t>(std::max<ptrdiff_t>(m_node ? m_node.offset_debug() : 0, 0)),
            m_text.size());
        const size_t line = 1 + std::count(m_text.begin(), m_text.begin() + offset, '\n');
        throw SchemaError(m_file + "(" + std::to_string(line) + "): " +
                          (m_section.empty() ? "" : "section '" + m_section + "': ") + what);
    }

    void At(const pugi::xml_node& node) { m_node = node; }

  private:
    void CheckAttributes(const pugi::xml_node& node,
                         std::initializer_list<std::string_view> known) {
        for (const pugi::xml_attribute& attribute : node.attributes()) {
            if (std::find(known.begin(), known.end(), attribute.name()) == known.end()) {
                Fail(std::string("unknown attribute '") + attribute.name() + "' on <" +
                     node.name() + ">");
            }
        }
    }

    bool ReadBool(const pugi::xml_node& node, const char* name, bool fallback) {
        const pugi::xml_attribute attribute = node.attribute(name);
        if (!attribute) {
            return fallback;
        }
        const std::string_view text = attribute.value();
        if (text != "true" && text != "false") {
            Fail(std::string(name) + " is neither true nor false");
        }
        return text == "true";
    }

    std::vector<int64_t> ReadNumbers(std::string_view text, size_t least, size_t most) {
        std::vector<int64_t> numbers;
        std::string_view rest = text;
        while (true) {
            const size_t comma = rest.find(',');
            const std::string piece(rest.substr(0, comma));
            size_t used = 0;
            try {
                numbers.push_back(std::stoll(piece, &used));
            } catch (const std::exception&) {
                used = 0;
            }
            if (used == 0 || used != piece.size()) {
                Fail("validationParameter '" + std::string(text) + "' is not a list of numbers");
            }
            if (comma == std::string_view::npos) {
                break;
            }
            rest.remove_prefix(comma + 1);
        }
        if (numbers.size() < least || numbers.size() > most) {
            Fail("validationParameter '" + std::string(text) + "' has the wrong count of numbers");
        }
        return numbers;
    }

    AttributeType ReadType(const char* type) {
        static constexpr std::pair<std::string_view, AttributeType> kTypes[] = {
            {"bool", AttributeType::boolean},     {"uint", AttributeType::uint32},
            {"int", AttributeType::int32},        {"int64", AttributeType::int64},
            {"string", AttributeType::string},    {"timeSpan", AttributeType::timeSpan},
            {"enum", AttributeType::enumeration}, {"flags", AttributeType::flags}};
        for (const auto& [name, value] : kTypes) {
            if (name == type) {
                return value;
            }
        }
        Fail(m_attribute + ": unknown type '" + type + "'");
    }

    void ReadValidation(const pugi::xml_node& node, AttributeSchema& attribute) {
        const std::string_view validation = node.attribute("validationType").value();
        std::string_view parameter = node.attribute("validationParameter").value();
        const bool number = attribute.type == AttributeType::uint32 ||
                            attribute.type == AttributeType::int32 ||
                            attribute.type == AttributeType::int64;
        const bool string = attribute.type == AttributeType::string;
        if (validation.empty()) {
            if (!parameter.empty()) {
                Fail(m_attribute + ": validationParameter without validationType");
            }
            return;
        }
        if (validation == "integerRange" && number) {
            attribute.validation = Validation::integerRange;
            const bool exclude = parameter.ends_with(",exclude");
            if (exclude) {
                parameter.remove_suffix(std::string_view(",exclude").size());
            }
            const std::vector<int64_t> range = ReadNumbers(parameter, 2, 2);
            if (exclude) {
                attribute.excludedRange = std::make_pair(range[0], range[1]);
            } else {
                attribute.minimum = range[0];
                attribute.maximum = range[1];
            }
        } else if (validation == "timeSpanRange" && attribute.type == AttributeType::timeSpan) {
            attribute.validation = Validation::timeSpanRange;
            const std::vector<int64_t> range = ReadNumbers(parameter, 2, 3);
            attribute.minimum = range[0];
            attribute.maximum = range[1];
            if (range.size() == 3) {
                if (range[2] < 0 || range[2] > UINT32_MAX) {
                    Fail(m_attribute + ": the granularity is out of range");
                }
                attribute.granularitySeconds = static_cast<uint32_t>(range[2]);
            }
        } else if (validation == "nonEmptyString" &&
                   (string || attribute.type == AttributeType::flags)) {
            attribute.validation = Validation::nonEmptyString;
            attribute.validateNonEmpty = true;
        } else if (validation == "siteName" && string) {
            attribute.validation = Validation::siteName;
            attribute.validateNonEmpty = true;
            attribute.invalidCharacters = u"/?";
        } else if (validation == "applicationPoolName" && string) {
            attribute.validation = Validation::applicationPoolName;
            attribute.validateNonEmpty = true;
            attribute.invalidCharacters = u"|<>&\"/[]+=;:,?*@";
        } else if (validation == "virtualPath" && string) {
            attribute.validation = Validation::virtualPath;
            attribute.validateVirtualPath = true;
        } else if (validation == "trimWhiteSpaceString" && string) {
            attribute.validation = Validation::trimWhiteSpace;
            attribute.validateTrimmed = true;
        } else {
            Fail(m_attribute + ": validationType '" + std::string(validation) +
                 "' does not apply to its type");
        }
        if (attribute.validation != Validation::integerRange &&
            attribute.validation != Validation::timeSpanRange && !parameter.empty()) {
            Fail(m_attribute + ": validationType " + std::string(validation) +
                 " takes no parameter");
        }
    }

    void ReadNamedValues(const pugi::xml_node& node, AttributeSchema& attribute) {
        const bool named =
            attribute.type == AttributeType::enumeration || attribute.type == AttributeType::flags;
        const char* kind = attribute.type == AttributeType::flags ? "flag" : "enum";
        for (const pugi::xml_node& child : node.children()) {
            At(child);
            if (!named || std::string_view(child.name()) != kind) {
                Fail(m_attribute + ": unexpected <" + child.name() + ">");
            }
            CheckAttributes(child, {"name", "value"});
            const std::vector<int64_t> value = ReadNumbers(child.attribute("value").value(), 1, 1);
            if (value[0] < 0 || value[0] > UINT32_MAX || !*child.attribute("name").value()) {
                Fail(m_attribute + ": a named value needs a name and a 32-bit value");
            }
            attribute.values.push_back(
                {qm::from_utf8(child.attribute("name").value()), static_cast<uint32_t>(value[0])});
        }
        At(node);
        if (named && attribute.values.empty()) {
            Fail(m_attribute + ": no named values");
        }
    }

    void ReadTimeSpanFormat(const pugi::xml_node& node, AttributeSchema& attribute) {
        const std::string_view format = node.attribute("timeSpanFormat").value();
        if (format.empty()) {
            return;
        }
        if (attribute.type != AttributeType::timeSpan) {
            Fail(m_attribute + ": timeSpanFormat on a " + node.attribute("type").value());
        } else if (format == "seconds") {
            attribute.timeSpanFormat = TimeSpanFormat::seconds;
        } else if (format == "minutes") {
            attribute.timeSpanFormat = TimeSpanFormat::minutes;
        } else if (format != "string") {
            Fail(m_attribute + ": timeSpanFormat '" + std::string(format) + "' is unknown");
        }
    }

    AttributeSchema ReadAttribute(const pugi::xml_node& node) {
        At(node);
        m_attribute = node.attribute("name").value();
        CheckAttributes(node,
                        {"name", "type", "defaultValue", "required", "isUniqueKey", "isCombinedKey",
                         "caseSensitive", "encrypted", "expanded", "validationType",
                         "validationParameter", "allowInfinite", "timeSpanFormat"});
        AttributeSchema attribute;
        if (m_attribute.empty()) {
            Fail("an attribute has no name");
        }
        attribute.name = qm::from_utf8(m_attribute);
        attribute.type = ReadType(node.attribute("type").value());
        attribute.defaultValue = qm::from_utf8(node.attribute("defaultValue").value());
        attribute.required = ReadBool(node, "required", false);
        attribute.isUniqueKey = ReadBool(node, "isUniqueKey", false);
        attribute.isCombinedKey = ReadBool(node, "isCombinedKey", false);
        attribute.caseSensitive = ReadBool(node, "caseSensitive", false);
        attribute.encrypted = ReadBool(node, "encrypted", false);
        attribute.expanded = ReadBool(node, "expanded", false);
        attribute.allowInfinite = ReadBool(node, "allowInfinite", false);
        ReadTimeSpanFormat(node, attribute);
        ReadValidation(node, attribute);
        ReadNamedValues(node, attribute);
        // A default is written as IIS writes values, so it must pass the value rules unchanged.
        const bool plainFormat =
            attribute.timeSpanFormat == TimeSpanFormat::string &&
            !(attribute.allowInfinite && attribute.defaultValue == u"Infinite");
        // An empty default may stand for "unset" where the validator refuses empty text.
        if (!attribute.defaultValue.empty() && plainFormat) {
            const std::optional<qm::wstring> normal =
                NormalizeAttributeText(attribute, attribute.defaultValue);
            if (normal != attribute.defaultValue) {
                Fail(m_attribute + ": the default is not a value IIS would write");
            }
        }
        return attribute;
    }

    // The attributes, child elements and collection under `node`, into `element`.
    void ReadContent(const pugi::xml_node& node, ElementSchema& element) {
        for (const pugi::xml_node& child : node.children()) {
            At(child);
            const std::string_view kind = child.name();
            if (kind == "attribute") {
                AttributeSchema attribute = ReadAttribute(child);
                if (element.FindAttribute(attribute.name) != nullptr) {
                    Fail(m_attribute + ": described twice");
                }
                element.attributes.push_back(std::move(attribute));
            } else if (kind == "element") {
                CheckAttributes(child,
                                {"name", "isCollectionDefault", "allowUnrecognizedAttributes"});
                ElementSchema nested;
                nested.name = qm::from_utf8(child.attribute("name").value());
                nested.allowUnrecognizedAttributes =
                    ReadBool(child, "allowUnrecognizedAttributes", false);
                ReadContent(child, nested);
                At(child);
                AddChild(element, std::move(nested));
            } else if (kind == "collection") {
                ReadCollection(child, element);
            } else {
                Fail("unexpected <" + std::string(kind) + ">");
            }
        }
    }

    void AddChild(ElementSchema& parent, ElementSchema child) {
        if (child.name.empty() || parent.FindChild(child.name) != nullptr) {
            Fail("an element is unnamed or described twice: " + qm::to_utf8(child.name));
        }
        parent.children.push_back(std::move(child));
    }

    void ReadCollection(const pugi::xml_node& node, ElementSchema& holder) {
        CheckAttributes(node, {"addElement", "removeElement", "clearElement", "mergeAppend",
                               "allowDuplicates", "defaultElement", "allowUnrecognizedAttributes"});
        if (holder.collection) {
            Fail("an element holds two collections");
        }
        CollectionSchema collection;
        ElementSchema entry;
        entry.allowUnrecognizedAttributes = ReadBool(node, "allowUnrecognizedAttributes", false);
        std::string_view names = node.attribute("addElement").value();
        while (!names.empty()) {
            const size_t comma = names.find(',');
            collection.addElements.push_back(qm::from_utf8(names.substr(0, comma)));
            names = comma == std::string_view::npos ? "" : names.substr(comma + 1);
        }
        if (collection.addElements.empty() ||
            std::find(collection.addElements.begin(), collection.addElements.end(), u"") !=
                collection.addElements.end()) {
            Fail("a collection has no addElement");
        }
        collection.removeElement = qm::from_utf8(node.attribute("removeElement").value());
        collection.clearElement = qm::from_utf8(node.attribute("clearElement").value());
        collection.mergeAppend = ReadBool(node, "mergeAppend", true);
        collection.allowDuplicates = ReadBool(node, "allowDuplicates", false);
        collection.defaultElement = qm::from_utf8(node.attribute("defaultElement").value());
        ReadContent(node, entry);
        holder.collection = std::move(collection);
        for (const std::u16string& name : holder.collection->addElements) {
            holder.entries.push_back(entry);
            holder.entries.back().name = name;
        }
    }

    std::string_view m_text;
    std::string m_file;
    pugi::xml_node m_node;
    std::string m_section;
    std::string m_attribute;
};

// The defaults element of a collection: what an entry holds but its keys and its own
// collection, nothing required.
ElementSchema DefaultsOf(const ElementSchema& entry, const std::u16string& name) {
    ElementSchema defaults;
    defaults.name = name;
    for (const AttributeSchema& attribute : entry.attributes) {
        if (!attribute.isUniqueKey && !attribute.isCombinedKey) {
            defaults.attributes.push_back(attribute);
            defaults.attributes.back().required = false;
        }
    }
    defaults.children = entry.children;
    return defaults;
}

template <typename Item>
Item* FindMutable(std::vector<Item>& items, const std::u16string& name) {
    for (Item& item : items) {
        if (item.name == name) {
            return &item;
        }
    }
    return nullptr;
}

void TakeIfEmpty(std::u16string& mine, const std::u16string& theirs) {
    if (mine.empty()) {
        mine = theirs;
    }
}

// Adds what `from` describes to `into`: another file extending a section.
void Merge(ElementSchema& into, ElementSchema&& from, const std::string& where) {
    for (AttributeSchema& attribute : from.attributes) {
        if (into.FindAttribute(attribute.name) != nullptr) {
            throw SchemaError(where + ": attribute " + qm::to_utf8(attribute.name) +
                              " is described twice");
        }
        into.attributes.push_back(std::move(attribute));
    }
    for (ElementSchema& child : from.children) {
        if (ElementSchema* found = FindMutable(into.children, child.name)) {
            Merge(*found, std::move(child), where);
        } else {
            into.children.push_back(std::move(child));
        }
    }
    into.allowUnrecognizedAttributes |= from.allowUnrecognizedAttributes;
    if (!from.collection) {
        return;
    }
    if (!into.collection) {
        into.collection = std::move(from.collection);
        into.entries = std::move(from.entries);
        return;
    }
    CollectionSchema& collection = *into.collection;
    TakeIfEmpty(collection.removeElement, from.collection->removeElement);
    TakeIfEmpty(collection.clearElement, from.collection->clearElement);
    TakeIfEmpty(collection.defaultElement, from.collection->defaultElement);
    collection.mergeAppend = collection.mergeAppend && from.collection->mergeAppend;
    collection.allowDuplicates = collection.allowDuplicates || from.collection->allowDuplicates;
    for (ElementSchema& entry : from.entries) {
        if (ElementSchema* found = FindMutable(into.entries, entry.name)) {
            Merge(*found, std::move(entry), where);
        } else {
            collection.addElements.push_back(entry.name);
            into.entries.push_back(std::move(entry));
        }
    }
}

// Gives every element that holds a collection with a defaultElement that child (siteDefaults).
void AddDefaultsElements(ElementSchema& element) {
    for (ElementSchema& entry : element.entries) {
        AddDefaultsElements(entry);
    }
    for (ElementSchema& child : element.children) {
        AddDefaultsElements(child);
    }
    if (!element.collection || element.collection->defaultElement.empty() ||
        element.entries.empty()) {
        return;
    }
    ElementSchema defaults =
        DefaultsOf(element.entries.front(), element.collection->defaultElement);
    ElementSchema* existing = FindMutable(element.children, defaults.name);
    if (existing == nullptr) {
        element.children.push_back(std::move(defaults));
        return;
    }
    // Declared as an element as well: it takes what it does not describe itself.
    for (AttributeSchema& attribute : defaults.attributes) {
        if (existing->FindAttribute(attribute.name) == nullptr) {
            existing->attributes.push_back(std::move(attribute));
        }
    }
    for (ElementSchema& child : defaults.children) {
        if (existing->FindChild(child.name) == nullptr) {
            existing->children.push_back(std::move(child));
        }
    }
}

std::vector<SectionSchema> ReadFile(const SchemaFile& file) {
    pugi::xml_document document;
    const pugi::xml_parse_result parsed = document.load_buffer(file.text.data(), file.text.size());
    if (!parsed) {
        const size_t offset = std::min(static_cast<size_t>(parsed.offset), file.text.size());
        const size_t line = 1 + std::count(file.text.begin(), file.text.begin() + offset, '\n');
        throw SchemaError(file.name + "(" + std::to_string(line) +
                          "): the file is not well-formed XML: " + parsed.description());
    }
    const pugi::xml_node root = document.document_element();
    Reader reader(file.text, file.name);
    reader.At(root);
    if (std::string_view(root.name()) != "configSchema") {
        reader.Fail("the root element is not <configSchema>");
    }
    std::vector<SectionSchema> sections;
    for (const pugi::xml_node& node : root.children()) {
        Reader section(file.text, file.name);
        section.At(node);
        if (std::string_view(node.name()) != "sectionSchema") {
            section.Fail("unexpected <" + std::string(node.name()) + "> in <configSchema>");
        }
        sections.push_back(section.ReadSection(node));
        for (size_t i = 0; i + 1 < sections.size(); ++i) {
            if (sections[i].name == sections.back().name) {
                section.Fail("described twice");
            }
        }
    }
    return sections;
}

}  // namespace

Schema Schema::Parse(std::string_view xmlText, const std::string& fileName) {
    return FromFiles({{fileName, xmlText}});
}

Schema Schema::FromFiles(const std::vector<SchemaFile>& files) {
    std::vector<SectionSchema> sections;
    for (const SchemaFile& file : files) {
        for (SectionSchema& section : ReadFile(file)) {
            const auto found = std::find_if(
                sections.begin(), sections.end(),
                [&](const SectionSchema& known) { return known.name == section.name; });
            if (found == sections.end()) {
                sections.push_back(std::move(section));
                continue;
            }
            const std::string where = file.name + ": section '" + qm::to_utf8(section.name) + "'";
            if (section.machineConfigDeclaration) {
                if (found->machineConfigDeclaration) {
                    throw SchemaError(where + " carries its declaration twice");
                }
                found->machineConfigDeclaration = section.machineConfigDeclaration;
            }
            Merge(found->root, std::move(section.root), where);
        }
    }
    for (SectionSchema& section : sections) {
        AddDefaultsElements(section.root);
    }
    return Schema(std::move(sections));
}

}  // namespace webrig::sim::iis7
