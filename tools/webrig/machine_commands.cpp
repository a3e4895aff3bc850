#include "machine_commands.h"

#include <unistd.h>

#include <fstream>
#include <regex>
#include <sstream>
#include <system_error>

#include "command_error.h"
#include "machine_folder.h"
#include "machine_report.h"
#include "platform/sim/iis7/stock_application_host.h"
#include "platform/sim/machine/machine_error.h"
#include "platform/sim/machine/machine_layout.h"

namespace webrig::cli {
namespace {

sim::IisVersion ParseIis(const std::string& text) {
    if (text == "10" || text == "10.0") {
        return {10, 0};
    }
    if (text == "8.5") {
        return {8, 5};
    }
    if (text == "7.5") {
        return {7, 5};
    }
    if (text == "5.1" || text == "6" || text == "6.0") {
        throw InputError("IIS " + text +
                         " keeps its configuration in the IIS 6 metabase, and webrig's metabase "
                         "backend is not there yet: machines with IIS 7.5, 8.5 or 10 only");
    }
    throw InputError("--iis takes 7.5, 8.5 or 10, not \"" + text + "\"");
}

platform::OsVersion ParseOs(const std::string& text) {
    static const std::regex kVersion(R"(([0-9]{1,3})\.([0-9]{1,3})(?:\.([0-9]{1,6}))?)");
    std::smatch match;
    if (!std::regex_match(text, match, kVersion)) {
        throw InputError("--os takes a Windows version such as 10.0.20348, not \"" + text + "\"");
    }
    platform::OsVersion version;
    version.major = static_cast<uint32_t>(std::stoul(match[1]));
    version.minor = static_cast<uint32_t>(std::stoul(match[2]));
    version.build = match[3].matched ? static_cast<uint32_t>(std::stoul(match[3])) : 0;
    return version;
}

platform::ProcessorArchitecture ParseArch(const std::string& text) {
    if (text == "x64") {
        return platform::ProcessorArchitecture::amd64;
    }
    if (text == "x86") {
        return platform::ProcessorArchitecture::intel;
    }
    throw InputError("--arch takes x86 or x64, not \"" + text + "\"");
}

std::string ReadWholeFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    if (!in) {
        throw InputError("cannot read " + path);
    }
    return bytes.str();
}

// Where a Windows path of drive C lies in the machine folder.
std::filesystem::path OnDrive(const std::filesystem::path& machine, const qm::wstring& path) {
    std::string relative = qm::to_utf8(path.substr(3));
    std::replace(relative.begin(), relative.end(), '\\', '/');
    return sim::DriveCPath(machine) / relative;
}

// The sections an author's machine is looked at through; reading them makes the configuration
// system read and check the whole file.
void CheckApplicationHost(const std::filesystem::path& machineFolder, const std::string& file) {
    const std::unique_ptr<sim::Machine> machine = OpenMachine(machineFolder);
    std::unique_ptr<platform::AdminManager> manager;
    machine->iisConfiguration().CreateAdminManager(manager);
    for (const char16_t* name :
         {u"system.applicationHost/sites", u"system.applicationHost/applicationPools"}) {
        std::shared_ptr<platform::ConfigElement> section;
        if (qm::failed(manager->GetAdminSection(name, u"MACHINE/WEBROOT/APPHOST", section))) {
            throw InputError(file +
                             " cannot be used: " + qm::to_utf8(manager->LastErrorDescription()));
        }
    }
}

}  // namespace

int CreateMachine(const CreateRequest& request, std::ostream& out) {
    sim::MachineConfig config;
    config.iisVersion = ParseIis(request.iis);
    config.osVersion = ParseOs(request.os);
    config.architecture = ParseArch(request.arch);
    const std::string apphost = request.apphost.empty() ? "" : ReadWholeFile(request.apphost);

    const std::filesystem::path target = std::filesystem::absolute(request.folder);
    std::error_code error;
    if (std::filesystem::exists(target, error) && !(std::filesystem::is_directory(target, error) &&
                                                    std::filesystem::is_empty(target, error))) {
        throw InputError(target.string() + " already exists and is not an empty folder");
    }
    // The new machine is made in the nearest folder that exists, so that a refusal leaves no
    // folder behind, and is renamed into place.
    std::filesystem::path existing = target.parent_path();
    while (!std::filesystem::exists(existing, error) && existing.has_relative_path()) {
        existing = existing.parent_path();
    }
    std::string pattern = (existing / ".webrig-new-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw InputError("cannot create a folder in " + existing.string());
    }
    const std::filesystem::path staging = pattern;
    try {
        sim::Machine::Create(staging, config);
        if (!apphost.empty()) {
            const std::filesystem::path file =
                OnDrive(staging, sim::iis7::ApplicationHostConfigPath(config));
            std::ofstream(file, std::ios::binary | std::ios::trunc) << apphost;
            CheckApplicationHost(staging, request.apphost);
        }
        std::filesystem::remove(target, error);
        std::filesystem::create_directories(target.parent_path());
        std::filesystem::rename(staging, target);
    } catch (const sim::MachineError& problem) {
        std::filesystem::remove_all(staging, error);
        throw InputError(std::string("cannot create the machine: ") + problem.what());
    } catch (...) {
        std::filesystem::remove_all(staging, error);
        throw;
    }
    out << "created a machine with IIS " << request.iis << " on Windows " << request.os << " "
        << request.arch << " in " << request.folder.string()
        << (apphost.empty() ? "" : " (applicationHost.config from " + request.apphost + ")")
        << "\n";
    return kSuccess;
}

int ShowMachine(const std::filesystem::path& folder, bool json, std::ostream& out) {
    const MachineReport report = ReadMachineReport(*OpenMachine(folder));
    if (json) {
        out << MachineReportJson(report).dump(2) << "\n";
    } else {
        PrintMachineReport(report, out);
    }
    return kSuccess;
}

}  // namespace webrig::cli
