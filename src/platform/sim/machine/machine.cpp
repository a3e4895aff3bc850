#include "platform/sim/machine/machine.h"

#include <cstring>
#include <fstream>
#include <iterator>

#include "platform/sim/files/windows_path.h"
#include "platform/sim/iis7/config_encryption.h"
#include "platform/sim/iis7/schema_folder.h"
#include "platform/sim/machine/atomic_file.h"
#include "platform/sim/machine/machine_error.h"
#include "platform/sim/machine/machine_layout.h"
#include "platform/sim/machine/stock_content.h"
#include "platform/sim/programs/aspnet_regiis.h"
#include "platform/sim/programs/netsh.h"

namespace webrig::sim {
namespace {

std::vector<std::byte> ReadFile(const std::filesystem::path& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        throw MachineError(path, 0, "the file is missing");
    }
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        throw MachineError(path, 0, "the file cannot be opened");
    }
    std::vector<char> chars((std::istreambuf_iterator<char>(stream)),
                            std::istreambuf_iterator<char>());
    if (stream.bad()) {
        throw MachineError(path, 0, "the file cannot be read");
    }
    std::vector<std::byte> bytes(chars.size());
    if (!chars.empty()) {
        std::memcpy(bytes.data(), chars.data(), chars.size());
    }
    return bytes;
}

void WriteNewFile(const std::filesystem::path& path, std::span<const std::byte> bytes) {
    if (!WriteFileAtomically(path, bytes)) {
        throw MachineError(path, 0, "the file cannot be written");
    }
}

void CreateFolder(const std::filesystem::path& path) {
    std::error_code error;
    std::filesystem::create_directories(path, error);
    if (error) {
        throw MachineError(path, 0, "the folder cannot be created: " + error.message());
    }
}

// The host path of a Windows path on the new machine's drive C.
std::filesystem::path HostPathOf(const std::filesystem::path& folder,
                                 const qm::wstring& windowsPath) {
    std::vector<qm::wstring> names;
    if (NormalizeWindowsPath(windowsPath, names) != 0) {
        throw MachineError(MachineJsonPath(folder), 0,
                           "not a path on drive C: " + qm::to_utf8(windowsPath));
    }
    std::filesystem::path hostPath = DriveCPath(folder);
    for (const qm::wstring& name : names) {
        hostPath /= qm::to_utf8(name);
    }
    return hostPath;
}

std::span<const std::byte> BytesOf(const std::string& text) {
    return std::as_bytes(std::span(text.data(), text.size()));
}

// webrig.dll is a 32-bit module: on a 64-bit machine its file access goes through WOW64.
Wow64FileRedirection FileRedirectionOf(const MachineConfig& config) {
    const bool windows7OrLater =
        config.osVersion.major > 6 || (config.osVersion.major == 6 && config.osVersion.minor >= 1);
    return config.Is64Bit() ? Wow64FileRedirection(config.windowsDirectory, windows7OrLater)
                            : Wow64FileRedirection();
}

void RefuseExisting(const std::filesystem::path& path) {
    std::error_code error;
    if (std::filesystem::exists(path, error) || error) {
        throw MachineError(path, 0, "a machine is already here; it is not overwritten");
    }
}

}  // namespace

