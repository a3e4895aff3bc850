#include "platform/sim/services/sim_service_control.h"

#include "support/last_error.h"
#include "support/result_codes.h"

namespace webrig::sim {
namespace {

namespace state = platform::service_state;
namespace access = platform::service_access;

bool IsPending(uint32_t current) {
    return current == state::start_pending || current == state::stop_pending ||
           current == state::continue_pending || current == state::pause_pending;
}

// Where a pending state leads.
uint32_t TargetOf(uint32_t pending) {
    switch (pending) {
        case state::start_pending:
        case state::continue_pending:
            return state::running;
        case state::stop_pending:
            return state::stopped;
        default:
            return state::paused;
    }
}

// A failed call: the reason goes to the thread's last error, as Windows leaves it.
template <typename Result>
Result Fail(uint32_t error, Result result) {
    qm::set_last_error(error);
    return result;
}

}  // namespace

SimServiceControl::SimServiceControl(ServicesFile services, std::filesystem::path file,
                                     platform::Clock& clock, FileWriter writer)
    : m_managerError(services.managerError),
      m_file(std::move(file)),
      m_clock(clock),
      m_writer(std::move(writer)) {
    for (auto& [name, script] : services.services) {
        LiveService& live = m_services[name];
        live.script = script;
        if (IsPending(script.state)) {
            const bool starting =
                script.state == state::start_pending || script.state == state::continue_pending;
            BeginTransition(live, script.state, TargetOf(script.state),
                            starting ? script.startPendingMs : script.stopPendingMs);
        }
    }
}

platform::ServiceHandle SimServiceControl::OpenManager(uint32_t access) {
    const std::lock_guard lock(m_mutex);
    if (m_managerError != 0) {
        return Fail(m_managerError, platform::kNoService);
    }
    const uintptr_t handle = m_nextHandle;
    m_nextHandle += 4;
    m_handles[handle] = OpenHandle{true, {}, access};
    return platform::ServiceHandle{handle};
}

platform::ServiceHandle SimServiceControl::OpenNamedService(platform::ServiceHandle manager,
                                                            qm::wstring_view name,
                                                            uint32_t access) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_handles.find(static_cast<uintptr_t>(manager));
    if (found == m_handles.end() || !found->second.isManager) {
        return Fail(qm::win32::invalid_handle, platform::kNoService);
    }
    if (name.empty() || name.size() > 256 || name.find_first_of(u"/\\") != name.npos) {
        return Fail(qm::win32::invalid_name, platform::kNoService);
    }
    const auto service = m_services.find(qm::wstring(name));
    if (service == m_services.end()) {
        return Fail(qm::win32::service_does_not_exist, platform::kNoService);
    }
    if (service->second.script.openError != 0) {
        return Fail(service->second.script.openError, platform::kNoService);
    }
    const uintptr_t handle = m_nextHandle;
    m_nextHandle += 4;
    m_handles[handle] = OpenHandle{false, service->first, access};
    return platform::ServiceHandle{handle};
}

SimServiceControl::LiveService* SimServiceControl::FindService(platform::ServiceHandle handle,
                                                               uint32_t neededAccess) {
    const auto found = m_handles.find(static_cast<uintptr_t>(handle));
    if (found == m_handles.end() || found->second.isManager) {
        return Fail(qm::win32::invalid_handle, nullptr);
    }
    if ((found->second.access & neededAccess) != neededAccess) {
        return Fail(qm::win32::access_denied, nullptr);
    }
    return &m_services.at(found->second.service);
}

void SimServiceControl::BeginTransition(LiveService& service, uint32_t pendingState,
                                        uint32_t target, std::optional<uint32_t> duration) {
    service.pending = Pending{pendingState, target, m_clock.TickCount(), duration};
    // The file keeps where the service ends up; one that never gets there stays pending.
    service.script.state = duration ? target : pendingState;
}

