#pragma once
// machine.json: what kind of Windows the simulated machine is.

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "platform/system_info.h"
#include "support/wide_string.h"

namespace webrig::sim {

// A fresh MachineConfig is Windows Server 2019 on amd64 with the Western European code page.
struct MachineConfig {
    platform::OsVersion osVersion{10, 0, 17763};
    platform::ProcessorArchitecture architecture = platform::ProcessorArchitecture::amd64;
    uint32_t ansiCodePage = 1252;
    qm::wstring windowsDirectory = u"C:\\Windows";

    // A 32-bit process on this machine runs under WOW64.
    bool Is64Bit() const noexcept;
};

// Reads machine.json text. Unknown keys, wrong types and unsupported values are errors; throws
// MachineError naming `file` and the line.
MachineConfig ParseMachineConfig(std::string_view json, const std::filesystem::path& file);

// The machine.json text for `config`.
std::string FormatMachineConfig(const MachineConfig& config);

}  // namespace webrig::sim
