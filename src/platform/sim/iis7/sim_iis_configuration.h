#pragma once
// The IIS 7+ configuration system of a simulated machine: hands out administration managers
// over the machine's applicationHost.config and web.config files.

#include <functional>
#include <memory>

#include "platform/iis_config.h"
#include "platform/sim/iis7/config_file_cache.h"
#include "platform/sim/iis7/config_session.h"

namespace webrig::sim::iis7 {

class SimIisConfiguration final : public platform::IisConfiguration {
  public:
    // `machine.cache` may be null: the process-wide cache is used then.
    explicit SimIisConfiguration(ConfigMachine machine);

    // REGDB_E_CLASSNOTREG when the machine has no IIS 7 or later.
    qm::hresult CreateAdminManager(std::unique_ptr<platform::AdminManager>& manager) override;

    // The cache shared by every machine of the process: files are keyed by their host path.
    static ConfigFileCache& SharedCache();

  private:
    std::shared_ptr<const ConfigMachine> m_machine;
    std::shared_ptr<AppHostLocation> m_appHostLocation = std::make_shared<AppHostLocation>();
};

}  // namespace webrig::sim::iis7
