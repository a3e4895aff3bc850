#include "platform/sim/machine/stock_content.h"

#include "platform/sim/certificates/machine_keys.h"
#include "platform/sim/files/program_file.h"
#include "platform/sim/iis7/schema_folder.h"
#include "platform/sim/iis7/stock_application_host.h"

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

// The folders that hold 32-bit and (on 64-bit Windows) 64-bit system programs.
std::vector<qm::wstring> SystemFolders(const MachineConfig& config) {
    std::vector<qm::wstring> folders = {config.windowsDirectory + u"\\System32"};
    if (config.Is64Bit()) {
        folders.push_back(config.windowsDirectory + u"\\SysWOW64");
    }
    return folders;
}

std::vector<qm::wstring> FrameworkFolders(const MachineConfig& config) {
    std::vector<qm::wstring> folders;
    for (const char16_t* framework : {u"Framework", u"Framework64"}) {
        if (framework == qm::wstring_view(u"Framework64") && !config.Is64Bit()) {
            continue;
        }
        for (const char16_t* version : {u"v2.0.50727", u"v4.0.30319"}) {
            folders.push_back(config.windowsDirectory + u"\\Microsoft.NET\\" + framework + u"\\" +
                              version);
        }
    }
    return folders;
}

}  // namespace

bool HasIisWebServiceObject(const MachineConfig& config) {
    return HasIisConfigurationSystem(config) &&
           config.HasIisFeature(IisFeature::metabaseCompatibility);
}

void AddStockRegistry(RegistryKey& localMachine, const MachineConfig& config) {
    RegistryKey& software = Ensure(localMachine, u"SOFTWARE");
    RegistryKey& system = Ensure(localMachine, u"SYSTEM");
    // The local machine's personal store, and HTTP.sys's parameters, which hold its SSL bindings.
    RegistryKey& personal =
        Ensure(Ensure(Ensure(software, u"Microsoft"), u"SystemCertificates"), u"MY");
    for (const char16_t* part : {u"Certificates", u"CRLs", u"CTLs"}) {
        Ensure(personal, part);
    }
    Ensure(Ensure(Ensure(Ensure(system, u"CurrentControlSet"), u"Services"), u"HTTP"),
           u"Parameters");
    if (config.Is64Bit()) {
        Ensure(software, u"WOW6432Node");  // the 32-bit view of SOFTWARE
    }
    if (config.iisVersion.Installed()) {
        AddIisVersionValues(localMachine, software, config.iisVersion);
    }
}

bool HasIisConfigurationSystem(const MachineConfig& config) {
    return config.iisVersion.major >= 7;
}

std::vector<qm::wstring> StockFolders(const MachineConfig& config) {
    std::vector<qm::wstring> folders = {config.windowsDirectory, kMachineKeysFolder};
    for (const qm::wstring& folder : SystemFolders(config)) {
        folders.push_back(folder);
    }
    for (const qm::wstring& folder : FrameworkFolders(config)) {
        folders.push_back(folder);
    }
    if (HasIisConfigurationSystem(config)) {
        folders.push_back(config.windowsDirectory + u"\\System32\\inetsrv\\config");
        folders.push_back(iis7::SchemaFolder::WindowsPath(config.windowsDirectory));
        folders.push_back(iis7::kDefaultSiteFolder);
        folders.push_back(u"C:\\inetpub\\logs\\LogFiles");
    }
    return folders;
}

std::vector<StockFile> StockFiles(const MachineConfig& config) {
    std::vector<StockFile> files;
    for (const qm::wstring& folder : SystemFolders(config)) {
        for (const char* program : {"netsh.exe", "activeds.dll"}) {
            files.push_back({folder + u"\\" + qm::from_utf8(program), ProgramFileContent(program)});
        }
    }
    for (const qm::wstring& folder : FrameworkFolders(config)) {
        files.push_back({folder + u"\\aspnet_regiis.exe", ProgramFileContent("aspnet_regiis.exe")});
    }
    if (HasIisConfigurationSystem(config)) {
        files.push_back({iis7::ApplicationHostConfigPath(config),
                         iis7::StockApplicationHostConfig(config.iisVersion)});
        files.push_back({qm::wstring(iis7::kDefaultSiteFolder) + u"\\iisstart.htm",
                         iis7::StockIisStartPage(config.iisVersion)});
        for (const iis7::SchemaFile& schema : iis7::Schema::BuiltInFiles()) {
            files.push_back({iis7::SchemaFolder::WindowsPath(config.windowsDirectory) + u"\\" +
                                 qm::from_utf8(schema.name),
                             std::string(schema.text)});
        }
    }
    return files;
}

ServicesFile StockServices(const MachineConfig& config) {
    ServicesFile file;
    if (!config.iisVersion.Installed()) {
        return file;
    }
    // Running and started with Windows; a start or stop takes a moment, as on a real server.
    ServiceScript service;
    service.state = 4;
    service.startType = StartType::automatic;
    service.startPendingMs = 1500;
    service.stopPendingMs = 1000;
    service.waitHintMs = 2000;
    service.checkPointEveryMs = 500;
    file.services.emplace(u"W3SVC", service);
    if (config.HasMetabase()) {
        file.services.emplace(u"IISADMIN", service);
    }
    return file;
}

}  // namespace webrig::sim
