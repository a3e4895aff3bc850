#include "plan.h"

#include <system_error>

#include "command_error.h"
#include "file_diff.h"
#include "machine_files.h"
#include "machine_folder.h"
#include "machine_report.h"
#include "platform/sim/machine/machine_layout.h"
#include "setup_folder.h"

namespace webrig::cli {
namespace {

MachineReport ReportOf(const std::filesystem::path& folder) {
    return ReadMachineReport(*OpenMachine(folder));
}

}  // namespace

int RunPlan(const std::filesystem::path& machineFolder, const InstallRequest& request,
            RunOutput& output, std::ostream& out) {
    const MachineReport before = ReportOf(machineFolder);
    const MachineFiles original = ReadMachineFiles(machineFolder);
    const ScratchFolder scratch;
    const std::filesystem::path copy = scratch.path() / "machine";
    std::error_code error;
    std::filesystem::copy(machineFolder, copy, std::filesystem::copy_options::recursive, error);
    std::filesystem::remove(sim::MachineLockPath(copy), error);
    if (!std::filesystem::exists(sim::MachineJsonPath(copy))) {
        throw InputError("cannot copy the machine " + machineFolder.string());
    }
    InstallRequest onCopy = request;
    onCopy.journalPath = (scratch.path() / "journal").string();
    onCopy.throwaway = true;
    const int exitCode = RunInstall(copy, onCopy, output);
    output.Finish();

    out << DiffMachineFiles(original, ReadMachineFiles(copy));
    const std::vector<std::string> changes = DescribeReportChanges(before, ReportOf(copy));
    out << "\nSummary";
    if (changes.empty()) {
        out << ": no IIS item would be created or removed\n";
    } else {
        out << "\n";
        for (const std::string& change : changes) {
            out << "  " << change << "\n";
        }
    }
    if (exitCode == kRunFailed) {
        out << "The install would fail (see above); the changes shown are those made before the "
               "failure.\n";
    }
    return exitCode;
}

}  // namespace webrig::cli
