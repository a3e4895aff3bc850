#pragma once
// The IIS Admin Service (IISADMIN) check of initialization: IIS before 7 keeps its configuration
// in that service, so it must run before anything is configured.

#include <cstdint>

#include "services/service_context.h"
#include "settings/iis_property_bag.h"

namespace webrig::services {

// Starts IISADMIN unless it runs or is starting, and waits while it starts for as long as it
// makes progress. 0 when it runs or could not be checked harmlessly, and also on a system without
// a service control manager (error 120), where IIS work is switched off (`bag.ignoreIIS`).
// Otherwise -1101 (manager), -1102 (service), -1103 (state), -1104 (start) or -1108 (disabled);
// the last two also go to the event sink's error report.
int32_t CheckIisAdminService(const ServiceContext& context, CIISPropertyBag& bag);

// How an OpenServiceW failure is named in the log: "ERROR_ACCESS_DENIED", or the decimal code.
qm::wstring OpenServiceErrorName(uint32_t error);

}  // namespace webrig::services
