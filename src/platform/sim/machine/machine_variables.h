#pragma once
// The system environment variables of the simulated machine (%SystemDrive%, %windir%, ...), as
// ExpandEnvironmentStringsW expands them in paths that configuration files store.

#include "platform/sim/machine/machine_config.h"
#include "support/wide_string.h"

namespace webrig::sim {

// Replaces each %NAME% of a known variable (names compared without regard to case); unknown
// names and a lone "%" stay as written.
qm::wstring ExpandMachineVariables(qm::wstring_view text, const MachineConfig& config);

}  // namespace webrig::sim
