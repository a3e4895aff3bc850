#pragma once
// Unified diffs of machine files, by the dtl library's sequence comparison.

#include <string>

#include "machine_files.h"

namespace webrig::cli {

// The unified diff of one file ("--- a/<path>", "+++ b/<path>", hunks with three lines of
// context); empty when the bytes are equal. UTF-16LE files (HKLM.reg as regedit writes it) are
// compared as text; other files holding zero bytes are reported as binary.
std::string UnifiedDiff(const std::string& path, const std::string* before,
                        const std::string* after);

// Every changed, added or removed file, in path order.
std::string DiffMachineFiles(const MachineFiles& before, const MachineFiles& after);

}  // namespace webrig::cli
