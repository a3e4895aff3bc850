#include "platform/sim/iis7/section_validation.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

#include "platform/sim/iis7/attribute_value.h"
#include "platform/sim/iis7/config_encryption.h"
#include "platform/sim/iis7/config_failure.h"
#include "platform/sim/iis7/time_span.h"

namespace webrig::sim::iis7 {
namespace {

std::string Names(const AttributeSchema& attribute) {
    std::string names;
    for (const NamedValue& value : attribute.values) {
        names += (names.empty() ? "" : ", ") + qm::to_utf8(value.name);
    }
    return names;
}

std::optional<int64_t> ReadNumber(std::string_view text) {
    int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return value;
}

std::string IntegerRefusal(const AttributeSchema& attribute, std::string_view text) {
    if (!ReadNumber(text)) {
        return "Invalid integer value";
    }
    const auto [lowest, highest] = IntegerTypeRange(attribute.type);
    return "Integer value must be between " + std::to_string(attribute.minimum.value_or(lowest)) +
           " and " + std::to_string(attribute.maximum.value_or(highest)) + " inclusive";
}

std::string TimeSpanRefusal(const AttributeSchema& attribute, std::string_view text) {
    if (!ParseTimeSpan(qm::from_utf8(text)) || !attribute.minimum || !attribute.maximum) {
        return "Invalid timespan value";
    }
    // A schema file may name bounds no time span reaches.
    constexpr int64_t kLargest = std::numeric_limits<int64_t>::max() / kTicksPerSecond;
    const auto format = [&](int64_t seconds) {
        return qm::to_utf8(
            FormatTimeSpan(std::clamp<int64_t>(seconds, 0, kLargest) * kTicksPerSecond));
    };
    std::string message = "Timespan value must be between " + format(*attribute.minimum) + " and " +
                          format(*attribute.maximum) + " seconds inclusive";
    if (attribute.granularitySeconds != 0) {
        message +=
            ", with a granularity of " + std::to_string(attribute.granularitySeconds) + " seconds";
    }
    return message;
}

std::string StringRefusal(const AttributeSchema& attribute) {
    switch (attribute.validation) {
        case Validation::siteName:
            return "Invalid site name";
        case Validation::applicationPoolName:
            return "Invalid application pool name";
        case Validation::virtualPath:
            return "Invalid virtual path";
        default:
            return "String must not be empty";
    }
}

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

constexpr std::array<std::string_view, 6> kSystemAttributes = {
    "lockAttributes", "lockAllAttributesExcept",
    "lockElements",   "lockAllElementsExcept",
    "lockItem",       "configSource"};

bool IsSystemAttribute(std::string_view name) {
    for (const std::string_view known : kSystemAttributes) {
        if (known == name) {
            return true;
        }
    }
    return false;
}

class Checker {
  public:
    Checker(uint32_t schemaId, const std::string& fileName)
        : m_schema(schemaId), m_file(fileName) {}

    void Check(const XmlElement& element, const ElementSchema& schema) {
        if (element.checked.schema.load(std::memory_order_relaxed) == m_schema) {
            return;
        }
        for (const XmlAttribute& attribute : element.attributes) {
            CheckAttribute(element, schema.FindExactAttribute(attribute.Name()), attribute,
                           schema.allowUnrecognizedAttributes);
        }
        for (const XmlChild& child : element.children) {
            if (!child.element) {
                continue;
            }
            const std::string_view name = child.element->name;
            if (schema.collection) {
                const CollectionSchema& collection = *schema.collection;
                if (const ElementSchema* entry = schema.FindExactEntry(name)) {
                    Check(*child.element, *entry);
                    continue;
                }
                if (!collection.utf8Remove.empty() && name == collection.utf8Remove) {
                    CheckDirective(*child.element, &schema.entries.front());
                    continue;
                }
                if (!collection.utf8Clear.empty() && name == collection.utf8Clear) {
                    CheckDirective(*child.element, nullptr);
                    continue;
                }
            }
            if (const ElementSchema* nested = schema.FindExactChild(name)) {
                Check(*child.element, *nested);
                continue;
            }
            Refuse(*child.element, "Unrecognized element '" + std::string(name) + "'");
        }
        element.checked.schema.store(m_schema, std::memory_order_relaxed);
    }

