#include "settings_check.h"

#include <algorithm>
#include <map>
#include <set>

#include "command_error.h"
#include "command_host.h"
#include "machine_folder.h"
#include "machine_report.h"
#include "settings/iis_pro_ini_loader.h"
#include "settings_input.h"
#include "setup_folder.h"
#include "support/case_insensitive.h"
#include "support/decimal.h"
#include "support/format.h"

namespace webrig::cli {
namespace {

using qm::wstring;
using qm::wstring_view;

class Checker {
  public:
    Checker(const settings::SettingsFile& file, const CIISPropertyBag& bag,
            const std::vector<std::string>& machinePools)
        : m_file(file), m_bag(bag), m_machinePools(machinePools.begin(), machinePools.end()) {
        for (const auto& [name, component] : bag.components) {
            for (const auto& [key, pool] : component->appPools) {
                m_definedPools.insert(qm::to_utf8(pool->Name));
            }
        }
    }

    std::vector<std::string> Run() {
        for (const wstring& component : ComponentsInOrder(m_file)) {
            ForEachEntry(component + u"_VRoots", u"v%d",
                         [&](const wstring& section) { VRoot(component, section); });
            ForEachEntry(component + u"_AppPools", u"a%d",
                         [&](const wstring& section) { AppPool(section); });
            ForEachEntry(component + u"_WebSites", u"ws%d",
                         [&](const wstring& section) { Website(section); });
        }
        SharedBindings();
        return m_warnings;
    }

  private:
    void Warn(wstring_view section, const std::string& text) {
        m_warnings.push_back("[" + qm::to_utf8(section) + "] " + text);
    }

    std::optional<wstring_view> Value(wstring_view section, wstring_view key) const {
        return m_file.Find(section, key);
    }

    template <class Visit>
    void ForEachEntry(const wstring& list, const char16_t* format, Visit visit) {
        const int32_t count = qm::read_decimal(Value(list, u"Count").value_or(u"0"));
        for (int32_t i = 1; i <= count; ++i) {
            if (const auto section = Value(list, qm::format(format, i))) {
                visit(wstring(*section));
            }
        }
    }

    // A password the author wrote as it is: scrambled values hold bytes outside printable ASCII
    // (the scrambled high byte of a first character below U+0100 is 0x8A).
    void Password(wstring_view section, wstring_view key) {
        const auto value = Value(section, key);
        if (!value || value->empty()) {
            return;
        }
        const bool printable = std::all_of(value->begin(), value->end(),
                                           [](char16_t c) { return c >= 0x20 && c < 0x7F; });
        if (printable) {
            Warn(section, "\"" + qm::to_utf8(key) +
                              "\" is not scrambled: the loader descrambles it into another "
                              "password (write it with: webrig scramble)");
        }
    }

    void PoolReference(wstring_view section, const wstring& pool) {
        const std::string name = qm::to_utf8(pool);
        if (!name.empty() && !m_definedPools.contains(name) && !m_machinePools.contains(name)) {
            Warn(section, "\"AppPool\" names the application pool \"" + name +
                              "\", which no component defines and the machine does not have");
        }
    }

    void Common(wstring_view section, const CIISCommonProp& record) {
        Password(section, u"AnonyPasswrd");
        Password(section, u"SslPassword");
        PoolReference(section, record.AppPool);
    }

    void VRoot(const wstring& component, const wstring& section) {
        const auto found = m_bag.components.find(component);
        const auto key = Value(section, u"QMIISCommon");
        if (found == m_bag.components.end() || !key) {
            return;
        }
        const auto vroot = found->second->vroots.find(wstring(*key));
        if (vroot == found->second->vroots.end()) {
            return;
        }
        const CIISVRootProp& record = *vroot->second;
        if (!m_bag.websites.contains(record.ParentSite)) {
            Warn(section, "\"ParentSite\" names the website \"" + qm::to_utf8(record.ParentSite) +
                              "\", which the file does not define");
        }
        if (record.DisplayName.find(u'\\') != wstring::npos && record.ItemType != 2 &&
            record.ItemType != 3) {
            Warn(section,
                 "the nested virtual directory \"" + qm::to_utf8(record.DisplayName) +
                     "\" (ItemType " + std::to_string(record.ItemType) +
                     ") gets its settings at a location below its parent's application path, "
                     "which removal does not find; its settings stay behind after uninstall");
        }
        Common(section, record);
        const wstring parent(Value(section, u"Parent").value_or(u""));
        if (qm::istarts_with(parent, u"Website_")) {
            Website(parent);
        }
    }

