#pragma once
// How IIS reads and writes an attribute's value: the text a file holds is checked against the
// attribute's type and limits and brought to the form IIS writes.

#include <cstdint>
#include <optional>
#include <utility>

#include "platform/automation.h"
#include "platform/sim/iis7/schema.h"
#include "support/wide_string.h"

namespace webrig::sim::iis7 {

// The values an integer type holds, before the schema's own bounds.
std::pair<int64_t, int64_t> IntegerTypeRange(AttributeType type);

// Checks `text` for `attribute` and returns the text to store ("True" becomes "true", an enum
// number becomes its name, flags are written "Read, Script"); nullopt when the type refuses it
// (IIS gives 0x8007000D then). Encryption is not applied here.
std::optional<qm::wstring> NormalizeAttributeText(const AttributeSchema& attribute,
                                                  qm::wstring_view text);

// Converts a value given to a property (put_Value) into stored text, with the same checks. Text
// goes through NormalizeAttributeText for every type. A bool becomes "true" or "false"; a number
// is a truth value for booleans (0 is false), a count of 100 ns ticks for time spans, and its
// decimal text for the rest (so 2 names an enum value). Empty refuses.
std::optional<qm::wstring> NormalizeAttributeValue(const AttributeSchema& attribute,
                                                   const platform::Variant& value);

// The value of stored (or default) text as get_Value hands it out: VT_BOOL for bool, VT_UI4 for
// uint, VT_I4 for int, enum (the value) and flags (the mask), VT_I8 for int64, VT_UI8 for
// timeSpan (100 ns ticks), VT_BSTR for string. Text the type cannot read (a hand-edited file)
// comes back as text, unchanged.
platform::Variant ReadAttributeValue(const AttributeSchema& attribute, qm::wstring_view storedText);

}  // namespace webrig::sim::iis7
