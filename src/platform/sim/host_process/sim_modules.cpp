#include "platform/sim/host_process/sim_modules.h"

#include "support/case_insensitive.h"

namespace webrig::sim {
namespace {

// Image bases as a 32-bit process would see them: 64 KiB aligned, never 0.
constexpr uintptr_t kFirstModuleBase = 0x10000000;
constexpr uintptr_t kModuleSpacing = 0x00100000;

qm::wstring_view FileNameOf(qm::wstring_view path) {
    const size_t slash = path.rfind(u'\\');
    return slash == qm::wstring_view::npos ? path : path.substr(slash + 1);
}

// GetModuleHandleW appends ".dll" to a name without an extension; a trailing dot says the
// name really has none.
qm::wstring WithDefaultExtension(qm::wstring_view name) {
    if (!name.empty() && name.back() == u'.') {
        return qm::wstring(name.substr(0, name.size() - 1));
    }
    if (FileNameOf(name).find(u'.') == qm::wstring_view::npos) {
        return qm::wstring(name) + u".dll";
    }
    return qm::wstring(name);
}

}  // namespace

SimModules::SimModules() : m_nextBase(kFirstModuleBase), m_own(platform::kNoModule) {
    m_own = LoadModule(qm::wstring(kDefaultOwnModulePath), {});
}

platform::ModuleHandle SimModules::LoadModule(
    qm::wstring fullWindowsPath, std::map<std::string, platform::ProcAddress> exports) {
    const std::lock_guard lock(m_mutex);
    for (auto& [handle, module] : m_modules) {
        if (qm::iequals(module.path, fullWindowsPath)) {
            ++module.loads;
            return handle;
        }
    }
    const platform::ModuleHandle handle{m_nextBase};
    m_nextBase += kModuleSpacing;
    Module module{std::move(fullWindowsPath), {}, 1};
    module.exports.insert(exports.begin(), exports.end());
    m_modules.emplace(handle, std::move(module));
    return handle;
}

bool SimModules::UnloadModule(platform::ModuleHandle module) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_modules.find(module);
    if (found == m_modules.end()) {
        return false;
    }
    if (--found->second.loads == 0) {
        m_modules.erase(found);
    }
    return true;
}

void SimModules::SetOwnModulePath(qm::wstring fullWindowsPath) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_modules.find(m_own);
    if (found != m_modules.end()) {
        found->second.path = std::move(fullWindowsPath);
    }
}

platform::ModuleHandle SimModules::FindModule(qm::wstring_view nameOrPath) {
    if (nameOrPath.empty()) {
        return platform::kNoModule;
    }
    const bool byPath = nameOrPath.find(u'\\') != qm::wstring_view::npos;
    const qm::wstring wanted = WithDefaultExtension(nameOrPath);
    const std::lock_guard lock(m_mutex);
    for (const auto& [handle, module] : m_modules) {
        const qm::wstring_view candidate = byPath ? module.path : FileNameOf(module.path);
        if (qm::iequals(candidate, wanted)) {
            return handle;
        }
    }
    return platform::kNoModule;
}

platform::ProcAddress SimModules::FindFunction(platform::ModuleHandle module,
                                               std::string_view name) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_modules.find(module);
    if (found == m_modules.end()) {
        return nullptr;
    }
    const auto function = found->second.exports.find(name);
    return function == found->second.exports.end() ? nullptr : function->second;
}

qm::wstring SimModules::ModuleFileName(platform::ModuleHandle module) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_modules.find(module);
    return found == m_modules.end() ? qm::wstring() : found->second.path;
}

}  // namespace webrig::sim
