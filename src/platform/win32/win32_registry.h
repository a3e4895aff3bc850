#pragma once
// The registry through the RegXxx functions. webrig.dll is a 32-bit module: on a 64-bit Windows
// its view of HKLM\SOFTWARE is WOW6432Node without asking. A 64-bit build of the same code (the
// one the tests run under 64-bit Wine) asks for that view with KEY_WOW64_32KEY on every call that
// names no view itself, so both builds read and write the same keys.

#include "platform/registry.h"

namespace webrig::win32 {

class Win32Registry final : public platform::Registry {
  public:
    uint32_t OpenKey(platform::RegKey parent, qm::wstring_view subKey, uint32_t access,
                     platform::RegKey& result) override;
    uint32_t CreateKey(platform::RegKey parent, qm::wstring_view subKey, uint32_t access,
                       platform::RegKey& result, bool* created = nullptr) override;
    uint32_t CloseKey(platform::RegKey key) override;
    uint32_t QueryValue(platform::RegKey key, qm::wstring_view name,
                        platform::RegValue& value) override;
    uint32_t SetValue(platform::RegKey key, qm::wstring_view name,
                      const platform::RegValue& value) override;
    uint32_t DeleteValue(platform::RegKey key, qm::wstring_view name) override;
    uint32_t EnumKey(platform::RegKey key, uint32_t index, qm::wstring& name) override;
    uint32_t EnumValue(platform::RegKey key, uint32_t index, qm::wstring& name,
                       platform::RegValue& value) override;
    uint32_t DeleteKey(platform::RegKey parent, qm::wstring_view subKey,
                       uint32_t access = 0) override;

    // The access mask a call passes to Windows: `access` with the 32-bit view added where the
    // build needs it (see above).
    static uint32_t WithModuleView(uint32_t access) noexcept;
};

}  // namespace webrig::win32
