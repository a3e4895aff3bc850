#pragma once
// platform::Registry over the simulated HKEY_LOCAL_MACHINE, with the results the RegXxx
// functions give, as a 32-bit process sees the registry.
//
// WOW64: on a 64-bit machine a path under HKLM\SOFTWARE is redirected to
// HKLM\SOFTWARE\WOW6432Node unless the call asks for KEY_WOW64_64KEY or the key is one that
// Windows shares between the two views (wow64_shared_keys.h). As on Windows, the view is chosen
// by each call's access mask, not remembered by the handle it is relative to.
//
// Every change is written to the file before the call returns. When writing fails the change
// is undone, the call returns win32::write_fault, and memory still matches the file.

#include <filesystem>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "platform/registry.h"
#include "platform/sim/machine/atomic_file.h"
#include "platform/sim/registry/reg_file.h"

namespace webrig::sim {

class SimRegistry final : public platform::Registry {
  public:
    // `is64BitMachine` turns WOW64 redirection on. `writer` stores the file at `path`.
    SimRegistry(RegFile file, std::filesystem::path path, bool is64BitMachine,
                FileWriter writer = WriteFileAtomically);

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

    // The tree as it is now (for tests and tools that inspect the machine).
    const RegistryKey& Root() const noexcept { return m_file.Root(); }

  private:
    struct Handle {
        std::shared_ptr<RegistryKey> key;
        uint32_t access = 0;
    };

    // The handle's key, or an error: invalid_handle, key_deleted.
    uint32_t Lookup(platform::RegKey key, Handle& handle) const;
    // Lookup, then access_denied unless the handle was opened with `right`.
    uint32_t LookupWithRight(platform::RegKey key, uint32_t right, Handle& handle) const;
    // The path from the root that `subKey` names relative to `parent`, redirected for WOW64.
    uint32_t Resolve(const Handle& parent, qm::wstring_view subKey, uint32_t access,
                     std::vector<qm::wstring>& path) const;
    // Lookup of `parent`, then Resolve of `subKey` below it.
    uint32_t LookupAndResolve(platform::RegKey parent, qm::wstring_view subKey, uint32_t access,
                              Handle& from, std::vector<qm::wstring>& path) const;
    platform::RegKey AddHandle(std::shared_ptr<RegistryKey> key, uint32_t access);
    bool Save();

    mutable std::mutex m_mutex;
    RegFile m_file;
    std::filesystem::path m_path;
    bool m_redirect;
    FileWriter m_writer;
    std::unordered_map<uintptr_t, Handle> m_handles;
    uintptr_t m_nextHandle;
};

}  // namespace webrig::sim