platform::ServiceStatus SimServiceControl::StatusOf(LiveService& service) {
    if (service.pending) {
        const Pending& pending = *service.pending;
        // Unsigned difference: correct across the tick count's wrap.
        const uint32_t elapsed = m_clock.TickCount() - pending.since;
        if (pending.duration && elapsed >= *pending.duration) {
            service.pending.reset();
        } else {
            // A transition that never ends makes no progress: its checkpoint stands still, so
            // that a caller waiting for progress gives up as it would on Windows.
            const uint32_t every = service.script.checkPointEveryMs;
            const bool moves = every != 0 && pending.duration.has_value();
            return {pending.state, moves ? 1 + elapsed / every : 1, service.script.waitHintMs};
        }
    }
    return {service.script.state, 0, 0};
}

bool SimServiceControl::QueryStatus(platform::ServiceHandle handle,
                                    platform::ServiceStatus& status) {
    const std::lock_guard lock(m_mutex);
    LiveService* service = FindService(handle, access::query_status);
    if (service == nullptr) {
        return false;
    }
    if (service->script.queryError != 0) {
        return Fail(service->script.queryError, false);
    }
    status = StatusOf(*service);
    return true;
}

bool SimServiceControl::Start(platform::ServiceHandle handle) {
    const std::lock_guard lock(m_mutex);
    LiveService* service = FindService(handle, access::start);
    if (service == nullptr) {
        return false;
    }
    if (service->script.startType == StartType::disabled) {
        return Fail(qm::win32::service_disabled, false);
    }
    if (service->script.startError != 0) {
        return Fail(service->script.startError, false);
    }
    if (StatusOf(*service).currentState != state::stopped) {
        return Fail(qm::win32::service_already_running, false);
    }
    const LiveService before = *service;
    BeginTransition(*service, state::start_pending, state::running, service->script.startPendingMs);
    if (!Persist()) {
        *service = before;
        return Fail(qm::win32::write_fault, false);
    }
    return true;
}

bool SimServiceControl::Control(platform::ServiceHandle handle, uint32_t control,
                                platform::ServiceStatus& status) {
    const std::lock_guard lock(m_mutex);
    if (control != platform::kServiceControlStop) {
        // Only stopping is simulated; pause and the rest are not part of any script.
        return Fail(qm::win32::invalid_parameter, false);
    }
    LiveService* service = FindService(handle, access::stop);
    if (service == nullptr) {
        return false;
    }
    if (service->script.stopError != 0) {
        return Fail(service->script.stopError, false);
    }
    const uint32_t current = StatusOf(*service).currentState;
    if (current == state::stopped) {
        return Fail(qm::win32::service_not_active, false);
    }
    if (current == state::start_pending || current == state::stop_pending) {
        // A service in the middle of a start or stop takes no controls.
        return Fail(qm::win32::service_cannot_accept_ctrl, false);
    }
    if (!service->script.ignoresStop) {
        const LiveService before = *service;
        BeginTransition(*service, state::stop_pending, state::stopped,
                        service->script.stopPendingMs);
        if (!Persist()) {
            *service = before;
            return Fail(qm::win32::write_fault, false);
        }
    }
    status = StatusOf(*service);
    return true;
}

bool SimServiceControl::Close(platform::ServiceHandle handle) {
    const std::lock_guard lock(m_mutex);
    if (m_handles.erase(static_cast<uintptr_t>(handle)) == 0) {
        return Fail(qm::win32::invalid_handle, false);
    }
    return true;
}

bool SimServiceControl::Persist() {
    const std::string text = FormatServicesFile(SnapshotLocked());
    return m_writer(m_file, std::as_bytes(std::span(text.data(), text.size())));
}

ServicesFile SimServiceControl::Snapshot() const {
    const std::lock_guard lock(m_mutex);
    return SnapshotLocked();
}

ServicesFile SimServiceControl::SnapshotLocked() const {
    ServicesFile file;
    file.managerError = m_managerError;
    for (const auto& [name, live] : m_services) {
        file.services.emplace(name, live.script);
    }
    return file;
}

size_t SimServiceControl::OpenHandleCount() const {
    const std::lock_guard lock(m_mutex);
    return m_handles.size();
}

}  // namespace webrig::sim
