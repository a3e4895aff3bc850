#pragma once
// Where the web.config of a configuration path lives: the physical path of the longest virtual
// directory that the path's virtual path falls in, plus the remaining segments as sub-folders.

#include <vector>

#include "platform/sim/iis7/xml_tree.h"
#include "platform/sim/machine/machine_config.h"
#include "support/wide_string.h"

namespace webrig::sim::iis7 {

// `path` holds the site name and the virtual path's segments (at least the site). Returns the
// Windows folder with environment variables expanded. Throws ConfigFailure: 0x80070002 when the
// site does not exist, 0x80070003 when no virtual directory holds the path.
qm::wstring PhysicalFolder(const XmlElement& configuration, const std::vector<qm::wstring>& path,
                           const MachineConfig& machine);

// The <site> of applicationHost.config's sites section with this name (any case), or null.
const XmlElement* FindSite(const XmlElement& configuration, qm::wstring_view siteName);

}  // namespace webrig::sim::iis7
