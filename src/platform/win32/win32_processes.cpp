#include "platform/win32/win32_processes.h"

#include <vector>

#include "platform/win32/windows_api.h"

namespace webrig::win32 {
namespace {

HANDLE ToHandle(platform::ProcessHandle handle) noexcept {
    return reinterpret_cast<HANDLE>(static_cast<uintptr_t>(handle));
}

platform::ProcessHandle FromHandle(HANDLE handle) noexcept {
    return platform::ProcessHandle{reinterpret_cast<uintptr_t>(handle)};
}

}  // namespace

bool Win32Processes::Start(qm::wstring_view commandLine, platform::ProcessInformation& info) {
    info = {};
    // CreateProcessW may write into the command line: it gets its own terminated copy.
    std::vector<wchar_t> line(commandLine.begin(), commandLine.end());
    line.push_back(L'\0');
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    ::GetStartupInfoW(&startup);
    startup.dwFlags |= STARTF_USESHOWWINDOW;
    startup.wShowWindow = SW_HIDE;
    PROCESS_INFORMATION started{};
    if (::CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                         &startup, &started) == FALSE) {
        return false;
    }
    info.process = FromHandle(started.hProcess);
    info.thread = FromHandle(started.hThread);
    info.processId = started.dwProcessId;
    info.threadId = started.dwThreadId;
    return true;
}

uint32_t Win32Processes::Wait(platform::ProcessHandle handle, uint32_t milliseconds) {
    return ::WaitForSingleObject(ToHandle(handle), milliseconds);
}

bool Win32Processes::GetExitCode(platform::ProcessHandle process, uint32_t& exitCode) {
    DWORD code = 0;
    if (::GetExitCodeProcess(ToHandle(process), &code) == FALSE) {
        return false;
    }
    exitCode = code;
    return true;
}

bool Win32Processes::Close(platform::ProcessHandle handle) {
    return ::CloseHandle(ToHandle(handle)) != FALSE;
}

}  // namespace webrig::win32
