#include "machine_report.h"

#include <algorithm>
#include <set>

#include "platform/registry.h"
#include "support/format.h"

namespace webrig::cli {
namespace {

using platform::ConfigElement;
using platform::ElementCollection;

constexpr char16_t kSslBindingInfoKey[] =
    u"SYSTEM\\CurrentControlSet\\Services\\HTTP\\Parameters\\SslBindingInfo";
constexpr char16_t kSystemCertificatesKey[] = u"SOFTWARE\\Microsoft\\SystemCertificates";

std::string Text(ConfigElement& element, qm::wstring_view name) {
    std::shared_ptr<platform::ConfigProperty> property;
    qm::wstring value;
    if (qm::failed(element.GetPropertyByName(name, property)) ||
        qm::failed(property->GetStringValue(value))) {
        return {};
    }
    return qm::to_utf8(value);
}

std::shared_ptr<ConfigElement> Child(ConfigElement& element, qm::wstring_view name) {
    std::shared_ptr<ConfigElement> child;
    return qm::failed(element.GetElementByName(name, child)) ? nullptr : child;
}

// Each element of the element's collection.
std::vector<std::shared_ptr<ConfigElement>> Entries(ConfigElement& element) {
    std::vector<std::shared_ptr<ConfigElement>> entries;
    std::shared_ptr<ElementCollection> collection;
    uint32_t count = 0;
    if (qm::failed(element.GetCollection(collection)) || qm::failed(collection->Count(count))) {
        return entries;
    }
    for (uint32_t i = 0; i < count; ++i) {
        std::shared_ptr<ConfigElement> entry;
        if (qm::succeeded(collection->Item(i, entry))) {
            entries.push_back(std::move(entry));
        }
    }
    return entries;
}

std::shared_ptr<ConfigElement> Section(platform::AdminManager& manager, qm::wstring_view name,
                                       std::string& problem) {
    std::shared_ptr<ConfigElement> section;
    const qm::hresult result = manager.GetAdminSection(name, u"MACHINE/WEBROOT/APPHOST", section);
    if (qm::failed(result)) {
        if (problem.empty()) {
            problem = qm::to_utf8(qm::format(u"%s: 0x%08x %s", qm::wstring(name),
                                             static_cast<uint32_t>(result),
                                             manager.LastErrorDescription()));
        }
        return nullptr;
    }
    return section;
}

SiteView ReadSite(ConfigElement& site) {
    SiteView view{Text(site, u"name"), Text(site, u"id"), {}, {}};
    if (const auto bindings = Child(site, u"bindings")) {
        for (const auto& binding : Entries(*bindings)) {
            view.bindings.push_back(
                {Text(*binding, u"protocol"), Text(*binding, u"bindingInformation")});
        }
    }
    for (const auto& application : Entries(site)) {
        ApplicationView app{
            Text(*application, u"path"), Text(*application, u"applicationPool"), {}};
        for (const auto& directory : Entries(*application)) {
            app.virtualDirectories.push_back(
                {Text(*directory, u"path"), Text(*directory, u"physicalPath")});
        }
        view.applications.push_back(std::move(app));
    }
    return view;
}

PoolView ReadPool(ConfigElement& pool) {
    PoolView view{Text(pool, u"name"),
                  {},
                  Text(pool, u"managedRuntimeVersion"),
                  Text(pool, u"managedPipelineMode")};
    if (const auto model = Child(pool, u"processModel")) {
        view.identity = Text(*model, u"identityType");
        if (view.identity == "SpecificUser") {
            view.identity += " " + Text(*model, u"userName");
        }
    }
    return view;
}

void ReadConfiguration(sim::Machine& machine, MachineReport& report) {
    std::unique_ptr<platform::AdminManager> manager;
    if (const qm::hresult created = machine.iisConfiguration().CreateAdminManager(manager);
        qm::failed(created)) {
        report.configurationProblem = qm::to_utf8(
            qm::format(u"no IIS 7+ configuration system (0x%08x)", static_cast<uint32_t>(created)));
        return;
    }
    std::string& problem = report.configurationProblem;
    if (const auto sites = Section(*manager, u"system.applicationHost/sites", problem)) {
        for (const auto& site : Entries(*sites)) {
            report.sites.push_back(ReadSite(*site));
        }
    }
    if (const auto pools = Section(*manager, u"system.applicationHost/applicationPools", problem)) {
        for (const auto& pool : Entries(*pools)) {
            report.pools.push_back(ReadPool(*pool));
        }
    }
    if (const auto restrictions =
            Section(*manager, u"system.webServer/security/isapiCgiRestriction", problem)) {
        for (const auto& entry : Entries(*restrictions)) {
            report.extensions.push_back({Text(*entry, u"path"), Text(*entry, u"description"),
                                         Text(*entry, u"groupId"),
                                         Text(*entry, u"allowed") == "true"});
        }
    }
}

std::vector<qm::wstring> SubKeys(platform::Registry& registry, qm::wstring_view path) {
    std::vector<qm::wstring> names;
    platform::ScopedRegKey key(registry);
    if (registry.OpenKey(platform::kLocalMachine, path,
                         platform::key_access::read | platform::key_access::wow64_64key,
                         key.receive()) != 0) {
        return names;
    }
    qm::wstring name;
    for (uint32_t i = 0; registry.EnumKey(key.get(), i, name) == 0; ++i) {
        names.push_back(name);
    }
    return names;
}

std::string Hex(const std::vector<std::byte>& bytes) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (const std::byte b : bytes) {
        text += kDigits[static_cast<unsigned>(b) >> 4];
        text += kDigits[static_cast<unsigned>(b) & 0xF];
    }
    return text;
}

void ReadRegistry(sim::Machine& machine, MachineReport& report) {
    platform::Registry& registry = machine.registry();
    for (const qm::wstring& store : SubKeys(registry, kSystemCertificatesKey)) {
        const qm::wstring path = qm::wstring(kSystemCertificatesKey) + u"\\" + store;
        for (const qm::wstring& thumbprint : SubKeys(registry, path + u"\\Certificates")) {
            report.certificates.push_back({qm::to_utf8(store), qm::to_utf8(thumbprint)});
        }
    }
    for (const qm::wstring& endpoint : SubKeys(registry, kSslBindingInfoKey)) {
        SslBindingView binding{qm::to_utf8(endpoint), {}, {}};
        platform::ScopedRegKey key(registry);
        if (registry.OpenKey(platform::kLocalMachine,
                             qm::wstring(kSslBindingInfoKey) + u"\\" + endpoint,
                             platform::key_access::read, key.receive()) == 0) {
            platform::RegValue value;
            if (registry.QueryValue(key.get(), u"SslCertHash", value) == 0) {
                binding.certificateHash = Hex(value.data);
            }
            if (registry.QueryValue(key.get(), u"SslCertStoreName", value) == 0) {
                binding.store = qm::to_utf8(value.AsString());
            }
        }
        report.sslBindings.push_back(std::move(binding));
    }
}

const char* ArchitectureName(platform::ProcessorArchitecture architecture) {
    switch (architecture) {
        case platform::ProcessorArchitecture::intel:
            return "x86";
        case platform::ProcessorArchitecture::amd64:
            return "x64";
        default:
            return "arm64";
    }
}

void PrintNone(bool empty, std::ostream& out) {
    if (empty) {
        out << "  (none)\n";
    }
}

}  // namespace

