#include "platform/sim/iis7/sim_iis_configuration.h"

#include "platform/sim/iis7/admin_manager.h"

namespace webrig::sim::iis7 {

SimIisConfiguration::SimIisConfiguration(ConfigMachine machine) {
    if (!machine.cache) {
        machine.cache = &SharedCache();
    }
    m_machine = std::make_shared<const ConfigMachine>(std::move(machine));
}

ConfigFileCache& SimIisConfiguration::SharedCache() {
    static ConfigFileCache cache;
    return cache;
}

qm::hresult SimIisConfiguration::CreateAdminManager(
    std::unique_ptr<platform::AdminManager>& manager) {
    manager.reset();
    if (m_machine->config.iisVersion.major < 7) {
        return qm::hr::class_not_registered;
    }
    manager = std::make_unique<AdminManagerImpl>(m_machine, m_appHostLocation);
    return qm::hr::ok;
}

}  // namespace webrig::sim::iis7
