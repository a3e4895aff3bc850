#pragma once
// The service control manager of the simulated machine. Services follow their script from
// services.json against the machine's clock: a start stays pending for its scripted time,
// reporting a checkpoint that moves as scripted, and then runs; a stop likewise. A state change
// reaches services.json at once, as the state the service settles in, so that the next process
// finds the service as this one left it.

#include <cstdint>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>

#include "platform/clock.h"
#include "platform/service_control.h"
#include "platform/sim/machine/atomic_file.h"
#include "platform/sim/services/service_script.h"

namespace webrig::sim {

class SimServiceControl final : public platform::ServiceControl {
  public:
    SimServiceControl(ServicesFile services, std::filesystem::path file, platform::Clock& clock,
                      FileWriter writer = WriteFileAtomically);

    platform::ServiceHandle OpenManager(uint32_t access) override;
    platform::ServiceHandle OpenNamedService(platform::ServiceHandle manager, qm::wstring_view name,
                                             uint32_t access) override;
    bool QueryStatus(platform::ServiceHandle service, platform::ServiceStatus& status) override;
    bool Start(platform::ServiceHandle service) override;
    bool Control(platform::ServiceHandle service, uint32_t control,
                 platform::ServiceStatus& status) override;
    bool Close(platform::ServiceHandle handle) override;

    // The services as services.json now holds them.
    ServicesFile Snapshot() const;
    // Open handles, for tests that check every handle was closed.
    size_t OpenHandleCount() const;

  private:
    // A transition under way: the state shown until `duration` has passed since `since`.
    struct Pending {
        uint32_t state = 0;
        uint32_t target = 0;
        uint32_t since = 0;
        std::optional<uint32_t> duration;
    };

    struct LiveService {
        ServiceScript script;  // script.state: the state the service settles in
        std::optional<Pending> pending;
    };

    struct OpenHandle {
        bool isManager = false;
        qm::wstring service;
        uint32_t access = 0;
    };

    LiveService* FindService(platform::ServiceHandle handle, uint32_t neededAccess);
    platform::ServiceStatus StatusOf(LiveService& service);
    void BeginTransition(LiveService& service, uint32_t pendingState, uint32_t target,
                         std::optional<uint32_t> duration);
    bool Persist();
    ServicesFile SnapshotLocked() const;

    mutable std::mutex m_mutex;
    uint32_t m_managerError;
    std::map<qm::wstring, LiveService, qm::iless> m_services;
    std::map<uintptr_t, OpenHandle> m_handles;
    uintptr_t m_nextHandle = 0x10000;
    std::filesystem::path m_file;
    platform::Clock& m_clock;
    FileWriter m_writer;
};

}  // namespace webrig::sim
