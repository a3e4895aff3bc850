#include "machine_folder.h"

#include <cstdlib>
#include <system_error>

#include "command_error.h"
#include "platform/sim/machine/machine_error.h"
#include "platform/sim/machine/machine_layout.h"

namespace webrig::cli {

std::filesystem::path ChooseMachineFolder(const std::string& option) {
    if (!option.empty()) {
        return option;
    }
    const char* const named = std::getenv("WEBRIG_MACHINE");
    if (named != nullptr && *named != '\0') {
        return named;
    }
    return "webrig-machine";
}

std::unique_ptr<sim::Machine> OpenMachine(const std::filesystem::path& folder) {
    std::error_code error;
    if (!std::filesystem::exists(sim::MachineJsonPath(folder), error)) {
        throw InputError("no simulated machine in " + folder.string() +
                         "; create one with: webrig machine create " + folder.string());
    }
    try {
        return sim::Machine::Open(folder);
    } catch (const sim::MachineError& problem) {
        throw InputError("the machine in " + folder.string() +
                         " cannot be used: " + problem.what());
    }
}

}  // namespace webrig::cli
