#pragma once
// The platform of a process whose simulated machine could not be opened. Everything that
// belongs to the machine (registry, files, system information) fails with ERROR_NOT_READY, like
// a drive that is not there; what belongs to the process itself (clock, code page, modules,
// BSTRs, host objects) still works. The service control manager, certificate stores, processes
// and ADSI fail the same way.

#include <memory>

#include "platform/platform.h"
#include "platform/sim/host_process/sim_automation.h"
#include "platform/sim/host_process/sim_host_objects.h"
#include "platform/sim/host_process/sim_modules.h"
#include "platform/sim/machine/sim_clock.h"
#include "platform/sim/text/windows_1252.h"

namespace webrig::sim {

class UnavailableMachine final : public platform::Platform {
  public:
    explicit UnavailableMachine(qm::wstring reason);
    ~UnavailableMachine() override;

    // Why the machine could not be opened.
    const qm::wstring& reason() const noexcept { return m_reason; }
    SimModules& simModules() noexcept { return m_modules; }

    platform::Registry& registry() override { return *m_registry; }
    platform::SystemInfo& system() override { return *m_system; }
    platform::FileSystem& files() override { return *m_files; }
    platform::Clock& clock() override { return m_clock; }
    platform::AnsiCodePage& ansiCodePage() override { return m_codePage; }
    platform::ModuleLookup& modules() override { return m_modules; }
    platform::Automation& automation() override { return m_automation; }
    platform::HostObjects& hostObjects() override { return m_hostObjects; }
    platform::ServiceControl& services() override { return *m_services; }
    platform::ComClasses& comClasses() override { return *m_comClasses; }
    platform::IisConfiguration& iisConfiguration() override { return *m_iisConfiguration; }
    platform::Certificates& certificates() override { return *m_certificates; }
    platform::Processes& processes() override { return *m_processes; }
    platform::Adsi& adsi() override { return *m_adsi; }

  private:
    qm::wstring m_reason;
    std::unique_ptr<platform::Registry> m_registry;
    std::unique_ptr<platform::SystemInfo> m_system;
    std::unique_ptr<platform::FileSystem> m_files;
    std::unique_ptr<platform::ServiceControl> m_services;
    std::unique_ptr<platform::ComClasses> m_comClasses;
    std::unique_ptr<platform::IisConfiguration> m_iisConfiguration;
    std::unique_ptr<platform::Certificates> m_certificates;
    std::unique_ptr<platform::Processes> m_processes;
    std::unique_ptr<platform::Adsi> m_adsi;
    SimClock m_clock;
    Windows1252 m_codePage;
    SimModules m_modules;
    SimAutomation m_automation;
    SimHostObjects m_hostObjects;
};

}  // namespace webrig::sim
