// The program the Windows tests start where webrig starts netsh.exe or aspnet_regiis.exe: it
// appends its command line, as Windows hands it over, and a line break to the UTF-16 file named
// by WEBRIG_STAND_IN_JOURNAL, and ends with the exit code in WEBRIG_STAND_IN_EXIT_CODE.

#include <windows.h>

#include <cwchar>
#include <string>

namespace {

std::wstring Environment(const wchar_t* name) {
    wchar_t value[1024];
    const DWORD length = ::GetEnvironmentVariableW(name, value, 1024);
    return length == 0 || length >= 1024 ? std::wstring() : std::wstring(value, length);
}

}  // namespace

int main() {
    const std::wstring journal = Environment(L"WEBRIG_STAND_IN_JOURNAL");
    if (journal.empty()) {
        return 100;
    }
    const HANDLE file = ::CreateFileW(journal.c_str(), FILE_APPEND_DATA, 0, nullptr, OPEN_ALWAYS,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return 101;
    }
    const std::wstring line = std::wstring(::GetCommandLineW()) + L"\n";
    DWORD written = 0;
    const BOOL wrote =
        ::WriteFile(file, line.data(), static_cast<DWORD>(line.size() * 2), &written, nullptr);
    ::CloseHandle(file);
    if (wrote == FALSE) {
        return 102;
    }
    return static_cast<int>(
        std::wcstoul(Environment(L"WEBRIG_STAND_IN_EXIT_CODE").c_str(), nullptr, 10));
}
