#pragma once
// What a freshly installed Windows holds, for Machine::Create. Each product that later work
// simulates (IIS and its services, ...) adds its stock content here.

#include <string>
#include <vector>

#include "platform/sim/machine/machine_config.h"
#include "platform/sim/registry/registry_key.h"
#include "platform/sim/services/service_script.h"

namespace webrig::sim {

// IIS 7 and later keep their configuration in applicationHost.config (with a machine key for
// its encrypted attributes); older releases have the metabase.
bool HasIisConfigurationSystem(const MachineConfig& config);

// The keys of HKEY_LOCAL_MACHINE every installation has.
void AddStockRegistry(RegistryKey& localMachine, const MachineConfig& config);

// Folders every installation has, as Windows paths.
std::vector<qm::wstring> StockFolders(const MachineConfig& config);

// The services IIS installs: W3SVC on every IIS, and IISADMIN where the IIS 6 admin base is.
ServicesFile StockServices(const MachineConfig& config);

// A file a fresh installation has.
struct StockFile {
    qm::wstring windowsPath;
    std::string content;
};

// The files every installation has (IIS 7+: applicationHost.config, the welcome page and the
// configuration schema files); their folders are among StockFolders.
std::vector<StockFile> StockFiles(const MachineConfig& config);

}  // namespace webrig::sim