    void Website(const wstring& section) {
        if (!m_seenSites.insert(section).second) {
            return;
        }
        const auto key = Value(section, u"QMIISCommon");
        const auto found = key ? m_bag.websites.find(wstring(*key)) : m_bag.websites.end();
        if (found != m_bag.websites.end()) {
            Common(section, *found->second);
            m_sites.emplace_back(section, found->second.get());
        }
        if (const auto property = Value(section, u"SiteNumberProperty")) {
            const std::string name = qm::to_utf8(*property);
            if (property->empty()) {
                Warn(section,
                     "\"SiteNumberProperty\" is empty: no stored site number is looked "
                     "up");
            } else if (name.find_first_of("[]") != std::string::npos) {
                Warn(section, "\"SiteNumberProperty\" \"" + name +
                                  "\" is used as it stands (no substitution), brackets included; "
                                  "the next install will not find the stored site number");
            } else if (m_bag.productCode.empty()) {
                Warn(section,
                     "\"SiteNumberProperty\" needs a \"ProductCode\" in "
                     "[GlobalOptions]: without it the next install looks under no "
                     "product and does not find the stored site number");
            }
        }
    }

    void AppPool(const wstring& section) {
        if (!Value(section, u"QueueLimit")) {
            Warn(section,
                 "no \"QueueLimit\": the pool's queue length becomes 0, which IIS "
                 "refuses (it takes 10 to 65535)");
        }
        if (!Value(section, u"RecycleTimes")) {
            Warn(section, "no \"RecycleTimes\": the recycling schedule gets the time \"0\"");
        }
        Password(section, u"UserPassword");
    }

    void SharedBindings() {
        std::map<std::pair<std::string, std::string>, wstring> bindings;
        for (const auto& [section, site] : m_sites) {
            const std::pair<std::string, std::string> binding = {
                qm::to_utf8(site->Port), qm::to_utf8(qm::to_upper(site->HostHeaderName))};
            const auto [first, added] = bindings.emplace(binding, section);
            if (!added) {
                Warn(section, "the website has the same port " + binding.first +
                                  " and host header \"" + qm::to_utf8(site->HostHeaderName) +
                                  "\" as [" + qm::to_utf8(first->second) + "]");
            }
        }
    }

    const settings::SettingsFile& m_file;
    const CIISPropertyBag& m_bag;
    std::set<std::string> m_machinePools;
    std::set<std::string> m_definedPools;
    std::set<wstring> m_seenSites;
    std::vector<std::pair<wstring, const CIISWebsiteProp*>> m_sites;
    std::vector<std::string> m_warnings;
};

}  // namespace

std::vector<std::string> CheckSettings(const settings::SettingsFile& file,
                                       const CIISPropertyBag& bag,
                                       const std::vector<std::string>& machinePools) {
    return Checker(file, bag, machinePools).Run();
}

int RunCheck(const InstallRequest& request, std::ostream& out) {
    const SettingsInput input = ReadSettingsInput(request.settingsPath);
    HostTables tables;
    if (!request.stringsPath.empty()) {
        tables.strings = ReadStringTable(request.stringsPath);
    }
    tables.properties = ParseProperties(request.properties);

    // The file is read as an install reads it, on a fresh machine of its own.
    const ScratchFolder scratch;
    const std::filesystem::path folder = scratch.path() / "machine";
    sim::MachineConfig config;
    config.osVersion = {10, 0, 20348};
    sim::Machine::Create(folder, config);
    const std::shared_ptr<sim::Machine> machine = OpenMachine(folder);
    std::vector<std::string> pools;
    for (const PoolView& pool : ReadMachineReport(*machine).pools) {
        pools.push_back(pool.name);
    }
    const settings::SettingsFile file = ParseSettings(input, machine->ansiCodePage());
    CIISPropertyBag bag;
    {
        SetupFolder setup(*machine);
        tables.properties.try_emplace(u"SUPPORTDIR", setup.windowsPath());
        const qm::wstring settingsPath = setup.Place(input.name, input.bytes);
        CommandHost host(*machine, std::move(tables), setup.windowsPath(), nullptr);
        CIISProIniLoader loader(*machine, settingsPath,
                                machine->modules().FindModule(host::kHostModuleName),
                                host.context());
        if (const int32_t loaded = loader.Load(bag); loaded != 0) {
            throw InputError(DescribeLoadFailure(input, file, loaded));
        }
    }
    const std::vector<std::string> warnings = CheckSettings(file, bag, pools);
    for (const std::string& warning : warnings) {
        out << "warning: " << input.path << ": " << warning << "\n";
    }
    size_t vroots = 0;
    size_t appPools = 0;
    for (const auto& [name, component] : bag.components) {
        vroots += component->vroots.size();
        appPools += component->appPools.size();
    }
    out << input.path << ": loads: components " << bag.components.size() << ", websites "
        << bag.websites.size() << ", virtual directories " << vroots << ", application pools "
        << appPools << "; warnings " << warnings.size() << "\n";
    return kSuccess;
}

}  // namespace webrig::cli
