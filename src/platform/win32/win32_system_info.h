#pragma once
// Folders, version and processor of the running Windows.

#include "platform/system_info.h"

namespace webrig::win32 {

class Win32SystemInfo final : public platform::SystemInfo {
  public:
    qm::wstring WindowsDirectory() override;
    qm::wstring SystemDirectory() override;
    platform::OsVersion Version() override;
    platform::ProcessorArchitecture NativeArchitecture() override;
};

}  // namespace webrig::win32