Machine::Machine(std::filesystem::path folder, MachineConfig config, RegFile localMachine,
                 ServicesFile services)
    : m_folder(std::move(folder)),
      m_config(std::move(config)),
      m_registry(std::move(localMachine), LocalMachineRegPath(m_folder), m_config.Is64Bit()),
      m_system(m_config),
      m_files(DriveCPath(m_folder), FileRedirectionOf(m_config)),
      m_services(std::move(services), ServicesJsonPath(m_folder), m_clock),
      m_comClasses(m_config),
      m_iisConfiguration(iis7::ConfigMachine{
          DriveCPath(m_folder), MachineLockPath(m_folder), m_config,
          iis7::SchemaFolderProvider(DriveCPath(m_folder), m_config.windowsDirectory),
          [this]() -> const iis7::ConfigEncryption& { return ConfigurationEncryption(); }, nullptr,
          WriteFileAtomically}),
      m_certificates(m_registry, m_files),
      m_processes(m_files, m_config.windowsDirectory, ProcessJournalPath(m_folder)),
      m_adsi(m_files, m_system.SystemDirectory(), HasIisWebServiceObject(m_config),
             m_iisConfiguration) {
    m_processes.AddProgram(u"netsh.exe", std::make_unique<Netsh>(m_registry, m_files));
    m_processes.AddProgram(u"aspnet_regiis.exe", std::make_unique<AspNetRegIis>());
}

const iis7::ConfigEncryption& Machine::ConfigurationEncryption() {
    if (!m_encryption) {
        m_encryption =
            std::make_unique<iis7::ConfigEncryption>(iis7::LoadConfigEncryption(m_folder));
    }
    return *m_encryption;
}

std::unique_ptr<Machine> Machine::Open(const std::filesystem::path& folder) {
    std::error_code error;
    if (!std::filesystem::is_directory(folder, error)) {
        throw MachineError(folder, 0, "the machine folder does not exist");
    }
    const std::filesystem::path jsonPath = MachineJsonPath(folder);
    const std::vector<std::byte> json = ReadFile(jsonPath);
    MachineConfig config = ParseMachineConfig(
        std::string_view(reinterpret_cast<const char*>(json.data()), json.size()), jsonPath);
    const std::filesystem::path regPath = LocalMachineRegPath(folder);
    RegFile localMachine = RegFile::Parse(ReadFile(regPath), regPath);
    if (!std::filesystem::is_directory(DriveCPath(folder), error)) {
        throw MachineError(DriveCPath(folder), 0, "the C: drive folder is missing");
    }
    // A machine made before services were simulated has the services its IIS installs.
    const std::filesystem::path servicesPath = ServicesJsonPath(folder);
    ServicesFile services = StockServices(config);
    if (std::filesystem::exists(servicesPath, error)) {
        const std::vector<std::byte> text = ReadFile(servicesPath);
        services = ParseServicesFile(
            std::string_view(reinterpret_cast<const char*>(text.data()), text.size()),
            servicesPath);
    }
    return std::unique_ptr<Machine>(
        new Machine(folder, std::move(config), std::move(localMachine), std::move(services)));
}

void Machine::Create(const std::filesystem::path& folder, const MachineConfig& config) {
    const std::filesystem::path jsonPath = MachineJsonPath(folder);
    const std::filesystem::path regPath = LocalMachineRegPath(folder);
    CreateFolder(folder);
    RefuseExisting(jsonPath);
    RefuseExisting(regPath);
    CreateFolder(RegistryFolder(folder));
    for (const qm::wstring& windowsPath : StockFolders(config)) {
        CreateFolder(HostPathOf(folder, windowsPath));
    }
    for (const StockFile& file : StockFiles(config)) {
        WriteNewFile(HostPathOf(folder, file.windowsPath), BytesOf(file.content));
    }
    if (HasIisConfigurationSystem(config)) {
        CreateFolder(ConfigKeyPath(folder).parent_path());
        WriteNewFile(ConfigKeyPath(folder), BytesOf(iis7::ConfigEncryption::NewMachineKey()));
    }
    RegFile localMachine = RegFile::New();
    AddStockRegistry(localMachine.Root(), config);
    WriteNewFile(regPath, localMachine.Render()->bytes);
    const std::string services = FormatServicesFile(StockServices(config));
    WriteNewFile(ServicesJsonPath(folder),
                 std::as_bytes(std::span(services.data(), services.size())));
    // machine.json last: a folder that has it holds a whole machine.
    WriteNewFile(jsonPath, BytesOf(FormatMachineConfig(config)));
}

}  // namespace webrig::sim
