#pragma once
// The IIS 7+ configuration system through its COM administration objects
// (AppHostWritableAdminManager and the objects it hands out). Every call returns the object's
// HRESULT; the description of the thread's error information after a failed call is kept for
// AdminManager::LastErrorDescription.

#include "platform/iis_config.h"

namespace webrig::win32 {

class Win32IisConfiguration final : public platform::IisConfiguration {
  public:
    // CoCreateInstance of AppHostWritableAdminManager, in process. REGDB_E_CLASSNOTREG where IIS
    // 7+ is not installed; CO_E_NOTINITIALIZED when the host has not initialised COM.
    qm::hresult CreateAdminManager(std::unique_ptr<platform::AdminManager>& manager) override;
};

}  // namespace webrig::win32
