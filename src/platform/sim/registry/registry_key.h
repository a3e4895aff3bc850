#pragma once
// One key of the simulated registry: its sub-keys (in the order RegEnumKeyExW gives them, by
// upper-cased name), its values (in the order they were first set, as RegEnumValueW gives
// them), names that compare without regard to case but keep the case they were created with.

#include <map>
#include <memory>
#include <vector>

#include "platform/registry.h"
#include "support/case_insensitive.h"

namespace webrig::sim {

struct NamedValue {
    qm::wstring name;
    platform::RegValue value;

    bool operator==(const NamedValue&) const = default;
};

class RegistryKey {
  public:
    using SubKeyMap = std::map<qm::wstring, std::shared_ptr<RegistryKey>, qm::iless>;

    // A root key (no parent).
    explicit RegistryKey(qm::wstring name = {}) : m_name(std::move(name)) {}
    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;

    const qm::wstring& Name() const noexcept { return m_name; }
    RegistryKey* Parent() const noexcept { return m_parent; }
    // Removed from the tree; open handles to it see ERROR_KEY_DELETED.
    bool IsDeleted() const noexcept { return m_deleted; }
    // Number of keys above this one.
    int Depth() const noexcept;
    // Names from below the root to this key, joined by backslashes; empty for the root.
    qm::wstring Path() const;
    // This key is `ancestor` or lies below it.
    bool IsWithin(const RegistryKey& ancestor) const noexcept;

    const SubKeyMap& SubKeys() const noexcept { return m_subKeys; }
    RegistryKey* FindSubKey(qm::wstring_view name) const;
    // Adds a sub-key that does not exist yet.
    RegistryKey& AddSubKey(qm::wstring name);
    // Takes a sub-key and everything below it out of the tree; they are marked deleted.
    std::shared_ptr<RegistryKey> RemoveSubKey(qm::wstring_view name);
    // Puts back a key that RemoveSubKey took out of this key.
    void RestoreSubKey(std::shared_ptr<RegistryKey> key);

    const std::vector<NamedValue>& Values() const noexcept { return m_values; }
    const platform::RegValue* FindValue(qm::wstring_view name) const;
    // Replaces the data of an existing value (which keeps its name and place) or appends one.
    void SetValue(qm::wstring_view name, platform::RegValue value);
    bool DeleteValue(qm::wstring_view name);
    void ReplaceValues(std::vector<NamedValue> values);

    // The key's values differ from the text the file holds for it.
    bool Edited() const noexcept { return m_edited; }
    void SetEdited(bool edited) noexcept { m_edited = edited; }

    // Counts every change anywhere in the tree; kept by the root.
    uint64_t Revision() const noexcept;

  private:
    void MarkDeleted(bool deleted) noexcept;
    void Touch() noexcept;
    RegistryKey& Root() noexcept;
    const RegistryKey& Root() const noexcept;

    qm::wstring m_name;
    RegistryKey* m_parent = nullptr;
    SubKeyMap m_subKeys;
    std::vector<NamedValue> m_values;
    bool m_deleted = false;
    bool m_edited = false;
    uint64_t m_revision = 0;
};

// Same names (exact case), values in the same order, sub-keys alike all the way down.
bool SameTree(const RegistryKey& a, const RegistryKey& b);

}  // namespace webrig::sim
