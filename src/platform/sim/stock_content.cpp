#include "platform/sim/stock_content.h"

namespace webrig::sim {
namespace {

RegistryKey& Ensure(RegistryKey& parent, const char16_t* name) {
    RegistryKey* key = parent.FindSubKey(name);
    return key != nullptr ? *key : parent.AddSubKey(name);
}

// The values IIS setup writes that tell its version.
void AddIisVersionValues(RegistryKey& localMachine, RegistryKey& software,
                         const IisVersion& version) {
    RegistryKey& parameters = Ensure(
        Ensure(Ensure(Ensure(Ensure(localMachine, u"SYSTEM"), u"CurrentControlSet"), u"Services"),
               u"W3SVC"),
        u"Parameters");
    parameters.SetValue(u"MajorVersion", platform::RegValue::Dword(version.major));
    parameters.SetValue(u"MinorVersion", platform::RegValue::Dword(version.minor));
    RegistryKey& inetStp = Ensure(Ensure(software, u"Microsoft"), u"InetStp");
    inetStp.SetValue(u"MajorVersion", platform::RegValue::Dword(version.major));
    inetStp.SetValue(u"MinorVersion", platform::RegValue::Dword(version.minor));
}

}  // namespace

void AddStockRegistry(RegistryKey& localMachine, const MachineConfig& config) {
    RegistryKey& software = Ensure(localMachine, u"SOFTWARE");
    Ensure(localMachine, u"SYSTEM");
    if (config.Is64Bit()) {
        Ensure(software, u"WOW6432Node");  // the 32-bit view of SOFTWARE
    }
    if (config.iisVersion.Installed()) {
        AddIisVersionValues(localMachine, software, config.iisVersion);
    }
}

std::vector<qm::wstring> StockFolders(const MachineConfig& config) {
    return {config.windowsDirectory, config.windowsDirectory + u"\\System32"};
}

}  // namespace webrig::sim
