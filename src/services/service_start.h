#pragma once
// Starting a service and waiting for it, with the log lines that tell afterwards what happened.

#include <cstdint>

#include "services/service_context.h"

namespace webrig::services {

// Whether a service in `state` can be started: stopped, or in a pending state (after a pause of
// a second to let it settle); not when running or paused.
bool IsStartable(const ServiceContext& context, uint32_t state);

// StartServiceW, logging the failure by its error name. The thread's last error is the start's
// own code afterwards, so that the caller can tell a disabled service from other failures.
bool StartServiceWithLogging(const ServiceContext& context, platform::ServiceHandle service);

// Polls every 100 ms until the service is in `wanted`; false once the tick count is past the
// deadline. The deadline is compared unsigned, as the tick count is.
bool WaitForServiceToReachState(const ServiceContext& context, platform::ServiceHandle service,
                                uint32_t wanted, uint32_t timeoutMs);

// How a start failure is named in the log: "ERROR_SERVICE_DISABLED", or the decimal code.
qm::wstring StartErrorName(uint32_t error);

}  // namespace webrig::services
