#pragma once
// machine.json: what kind of Windows the simulated machine is.

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "platform/system_info.h"
#include "support/wide_string.h"

namespace webrig::sim {

// The IIS release a machine has; major 0 means IIS is not installed.
struct IisVersion {
    uint32_t major = 10;
    uint32_t minor = 0;

    bool Installed() const noexcept { return major != 0; }
    friend bool operator==(const IisVersion&, const IisVersion&) = default;
};

// Optional IIS features a machine may have installed.
enum class IisFeature {
    // "IIS 6 Metabase Compatibility" of IIS 7+: the IIS 6 admin base and ADSI objects.
    metabaseCompatibility,
};

// A fresh MachineConfig is Windows Server 2019 on amd64 with the Western European code page and
// IIS 10 without optional features.
struct MachineConfig {
    platform::OsVersion osVersion{10, 0, 17763};
    platform::ProcessorArchitecture architecture = platform::ProcessorArchitecture::amd64;
    uint32_t ansiCodePage = 1252;
    qm::wstring windowsDirectory = u"C:\\Windows";
    IisVersion iisVersion;
    std::vector<IisFeature> iisFeatures;

    // A 32-bit process on this machine runs under WOW64.
    bool Is64Bit() const noexcept;
    bool HasIisFeature(IisFeature feature) const noexcept;
    // The IIS 6 admin base class can be created: IIS 6 and older have it, IIS 7+ only with the
    // metabase compatibility feature.
    bool HasMetabase() const noexcept;
};

// Reads machine.json text. Unknown keys, wrong types and unsupported values are errors; throws
// MachineError naming `file` and the line.
MachineConfig ParseMachineConfig(std::string_view json, const std::filesystem::path& file);

// The machine.json text for `config`.
std::string FormatMachineConfig(const MachineConfig& config);

}  // namespace webrig::sim
