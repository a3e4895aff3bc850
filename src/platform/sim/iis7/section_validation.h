#pragma once
// Reading is as strict as IIS: when a section is read, what the files hold for it must be what
// the schema describes. Every attribute and child element must be known, spelled as the schema
// spells it, and every value must pass its type and validator; otherwise reading the section
// fails with 0x8007000D and IIS's message, naming the file and line. Only the section read is
// checked, so the other sections of the same file stay readable, and only where the section
// applies (the levels on the way to the path read).

#include <optional>
#include <string>
#include <string_view>

#include "platform/sim/iis7/config_objects.h"
#include "platform/sim/iis7/schema.h"
#include "platform/sim/iis7/xml_tree.h"

namespace webrig::sim::iis7 {

// Why IIS refuses `text` as a value of `attribute` ("Enum must be one of Integrated, Classic"),
// or nullopt when the value is accepted.
std::optional<std::string> ValueRefusal(const AttributeSchema& attribute, std::string_view text);

// Checks every definition of the view's section on the way to its path, top level first;
// throws ConfigFailure (0x8007000D, "file(line): message") at the first thing IIS refuses.
// Elements found valid are marked with the schema's id and not checked again: an element
// changes only through MakeMutable, which drops the mark.
void ValidateSection(const SectionView& view, const Schema& schema);

}  // namespace webrig::sim::iis7
