#include "platform/sim/iis7/sim_iis_configuration.h"

#include "platform/sim/iis7/admin_manager.h"

namespace webrig::sim::iis7 {

SimIisConfiguration::SimIisConfiguration(ConfigMachine machine) : m_machine(std::move(machine)) {
    if (!m_machine.cache) {
        m_machine.cache = &SharedCache();
    }
}

ConfigFileCache& SimIisConfiguration::SharedCache() {
    static ConfigFileCache cache;
    return cache;
}

qm::hresult SimIisConfiguration::CreateAdminManager(
    std::unique_ptr<platform::AdminManager>& manager) {
    manager.reset();
    if (m_machine.config.iisVersion.major < 7) {
        return qm::hr::class_not_registered;
    }
    manager = std::make_unique<AdminManagerImpl>(m_machine);
    return qm::hr::ok;
}

}  // namespace webrig::sim::iis7
