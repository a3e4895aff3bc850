#pragma once
// The service control manager, as OpenSCManagerW, OpenServiceW, QueryServiceStatus,
// StartServiceW, ControlService and CloseServiceHandle see it. Like those calls, each returns a
// handle (null on failure) or success, and leaves the reason of a failure in the thread's last
// error: callers read it with qm::get_last_error, exactly as they would after the Windows call.

#include <cstdint>

#include "support/wide_string.h"

namespace webrig::platform {

// An open manager or service (SC_HANDLE).
enum class ServiceHandle : uintptr_t {};
inline constexpr ServiceHandle kNoService{0};

// Access rights.
namespace service_access {
constexpr uint32_t query_status = 0x0004;         // SERVICE_QUERY_STATUS
constexpr uint32_t start = 0x0010;                // SERVICE_START
constexpr uint32_t stop = 0x0020;                 // SERVICE_STOP
constexpr uint32_t all_access = 0xF01FF;          // SERVICE_ALL_ACCESS
constexpr uint32_t manager_all_access = 0xF003F;  // SC_MANAGER_ALL_ACCESS
}  // namespace service_access

// Service states (SERVICE_xxx).
namespace service_state {
constexpr uint32_t stopped = 1;
constexpr uint32_t start_pending = 2;
constexpr uint32_t stop_pending = 3;
constexpr uint32_t running = 4;
constexpr uint32_t continue_pending = 5;
constexpr uint32_t pause_pending = 6;
constexpr uint32_t paused = 7;
}  // namespace service_state

constexpr uint32_t kServiceControlStop = 1;  // SERVICE_CONTROL_STOP

// The fields of SERVICE_STATUS the callers read.
struct ServiceStatus {
    uint32_t currentState = 0;
    uint32_t checkPoint = 0;
    uint32_t waitHint = 0;  // milliseconds
};

class ServiceControl {
  public:
    virtual ~ServiceControl() = default;

    // OpenSCManagerW on the local machine's active database.
    virtual ServiceHandle OpenManager(uint32_t access) = 0;
    // OpenServiceW.
    virtual ServiceHandle OpenNamedService(ServiceHandle manager, qm::wstring_view name,
                                           uint32_t access) = 0;
    // QueryServiceStatus.
    virtual bool QueryStatus(ServiceHandle service, ServiceStatus& status) = 0;
    // StartServiceW without arguments.
    virtual bool Start(ServiceHandle service) = 0;
    // ControlService; `status` receives the state after the control was sent.
    virtual bool Control(ServiceHandle service, uint32_t control, ServiceStatus& status) = 0;
    // CloseServiceHandle.
    virtual bool Close(ServiceHandle handle) = 0;
};

}  // namespace webrig::platform
