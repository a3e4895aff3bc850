#pragma once
// A simulated machine whose services follow a script, with a sink that records every line, for
// the service operations to run against.

#include <memory>
#include <vector>

#include "platform/sim/machine/machine.h"
#include "services/service_context.h"
#include "testing/recording_event_sink.h"
#include "testing/temp_machine.h"

namespace webrig::testing {

class ScriptedServices {
  public:
    explicit ScriptedServices(const sim::ServicesFile& services, sim::MachineConfig config = {})
        : m_machine(config) {
        sim::ServicesFile file = services;
        // Scripts name only what they care about; the machine's own file holds the rest.
        m_control = std::make_unique<sim::SimServiceControl>(
            std::move(file), m_machine.path() / "services.json", m_machine.machine().clock());
    }

    services::ServiceContext Context() { return {*m_control, m_machine.machine().clock(), &sink}; }
    platform::ServiceHandle OpenW3svc(uint32_t access = platform::service_access::all_access) {
        m_manager = m_control->OpenManager(platform::service_access::manager_all_access);
        return m_control->OpenNamedService(m_manager, u"W3SVC", access);
    }
    uint32_t StateOf(const char16_t* service) {
        return m_control->Snapshot().services.at(service).state;
    }
    // Simulated milliseconds since the script began.
    uint32_t Elapsed() { return m_machine.machine().clock().TickCount() - m_start; }
    sim::SimServiceControl& control() { return *m_control; }
    sim::Machine& machine() { return m_machine.machine(); }

    RecordingEventSink sink;

  private:
    TempMachine m_machine;
    std::unique_ptr<sim::SimServiceControl> m_control;
    platform::ServiceHandle m_manager = platform::kNoService;
    uint32_t m_start = m_machine.machine().clock().TickCount();
};

// A service in `state` that starts in `startMs` and stops in `stopMs` (nullopt: never).
inline sim::ServiceScript Service(uint32_t state, std::optional<uint32_t> startMs = 1500,
                                  std::optional<uint32_t> stopMs = 1000) {
    sim::ServiceScript script;
    script.state = state;
    script.startType = sim::StartType::automatic;
    script.startPendingMs = startMs;
    script.stopPendingMs = stopMs;
    script.waitHintMs = 2000;
    script.checkPointEveryMs = 500;
    return script;
}

// `script` changed by `change`, for cases that differ from the usual service in one field.
template <typename Change>
sim::ServiceScript With(sim::ServiceScript script, Change change) {
    change(script);
    return script;
}

inline sim::ServicesFile Services(std::vector<std::pair<qm::wstring, sim::ServiceScript>> list,
                                  uint32_t managerError = 0) {
    sim::ServicesFile file;
    file.managerError = managerError;
    for (auto& [name, script] : list) {
        file.services.emplace(name, script);
    }
    return file;
}

}  // namespace webrig::testing
