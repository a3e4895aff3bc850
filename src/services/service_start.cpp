#include "services/service_start.h"

#include "support/format.h"
#include "support/last_error.h"

namespace webrig::services {
namespace {

namespace state = platform::service_state;

struct ErrorName {
    uint32_t code;
    const char16_t* name;
};

constexpr ErrorName kStartErrors[] = {
    {3, u"ERROR_PATH_NOT_FOUND"},
    {5, u"ERROR_ACCESS_DENIED"},
    {6, u"ERROR_INVALID_HANDLE"},
    {1053, u"ERROR_SERVICE_REQUEST_TIMEOUT"},
    {1054, u"ERROR_SERVICE_NO_THREAD"},
    {1055, u"ERROR_SERVICE_DATABASE_LOCKED"},
    {1056, u"ERROR_SERVICE_ALREADY_RUNNING"},
    {1058, u"ERROR_SERVICE_DISABLED"},
    {1068, u"ERROR_SERVICE_DEPENDENCY_FAIL"},
    {1069, u"ERROR_SERVICE_LOGON_FAILED"},
    {1072, u"ERROR_SERVICE_MARKED_FOR_DELETE"},
    {1075, u"ERROR_SERVICE_DEPENDENCY_DELETED"},
};

constexpr uint32_t kPendingPauseMs = 1000;
constexpr uint32_t kPollMs = 100;

}  // namespace

bool IsStartable(const ServiceContext& context, uint32_t current) {
    context.Log(qm::format(u"IsStartable status: %d", static_cast<int32_t>(current)));
    switch (current) {
        case state::stopped:
            context.Log(u"First case.");
            return true;
        case state::start_pending:
        case state::stop_pending:
        case state::continue_pending:
        case state::pause_pending:
            context.Log(u"Second case.");
            context.clock.Sleep(kPendingPauseMs);
            return true;
        case state::running:
        case state::paused:
            context.Log(u"Third case.");
            return false;
        default:
            context.Log(u"Fourth case.");
            return false;
    }
}

qm::wstring StartErrorName(uint32_t error) {
    for (const ErrorName& known : kStartErrors) {
        if (known.code == error) {
            return known.name;
        }
    }
    return qm::format(u"%d", static_cast<int32_t>(error));
}

bool StartServiceWithLogging(const ServiceContext& context, platform::ServiceHandle service) {
    if (context.services.Start(service)) {
        return true;
    }
    // The caller reads the start's error after us: nothing here may change it.
    const qm::last_error_guard keep;
    context.Log(u"StartService returned the following: " + StartErrorName(qm::get_last_error()));
    return false;
}

bool WaitForServiceToReachState(const ServiceContext& context, platform::ServiceHandle service,
                                uint32_t wanted, uint32_t timeoutMs) {
    const uint32_t deadline = context.clock.TickCount() + timeoutMs;
    platform::ServiceStatus status;
    uint32_t current = 0;
    if (context.services.QueryStatus(service, status)) {
        current = status.currentState;
    }
    while (current != wanted) {
        if (context.clock.TickCount() > deadline) {
            return false;
        }
        context.clock.Sleep(kPollMs);
        if (context.services.QueryStatus(service, status)) {
            current = status.currentState;
        }
    }
    return true;
}

}  // namespace webrig::services
