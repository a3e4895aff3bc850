#include "services/w3svc.h"

#include "services/service_start.h"
#include "support/format.h"
#include "support/last_error.h"
#include "support/status_codes.h"

namespace webrig::services {
namespace {

namespace state = platform::service_state;

constexpr uint32_t kWaitMs = 15'000;
constexpr uint32_t kPendingPauseMs = 1000;

}  // namespace

int32_t OpenW3svc(const ServiceContext& context, ServiceHandles& handles) {
    handles.manager = context.services.OpenManager(platform::service_access::manager_all_access);
    if (handles.manager == platform::kNoService) {
        return qm::status::service_manager_unavailable;
    }
    handles.service = context.services.OpenNamedService(handles.manager, u"W3SVC",
                                                        platform::service_access::all_access);
    if (handles.service == platform::kNoService) {
        context.services.Close(handles.manager);
        handles.manager = platform::kNoService;
        return qm::status::service_unavailable;
    }
    return 0;
}

int32_t CheckAndStartW3CService(const ServiceContext& context, platform::ServiceHandle service) {
    context.Log(u"CheckAndStartW3CService");
    platform::ServiceStatus status;
    if (!context.services.QueryStatus(service, status)) {
        const uint32_t error = qm::get_last_error();
        context.Log(u"QueryServiceStatus failed.");
        context.Log(qm::format(u"GetLastError returned: %d", static_cast<int32_t>(error)));
        return qm::status::w3svc_not_running;
    }
    if (status.currentState == state::running) {
        context.Log(u"The service is already running.");
        return 0;
    }
    context.Log(u"The service is NOT already running.");
    if (!IsStartable(context, status.currentState)) {
        context.Log(u"IsStartable returned false");
        return qm::status::w3svc_not_running;
    }
    context.Log(u"IsStartable returned TRUE");
    if (!StartServiceWithLogging(context, service)) {
        context.Log(u"StartServiceWithLogging returned false");
        return qm::status::w3svc_not_running;
    }
    context.Log(u"StartServiceWithLogging returned TRUE");
    if (!WaitForServiceToReachState(context, service, state::running, kWaitMs)) {
        context.Log(u"WaitForServiceToReachState returned false");
        return qm::status::w3svc_not_running;
    }
    context.Log(u"WaitForServiceToReachState returned TRUE");
    return 0;
}

int32_t RestartW3cService(const ServiceContext& context, const CIISPropertyBag& bag) {
    if (bag.iisMajorVersion >= 7 || bag.ignoreIIS != 0) {
        return 0;
    }
    context.Log(u"RestartProp value: " + bag.restartW3svc);
    if (bag.restartW3svc != u"1") {
        return 0;
    }
    ServiceHandles handles(context.services);
    if (const int32_t opened = OpenW3svc(context, handles); opened != 0) {
        return opened;
    }
    // The last state read decides; a query that fails leaves it as it was.
    uint32_t current = 0;
    platform::ServiceStatus status;
    const auto query = [&] {
        if (context.services.QueryStatus(handles.service, status)) {
            current = status.currentState;
            return true;
        }
        return false;
    };

    bool startAnyway = false;
    if (query() && current >= state::start_pending && current <= state::paused) {
        if (current != state::running && current != state::paused) {
            context.clock.Sleep(kPendingPauseMs);  // let a pending start or stop settle
        }
        context.services.Control(handles.service, platform::kServiceControlStop, status);
        if (!WaitForServiceToReachState(context, handles.service, state::stopped, kWaitMs) &&
            !WaitForServiceToReachState(context, handles.service, state::stopped, kWaitMs)) {
            context.Log(u"Note: The IIS W3SSVC failed to respond to a stop request");
            startAnyway = true;
        }
    }
    int32_t result = 0;
    if (!startAnyway) {
        query();
        if (current != state::stopped) {
            result = qm::status::w3svc_not_stopped;
        }
    }
    if (result == 0) {
        result = CheckAndStartW3CService(context, handles.service);
    }
    context.Log(qm::format(u"RestartW3cService: final result for stop/start: %d", result));
    return 0;
}

}  // namespace webrig::services
