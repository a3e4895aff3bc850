#pragma once
// A simulated machine whose IIS 7+ administration objects and IIS 6 admin base class can be told
// to fail where the simulation itself never does: the manager's creation, get_CommitPath,
// CommitChanges, the way to the main file's locations, and creating an admin base object.

#include <deque>
#include <memory>

#include "platform/platform.h"
#include "testing/temp_machine.h"

namespace webrig::testing {

struct IisFaults {
    qm::hresult createManager = 0;  // CoCreateInstance of the manager
    qm::hresult getCommitPath = 0;
    // CommitChanges answers these, one per call and without committing, before it commits again.
    std::deque<qm::hresult> commitAnswers;
    qm::hresult getConfigManager = 0;
    qm::hresult getConfigFile = 0;
    qm::hresult getLocations = 0;
    qm::hresult createAdminBase = 0;  // IClassFactory::CreateInstance of IMSAdminBase
    int managersCreated = 0;
};

class FaultyPlatform final : public platform::Platform {
  public:
    explicit FaultyPlatform(const sim::MachineConfig& config = {});
    ~FaultyPlatform() override;

    IisFaults faults;
    TempMachine& temp() noexcept { return m_temp; }
    sim::Machine& machine() noexcept { return m_temp.machine(); }

    platform::Registry& registry() override { return machine().registry(); }
    platform::SystemInfo& system() override { return machine().system(); }
    platform::FileSystem& files() override { return machine().files(); }
    platform::Clock& clock() override { return machine().clock(); }
    platform::AnsiCodePage& ansiCodePage() override { return machine().ansiCodePage(); }
    platform::ModuleLookup& modules() override { return machine().modules(); }
    platform::Automation& automation() override { return machine().automation(); }
    platform::HostObjects& hostObjects() override { return machine().hostObjects(); }
    platform::ServiceControl& services() override { return machine().services(); }
    platform::ComClasses& comClasses() override;
    platform::IisConfiguration& iisConfiguration() override;

  private:
    class Configuration;
    class Classes;
    TempMachine m_temp;
    std::unique_ptr<Configuration> m_configuration;
    std::unique_ptr<Classes> m_classes;
};

}  // namespace webrig::testing
