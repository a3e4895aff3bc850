// Schema::Parse: reads schema text in the format of IIS's schema files.

#include <initializer_list>
#include <pugixml.hpp>
#include <string>

#include "platform/sim/iis7/attribute_value.h"
#include "platform/sim/iis7/schema.h"

namespace webrig::sim::iis7 {
namespace {

class Reader {
  public:
    SectionSchema ReadSection(const pugi::xml_node& node) {
        SectionSchema section;
        m_section = node.attribute("name").value();
        CheckAttributes(node, {"name", "declaredIn", "allowDefinition", "overrideModeDefault"});
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
        ReadContent(node, section.root);
        return section;
    }

    [[noreturn]] void Fail(const std::string& what) const {
        throw SchemaError("schema of section '" + m_section + "': " + what);
    }

  private:
    void CheckAttributes(const pugi::xml_node& node,
                         std::initializer_list<std::string_view> known) {
        for (const pugi::xml_attribute& attribute : node.attributes()) {
            bool found = false;
            for (const std::string_view name : known) {
                found = found || name == attribute.name();
            }
            if (!found) {
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

    std::vector<int64_t> ReadNumbers(const char* text, size_t least, size_t most) {
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
                Fail(std::string("validationParameter '") + text + "' is not a list of numbers");
            }
            if (comma == std::string_view::npos) {
                break;
            }
            rest.remove_prefix(comma + 1);
        }
        if (numbers.size() < least || numbers.size() > most) {
            Fail(std::string("validationParameter '") + text + "' has the wrong count of numbers");
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
        const char* parameter = node.attribute("validationParameter").value();
        const bool number = attribute.type == AttributeType::uint32 ||
                            attribute.type == AttributeType::int32 ||
                            attribute.type == AttributeType::int64;
        const bool string = attribute.type == AttributeType::string;
        if (validation.empty()) {
            if (*parameter != '\0') {
                Fail(m_attribute + ": validationParameter without validationType");
            }
        } else if (validation == "integerRange" && number) {
            const std::vector<int64_t> range = ReadNumbers(parameter, 2, 2);
            attribute.minimum = range[0];
            attribute.maximum = range[1];
        } else if (validation == "timeSpanRange" && attribute.type == AttributeType::timeSpan) {
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
            attribute.validateNonEmpty = true;
        } else if (validation == "siteName" && string) {
            attribute.validateNonEmpty = true;
            attribute.invalidCharacters = u"/?";
        } else if (validation == "applicationPoolName" && string) {
            attribute.validateNonEmpty = true;
            attribute.invalidCharacters = u"|<>&\"/[]+=;:,?*@";
        } else if (validation == "virtualPath" && string) {
            attribute.validateVirtualPath = true;
        } else {
            Fail(m_attribute + ": validationType '" + std::string(validation) +
                 "' does not apply to its type");
        }
        if (validation != "integerRange" && validation != "timeSpanRange" && *parameter != '\0') {
            Fail(m_attribute + ": validationType " + std::string(validation) +
                 " takes no parameter");
        }
    }

    void ReadNamedValues(const pugi::xml_node& node, AttributeSchema& attribute) {
        const bool named =
            attribute.type == AttributeType::enumeration || attribute.type == AttributeType::flags;
        const char* kind = attribute.type == AttributeType::flags ? "flag" : "enum";
        for (const pugi::xml_node& child : node.children()) {
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
        if (named && attribute.values.empty()) {
            Fail(m_attribute + ": no named values");
        }
    }

    AttributeSchema ReadAttribute(const pugi::xml_node& node) {
        CheckAttributes(node, {"name", "type", "defaultValue", "required", "isUniqueKey",
                               "isCombinedKey", "caseSensitive", "encrypted", "expanded",
                               "validationType", "validationParameter"});
        AttributeSchema attribute;
        m_attribute = node.attribute("name").value();
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
        ReadValidation(node, attribute);
        ReadNamedValues(node, attribute);
        // A default is written as IIS writes values, so it must pass the value rules unchanged.
        if (node.attribute("defaultValue")) {
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
            const std::string_view kind = child.name();
            if (kind == "attribute") {
                AttributeSchema attribute = ReadAttribute(child);
                if (element.FindAttribute(attribute.name) != nullptr) {
                    Fail(m_attribute + ": described twice");
                }
                element.attributes.push_back(std::move(attribute));
            } else if (kind == "element") {
                CheckAttributes(child, {"name"});
                ElementSchema nested;
                nested.name = qm::from_utf8(child.attribute("name").value());
                ReadContent(child, nested);
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
                               "allowDuplicates", "defaultElement"});
        if (holder.collection) {
            Fail("an element holds two collections");
        }
        CollectionSchema collection;
        ElementSchema entry;
        entry.name = qm::from_utf8(node.attribute("addElement").value());
        if (entry.name.empty()) {
            Fail("a collection has no addElement");
        }
        collection.addElements.push_back(entry.name);
        collection.removeElement = qm::from_utf8(node.attribute("removeElement").value());
        collection.clearElement = qm::from_utf8(node.attribute("clearElement").value());
        collection.mergeAppend = ReadBool(node, "mergeAppend", true);
        collection.allowDuplicates = ReadBool(node, "allowDuplicates", false);
        collection.defaultElement = qm::from_utf8(node.attribute("defaultElement").value());
        ReadContent(node, entry);
        if (!collection.defaultElement.empty()) {
            AddChild(holder, DefaultsOf(entry, collection.defaultElement));
        }
        holder.collection = std::move(collection);
        holder.entries.push_back(std::move(entry));
    }

    // The defaults element of a collection: what an entry holds but its keys and its own
    // collection, nothing required.
    static ElementSchema DefaultsOf(const ElementSchema& entry, const std::u16string& name) {
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

    std::string m_section;
    std::string m_attribute;
};

}  // namespace

Schema Schema::Parse(std::string_view xmlText) {
    pugi::xml_document document;
    const pugi::xml_parse_result parsed = document.load_buffer(xmlText.data(), xmlText.size());
    if (!parsed) {
        throw SchemaError("the schema is not well-formed XML at byte " +
                          std::to_string(parsed.offset) + ": " + parsed.description());
    }
    const pugi::xml_node root = document.document_element();
    if (std::string_view(root.name()) != "configSchema") {
        throw SchemaError("the schema's root element is not <configSchema>");
    }
    std::vector<SectionSchema> sections;
    for (const pugi::xml_node& node : root.children()) {
        Reader reader;
        if (std::string_view(node.name()) != "sectionSchema") {
            reader.Fail("unexpected <" + std::string(node.name()) + "> in <configSchema>");
        }
        SectionSchema section = reader.ReadSection(node);
        for (const SectionSchema& earlier : sections) {
            if (earlier.name == section.name) {
                reader.Fail("described twice");
            }
        }
        sections.push_back(std::move(section));
    }
    return Schema(std::move(sections));
}

}  // namespace webrig::sim::iis7
