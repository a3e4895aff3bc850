#include "services/iis_admin_check.h"

#include <algorithm>

#include "services/service_start.h"
#include "support/format.h"
#include "support/last_error.h"
#include "support/result_codes.h"
#include "support/status_codes.h"

namespace webrig::services {
namespace {

namespace state = platform::service_state;
namespace access = platform::service_access;

constexpr char16_t kQueryFailed[] = u"Unable to query the status of IIS Admin Service";
constexpr char16_t kStartFailed[] = u"Unable to start IIS Admin Service";

// One tenth of the wait hint, between one and ten seconds, as services are asked to be polled.
uint32_t PollInterval(uint32_t waitHint) {
    return std::clamp<uint32_t>(waitHint / 10, 1000, 10'000);
}

}  // namespace

qm::wstring OpenServiceErrorName(uint32_t error) {
    switch (error) {
        case qm::win32::invalid_name:
            return u"ERROR_INVALID_NAME";
        case qm::win32::access_denied:
            return u"ERROR_ACCESS_DENIED";
        case qm::win32::invalid_handle:
            return u"ERROR_INVALID_HANDLE";
        case qm::win32::service_does_not_exist:
            return u"ERROR_SERVICE_DOES_NOT_EXIST";
        default:
            return qm::format(u"%d", static_cast<int32_t>(error));
    }
}

int32_t CheckIisAdminService(const ServiceContext& context, CIISPropertyBag& bag) {
    ServiceHandles handles(context.services);
    handles.manager = context.services.OpenManager(access::manager_all_access);
    if (handles.manager == platform::kNoService) {
        const uint32_t error = qm::get_last_error();
        context.Log(u"Unable to open the Service Manager");
        if (error == qm::win32::call_not_implemented) {
            context.Log(
                u"Ignoring IIS custom actions because an unsupported version of IIS was "
                u"detected");
            bag.ignoreIIS = 1;
            return 0;
        }
        return qm::status::service_manager_unavailable;
    }
    handles.service = context.services.OpenNamedService(handles.manager, u"IISADMIN",
                                                        access::query_status | access::start);
    if (handles.service == platform::kNoService) {
        const uint32_t error = qm::get_last_error();
        context.Log(u"Unable to open the IIS Admin Service");
        context.Log(u"OpenService returned the following: " + OpenServiceErrorName(error));
        return qm::status::service_unavailable;
    }
    platform::ServiceStatus status;
    if (!context.services.QueryStatus(handles.service, status)) {
        context.Log(kQueryFailed);
        return qm::status::iis_admin_status_unavailable;
    }
    if (status.currentState != state::start_pending && status.currentState != state::running) {
        if (!StartServiceWithLogging(context, handles.service)) {
            if (qm::get_last_error() == qm::win32::service_disabled) {
                host::ReportErrorLine(context.sink, u"IIS Admin Service is disabled",
                                      qm::status::iis_admin_disabled);
                return qm::status::iis_admin_disabled;
            }
            host::ReportErrorLine(context.sink, kStartFailed, qm::status::iis_admin_start_failed);
            return qm::status::iis_admin_start_failed;
        }
    }
    if (!context.services.QueryStatus(handles.service, status)) {
        context.Log(kQueryFailed);
        return 0;
    }
    // Wait while the service starts and its checkpoint keeps moving; give up once it has stood
    // still for longer than its own wait hint.
    uint32_t progressTick = context.clock.TickCount();
    uint32_t checkPoint = status.checkPoint;
    while (status.currentState == state::start_pending) {
        context.clock.Sleep(PollInterval(status.waitHint));
        if (!context.services.QueryStatus(handles.service, status)) {
            break;
        }
        if (status.checkPoint > checkPoint) {
            progressTick = context.clock.TickCount();
            checkPoint = status.checkPoint;
        } else if (context.clock.TickCount() - progressTick > status.waitHint) {
            break;
        }
    }
    if (status.currentState != state::running) {
        context.Log(kStartFailed);
    }
    return 0;
}

}  // namespace webrig::services
