#include "platform/win32/win32_modules.h"

#include <string>
#include <vector>

#include "platform/win32/windows_api.h"

namespace webrig::win32 {
namespace {

HMODULE ToHandle(platform::ModuleHandle module) noexcept {
    return reinterpret_cast<HMODULE>(static_cast<uintptr_t>(module));
}

}  // namespace

platform::ModuleHandle Win32Modules::FindModule(qm::wstring_view nameOrPath) {
    const std::wstring name(reinterpret_cast<const wchar_t*>(nameOrPath.data()), nameOrPath.size());
    return static_cast<platform::ModuleHandle>(
        reinterpret_cast<uintptr_t>(::GetModuleHandleW(name.c_str())));
}

platform::ProcAddress Win32Modules::FindFunction(platform::ModuleHandle module,
                                                 std::string_view name) {
    if (module == platform::kNoModule) {
        return nullptr;
    }
    const std::string exported(name);
    return reinterpret_cast<platform::ProcAddress>(
        reinterpret_cast<void*>(::GetProcAddress(ToHandle(module), exported.c_str())));
}

qm::wstring Win32Modules::ModuleFileName(platform::ModuleHandle module) {
    if (module == platform::kNoModule) {
        return {};
    }
    // Long paths do not fit MAX_PATH: grow the buffer while the name is cut.
    std::vector<wchar_t> buffer(MAX_PATH);
    for (;;) {
        const DWORD length = ::GetModuleFileNameW(ToHandle(module), buffer.data(),
                                                  static_cast<DWORD>(buffer.size()));
        if (length == 0) {
            return {};
        }
        if (length < buffer.size()) {
            return qm::wstring(Utf16(buffer.data()), length);
        }
        if (buffer.size() >= 32768) {
            return {};
        }
        buffer.resize(buffer.size() * 2);
    }
}

}  // namespace webrig::win32
