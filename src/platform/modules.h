#pragma once
// Modules loaded into the process: the host engine's and this module's own.

#include <cstdint>
#include <string_view>

#include "support/wide_string.h"

namespace webrig::platform {

// A loaded module (HMODULE).
enum class ModuleHandle : uintptr_t {};
inline constexpr ModuleHandle kNoModule{0};

// An exported function (FARPROC). The caller casts it to the function's real type.
using ProcAddress = void (*)();

class ModuleLookup {
  public:
    virtual ~ModuleLookup() = default;

    // GetModuleHandleW: a module already loaded, by file name or by full path (without regard to
    // letter case); kNoModule when none is. Never loads a module.
    virtual ModuleHandle FindModule(qm::wstring_view nameOrPath) = 0;
    // GetProcAddress: an exported function by name; nullptr when the module does not export it.
    virtual ProcAddress FindFunction(ModuleHandle module, std::string_view name) = 0;
    // GetModuleFileNameW: the module's full path; empty for an unknown handle.
    virtual qm::wstring ModuleFileName(ModuleHandle module) = 0;
};

}  // namespace webrig::platform
