#pragma once
// Child processes, as CreateProcessW, WaitForSingleObject, GetExitCodeProcess and CloseHandle
// see them. Like those calls, each returns success or a handle and leaves the reason of a
// failure in the thread's last error.

#include <cstdint>

#include "support/wide_string.h"

namespace webrig::platform {

// A process or thread handle (HANDLE).
enum class ProcessHandle : uintptr_t {};
inline constexpr ProcessHandle kNoProcess{0};

// What CreateProcessW fills into PROCESS_INFORMATION.
struct ProcessInformation {
    ProcessHandle process = kNoProcess;
    ProcessHandle thread = kNoProcess;
    uint32_t processId = 0;
    uint32_t threadId = 0;
};

constexpr uint32_t kInfinite = 0xFFFFFFFF;    // INFINITE
constexpr uint32_t kWaitObject0 = 0;          // WAIT_OBJECT_0
constexpr uint32_t kWaitTimeout = 0x102;      // WAIT_TIMEOUT
constexpr uint32_t kWaitFailed = 0xFFFFFFFF;  // WAIT_FAILED
constexpr uint32_t kStillActive = 259;        // STILL_ACTIVE
constexpr uint32_t kErrorBadExeFormat = 193;  // ERROR_BAD_EXE_FORMAT

class Processes {
  public:
    virtual ~Processes() = default;

    // CreateProcessW(NULL, commandLine, NULL, NULL, FALSE, 0, NULL, NULL, &startup, &info) with
    // the start-up information of the calling process (GetStartupInfoW) and its window hidden
    // (STARTF_USESHOWWINDOW, SW_HIDE). The executable is the command line's first token: up to
    // the closing quote when it starts with one; otherwise the shortest run of space-separated
    // words that names a file, ".exe" added to a name without extension, a name without a folder
    // looked up in the system directory, the Windows directory and their kin. In a 32-bit
    // process on 64-bit Windows that lookup goes through the file-system redirector. Fails with
    // ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND, ERROR_ACCESS_DENIED (a folder) or
    // ERROR_BAD_EXE_FORMAT (not a program).
    virtual bool Start(qm::wstring_view commandLine, ProcessInformation& info) = 0;

    // WaitForSingleObject on a process or thread handle: kWaitObject0 once it has ended,
    // kWaitTimeout, or kWaitFailed with the last error set.
    virtual uint32_t Wait(ProcessHandle handle, uint32_t milliseconds) = 0;

    // GetExitCodeProcess: kStillActive while the process runs.
    virtual bool GetExitCode(ProcessHandle process, uint32_t& exitCode) = 0;

    // CloseHandle.
    virtual bool Close(ProcessHandle handle) = 0;
};

}  // namespace webrig::platform
