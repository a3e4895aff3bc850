#pragma once
// A simulated Windows machine kept in a folder, in the formats Windows itself uses:
//
//   machine.json        Windows version, processor architecture, ANSI code page
//   registry/HKLM.reg   HKEY_LOCAL_MACHINE as regedit exports it
//   services.json       the Windows services and how each behaves
//   drive_c/            the C: drive
//   keys/               the key of encrypted IIS configuration attributes (IIS 7 and later)
//   journal/            processes.log: every process started on the machine
//
// A Machine is the Platform webrig runs on under Linux. Changes reach the folder as they happen;
// a file that could not be read is never written.

#include <filesystem>
#include <memory>

#include "platform/platform.h"
#include "platform/sim/adsi/sim_adsi.h"
#include "platform/sim/certificates/sim_certificates.h"
#include "platform/sim/files/sim_file_system.h"
#include "platform/sim/host_process/sim_automation.h"
#include "platform/sim/host_process/sim_host_objects.h"
#include "platform/sim/host_process/sim_modules.h"
#include "platform/sim/iis7/config_encryption.h"
#include "platform/sim/iis7/sim_iis_configuration.h"
#include "platform/sim/machine/machine_config.h"
#include "platform/sim/machine/sim_clock.h"
#include "platform/sim/machine/sim_system_info.h"
#include "platform/sim/programs/sim_processes.h"
#include "platform/sim/registry/sim_registry.h"
#include "platform/sim/services/sim_service_control.h"
#include "platform/sim/text/windows_1252.h"

namespace webrig::sim {

class Machine final : public platform::Platform {
  public:
    // Throws MachineError when the folder is missing or a file of it is missing or malformed.
    static std::unique_ptr<Machine> Open(const std::filesystem::path& folder);
    // Makes a fresh machine in `folder` (created when missing). Throws MachineError when a
    // machine is already there or a file cannot be written.
    static void Create(const std::filesystem::path& folder, const MachineConfig& config = {});

    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    const std::filesystem::path& folder() const noexcept { return m_folder; }
    const MachineConfig& config() const noexcept { return m_config; }
    // The modules of the simulated process, for hosts and tests that load some.
    SimModules& simModules() noexcept { return m_modules; }
    SimRegistry& simRegistry() noexcept { return m_registry; }
    SimServiceControl& simServices() noexcept { return m_services; }
    SimFileSystem& simFiles() noexcept { return m_files; }

    platform::Registry& registry() override { return m_registry; }
    platform::SystemInfo& system() override { return m_system; }
    platform::FileSystem& files() override { return m_files; }
    platform::Clock& clock() override { return m_clock; }
    platform::AnsiCodePage& ansiCodePage() override { return m_codePage; }
    platform::ModuleLookup& modules() override { return m_modules; }
    platform::Automation& automation() override { return m_automation; }
    platform::HostObjects& hostObjects() override { return m_hostObjects; }
    platform::ServiceControl& services() override { return m_services; }
    platform::ComClasses& comClasses() override { return m_comClasses; }
    platform::IisConfiguration& iisConfiguration() override { return m_iisConfiguration; }
    platform::Certificates& certificates() override { return m_certificates; }
    platform::Processes& processes() override { return m_processes; }
    platform::Adsi& adsi() override { return m_adsi; }

  private:
    class AdminBaseFactory final : public platform::AdminBaseClassFactory {
      public:
        qm::hresult CreateAdminBase() override { return qm::hr::ok; }
    };

    // The IIS 6 admin base class is registered where machine.json says the metabase is.
    class SimComClasses final : public platform::ComClasses {
      public:
        explicit SimComClasses(const MachineConfig& config) : m_config(config) {}
        qm::hresult ProbeAdminBaseClassFactory() override {
            return m_config.HasMetabase() ? qm::hr::ok : qm::hr::class_not_registered;
        }
        // Where the class is registered, its factory creates admin base objects.
        qm::hresult GetAdminBaseClassFactory(
            std::unique_ptr<platform::AdminBaseClassFactory>& factory) override {
            factory.reset();
            if (!m_config.HasMetabase()) {
                return qm::hr::class_not_registered;
            }
            factory = std::make_unique<AdminBaseFactory>();
            return qm::hr::ok;
        }

      private:
        const MachineConfig& m_config;
    };

    Machine(std::filesystem::path folder, MachineConfig config, RegFile localMachine,
            ServicesFile services);
    // The key of secret configuration attributes, read when first needed.
    const iis7::ConfigEncryption& ConfigurationEncryption();

    std::filesystem::path m_folder;
    MachineConfig m_config;
    SimRegistry m_registry;
    SimSystemInfo m_system;
    SimFileSystem m_files;
    SimClock m_clock;
    Windows1252 m_codePage;
    SimModules m_modules;
    SimAutomation m_automation;
    SimHostObjects m_hostObjects;
    SimServiceControl m_services;
    SimComClasses m_comClasses;
    std::unique_ptr<iis7::ConfigEncryption> m_encryption;
    iis7::SimIisConfiguration m_iisConfiguration;
    SimCertificates m_certificates;
    SimProcesses m_processes;
    SimAdsi m_adsi;
};

}  // namespace webrig::sim
