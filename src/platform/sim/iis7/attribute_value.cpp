#include "platform/sim/iis7/attribute_value.h"

#include <climits>
#include <limits>
#include <string>
#include <type_traits>

#include "platform/sim/iis7/time_span.h"
#include "support/case_insensitive.h"

namespace webrig::sim::iis7 {
namespace {

bool IsDigit(char16_t c) noexcept {
    return c >= u'0' && c <= u'9';
}

qm::wstring Decimal(int64_t value) {
    return qm::widen_ascii(std::to_string(value));
}

qm::wstring_view TrimBlanks(qm::wstring_view text) {
    while (!text.empty() && text.front() == u' ') {
        text.remove_prefix(1);
    }
    while (!text.empty() && text.back() == u' ') {
        text.remove_suffix(1);
    }
    return text;
}

// Decimal digits with an optional leading "-"; nullopt when the text is anything else or the
// value leaves the 64-bit range.
std::optional<int64_t> ReadInteger(qm::wstring_view text, bool allowMinus) {
    const bool negative = allowMinus && !text.empty() && text.front() == u'-';
    if (negative) {
        text.remove_prefix(1);
    }
    if (text.empty()) {
        return std::nullopt;
    }
    // The magnitude of the most negative value is one more than the largest positive one.
    const uint64_t limit =
        static_cast<uint64_t>(std::numeric_limits<int64_t>::max()) + (negative ? 1 : 0);
    uint64_t magnitude = 0;
    for (const char16_t c : text) {
        if (!IsDigit(c)) {
            return std::nullopt;
        }
        const auto digit = static_cast<uint64_t>(c - u'0');
        if (magnitude > (limit - digit) / 10) {
            return std::nullopt;
        }
        magnitude = magnitude * 10 + digit;
    }
    if (negative) {
        return magnitude == limit ? std::numeric_limits<int64_t>::min()
                                  : -static_cast<int64_t>(magnitude);
    }
    return static_cast<int64_t>(magnitude);
}

bool InRange(const AttributeSchema& attribute, int64_t value) {
    return (!attribute.minimum || value >= *attribute.minimum) &&
           (!attribute.maximum || value <= *attribute.maximum) &&
           !(attribute.excludedRange && value >= attribute.excludedRange->first &&
             value <= attribute.excludedRange->second);
}

std::optional<qm::wstring> NormalizeBoolean(qm::wstring_view text) {
    if (qm::iequals(text, u"true")) {
        return u"true";
    }
    if (qm::iequals(text, u"false")) {
        return u"false";
    }
    return std::nullopt;
}

std::optional<qm::wstring> NormalizeInteger(const AttributeSchema& attribute,
                                            qm::wstring_view text) {
    const auto [lowest, highest] = IntegerTypeRange(attribute.type);
    const std::optional<int64_t> value = ReadInteger(text, lowest < 0);
    if (!value || *value < lowest || *value > highest || !InRange(attribute, *value)) {
        return std::nullopt;
    }
    return Decimal(*value);
}

std::optional<qm::wstring> NormalizeTimeSpan(const AttributeSchema& attribute,
                                             qm::wstring_view text) {
    const std::optional<int64_t> ticks = ParseTimeSpan(text);
    if (!ticks) {
        return std::nullopt;
    }
    constexpr int64_t kLargestSeconds = std::numeric_limits<int64_t>::max() / kTicksPerSecond;
    if ((attribute.minimum && *ticks < *attribute.minimum * kTicksPerSecond) ||
        (attribute.maximum &&
         *attribute.maximum<kLargestSeconds&& * ticks> * attribute.maximum * kTicksPerSecond) ||
        (attribute.granularitySeconds != 0 &&
         *ticks % (int64_t{attribute.granularitySeconds} * kTicksPerSecond) != 0)) {
        return std::nullopt;
    }
    return FormatTimeSpan(*ticks);
}

const NamedValue* FindName(const AttributeSchema& attribute, qm::wstring_view name) {
    for (const NamedValue& named : attribute.values) {
        if (qm::iequals(named.name, name)) {
            return &named;
        }
    }
    return nullptr;
}

std::optional<uint32_t> ReadUnsigned32(qm::wstring_view text) {
    const std::optional<int64_t> value = ReadInteger(text, false);
    if (!value || *value > std::numeric_limits<uint32_t>::max()) {
        return std::nullopt;
    }
    return static_cast<uint32_t>(*value);
}

std::optional<qm::wstring> NormalizeEnum(const AttributeSchema& attribute, qm::wstring_view text) {
    if (const NamedValue* named = FindName(attribute, text)) {
        return named->name;
    }
    if (const std::optional<uint32_t> number = ReadUnsigned32(text)) {
        for (const NamedValue& named : attribute.values) {
            if (named.value == *number) {
                return named.name;
            }
        }
    }
    return std::nullopt;
}

// The names of `mask` in schema order, joined by ", "; nullopt when some bit has no name.
std::optional<qm::wstring> FormatFlags(const AttributeSchema& attribute, uint32_t mask) {
    qm::wstring out;
    if (mask == 0) {
        for (const NamedValue& named : attribute.values) {
            if (named.value == 0) {
                return named.name;
            }
        }
        return out;
    }
    uint32_t named = 0;
    for (const NamedValue& flag : attribute.values) {
        if (flag.value != 0 && (mask & flag.value) == flag.value) {
            if (!out.empty()) {
                out += u", ";
            }
            out += flag.name;
            named |= flag.value;
        }
    }
    if (named != mask) {
        return std::nullopt;
    }
    return out;
}

// The mask of names joined by ","; blank text is 0. nullopt when a name is unknown.
std::optional<uint32_t> ReadFlagNames(const AttributeSchema& attribute, qm::wstring_view text) {
    if (TrimBlanks(text).empty()) {
        return 0;
    }
    uint32_t mask = 0;
    while (true) {
        const size_t comma = text.find(u',');
        const NamedValue* named = FindName(attribute, TrimBlanks(text.substr(0, comma)));
        if (named == nullptr) {
            return std::nullopt;
        }
        mask |= named->value;
        if (comma == qm::wstring_view::npos) {
            return mask;
        }
        text.remove_prefix(comma + 1);
    }
}

std::optional<qm::wstring> NormalizeFlags(const AttributeSchema& attribute, qm::wstring_view text) {
    std::optional<uint32_t> mask = ReadUnsigned32(text);
    if (!mask) {
        mask = ReadFlagNames(attribute, text);
    }
    const std::optional<qm::wstring> stored = mask ? FormatFlags(attribute, *mask) : std::nullopt;
    // Judged on the stored form, so that "0" is refused wherever "" is.
    if (stored && attribute.validateNonEmpty && stored->empty()) {
        return std::nullopt;
    }
    return stored;
}

// "/" or "/a/b": no trailing "/" and no empty, "." or ".." segment.
bool IsVirtualPath(qm::wstring_view path) {
    if (path == u"/") {
        return true;
    }
    if (path.empty() || path.front() != u'/') {
        return false;
    }
    path.remove_prefix(1);
    while (true) {
        const size_t slash = path.find(u'/');
        const qm::wstring_view segment = path.substr(0, slash);
        if (segment.empty() || segment == u"." || segment == u"..") {
            return false;
        }
        if (slash == qm::wstring_view::npos) {
            return true;
        }
        path.remove_prefix(slash + 1);
    }
}

std::optional<qm::wstring> NormalizeString(const AttributeSchema& attribute,
                                           qm::wstring_view text) {
    if ((attribute.validateNonEmpty && text.empty()) ||
        text.find_first_of(attribute.invalidCharacters) != qm::wstring_view::npos ||
        (attribute.validateVirtualPath && !IsVirtualPath(text))) {
        return std::nullopt;
    }
    return qm::wstring(text);
}

}  // namespace

std::pair<int64_t, int64_t> IntegerTypeRange(AttributeType type) {
    switch (type) {
        case AttributeType::uint32:
            return {0, std::numeric_limits<uint32_t>::max()};
        case AttributeType::int32:
            return {std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()};
        default:
            return {std::numeric_limits<int64_t>::min(), std::numeric_limits<int64_t>::max()};
    }
}

std::optional<qm::wstring> NormalizeAttributeText(const AttributeSchema& attribute,
                                                  qm::wstring_view text) {
    switch (attribute.type) {
        case AttributeType::boolean:
            return NormalizeBoolean(text);
        case AttributeType::uint32:
        case AttributeType::int32:
        case AttributeType::int64:
            return NormalizeInteger(attribute, text);
        case AttributeType::timeSpan:
            return NormalizeTimeSpan(attribute, text);
        case AttributeType::enumeration:
            return NormalizeEnum(attribute, text);
        case AttributeType::flags:
            return NormalizeFlags(attribute, text);
        case AttributeType::string:
            return NormalizeString(attribute, text);
    }
    return std::nullopt;
}

std::optional<qm::wstring> NormalizeAttributeValue(const AttributeSchema& attribute,
                                                   const platform::Variant& value) {
    return std::visit(
        [&](const auto& held) -> std::optional<qm::wstring> {
            using Held = std::decay_t<decltype(held)>;
            if constexpr (std::is_same_v<Held, std::monostate>) {
                return std::nullopt;
            } else if constexpr (std::is_same_v<Held, qm::wstring>) {
                return NormalizeAttributeText(attribute, held);
            } else if constexpr (std::is_same_v<Held, bool>) {
                return NormalizeAttributeText(attribute, held ? u"true" : u"false");
            } else if (attribute.type == AttributeType::boolean) {
                // A number given to a boolean is a C-style truth value, as VARIANT conversion
                // has it.
                return held != 0 ? u"true" : u"false";
            } else if (attribute.type == AttributeType::timeSpan) {
                if (held < 0 || static_cast<uint64_t>(held) > INT64_MAX) {
                    return std::nullopt;
                }
                return NormalizeAttributeText(attribute,
                                              FormatTimeSpan(static_cast<int64_t>(held)));
            } else {
                return NormalizeAttributeText(attribute, qm::widen_ascii(std::to_string(held)));
            }
        },
        value);
}

platform::Variant ReadAttributeValue(const AttributeSchema& attribute,
                                     qm::wstring_view storedText) {
    switch (attribute.type) {
        case AttributeType::boolean:
            if (const std::optional<qm::wstring> flag = NormalizeBoolean(storedText)) {
                return *flag == u"true";
            }
            break;
        case AttributeType::uint32:
            if (const std::optional<uint32_t> number = ReadUnsigned32(storedText)) {
                return *number;
            }
            break;
        case AttributeType::int32:
            if (const std::optional<int64_t> number = ReadInteger(storedText, true);
                number && *number >= INT32_MIN && *number <= INT32_MAX) {
                return static_cast<int32_t>(*number);
            }
            break;
        case AttributeType::int64:
            if (const std::optional<int64_t> number = ReadInteger(storedText, true)) {
                return *number;
            }
            break;
        case AttributeType::enumeration:
            if (const NamedValue* named = FindName(attribute, storedText)) {
                return static_cast<int32_t>(named->value);
            }
            if (const std::optional<uint32_t> number = ReadUnsigned32(storedText)) {
                return static_cast<int32_t>(*number);
            }
            break;
        case AttributeType::flags: {
            std::optional<uint32_t> mask = ReadUnsigned32(storedText);
            if (!mask) {
                mask = ReadFlagNames(attribute, storedText);
            }
            if (mask) {
                return static_cast<int32_t>(*mask);
            }
            break;
        }
        case AttributeType::timeSpan:
            if (const std::optional<int64_t> ticks = ParseTimeSpan(storedText)) {
                return static_cast<uint64_t>(*ticks);
            }
            break;
        case AttributeType::string:
            break;
    }
    // Text, and stored text a hand-edited file got wrong: handed out as it stands.
    return qm::wstring(storedText);
}

}  // namespace webrig::sim::iis7
