#pragma once
// Child processes through CreateProcessW, WaitForSingleObject, GetExitCodeProcess and
// CloseHandle, each called once; the reason of a failure stays in the thread's last error.

#include "platform/processes.h"

namespace webrig::win32 {

class Win32Processes final : public platform::Processes {
  public:
    bool Start(qm::wstring_view commandLine, platform::ProcessInformation& info) override;
    uint32_t Wait(platform::ProcessHandle handle, uint32_t milliseconds) override;
    bool GetExitCode(platform::ProcessHandle process, uint32_t& exitCode) override;
    bool Close(platform::ProcessHandle handle) override;
};

}  // namespace webrig::win32
