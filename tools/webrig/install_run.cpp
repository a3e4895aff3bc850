#include "install_run.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <sstream>

#include "command_error.h"
#include "command_host.h"
#include "exports/export_calls.h"
#include "exports/runtime_holder.h"
#include "journal.h"
#include "machine_files.h"
#include "machine_folder.h"
#include "platform/sim/files/windows_path.h"
#include "platform/sim/machine/machine_layout.h"
#include "settings/iis_pro_ini_loader.h"
#include "settings_input.h"
#include "setup_folder.h"
#include "support/case_insensitive.h"

namespace webrig::cli {
namespace {

// The runtime instance holds the machine; it goes when the run ends, as when the engine unloads
// webrig.
struct RuntimeRelease {
    ~RuntimeRelease() { exports::ReleaseRuntime(); }
};

std::string ReadFileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    if (!in) {
        throw InputError("cannot read " + path);
    }
    return bytes.str();
}

std::map<std::string, std::string> Utf8Map(const std::map<qm::wstring, qm::wstring>& map) {
    std::map<std::string, std::string> result;
    for (const auto& [name, value] : map) {
        result[qm::to_utf8(name)] = qm::to_utf8(value);
    }
    return result;
}

std::map<qm::wstring, qm::wstring> WideMap(const std::map<std::string, std::string>& map) {
    std::map<qm::wstring, qm::wstring> result;
    for (const auto& [name, value] : map) {
        result[qm::from_utf8(name)] = qm::from_utf8(value);
    }
    return result;
}

std::vector<qm::wstring> ChooseComponents(const settings::SettingsFile& file,
                                          const std::vector<std::string>& wanted) {
    const std::vector<qm::wstring> all = ComponentsInOrder(file);
    if (wanted.empty()) {
        return all;
    }
    std::vector<qm::wstring> chosen;
    for (const std::string& name : wanted) {
        const qm::wstring component = qm::from_utf8(name);
        if (std::find(all.begin(), all.end(), component) == all.end()) {
            std::string known;
            for (const qm::wstring& each : all) {
                known += (known.empty() ? "" : ", ") + qm::to_utf8(each);
            }
            throw InputError("the settings file has no component " + name +
                             (known.empty() ? " (it has none)" : " (it has: " + known + ")"));
        }
        chosen.push_back(component);
    }
    return chosen;
}

// The removal call of a record's event, and what the item is called for people.
struct Removal {
    const char* event;
    const char* kind;
    int32_t (*remove)(const qm::wstring&);
};

constexpr Removal kRemovals[] = {
    {"IIS VRoot Created", "virtual directory", &exports::VRootUninstall},
    {"IIS WebSite Created", "website", &exports::WebSiteUninstall},
    {"IIS AppPool Created", "application pool", &exports::AppPoolUninstall},
    {"IIS WebServiceExtension Created", "web service extension",
     &exports::WebServiceExtensionUninstall},
};

// The installer engine copies a component's files before it configures IIS, so the physical
// folders of its items exist; the command has no files, so it makes the folders that are missing.
// The first missing folder of each path, for removal.
std::vector<std::string> MakeContentFolders(sim::Machine& machine, const CIISPropertyBag& bag,
                                            const std::vector<qm::wstring>& components) {
    std::vector<qm::wstring> roots;
    for (const qm::wstring& name : components) {
        const auto component = bag.components.find(name);
        if (component == bag.components.end()) {
            continue;
        }
        for (const auto& [key, vroot] : component->second->vroots) {
            roots.push_back(vroot->RootDir);
            if (const auto site = bag.websites.find(vroot->ParentSite);
                site != bag.websites.end()) {
                roots.push_back(site->second->RootDir);
            }
        }
        for (const auto& [key, site] : component->second->componentWebsites) {
            roots.push_back(site->RootDir);
        }
    }
    std::vector<std::string> made;
    const std::filesystem::path drive = sim::DriveCPath(machine.folder());
    for (const qm::wstring& root : roots) {
        std::vector<qm::wstring> parts;
        if (sim::NormalizeWindowsPath(root, parts) != 0 ||
            sim::ResolveWindowsPath(drive, root).error == 0) {
            continue;
        }
        qm::wstring path = u"C:";
        for (const qm::wstring& part : parts) {
            path += u"\\" + part;
            const sim::ResolvedPath resolved = sim::ResolveWindowsPath(drive, path);
            if (resolved.error != 0) {
                std::error_code error;
                std::filesystem::create_directories(sim::ResolveWindowsPath(drive, root).hostPath,
                                                    error);
                if (!error) {
                    made.push_back(qm::to_utf8(path));
                }
                break;
            }
        }
    }
    return made;
}

// Removes content folders made for a run, as long as nothing but folders is in them.
void RemoveContentFolders(sim::Machine& machine, const std::vector<std::string>& folders) {
    const std::filesystem::path drive = sim::DriveCPath(machine.folder());
    for (const std::string& folder : folders) {
        const sim::ResolvedPath resolved = sim::ResolveWindowsPath(drive, qm::from_utf8(folder));
        if (resolved.error != 0 || !resolved.isDirectory) {
            continue;
        }
        std::error_code error;
        bool onlyFolders = true;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(resolved.hostPath)) {
            onlyFolders = onlyFolders && entry.is_directory();
        }
        if (onlyFolders) {
            std::filesystem::remove_all(resolved.hostPath, error);
        }
    }
}

