#pragma once
// Which simulated machine a command works on, and opening it.

#include <filesystem>
#include <memory>
#include <string>

#include "platform/sim/machine/machine.h"

namespace webrig::cli {

// `--machine DIR` when given, else the folder named by WEBRIG_MACHINE, else ./webrig-machine.
std::filesystem::path ChooseMachineFolder(const std::string& option);

// Opens the machine; a missing or unreadable machine is an InputError that says what is wrong
// and how to make one.
std::unique_ptr<sim::Machine> OpenMachine(const std::filesystem::path& folder);

}  // namespace webrig::cli
