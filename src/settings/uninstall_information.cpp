#include "settings/uninstall_information.h"

namespace webrig::settings {
namespace {

constexpr size_t kValueBufferCharacters = 260;

}  // namespace

qm::wstring UninstallInfoKeyPath(const qm::wstring& productCode) {
    return qm::wstring(kUninstallInformationKey) + u"\\" + productCode;
}

uint32_t EnsureUninstallInfoKey(platform::Registry& registry, const qm::wstring& productCode) {
    const qm::wstring path = UninstallInfoKeyPath(productCode);
    platform::ScopedRegKey key(registry);
    if (registry.OpenKey(platform::kLocalMachine, path, platform::key_access::read,
                         key.receive()) == qm::win32::success) {
        return qm::win32::success;
    }
    return registry.CreateKey(platform::kLocalMachine, path, platform::key_access::all_access,
                              key.receive());
}

uint32_t OpenOrCreateUninstallInformationKey(platform::Registry& registry,
                                             const qm::wstring& productCode,
                                             platform::ScopedRegKey& key) {
    const qm::wstring path = UninstallInfoKeyPath(productCode);
    const uint32_t opened = registry.OpenKey(platform::kLocalMachine, path,
                                             platform::key_access::all_access, key.receive());
    if (opened == qm::win32::success) {
        return opened;
    }
    return registry.CreateKey(platform::kLocalMachine, path, platform::key_access::all_access,
                              key.receive());
}

bool WriteSiteNumberValue(platform::Registry& registry, const qm::wstring& productCode,
                          const qm::wstring& valueName, const qm::wstring& siteNumber) {
    platform::ScopedRegKey key(registry);
    if (OpenOrCreateUninstallInformationKey(registry, productCode, key) != qm::win32::success) {
        return false;
    }
    platform::RegValue value = platform::RegValue::String(siteNumber);
    value.data.resize(value.data.size() - sizeof(char16_t));  // the NUL is not stored
    return registry.SetValue(key.get(), valueName, value) == qm::win32::success;
}

bool ReadSiteNumberValue(platform::Registry& registry, const qm::wstring& productCode,
                         const qm::wstring& valueName, qm::wstring& siteNumber) {
    platform::ScopedRegKey key(registry);
    if (registry.OpenKey(platform::kLocalMachine, UninstallInfoKeyPath(productCode),
                         platform::key_access::read, key.receive()) != qm::win32::success) {
        return false;
    }
    platform::RegValue value;
    if (registry.QueryValue(key.get(), valueName, value) != qm::win32::success) {
        return false;
    }
    if (value.type != platform::reg_type::sz && value.type != platform::reg_type::expand_sz) {
        return false;
    }
    if (value.data.size() > kValueBufferCharacters * sizeof(char16_t)) {
        return false;  // ERROR_MORE_DATA for the caller's buffer
    }
    siteNumber = value.AsString();
    return true;
}

}  // namespace webrig::settings
