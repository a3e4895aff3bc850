#include "platform/win32/win32_registry.h"

#include <vector>

#include "platform/win32/windows_api.h"

namespace webrig::win32 {
namespace {

using platform::RegKey;

HKEY ToHkey(RegKey key) noexcept {
    // The predefined keys are sign-extended 32-bit values in a 64-bit process.
    if (key == platform::kLocalMachine) {
        return HKEY_LOCAL_MACHINE;
    }
    return reinterpret_cast<HKEY>(static_cast<uintptr_t>(key));
}

RegKey FromHkey(HKEY key) noexcept {
    return static_cast<RegKey>(reinterpret_cast<uintptr_t>(key));
}

// Names arrive as views; the API wants NUL-terminated text.
std::wstring Terminated(qm::wstring_view text) {
    return std::wstring(reinterpret_cast<const wchar_t*>(text.data()), text.size());
}

// RegDeleteKeyExW exists from Windows Vista (and XP x64) on; the 32-bit DLL still loads on
// older systems and deletes without a view there.
using RegDeleteKeyExFunction = LONG(WINAPI*)(HKEY, LPCWSTR, REGSAM, DWORD);

RegDeleteKeyExFunction FindRegDeleteKeyEx() noexcept {
    const HMODULE advapi = ::GetModuleHandleW(L"advapi32.dll");
    return advapi == nullptr ? nullptr
                             : reinterpret_cast<RegDeleteKeyExFunction>(reinterpret_cast<void*>(
                                   ::GetProcAddress(advapi, "RegDeleteKeyExW")));
}

}  // namespace

uint32_t Win32Registry::WithModuleView(uint32_t access) noexcept {
#if defined(_WIN64)
    if ((access & (KEY_WOW64_32KEY | KEY_WOW64_64KEY)) == 0) {
        return access | KEY_WOW64_32KEY;
    }
#endif
    return access;
}

uint32_t Win32Registry::OpenKey(RegKey parent, qm::wstring_view subKey, uint32_t access,
                                RegKey& result) {
    result = platform::kNoKey;
    HKEY opened = nullptr;
    const LONG error = ::RegOpenKeyExW(ToHkey(parent), Terminated(subKey).c_str(), 0,
                                       WithModuleView(access), &opened);
    if (error == ERROR_SUCCESS) {
        result = FromHkey(opened);
    }
    return static_cast<uint32_t>(error);
}

uint32_t Win32Registry::CreateKey(RegKey parent, qm::wstring_view subKey, uint32_t access,
                                  RegKey& result, bool* created) {
    result = platform::kNoKey;
    HKEY opened = nullptr;
    DWORD disposition = 0;
    const LONG error = ::RegCreateKeyExW(ToHkey(parent), Terminated(subKey).c_str(), 0, nullptr,
                                         REG_OPTION_NON_VOLATILE, WithModuleView(access), nullptr,
                                         &opened, &disposition);
    if (error == ERROR_SUCCESS) {
        result = FromHkey(opened);
        if (created != nullptr) {
            *created = disposition == REG_CREATED_NEW_KEY;
        }
    }
    return static_cast<uint32_t>(error);
}

uint32_t Win32Registry::CloseKey(RegKey key) {
    return static_cast<uint32_t>(::RegCloseKey(ToHkey(key)));
}

uint32_t Win32Registry::QueryValue(RegKey key, qm::wstring_view name, platform::RegValue& value) {
    value = {};
    const std::wstring valueName = Terminated(name);
    DWORD type = REG_NONE;
    DWORD size = 0;
    LONG error = ::RegQueryValueExW(ToHkey(key), valueName.c_str(), nullptr, &type, nullptr, &size);
    std::vector<std::byte> data;
    // The value may grow between the two calls: ask again while it does.
    while (error == ERROR_SUCCESS || error == ERROR_MORE_DATA) {
        data.resize(size);
        DWORD got = size;
        error = ::RegQueryValueExW(ToHkey(key), valueName.c_str(), nullptr, &type,
                                   reinterpret_cast<BYTE*>(data.data()), &got);
        if (error == ERROR_SUCCESS) {
            data.resize(got);
            value.type = type;
            value.data = std::move(data);
            return ERROR_SUCCESS;
        }
        size = got;
    }
    return static_cast<uint32_t>(error);
}

uint32_t Win32Registry::SetValue(RegKey key, qm::wstring_view name,
                                 const platform::RegValue& value) {
    return static_cast<uint32_t>(::RegSetValueExW(
        ToHkey(key), Terminated(name).c_str(), 0, value.type,
        reinterpret_cast<const BYTE*>(value.data.data()), static_cast<DWORD>(value.data.size())));
}

uint32_t Win32Registry::DeleteValue(RegKey key, qm::wstring_view name) {
    return static_cast<uint32_t>(::RegDeleteValueW(ToHkey(key), Terminated(name).c_str()));
}

uint32_t Win32Registry::EnumKey(RegKey key, uint32_t index, qm::wstring& name) {
    name.clear();
    // Key names are at most 255 characters.
    wchar_t buffer[256];
    DWORD length = 256;
    const LONG error =
        ::RegEnumKeyExW(ToHkey(key), index, buffer, &length, nullptr, nullptr, nullptr, nullptr);
    if (error == ERROR_SUCCESS) {
        name.assign(Utf16(buffer), length);
    }
    return static_cast<uint32_t>(error);
}

uint32_t Win32Registry::EnumValue(RegKey key, uint32_t index, qm::wstring& name,
                                  platform::RegValue& value) {
    name.clear();
    value = {};
    for (;;) {
        DWORD nameChars = 0;
        DWORD dataBytes = 0;
        LONG error = ::RegQueryInfoKeyW(ToHkey(key), nullptr, nullptr, nullptr, nullptr, nullptr,
                                        nullptr, nullptr, &nameChars, &dataBytes, nullptr, nullptr);
        if (error != ERROR_SUCCESS) {
            return static_cast<uint32_t>(error);
        }
        std::vector<wchar_t> nameBuffer(nameChars + 1u);
        std::vector<std::byte> data(dataBytes);
        DWORD nameLength = static_cast<DWORD>(nameBuffer.size());
        DWORD dataLength = dataBytes;
        DWORD type = REG_NONE;
        error = ::RegEnumValueW(ToHkey(key), index, nameBuffer.data(), &nameLength, nullptr, &type,
                                reinterpret_cast<BYTE*>(data.data()), &dataLength);
        if (error == ERROR_MORE_DATA) {
            continue;  // a value grew since the sizes were asked: ask again
        }
        if (error == ERROR_SUCCESS) {
            name.assign(Utf16(nameBuffer.data()), nameLength);
            data.resize(dataLength);
            value.type = type;
            value.data = std::move(data);
        }
        return static_cast<uint32_t>(error);
    }
}

uint32_t Win32Registry::DeleteKey(RegKey parent, qm::wstring_view subKey, uint32_t access) {
    const std::wstring name = Terminated(subKey);
    static const RegDeleteKeyExFunction deleteKeyEx = FindRegDeleteKeyEx();
    const uint32_t view = WithModuleView(access) & (KEY_WOW64_32KEY | KEY_WOW64_64KEY);
    if (deleteKeyEx != nullptr) {
        return static_cast<uint32_t>(deleteKeyEx(ToHkey(parent), name.c_str(), view, 0));
    }
    return static_cast<uint32_t>(::RegDeleteKeyW(ToHkey(parent), name.c_str()));
}

}  // namespace webrig::win32
