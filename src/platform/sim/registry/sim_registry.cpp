#include "platform/sim/registry/sim_registry.h"

#include "platform/sim/registry/wow64_shared_keys.h"
#include "support/case_insensitive.h"

namespace webrig::sim {
namespace {

namespace key_access = platform::key_access;
using platform::RegKey;
using qm::win32::access_denied;
using qm::win32::success;

// Handle values look like those RegOpenKeyExW returns: small multiples of four, never reused.
constexpr uintptr_t kFirstHandle = 0x100;
constexpr uintptr_t kHandleStep = 4;

constexpr uint32_t kMaximumAllowed = 0x02000000;
constexpr uint32_t kGenericAll = 0x10000000;
constexpr uint32_t kGenericExecute = 0x20000000;
constexpr uint32_t kGenericWrite = 0x40000000;
constexpr uint32_t kGenericRead = 0x80000000;
constexpr uint32_t kBothViews = key_access::wow64_64key | key_access::wow64_32key;

constexpr size_t kMaxValueNameLength = 16383;
constexpr qm::wstring_view kSoftware = u"SOFTWARE";
constexpr qm::wstring_view kWow64Node = u"WOW6432Node";

// No security descriptors in the simulation: every right asked for is granted.
uint32_t GrantedAccess(uint32_t requested) {
    uint32_t granted = requested & ~kBothViews;
    if ((requested & (kMaximumAllowed | kGenericAll)) != 0) {
        granted |= key_access::all_access;
    }
    if ((requested & (kGenericRead | kGenericExecute)) != 0) {
        granted |= key_access::read;
    }
    if ((requested & kGenericWrite) != 0) {
        granted |= key_access::write;
    }
    return granted;
}

bool Allows(uint32_t granted, uint32_t needed) {
    return (granted & needed) == needed;
}

std::vector<qm::wstring> PathOf(const RegistryKey& key) {
    std::vector<qm::wstring> path;
    for (const RegistryKey* k = &key; k->Parent() != nullptr; k = k->Parent()) {
        path.push_back(k->Name());
    }
    return {path.rbegin(), path.rend()};
}

// The deepest existing key along `path` and how many of its names exist.
std::shared_ptr<RegistryKey> Walk(const std::shared_ptr<RegistryKey>& root,
                                  const std::vector<qm::wstring>& path, size_t& existing) {
    std::shared_ptr<RegistryKey> key = root;
    for (existing = 0; existing < path.size(); ++existing) {
        const auto found = key->SubKeys().find(path[existing]);
        if (found == key->SubKeys().end()) {
            break;
        }
        key = found->second;
    }
    return key;
}

}  // namespace

SimRegistry::SimRegistry(RegFile file, std::filesystem::path path, bool is64BitMachine,
                         FileWriter writer)
    : m_file(std::move(file)),
      m_path(std::move(path)),
      m_redirect(is64BitMachine),
      m_writer(std::move(writer)),
      m_nextHandle(kFirstHandle) {}

uint32_t SimRegistry::Lookup(RegKey key, Handle& handle) const {
    if (key == platform::kLocalMachine) {
        handle = {m_file.SharedRoot(), key_access::all_access};
        return success;
    }
    const auto found = m_handles.find(static_cast<uintptr_t>(key));
    if (found == m_handles.end()) {
        return qm::win32::invalid_handle;
    }
    handle = found->second;
    return handle.key->IsDeleted() ? qm::win32::key_deleted : success;
}

uint32_t SimRegistry::Resolve(const Handle& parent, qm::wstring_view subKey, uint32_t access,
                              std::vector<qm::wstring>& path) const {
    if ((access & kBothViews) == kBothViews) {
        return qm::win32::invalid_parameter;
    }
    path = PathOf(*parent.key);
    if (!subKey.empty() && subKey.front() == u'\\') {
        return qm::win32::bad_pathname;
    }
    if (!subKey.empty() && subKey.back() == u'\\') {
        subKey.remove_suffix(1);  // "SOFTWARE\" is "SOFTWARE"
    }
    while (!subKey.empty()) {
        const size_t slash = subKey.find(u'\\');
        const qm::wstring_view name = subKey.substr(0, slash);
        if (name.empty()) {
            return qm::win32::bad_pathname;
        }
        if (name.size() > kMaxKeyNameLength) {
            return qm::win32::invalid_parameter;
        }
        path.emplace_back(name);
        subKey = slash == qm::wstring_view::npos ? qm::wstring_view() : subKey.substr(slash + 1);
    }
    if (path.size() > static_cast<size_t>(kMaxKeyDepth)) {
        return qm::win32::invalid_parameter;
    }
    const bool redirected = m_redirect && (access & key_access::wow64_64key) == 0 &&
                            !path.empty() && qm::iequals(path[0], kSoftware) &&
                            !(path.size() > 1 && qm::iequals(path[1], kWow64Node)) &&
                            !IsSharedUnderWow64(path);
    if (redirected) {
        path.insert(path.begin() + 1, qm::wstring(kWow64Node));
    }
    return success;
}

RegKey SimRegistry::AddHandle(std::shared_ptr<RegistryKey> key, uint32_t access) {
    const uintptr_t value = m_nextHandle;
    m_nextHandle += kHandleStep;
    m_handles.emplace(value, Handle{std::move(key), access});
    return RegKey{value};
}

bool SimRegistry::Save() {
    std::optional<RegFile::Rendering> rendering = m_file.Render();
    if (!rendering || !m_writer(m_path, rendering->bytes)) {
        return false;
    }
    m_file.Adopt(std::move(*rendering));
    return true;
}

uint32_t SimRegistry::LookupWithRight(RegKey key, uint32_t right, Handle& handle) const {
    const uint32_t error = Lookup(key, handle);
    if (error != success) {
        return error;
    }
    return Allows(handle.access, right) ? success : access_denied;
}

uint32_t SimRegistry::LookupAndResolve(RegKey parent, qm::wstring_view subKey, uint32_t access,
                                       Handle& from, std::vector<qm::wstring>& path) const {
    const uint32_t error = Lookup(parent, from);
    return error == success ? Resolve(from, subKey, access, path) : error;
}

uint32_t SimRegistry::OpenKey(RegKey parent, qm::wstring_view subKey, uint32_t access,
                              RegKey& result) {
    const std::lock_guard lock(m_mutex);
    result = platform::kNoKey;
    Handle from;
    std::vector<qm::wstring> path;
    if (const uint32_t error = LookupAndResolve(parent, subKey, access, from, path);
        error != success) {
        return error;
    }
    size_t existing = 0;
    std::shared_ptr<RegistryKey> key = Walk(m_file.SharedRoot(), path, existing);
    if (existing < path.size()) {
        return qm::win32::file_not_found;
    }
    result = AddHandle(std::move(key), GrantedAccess(access));
    return success;
}

uint32_t SimRegistry::CreateKey(RegKey parent, qm::wstring_view subKey, uint32_t access,
                                RegKey& result, bool* created) {
    const std::lock_guard lock(m_mutex);
    result = platform::kNoKey;
    Handle from;
    std::vector<qm::wstring> path;
    if (const uint32_t error = LookupAndResolve(parent, subKey, access, from, path);
        error != success) {
        return error;
    }
    size_t existing = 0;
    std::shared_ptr<RegistryKey> key = Walk(m_file.SharedRoot(), path, existing);
    const bool creating = existing < path.size();
    if (creating) {
        // Nothing can be created directly under HKEY_LOCAL_MACHINE: its sub-keys are hives.
        if (!Allows(from.access, key_access::create_sub_key) || existing == 0) {
            return access_denied;
        }
        RegistryKey* const firstParent = key.get();
        for (size_t i = existing; i < path.size(); ++i) {
            key->AddSubKey(path[i]);
            key = key->SubKeys().find(path[i])->second;
        }
        if (!Save()) {
            firstParent->RemoveSubKey(path[existing]);
            return qm::win32::write_fault;
        }
    }
    if (created != nullptr) {
        *created = creating;
    }
    result = AddHandle(std::move(key), GrantedAccess(access));
    return success;
}

uint32_t SimRegistry::CloseKey(RegKey key) {
    const std::lock_guard lock(m_mutex);
    if (key == platform::kLocalMachine) {
        return success;  // closing a predefined key does nothing
    }
    return m_handles.erase(static_cast<uintptr_t>(key)) == 1 ? success : qm::win32::invalid_handle;
}

uint32_t SimRegistry::QueryValue(RegKey key, qm::wstring_view name, platform::RegValue& value) {
    const std::lock_guard lock(m_mutex);
    Handle handle;
    if (const uint32_t error = LookupWithRight(key, key_access::query_value, handle);
        error != success) {
        return error;
    }
    const platform::RegValue* found = handle.key->FindValue(name);
    if (found == nullptr) {
        return qm::win32::file_not_found;
    }
    value = *found;
    return success;
}

uint32_t SimRegistry::SetValue(RegKey key, qm::wstring_view name, const platform::RegValue& value) {
    const std::lock_guard lock(m_mutex);
    Handle handle;
    if (const uint32_t error = LookupWithRight(key, key_access::set_value, handle);
        error != success) {
        return error;
    }
    if (name.size() > kMaxValueNameLength) {
        return qm::win32::invalid_parameter;
    }
    RegistryKey& target = *handle.key;
    std::vector<NamedValue> before = target.Values();
    const bool wasEdited = target.Edited();
    target.SetValue(name, value);
    target.SetEdited(true);
    if (!Save()) {
        target.ReplaceValues(std::move(before));
        target.SetEdited(wasEdited);
        return qm::win32::write_fault;
    }
    return success;
}

uint32_t SimRegistry::DeleteValue(RegKey key, qm::wstring_view name) {
    const std::lock_guard lock(m_mutex);
    Handle handle;
    if (const uint32_t error = LookupWithRight(key, key_access::set_value, handle);
        error != success) {
        return error;
    }
    RegistryKey& target = *handle.key;
    std::vector<NamedValue> before = target.Values();
    const bool wasEdited = target.Edited();
    if (!target.DeleteValue(name)) {
        return qm::win32::file_not_found;
    }
    target.SetEdited(true);
    if (!Save()) {
        target.ReplaceValues(std::move(before));
        target.SetEdited(wasEdited);
        return qm::win32::write_fault;
    }
    return success;
}

uint32_t SimRegistry::EnumKey(RegKey key, uint32_t index, qm::wstring& name) {
    const std::lock_guard lock(m_mutex);
    Handle handle;
    if (const uint32_t error = LookupWithRight(key, key_access::enumerate_sub_keys, handle);
        error != success) {
        return error;
    }
    const auto& subKeys = handle.key->SubKeys();
    if (index >= subKeys.size()) {
        return qm::win32::no_more_items;
    }
    name = std::next(subKeys.begin(), index)->second->Name();
    return success;
}

uint32_t SimRegistry::EnumValue(RegKey key, uint32_t index, qm::wstring& name,
                                platform::RegValue& value) {
    const std::lock_guard lock(m_mutex);
    Handle handle;
    if (const uint32_t error = LookupWithRight(key, key_access::query_value, handle);
        error != success) {
        return error;
    }
    const auto& values = handle.key->Values();
    if (index >= values.size()) {
        return qm::win32::no_more_items;
    }
    name = values[index].name;
    value = values[index].value;
    return success;
}

uint32_t SimRegistry::DeleteKey(RegKey parent, qm::wstring_view subKey, uint32_t access) {
    const std::lock_guard lock(m_mutex);
    Handle from;
    if (const uint32_t error = Lookup(parent, from); error != success) {
        return error;
    }
    std::shared_ptr<RegistryKey> target;
    if (subKey.empty()) {
        // The handle's own key, which it must have been opened to delete.
        if ((access & kBothViews) == kBothViews) {
            return qm::win32::invalid_parameter;
        }
        if (!Allows(from.access, key_access::delete_key)) {
            return access_denied;
        }
        target = from.key;
    } else {
        std::vector<qm::wstring> path;
        if (const uint32_t error = Resolve(from, subKey, access, path); error != success) {
            return error;
        }
        size_t existing = 0;
        target = Walk(m_file.SharedRoot(), path, existing);
        if (existing < path.size()) {
            return qm::win32::file_not_found;
        }
    }
    RegistryKey* const owner = target->Parent();
    // HKEY_LOCAL_MACHINE and its hives stay; a key with sub-keys must be emptied first.
    if (owner == nullptr || owner->Parent() == nullptr || !target->SubKeys().empty()) {
        return access_denied;
    }
    std::shared_ptr<RegistryKey> removed = owner->RemoveSubKey(target->Name());
    if (!Save()) {
        owner->RestoreSubKey(std::move(removed));
        return qm::win32::write_fault;
    }
    return success;
}

}  // namespace webrig::sim
