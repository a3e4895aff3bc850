#pragma once
// Whether a section may be set in a web.config at a path: its overrideModeDefault, changed by
// <location overrideMode="Allow|Deny"> (or the older allowOverride) tags of applicationHost.config
// that hold the section, for that path or a path above it, the most specific tag winning.

#include <string>
#include <vector>

#include "platform/sim/iis7/section_declarations.h"
#include "platform/sim/iis7/xml_tree.h"
#include "support/wide_string.h"

namespace webrig::sim::iis7 {

bool OverrideAllowed(const SectionDeclaration& section,
                     const std::vector<std::string>& sectionNames,
                     const XmlElement& appHostConfiguration, const std::vector<qm::wstring>& path);

}  // namespace webrig::sim::iis7