// Drives the install calls; the exit code.
int InstallComponents(const std::shared_ptr<sim::Machine>& machine, CommandHost& host,
                      const qm::wstring& settingsPath, const std::vector<qm::wstring>& components,
                      const std::string& journalPath, bool throwaway, RunOutput& output) {
    exports::InitializeOn(machine, settingsPath, host.context(), output.MakeSink());
    if (const int32_t status = exports::LastStatus(); status != 0) {
        output.Say("webrig could not start on this machine: status " + DescribeStatus(status));
        exports::Uninitialize();
        return kRunFailed;
    }
    int exitCode = kSuccess;
    for (const qm::wstring& component : components) {
        const std::string name = qm::to_utf8(component);
        if (exports::CheckForContinue(component, 0) != 0) {
            output.Say("component " + name +
                       ": IIS is not installed (or older than IIS 4); nothing was installed");
            exitCode = kRunFailed;
            break;
        }
        output.Say("installing component " + name);
        exports::ComponentInstall(component, host.operations());
        if (const int32_t status = exports::LastStatus(); status != 0) {
            const std::string at = output.lastProgress().empty()
                                       ? std::string()
                                       : " at \"" + output.lastProgress() + "\"";
            output.Say("install of component " + name + " failed" + at + ": status " +
                       DescribeStatus(status));
            if (!journalPath.empty() && !throwaway) {
                output.Say("what was created is listed in " + journalPath +
                           "; undo it with: webrig rollback --journal " + journalPath);
            }
            exitCode = kRunFailed;
            break;
        }
    }
    exports::Uninitialize();
    if (const int32_t status = exports::LastStatus(); status != 0) {
        output.Say("the web service could not be restarted: status " + DescribeStatus(status));
        exitCode = kRunFailed;
    }
    return exitCode;
}

}  // namespace

std::map<qm::wstring, qm::wstring> ParseProperties(const std::vector<std::string>& assignments) {
    std::map<qm::wstring, qm::wstring> properties;
    for (const std::string& assignment : assignments) {
        const size_t equals = assignment.find('=');
        if (equals == std::string::npos || equals == 0) {
            throw InputError("a property is NAME=VALUE, not \"" + assignment.substr(0, equals) +
                             "\"");
        }
        properties[qm::from_utf8(assignment.substr(0, equals))] =
            qm::from_utf8(assignment.substr(equals + 1));
    }
    return properties;
}

std::vector<qm::wstring> SecretValues(const std::map<qm::wstring, qm::wstring>& properties) {
    std::vector<qm::wstring> secrets;
    for (const auto& [name, value] : properties) {
        const qm::wstring upper = qm::to_upper(name);
        if (upper.find(u"PASSWORD") != qm::wstring::npos ||
            upper.find(u"PWD") != qm::wstring::npos) {
            secrets.push_back(value);
        }
    }
    return secrets;
}

