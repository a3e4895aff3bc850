#pragma once
// Where each part of a simulated machine lives in its folder.

#include <filesystem>

namespace webrig::sim {

inline std::filesystem::path MachineJsonPath(const std::filesystem::path& folder) {
    return folder / "machine.json";
}

inline std::filesystem::path RegistryFolder(const std::filesystem::path& folder) {
    return folder / "registry";
}

inline std::filesystem::path LocalMachineRegPath(const std::filesystem::path& folder) {
    return RegistryFolder(folder) / "HKLM.reg";
}

inline std::filesystem::path ServicesJsonPath(const std::filesystem::path& folder) {
    return folder / "services.json";
}

// Held while files of the machine are checked and replaced together (MachineLock).
inline std::filesystem::path MachineLockPath(const std::filesystem::path& folder) {
    return folder / "machine.lock";
}

// The folder that is C:\.
inline std::filesystem::path DriveCPath(const std::filesystem::path& folder) {
    return folder / "drive_c";
}

// The machine's secret for encrypted IIS configuration attributes (32 random bytes).
inline std::filesystem::path ConfigKeyPath(const std::filesystem::path& folder) {
    return folder / "keys" / "iisConfigKey.bin";
}

// Every process started on the machine, one line each (programs/process_journal.h).
inline std::filesystem::path ProcessJournalPath(const std::filesystem::path& folder) {
    return folder / "journal" / "processes.log";
}

}  // namespace webrig::sim
