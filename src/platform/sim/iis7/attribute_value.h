#pragma once
// How IIS reads and writes an attribute's value: the text a file holds is checked against the
// attribute's type and limits and brought to the form IIS writes.

#include <cstdint>
#include <optional>
#include <variant>

#include "platform/sim/iis7/schema.h"
#include "support/wide_string.h"

namespace webrig::sim::iis7 {

// The value of a property as the administration objects hand it out: empty, bool, integer or
// text (enums and flags as text, as IIS's string value shows them; timeSpans as text).
using PropertyValue = std::variant<std::monostate, bool, int64_t, qm::wstring>;

// Checks `text` for `attribute` and returns the text to store ("True" becomes "true", an enum
// number becomes its name, flags are written "Read, Script"); nullopt when the type refuses it
// (IIS gives 0x8007000D then). Encryption is not applied here.
std::optional<qm::wstring> NormalizeAttributeText(const AttributeSchema& attribute,
                                                  qm::wstring_view text);

// Converts a value given to a property into stored text, with the same checks. Text goes through
// NormalizeAttributeText; a bool becomes "true" or "false" and a number its decimal text, then
// the same rules apply (so 2 names an enum value). A number given to a boolean is true unless 0.
// Empty refuses.
std::optional<qm::wstring> NormalizeAttributeValue(const AttributeSchema& attribute,
                                                   const PropertyValue& value);

// The typed value of stored (or default) text, as reading the property gives it: bool for
// booleans, integer for numbers, text for the rest. Text the type cannot read (a hand-edited
// file) comes back as text, unchanged.
PropertyValue ReadAttributeValue(const AttributeSchema& attribute, qm::wstring_view storedText);

}  // namespace webrig::sim::iis7
