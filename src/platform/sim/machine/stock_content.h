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

// ADSI's IIS web service object over applicationHost.config: IIS 7+ with the metabase
// compatibility feature. (IIS 6 has it over the metabase, which is not simulated yet.)
bool HasIisWebServiceObject(const MachineConfig& config);

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

// The files every installation has: netsh.exe and activeds.dll in the system folders (System32,
// and SysWOW64 on 64-bit Windows), aspnet_regiis.exe in each .NET Framework folder (Framework,
// and Framework64 on 64-bit Windows, for v2.0.50727 and v4.0.30319), and with IIS 7+
// applicationHost.config, the welcome page and the configuration schema files. Their folders are
// among StockFolders.
std::vector<StockFile> StockFiles(const MachineConfig& config);

}  // namespace webrig::sim
