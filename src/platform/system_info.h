#pragma once
// What the module asks of the operating system about itself.

#include <cstdint>

#include "support/wide_string.h"

namespace webrig::platform {

struct OsVersion {
    uint32_t major = 0;
    uint32_t minor = 0;
    uint32_t build = 0;
};

// PROCESSOR_ARCHITECTURE_xxx values of GetNativeSystemInfo.
enum class ProcessorArchitecture : uint16_t {
    intel = 0,
    arm = 5,
    ia64 = 6,
    amd64 = 9,
    arm64 = 12,
    unknown = 0xFFFF,
};

class SystemInfo {
  public:
    virtual ~SystemInfo() = default;

    // GetWindowsDirectoryW, e.g. "C:\Windows".
    virtual qm::wstring WindowsDirectory() = 0;
    // GetSystemDirectoryW, e.g. "C:\Windows\system32".
    virtual qm::wstring SystemDirectory() = 0;
    // GetVersionExW: the version the operating system reports to the calling process.
    virtual OsVersion Version() = 0;
    // GetNativeSystemInfo: the processor architecture of the machine, not of the process.
    virtual ProcessorArchitecture NativeArchitecture() = 0;
};

}  // namespace webrig::platform