  private:
    [[noreturn]] void Refuse(const XmlElement& element, const std::string& message) const {
        Fail(qm::hr::invalid_data, m_file + "(" + std::to_string(element.line) + "): " + message);
    }

    void CheckAttribute(const XmlElement& element, const AttributeSchema* described,
                        const XmlAttribute& attribute, bool allowUnrecognized) const {
        if (described == nullptr) {
            if (allowUnrecognized || IsSystemAttribute(attribute.Name())) {
                return;
            }
            Refuse(element, "Unrecognized attribute '" + std::string(attribute.Name()) +
                                "'. Note that attribute names are case-sensitive.");
        }
        if (described->encrypted && ConfigEncryption::IsEncrypted(qm::from_utf8(attribute.value))) {
            return;
        }
        if (std::optional<std::string> refusal = ValueRefusal(*described, attribute.value)) {
            Refuse(element, *refusal);
        }
    }

    // <remove> names an entry by its keys; <clear> takes nothing.
    void CheckDirective(const XmlElement& element, const ElementSchema* entry) const {
        for (const XmlAttribute& attribute : element.attributes) {
            const AttributeSchema* key =
                entry ? entry->FindExactAttribute(attribute.Name()) : nullptr;
            if (key != nullptr && !key->isUniqueKey && !key->isCombinedKey) {
                key = nullptr;
            }
            CheckAttribute(element, key, attribute, false);
        }
        for (const XmlChild& child : element.children) {
            if (child.element) {
                Refuse(*child.element, "Unrecognized element '" + child.element->name + "'");
            }
        }
    }

    uint32_t m_schema;
    const std::string& m_file;
};

}  // namespace

std::optional<std::string> ValueRefusal(const AttributeSchema& attribute, std::string_view text) {
    if (attribute.allowInfinite && text == "Infinite") {
        return std::nullopt;
    }
    if (attribute.type == AttributeType::timeSpan &&
        attribute.timeSpanFormat != TimeSpanFormat::string) {
        const std::optional<int64_t> number = ReadNumber(text);
        return number && *number >= 0 ? std::nullopt
                                      : std::optional<std::string>("Invalid timespan value");
    }
    if (attribute.validateTrimmed && !text.empty() &&
        (IsBlank(text.front()) || IsBlank(text.back()))) {
        return "String must not begin or end with white space";
    }
    if (attribute.excludedRange) {
        const std::optional<int64_t> number = ReadNumber(text);
        const auto [low, high] = *attribute.excludedRange;
        if (number && *number >= low && *number <= high) {
            return "Integer value must not be between " + std::to_string(low) + " and " +
                   std::to_string(high) + " inclusive";
        }
    }
    if (NormalizeAttributeText(attribute, qm::from_utf8(text))) {
        return std::nullopt;
    }
    switch (attribute.type) {
        case AttributeType::boolean:
            return "Boolean value must be 'true' or 'false'";
        case AttributeType::uint32:
        case AttributeType::int32:
        case AttributeType::int64:
            return IntegerRefusal(attribute, text);
        case AttributeType::timeSpan:
            return TimeSpanRefusal(attribute, text);
        case AttributeType::enumeration:
            return "Enum must be one of " + Names(attribute);
        case AttributeType::flags: {
            AttributeSchema anyMask = attribute;
            anyMask.validateNonEmpty = false;
            return NormalizeAttributeText(anyMask, qm::from_utf8(text))
                       ? "String must not be empty"
                       : "Flags must be some combination of " + Names(attribute);
        }
        case AttributeType::string:
            return StringRefusal(attribute);
    }
    return std::nullopt;
}

void ValidateSection(const SectionView& view, const Schema& schema) {
    for (const ConfigLevel& level : view.levels) {
        for (const FoundElement& section : view.session->SectionsAt(level, view.sectionNames())) {
            Checker(schema.id(), level.file->displayName)
                .Check(*section.element, view.schema->root);
        }
    }
}

}  // namespace webrig::sim::iis7
