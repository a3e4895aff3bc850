#include "platform/sim/stock_content.h"

namespace webrig::sim {
namespace {

RegistryKey& Ensure(RegistryKey& parent, const char16_t* name) {
    RegistryKey* key = parent.FindSubKey(name);
    return key != nullptr ? *key : parent.AddSubKey(name);
}

}  // namespace

void AddStockRegistry(RegistryKey& localMachine, const MachineConfig& config) {
    RegistryKey& software = Ensure(localMachine, u"SOFTWARE");
    Ensure(localMachine, u"SYSTEM");
    if (config.Is64Bit()) {
        Ensure(software, u"WOW6432Node");  // the 32-bit view of SOFTWARE
    }
}

std::vector<qm::wstring> StockFolders(const MachineConfig& config) {
    return {config.windowsDirectory, config.windowsDirectory + u"\\System32"};
}

}  // namespace webrig::sim
