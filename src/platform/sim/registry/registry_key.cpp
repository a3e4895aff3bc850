#include "platform/sim/registry/registry_key.h"

#include <algorithm>

namespace webrig::sim {

int RegistryKey::Depth() const noexcept {
    int depth = 0;
    for (const RegistryKey* key = m_parent; key != nullptr; key = key->m_parent) {
        ++depth;
    }
    return depth;
}

qm::wstring RegistryKey::Path() const {
    if (m_parent == nullptr) {
        return {};
    }
    qm::wstring parentPath = m_parent->Path();
    return parentPath.empty() ? m_name : parentPath + u'\\' + m_name;
}

bool RegistryKey::IsWithin(const RegistryKey& ancestor) const noexcept {
    for (const RegistryKey* key = this; key != nullptr; key = key->m_parent) {
        if (key == &ancestor) {
            return true;
        }
    }
    return false;
}

RegistryKey* RegistryKey::FindSubKey(qm::wstring_view name) const {
    const auto found = m_subKeys.find(name);
    return found == m_subKeys.end() ? nullptr : found->second.get();
}

RegistryKey& RegistryKey::AddSubKey(qm::wstring name) {
    auto key = std::make_shared<RegistryKey>(name);
    key->m_parent = this;
    RegistryKey& added = *key;
    m_subKeys.emplace(std::move(name), std::move(key));
    Touch();
    return added;
}

std::shared_ptr<RegistryKey> RegistryKey::RemoveSubKey(qm::wstring_view name) {
    const auto found = m_subKeys.find(name);
    if (found == m_subKeys.end()) {
        return nullptr;
    }
    std::shared_ptr<RegistryKey> key = std::move(found->second);
    m_subKeys.erase(found);
    key->MarkDeleted(true);
    Touch();
    return key;
}

void RegistryKey::RestoreSubKey(std::shared_ptr<RegistryKey> key) {
    key->m_parent = this;
    key->MarkDeleted(false);
    const qm::wstring name = key->m_name;
    m_subKeys.emplace(name, std::move(key));
    Touch();
}

const platform::RegValue* RegistryKey::FindValue(qm::wstring_view name) const {
    const auto found = std::find_if(m_values.begin(), m_values.end(),
                                    [&](const NamedValue& v) { return qm::iequals(v.name, name); });
    return found == m_values.end() ? nullptr : &found->value;
}

void RegistryKey::SetValue(qm::wstring_view name, platform::RegValue value) {
    const auto found = std::find_if(m_values.begin(), m_values.end(),
                                    [&](const NamedValue& v) { return qm::iequals(v.name, name); });
    if (found != m_values.end()) {
        found->value = std::move(value);
    } else {
        m_values.push_back({qm::wstring(name), std::move(value)});
    }
    Touch();
}

bool RegistryKey::DeleteValue(qm::wstring_view name) {
    const auto found = std::find_if(m_values.begin(), m_values.end(),
                                    [&](const NamedValue& v) { return qm::iequals(v.name, name); });
    if (found == m_values.end()) {
        return false;
    }
    m_values.erase(found);
    Touch();
    return true;
}

void RegistryKey::ReplaceValues(std::vector<NamedValue> values) {
    m_values = std::move(values);
    Touch();
}

uint64_t RegistryKey::Revision() const noexcept {
    return Root().m_revision;
}

void RegistryKey::MarkDeleted(bool deleted) noexcept {
    // Iterative: a hostile file may nest keys deeply.
    std::vector<RegistryKey*> pending{this};
    while (!pending.empty()) {
        RegistryKey* key = pending.back();
        pending.pop_back();
        key->m_deleted = deleted;
        for (auto& [name, sub] : key->m_subKeys) {
            pending.push_back(sub.get());
        }
    }
}

void RegistryKey::Touch() noexcept {
    ++Root().m_revision;
}

RegistryKey& RegistryKey::Root() noexcept {
    RegistryKey* key = this;
    while (key->m_parent != nullptr) {
        key = key->m_parent;
    }
    return *key;
}

const RegistryKey& RegistryKey::Root() const noexcept {
    const RegistryKey* key = this;
    while (key->m_parent != nullptr) {
        key = key->m_parent;
    }
    return *key;
}

bool SameTree(const RegistryKey& a, const RegistryKey& b) {
    if (a.Name() != b.Name() || a.Values() != b.Values() ||
        a.SubKeys().size() != b.SubKeys().size()) {
        return false;
    }
    auto left = a.SubKeys().begin();
    auto right = b.SubKeys().begin();
    for (; left != a.SubKeys().end(); ++left, ++right) {
        if (!SameTree(*left->second, *right->second)) {
            return false;
        }
    }
    return true;
}

}  // namespace webrig::sim
