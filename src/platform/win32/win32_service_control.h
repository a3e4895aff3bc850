#pragma once
// The service control manager itself. Failures leave their reason in the thread's last error,
// exactly where Windows leaves it.

#include "platform/service_control.h"

namespace webrig::win32 {

class Win32ServiceControl final : public platform::ServiceControl {
  public:
    platform::ServiceHandle OpenManager(uint32_t access) override;
    platform::ServiceHandle OpenNamedService(platform::ServiceHandle manager, qm::wstring_view name,
                                             uint32_t access) override;
    bool QueryStatus(platform::ServiceHandle service, platform::ServiceStatus& status) override;
    bool Start(platform::ServiceHandle service) override;
    bool Control(platform::ServiceHandle service, uint32_t control,
                 platform::ServiceStatus& status) override;
    bool Close(platform::ServiceHandle handle) override;
};

}  // namespace webrig::win32
