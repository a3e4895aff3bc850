#include "platform/win32/win32_system_info.h"

#include <vector>

#include "platform/win32/windows_api.h"

namespace webrig::win32 {
namespace {

template <class Get>
qm::wstring Folder(Get get) {
    std::vector<wchar_t> buffer(MAX_PATH + 1);
    UINT length = get(buffer.data(), static_cast<UINT>(buffer.size()));
    if (length >= buffer.size()) {
        buffer.resize(length + 1u);
        length = get(buffer.data(), static_cast<UINT>(buffer.size()));
    }
    if (length == 0 || length >= buffer.size()) {
        return {};
    }
    return qm::wstring(Utf16(buffer.data()), length);
}

}  // namespace

qm::wstring Win32SystemInfo::WindowsDirectory() {
    return Folder([](wchar_t* buffer, UINT size) { return ::GetWindowsDirectoryW(buffer, size); });
}

qm::wstring Win32SystemInfo::SystemDirectory() {
    return Folder([](wchar_t* buffer, UINT size) { return ::GetSystemDirectoryW(buffer, size); });
}

platform::OsVersion Win32SystemInfo::Version() {
    OSVERSIONINFOW info{};
    info.dwOSVersionInfoSize = sizeof(info);
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#endif
    // What Windows reports to this process is what the installer engine's checks see too.
    if (::GetVersionExW(&info) == FALSE) {
        return {};
    }
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
    return {info.dwMajorVersion, info.dwMinorVersion, info.dwBuildNumber};
}

platform::ProcessorArchitecture Win32SystemInfo::NativeArchitecture() {
    SYSTEM_INFO info{};
    ::GetNativeSystemInfo(&info);
    switch (info.wProcessorArchitecture) {
        case PROCESSOR_ARCHITECTURE_INTEL:
            return platform::ProcessorArchitecture::intel;
        case PROCESSOR_ARCHITECTURE_ARM:
            return platform::ProcessorArchitecture::arm;
        case PROCESSOR_ARCHITECTURE_IA64:
            return platform::ProcessorArchitecture::ia64;
        case PROCESSOR_ARCHITECTURE_AMD64:
            return platform::ProcessorArchitecture::amd64;
        case 12:  // PROCESSOR_ARCHITECTURE_ARM64, newer than some headers
            return platform::ProcessorArchitecture::arm64;
        default:
            return platform::ProcessorArchitecture::unknown;
    }
}

}  // namespace webrig::win32
