#pragma once
// Modules of the calling process: GetModuleHandleW, GetProcAddress, GetModuleFileNameW.

#include "platform/modules.h"

namespace webrig::win32 {

class Win32Modules final : public platform::ModuleLookup {
  public:
    platform::ModuleHandle FindModule(qm::wstring_view nameOrPath) override;
    platform::ProcAddress FindFunction(platform::ModuleHandle module,
                                       std::string_view name) override;
    qm::wstring ModuleFileName(platform::ModuleHandle module) override;
};

}  // namespace webrig::win32
