#pragma once
// The World Wide Web Publishing service: opening it, making sure it runs, and restarting it at
// the end of a run so that the new configuration takes effect.

#include <cstdint>

#include "services/service_context.h"
#include "settings/iis_property_bag.h"

namespace webrig::services {

// Opens the service control manager and "W3SVC" with all access into `handles`: 0, -1101 when
// the manager cannot be opened, -1102 when the service cannot (the manager is closed then).
int32_t OpenW3svc(const ServiceContext& context, ServiceHandles& handles);

// Starts W3SVC unless it runs and waits up to 15 s for it to run: 0 or -1106.
int32_t CheckAndStartW3CService(const ServiceContext& context, platform::ServiceHandle service);

// Stops and starts W3SVC when the project asks for it ("RESTARTW3SVC" exactly "1") on IIS
// before 7. Stop and start failures are only logged: the result is 0, or -1101/-1102 when
// the service could not be opened.
int32_t RestartW3cService(const ServiceContext& context, const CIISPropertyBag& bag);

}  // namespace webrig::services