MachineReport ReadMachineReport(sim::Machine& machine) {
    MachineReport report;
    const sim::MachineConfig& config = machine.config();
    report.windows = std::to_string(config.osVersion.major) + "." +
                     std::to_string(config.osVersion.minor) + "." +
                     std::to_string(config.osVersion.build);
    report.architecture = ArchitectureName(config.architecture);
    report.iis = config.iisVersion.Installed() ? std::to_string(config.iisVersion.major) + "." +
                                                     std::to_string(config.iisVersion.minor)
                                               : "none";
    ReadConfiguration(machine, report);
    ReadRegistry(machine, report);
    return report;
}

void PrintMachineReport(const MachineReport& report, std::ostream& out) {
    out << "Windows " << report.windows << " " << report.architecture << ", IIS " << report.iis
        << "\n";
    if (!report.configurationProblem.empty()) {
        out << "IIS configuration: " << report.configurationProblem << "\n";
    }
    out << "Sites\n";
    PrintNone(report.sites.empty(), out);
    for (const SiteView& site : report.sites) {
        out << "  " << site.name << " (id " << site.id << ")\n";
        for (const BindingView& binding : site.bindings) {
            out << "    binding " << binding.protocol << " " << binding.information << "\n";
        }
        for (const ApplicationView& app : site.applications) {
            out << "    application " << app.path << " (pool " << app.pool << ")\n";
            for (const VirtualDirectoryView& directory : app.virtualDirectories) {
                out << "      virtual directory " << directory.path << " -> "
                    << directory.physicalPath << "\n";
            }
        }
    }
    out << "Application pools\n";
    PrintNone(report.pools.empty(), out);
    for (const PoolView& pool : report.pools) {
        out << "  " << pool.name << ": identity " << pool.identity << ", runtime "
            << (pool.runtime.empty() ? "none" : pool.runtime) << ", pipeline " << pool.pipeline
            << "\n";
    }
    out << "Web service extensions\n";
    PrintNone(report.extensions.empty(), out);
    for (const ExtensionView& extension : report.extensions) {
        out << "  " << extension.path << " (" << extension.description << ", group "
            << extension.group << "): " << (extension.allowed ? "allowed" : "not allowed") << "\n";
    }
    out << "Certificates\n";
    PrintNone(report.certificates.empty(), out);
    for (const CertificateView& certificate : report.certificates) {
        out << "  " << certificate.store << "\\" << certificate.thumbprint << "\n";
    }
    out << "SSL bindings\n";
    PrintNone(report.sslBindings.empty(), out);
    for (const SslBindingView& binding : report.sslBindings) {
        out << "  " << binding.endpoint << " -> " << binding.store << "\\"
            << binding.certificateHash << "\n";
    }
}

