#pragma once
// A simulated machine whose IIS 7+ administration objects fail where told to, where the
// simulation itself never does: the manager's creation, get_CommitPath, CommitChanges and
// get_ConfigManager (the way to the main file's locations).

#include <deque>

#include "platform/platform.h"
#include "testing/temp_machine.h"

namespace webrig::testing {

struct IisFaults {
    qm::hresult createManager = 0;
    qm::hresult getCommitPath = 0;
    qm::hresult getConfigManager = 0;
    // CommitChanges answers these, one a call and without committing, before it commits again.
    std::deque<qm::hresult> commitAnswers;
};

class FaultyPlatform final : public platform::Platform {
  public:
    explicit FaultyPlatform(const sim::MachineConfig& config = {});

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
    platform::ComClasses& comClasses() override { return machine().comClasses(); }
    platform::IisConfiguration& iisConfiguration() override { return *m_configuration; }
    platform::Certificates& certificates() override { return machine().certificates(); }
    platform::Processes& processes() override { return machine().processes(); }
    platform::Adsi& adsi() override { return machine().adsi(); }

  private:
    TempMachine m_temp;
    std::unique_ptr<platform::IisConfiguration> m_configuration;
};

}  // namespace webrig::testing
