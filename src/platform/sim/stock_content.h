#pragma once
// What a freshly installed Windows holds, for Machine::Create. Each product that later work
// simulates (IIS and its services, ...) adds its stock content here.

#include <vector>

#include "platform/sim/machine_config.h"
#include "platform/sim/registry_key.h"

namespace webrig::sim {

// The keys of HKEY_LOCAL_MACHINE every installation has.
void AddStockRegistry(RegistryKey& localMachine, const MachineConfig& config);

// Folders every installation has, as Windows paths.
std::vector<qm::wstring> StockFolders(const MachineConfig& config);

}  // namespace webrig::sim