int RunInstall(const std::filesystem::path& machineFolder, const InstallRequest& request,
               RunOutput& output) {
    const SettingsInput input = ReadSettingsInput(request.settingsPath);
    HostTables tables;
    if (!request.stringsPath.empty()) {
        tables.strings = ReadStringTable(request.stringsPath);
    }
    tables.properties = ParseProperties(request.properties);
    std::vector<std::pair<std::string, std::string>> supportFiles;
    for (const std::string& path : request.supportFiles) {
        supportFiles.emplace_back(std::filesystem::path(path).filename().string(),
                                  ReadFileBytes(path));
    }
    const std::shared_ptr<sim::Machine> machine = OpenMachine(machineFolder);
    const settings::SettingsFile file = ParseSettings(input, machine->ansiCodePage());
    const std::vector<qm::wstring> components = ChooseComponents(file, request.components);
    std::unique_ptr<Journal> journal;
    if (!request.journalPath.empty()) {
        journal = std::make_unique<Journal>(request.journalPath);
    }

    SetupFolder setup(*machine);
    const HostTables recorded = tables;
    // Where the engine extracted its support files, as installers name it.
    tables.properties.try_emplace(u"SUPPORTDIR", setup.windowsPath());
    for (const auto& [name, bytes] : supportFiles) {
        setup.Place(name, bytes);
    }
    const qm::wstring settingsPath = setup.Place(input.name, input.bytes);
    CommandHost host(*machine, std::move(tables), setup.windowsPath(), journal.get());
    std::vector<std::string> folders;
    {
        // Read once beforehand, so that a file the loader refuses is reported with its place
        // before anything is done; the run itself loads it again as the engine's would.
        CIISPropertyBag bag;
        CIISProIniLoader loader(*machine, settingsPath,
                                machine->modules().FindModule(host::kHostModuleName),
                                host.context());
        if (const int32_t loaded = loader.Load(bag); loaded != 0) {
            throw InputError(DescribeLoadFailure(input, file, loaded));
        }
        folders = MakeContentFolders(*machine, bag, components);
    }
    if (journal) {
        JournalRun run{
            input.name, input.bytes, Utf8Map(recorded.properties), Utf8Map(recorded.strings), {},
            folders,    {}};
        for (const qm::wstring& component : components) {
            run.components.push_back(qm::to_utf8(component));
        }
        journal->AppendRun(run);
    }
    const RuntimeRelease release;
    const int exitCode = InstallComponents(machine, host, settingsPath, components,
                                           request.journalPath, request.throwaway, output);
    if (exitCode == kSuccess) {
        output.Say("installed " + std::to_string(components.size()) + " component(s)" +
                   (journal && !request.throwaway
                        ? "; " + std::to_string(journal->recordsAppended()) +
                              " item(s) recorded in " + request.journalPath
                        : std::string()));
    }
    return exitCode;
}

int RunRemoval(const std::filesystem::path& machineFolder, const std::string& journalPath,
               bool rollback, RunOutput& output) {
    std::vector<JournalRun> runs = Journal::Read(journalPath);
    if (rollback && runs.size() > 1) {
        runs.erase(runs.begin(), runs.end() - 1);
    }
    const std::shared_ptr<sim::Machine> machine = OpenMachine(machineFolder);
    int exitCode = kSuccess;
    size_t removed = 0;
    size_t absent = 0;
    for (auto run = runs.rbegin(); run != runs.rend(); ++run) {
        SetupFolder setup(*machine);
        const qm::wstring settingsPath = setup.Place(run->settingsName, run->settingsBytes);
        HostTables tables{WideMap(run->strings), WideMap(run->properties)};
        tables.properties.try_emplace(u"SUPPORTDIR", setup.windowsPath());
        CommandHost host(*machine, std::move(tables), setup.windowsPath(), nullptr);
        const RuntimeRelease release;
        exports::InitializeOn(machine, settingsPath, host.context(), output.MakeSink());
        if (const int32_t status = exports::LastStatus(); status != 0) {
            output.Say("webrig could not start on this machine: status " + DescribeStatus(status));
            exitCode = kRunFailed;
            continue;
        }
        for (const std::string& component : run->components) {
            // Removal goes on where IIS is missing: there is nothing left to remove then.
            exports::CheckForContinue(qm::from_utf8(component), 1);
        }
        for (auto record = run->records.rbegin(); record != run->records.rend(); ++record) {
            const auto removal =
                std::find_if(std::begin(kRemovals), std::end(kRemovals),
                             [&](const Removal& each) { return record->event == each.event; });
            if (removal == std::end(kRemovals)) {
                output.Say("skipped a record of an unknown kind: " + record->event + " " +
                           record->name);
                continue;
            }
            const std::string item = std::string(removal->kind) + " " + record->name;
            const MachineFiles before = ReadMachineFiles(machineFolder);
            removal->remove(qm::from_utf8(record->name));
            if (const int32_t status = exports::LastStatus(); status != 0) {
                output.Say("removing " + item + " failed: status " + DescribeStatus(status));
                exitCode = kRunFailed;
            } else if (ReadMachineFiles(machineFolder) == before) {
                output.Say(item + ": already absent, nothing to remove");
                ++absent;
            } else {
                output.Say("removed " + item);
                ++removed;
            }
        }
        exports::Uninitialize();
        if (const int32_t status = exports::LastStatus(); status != 0) {
            output.Say("the web service could not be restarted: status " + DescribeStatus(status));
            exitCode = kRunFailed;
        }
        RemoveContentFolders(*machine, run->folders);
    }
    output.Say(std::string(rollback ? "rollback" : "uninstall") + ": " + std::to_string(removed) +
               " item(s) removed, " + std::to_string(absent) + " already absent");
    return exitCode;
}

}  // namespace webrig::cli
