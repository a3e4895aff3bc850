#pragma once
// Every file of a machine folder with its bytes, by path relative to the folder ("drive_c/..."),
// without the lock file and the installer engine's setup folder: what a run changed is what
// differs between two of these.

#include <filesystem>
#include <map>
#include <string>

namespace webrig::cli {

using MachineFiles = std::map<std::string, std::string>;

MachineFiles ReadMachineFiles(const std::filesystem::path& folder);

}  // namespace webrig::cli
