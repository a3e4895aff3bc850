#pragma once
// `webrig plan`: the install run on a throw-away copy of the machine, shown as the unified diff
// of every file it changed and a short summary of the IIS items that appeared or went.

#include <filesystem>
#include <ostream>

#include "install_run.h"

namespace webrig::cli {

// The diff and summary go to `out`, the run's own lines to `output`. The exit code of the run.
int RunPlan(const std::filesystem::path& machineFolder, const InstallRequest& request,
            RunOutput& output, std::ostream& out);

}  // namespace webrig::cli
