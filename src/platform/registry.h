#pragma once
// The registry, as the RegXxx functions see it: keys under HKEY_LOCAL_MACHINE opened by handle,
// values typed as on Windows, and every result a Win32 error code (0 on success).

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "support/result_codes.h"
#include "support/wide_string.h"

namespace webrig::platform {

// An open key (HKEY).
enum class RegKey : uintptr_t {};
inline constexpr RegKey kNoKey{0};
inline constexpr RegKey kLocalMachine{0x80000002u};  // HKEY_LOCAL_MACHINE

// Access rights (REGSAM).
namespace key_access {
constexpr uint32_t query_value = 0x0001;
constexpr uint32_t set_value = 0x0002;
constexpr uint32_t create_sub_key = 0x0004;
constexpr uint32_t enumerate_sub_keys = 0x0008;
constexpr uint32_t notify = 0x0010;
constexpr uint32_t wow64_64key = 0x0100;
constexpr uint32_t wow64_32key = 0x0200;
constexpr uint32_t delete_key = 0x10000;  // DELETE
constexpr uint32_t read = 0x20019;        // KEY_READ
constexpr uint32_t write = 0x20006;       // KEY_WRITE
constexpr uint32_t all_access = 0xF003F;  // KEY_ALL_ACCESS
}  // namespace key_access

// Value types (REG_xxx).
namespace reg_type {
constexpr uint32_t none = 0;
constexpr uint32_t sz = 1;
constexpr uint32_t expand_sz = 2;
constexpr uint32_t binary = 3;
constexpr uint32_t dword = 4;
constexpr uint32_t dword_big_endian = 5;
constexpr uint32_t link = 6;
constexpr uint32_t multi_sz = 7;
constexpr uint32_t qword = 11;
}  // namespace reg_type

struct RegValue {
    uint32_t type = reg_type::none;
    std::vector<std::byte> data;

    // REG_SZ or REG_EXPAND_SZ data as RegSetValueExW stores it: UTF-16LE with its terminating NUL.
    static RegValue String(qm::wstring_view text, uint32_t type = reg_type::sz);
    static RegValue Dword(uint32_t value);
    // REG_MULTI_SZ: each string NUL-terminated, then one more NUL.
    static RegValue MultiString(std::span<const qm::wstring> strings);

    // The data read as UTF-16LE up to the first NUL (an odd last byte is ignored).
    qm::wstring AsString() const;
    // The DWORD of REG_DWORD data of at least four bytes.
    std::optional<uint32_t> AsDword() const;

    bool operator==(const RegValue&) const = default;
};

class Registry {
  public:
    virtual ~Registry() = default;

    // RegOpenKeyExW. An empty sub-key opens the parent again.
    virtual uint32_t OpenKey(RegKey parent, qm::wstring_view subKey, uint32_t access,
                             RegKey& result) = 0;
    // RegCreateKeyExW: opens the key, creating it and any missing parents. `created` (optional)
    // tells a new key from an existing one.
    virtual uint32_t CreateKey(RegKey parent, qm::wstring_view subKey, uint32_t access,
                               RegKey& result, bool* created = nullptr) = 0;
    // RegCloseKey.
    virtual uint32_t CloseKey(RegKey key) = 0;
    // RegQueryValueExW. An empty name is the key's default value.
    virtual uint32_t QueryValue(RegKey key, qm::wstring_view name, RegValue& value) = 0;
    // RegSetValueExW.
    virtual uint32_t SetValue(RegKey key, qm::wstring_view name, const RegValue& value) = 0;
    // RegDeleteValueW.
    virtual uint32_t DeleteValue(RegKey key, qm::wstring_view name) = 0;
    // RegEnumKeyExW and RegEnumValueW: win32::no_more_items past the last entry.
    virtual uint32_t EnumKey(RegKey key, uint32_t index, qm::wstring& name) = 0;
    virtual uint32_t EnumValue(RegKey key, uint32_t index, qm::wstring& name, RegValue& value) = 0;
    // RegDeleteKeyExW: deletes a key that has no sub-keys. `access` carries the WOW64 view flags.
    virtual uint32_t DeleteKey(RegKey parent, qm::wstring_view subKey, uint32_t access = 0) = 0;
};

// Closes its key on every path out of the scope that opened it.
class ScopedRegKey {
  public:
    explicit ScopedRegKey(Registry& registry) noexcept : m_registry(&registry) {}
    ~ScopedRegKey() { reset(); }
    ScopedRegKey(const ScopedRegKey&) = delete;
    ScopedRegKey& operator=(const ScopedRegKey&) = delete;

    RegKey get() const noexcept { return m_key; }
    // For the out parameter of OpenKey and CreateKey; closes a key held before.
    RegKey& receive() noexcept {
        reset();
        return m_key;
    }
    void reset() noexcept {
        if (m_key != kNoKey) {
            m_registry->CloseKey(m_key);
            m_key = kNoKey;
        }
    }

  private:
    Registry* m_registry;
    RegKey m_key = kNoKey;
};

}  // namespace webrig::platform