nlohmann::json MachineReportJson(const MachineReport& report) {
    nlohmann::json sites = nlohmann::json::array();
    for (const SiteView& site : report.sites) {
        nlohmann::json bindings = nlohmann::json::array();
        for (const BindingView& binding : site.bindings) {
            bindings.push_back(
                {{"protocol", binding.protocol}, {"bindingInformation", binding.information}});
        }
        nlohmann::json applications = nlohmann::json::array();
        for (const ApplicationView& app : site.applications) {
            nlohmann::json directories = nlohmann::json::array();
            for (const VirtualDirectoryView& directory : app.virtualDirectories) {
                directories.push_back(
                    {{"path", directory.path}, {"physicalPath", directory.physicalPath}});
            }
            applications.push_back({{"path", app.path},
                                    {"applicationPool", app.pool},
                                    {"virtualDirectories", directories}});
        }
        sites.push_back({{"name", site.name},
                         {"id", site.id},
                         {"bindings", bindings},
                         {"applications", applications}});
    }
    nlohmann::json pools = nlohmann::json::array();
    for (const PoolView& pool : report.pools) {
        pools.push_back({{"name", pool.name},
                         {"identity", pool.identity},
                         {"managedRuntimeVersion", pool.runtime},
                         {"managedPipelineMode", pool.pipeline}});
    }
    nlohmann::json extensions = nlohmann::json::array();
    for (const ExtensionView& extension : report.extensions) {
        extensions.push_back({{"path", extension.path},
                              {"description", extension.description},
                              {"groupId", extension.group},
                              {"allowed", extension.allowed}});
    }
    nlohmann::json certificates = nlohmann::json::array();
    for (const CertificateView& certificate : report.certificates) {
        certificates.push_back(
            {{"store", certificate.store}, {"thumbprint", certificate.thumbprint}});
    }
    nlohmann::json bindings = nlohmann::json::array();
    for (const SslBindingView& binding : report.sslBindings) {
        bindings.push_back({{"endpoint", binding.endpoint},
                            {"certificateHash", binding.certificateHash},
                            {"store", binding.store}});
    }
    nlohmann::json json = {{"windows", report.windows},
                           {"architecture", report.architecture},
                           {"iis", report.iis},
                           {"sites", sites},
                           {"applicationPools", pools},
                           {"webServiceExtensions", extensions},
                           {"certificates", certificates},
                           {"sslBindings", bindings}};
    if (!report.configurationProblem.empty()) {
        json["configurationProblem"] = report.configurationProblem;
    }
    return json;
}

std::vector<std::string> DescribeReportChanges(const MachineReport& before,
                                               const MachineReport& after) {
    // Every item as one line; the lines only one side has are the changes.
    const auto items = [](const MachineReport& report) {
        std::set<std::string> lines;
        for (const SiteView& site : report.sites) {
            lines.insert("site " + site.name + " (id " + site.id + ")");
            for (const BindingView& binding : site.bindings) {
                lines.insert("binding " + binding.protocol + " " + binding.information +
                             " of site " + site.name);
            }
            for (const ApplicationView& app : site.applications) {
                lines.insert("application " + site.name + app.path + " (pool " + app.pool + ")");
                for (const VirtualDirectoryView& directory : app.virtualDirectories) {
                    lines.insert("virtual directory " + site.name + app.path +
                                 (app.path == "/" ? directory.path.substr(1) : directory.path) +
                                 " -> " + directory.physicalPath);
                }
            }
        }
        for (const PoolView& pool : report.pools) {
            lines.insert("application pool " + pool.name + " (identity " + pool.identity +
                         ", runtime " + pool.runtime + ", pipeline " + pool.pipeline + ")");
        }
        for (const ExtensionView& extension : report.extensions) {
            lines.insert("web service extension " + extension.path +
                         (extension.allowed ? " (allowed)" : " (not allowed)"));
        }
        for (const CertificateView& certificate : report.certificates) {
            lines.insert("certificate " + certificate.store + "\\" + certificate.thumbprint);
        }
        for (const SslBindingView& binding : report.sslBindings) {
            lines.insert("SSL binding " + binding.endpoint);
        }
        return lines;
    };
    const std::set<std::string> old = items(before);
    const std::set<std::string> now = items(after);
    std::vector<std::string> changes;
    for (const std::string& line : now) {
        if (!old.contains(line)) {
            changes.push_back("created " + line);
        }
    }
    for (const std::string& line : old) {
        if (!now.contains(line)) {
            changes.push_back("removed " + line);
        }
    }
    return changes;
}

}  // namespace webrig::cli
