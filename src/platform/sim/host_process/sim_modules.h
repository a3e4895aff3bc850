#pragma once
// The modules loaded into the simulated process. Nothing is ever loaded from disk: a test or a
// host registers each module with the functions it exports, and webrig finds them by name the
// way GetModuleHandleW and GetProcAddress would.

#include <map>
#include <mutex>
#include <string>

#include "platform/modules.h"

namespace webrig::sim {

class SimModules final : public platform::ModuleLookup {
  public:
    // Where webrig's own module is until a host says otherwise.
    static constexpr qm::wstring_view kDefaultOwnModulePath =
        u"C:\\ProgramData\\webrig\\webrig.dll";

    SimModules();

    // LoadLibraryW for a module whose functions are `exports`. Loading a path that is already
    // loaded (without regard to case) returns the same handle and counts one more load.
    platform::ModuleHandle LoadModule(qm::wstring fullWindowsPath,
                                      std::map<std::string, platform::ProcAddress> exports);
    // FreeLibrary: the module goes when its last load is undone. False for an unknown handle.
    bool UnloadModule(platform::ModuleHandle module);

    platform::ModuleHandle OwnModule() const noexcept { return m_own; }
    // A host puts webrig's module next to its own, where the installer would have placed it.
    void SetOwnModulePath(qm::wstring fullWindowsPath);

    platform::ModuleHandle FindModule(qm::wstring_view nameOrPath) override;
    platform::ProcAddress FindFunction(platform::ModuleHandle module,
                                       std::string_view name) override;
    qm::wstring ModuleFileName(platform::ModuleHandle module) override;

  private:
    struct Module {
        qm::wstring path;
        std::map<std::string, platform::ProcAddress, std::less<>> exports;
        int loads = 1;
    };

    mutable std::mutex m_mutex;
    std::map<platform::ModuleHandle, Module> m_modules;
    uintptr_t m_nextBase;
    platform::ModuleHandle m_own;
};

}  // namespace webrig::sim
