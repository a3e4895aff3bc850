#include "platform/sim/iis7/section_delegation.h"

#include <optional>

#include "platform/sim/iis7/config_path.h"
#include "platform/sim/iis7/config_session.h"

namespace webrig::sim::iis7 {
namespace {

std::optional<bool> Delegation(const XmlElement& location) {
    if (const XmlAttribute* mode = location.FindAttribute("overrideMode")) {
        if (mode->value == "Allow") {
            return true;
        }
        if (mode->value == "Deny") {
            return false;
        }
        return std::nullopt;  // "Inherit"
    }
    if (const XmlAttribute* allow = location.FindAttribute("allowOverride")) {
        return allow->value != "false";
    }
    return std::nullopt;
}

}  // namespace

bool OverrideAllowed(const SectionDeclaration& section,
                     const std::vector<std::string>& sectionNames,
                     const XmlElement& appHostConfiguration, const std::vector<qm::wstring>& path) {
    bool allowed = section.overrideAllowed;
    size_t bestDepth = 0;
    bool found = false;
    for (const XmlChild& child : appHostConfiguration.children) {
        if (!child.element || child.element->name != "location") {
            continue;
        }
        // A tag's overrideMode is that of the sections it holds, not of every section.
        const std::optional<bool> delegation = Delegation(*child.element);
        if (!delegation || FindSections(*child.element, sectionNames).empty()) {
            continue;
        }
        const std::vector<qm::wstring> segments = LocationSegments(*child.element);
        if (!IsPathPrefix(segments, path) || (found && segments.size() < bestDepth)) {
            continue;
        }
        allowed = *delegation;
        bestDepth = segments.size();
        found = true;
    }
    return allowed;
}

}  // namespace webrig::sim::iis7
