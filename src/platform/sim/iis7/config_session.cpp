#include "platform/sim/iis7/config_session.h"

#include "platform/sim/files/windows_path.h"
#include "platform/sim/iis7/config_failure.h"
#include "platform/sim/iis7/config_file_error.h"
#include "platform/sim/iis7/config_path.h"
#include "platform/sim/iis7/physical_folders.h"
#include "platform/sim/iis7/xml_reader.h"

namespace webrig::sim::iis7 {
namespace {

constexpr std::string_view kNewWebConfig =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<configuration>\r\n</configuration>\r\n";

size_t FindChildIndex(const XmlElement& parent, const PathStep& step) {
    if (step.hint < parent.children.size() && parent.children[step.hint].element &&
        parent.children[step.hint].element->id == step.id) {
        return step.hint;
    }
    for (size_t i = 0; i < parent.children.size(); ++i) {
        if (parent.children[i].element && parent.children[i].element->id == step.id) {
            step.hint = i;
            return i;
        }
    }
    return std::string::npos;
}

size_t FindChildIndexByName(const XmlElement& parent, std::string_view name) {
    for (size_t i = 0; i < parent.children.size(); ++i) {
        if (parent.children[i].element && parent.children[i].element->name == name) {
            return i;
        }
    }
    return std::string::npos;
}

// Follows `names` down from `start`; a missing element ends the way with null.
FoundElement Descend(FoundElement start, const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        const size_t index = FindChildIndexByName(*start.element, name);
        if (index == std::string::npos) {
            return {};
        }
        const XmlElement* child = start.element->children[index].element.get();
        start.path.push_back({child->id, index});
        start.element = child;
    }
    return start;
}

bool HasDelegationAttribute(const XmlElement& location) {
    return location.FindAttribute("overrideMode") || location.FindAttribute("allowOverride");
}

}  // namespace

FoundElement DescendByNames(FoundElement start, const std::vector<std::string>& names) {
    return Descend(std::move(start), names);
}

const XmlElement* FindChild(const XmlElement& parent, std::string_view name) {
    const size_t index = FindChildIndexByName(parent, name);
    return index == std::string::npos ? nullptr : parent.children[index].element.get();
}

std::vector<qm::wstring> LocationSegments(const XmlElement& location) {
    const XmlAttribute* path = location.FindAttribute("path");
    return path ? SplitLocationPath(qm::from_utf8(path->value)) : std::vector<qm::wstring>{};
}

bool SameSegments(const std::vector<qm::wstring>& a, const std::vector<qm::wstring>& b) {
    return a.size() == b.size() && IsPathPrefix(a, b);
}

std::shared_ptr<const AppHostLocation::Place> AppHostLocation::Get() const {
    std::lock_guard lock(m_mutex);
    return m_place;
}

void AppHostLocation::Set(std::shared_ptr<const Place> place) {
    std::lock_guard lock(m_mutex);
    m_place = std::move(place);
}

ConfigSession::ConfigSession(std::shared_ptr<const ConfigMachine> machine,
                             std::shared_ptr<AppHostLocation> appHostLocation)
    : m_machine(std::move(machine)), m_appHostLocation(std::move(appHostLocation)) {}

const Schema& ConfigSession::schema() {
    if (!m_schema) {
        m_schema = m_machine->schema();
    }
    return *m_schema;
}

qm::wstring_view ConfigSession::commitPath() const noexcept {
    return m_commitPath.empty() ? kAppHostPath : qm::wstring_view(m_commitPath);
}

qm::hresult ConfigSession::PutCommitPath(qm::wstring_view path) {
    if (m_pending) {
        m_errorText = "the commit path cannot change while changes are pending";
        return qm::hr::file_checked_out;
    }
    std::optional<std::vector<qm::wstring>> segments = SplitConfigPath(path);
    if (!segments) {
        m_errorText =
            "not a configuration path below MACHINE/WEBROOT/APPHOST: " + qm::to_utf8(path);
        return qm::hr::invalid_arg;
    }
    m_commitPath = qm::wstring(path);
    m_commitSegments = std::move(*segments);
    return qm::hr::ok;
}

WorkingFile& ConfigSession::Load(const std::string& hostPath, std::string displayName,
                                 bool isAppHost, std::vector<qm::wstring> configPath) {
    for (const std::unique_ptr<WorkingFile>& file : m_files) {
        if (file->hostPath == hostPath) {
            return *file;
        }
    }
    LoadedFile loaded;
    try {
        loaded = m_machine->cache->Load(hostPath, displayName);
    } catch (const ConfigFileError& error) {
        Fail(qm::hr::invalid_data, error.what());
    }
    return Adopt(hostPath, std::move(displayName), isAppHost, std::move(configPath),
                 std::move(loaded));
}

WorkingFile& ConfigSession::Adopt(const std::string& hostPath, std::string displayName,
                                  bool isAppHost, std::vector<qm::wstring> configPath,
                                  LoadedFile loaded) {
    auto file = std::make_unique<WorkingFile>();
    file->hostPath = hostPath;
    file->displayName = std::move(displayName);
    file->isAppHost = isAppHost;
    file->configPath = std::move(configPath);
    file->loaded = std::move(loaded);
    if (file->loaded.document) {
        file->document = *file->loaded.document;
    } else if (isAppHost) {
        Fail(qm::hr::file_not_found, file->displayName + ": the file does not exist");
    } else {
        file->document = ReadXml(std::make_shared<const std::string>(kNewWebConfig));
    }
    file->readRoot = file->document.root;
    if (file->loaded.declarations) {
        file->declarations = file->loaded.declarations;
    } else {
        try {
            Validate(*file);
        } catch (const ConfigFileError& error) {
            Fail(qm::hr::invalid_data, error.what());
        }
        // Whether a web.config is valid depends on applicationHost.config too: only the main
        // file is remembered as checked.
        if (isAppHost && file->loaded.document) {
            m_machine->cache->StoreDeclarations(hostPath, file->loaded.identity,
                                                file->declarations);
            file->loaded.declarations = file->declarations;
        }
    }
    WorkingFile& adopted = *file;
    m_files.push_back(std::move(file));
    return adopted;
}

// Every element outside <configSections> must be a declared section or lie inside a declared
// section group; IIS refuses files with anything else.
void ConfigSession::Validate(WorkingFile& file) const {
    const XmlElement& configuration = *file.document.DocumentElement();
    auto own = std::make_shared<SectionDeclarations>();
    file.declarations = own;
    bool first = true;
    for (const XmlChild& child : configuration.children) {
        if (!child.element) {
            continue;
        }
        if (child.element->name == "configSections") {
            if (!first) {
                throw ConfigFileError(file.displayName, child.element->line,
                                      "<configSections> must be the first element");
            }
            own->AddFrom(*child.element, file.displayName);
        }
        first = false;
    }
    const SectionDeclarations* appHost = file.isAppHost ? nullptr : m_appHost->declarations.get();
    const auto known = [&](const std::string& name, bool& isGroup) {
        isGroup = false;
        if (own->FindSection(name) || (appHost && appHost->FindSection(name)) ||
            FrameworkSection(name)) {
            return true;
        }
        isGroup =
            own->IsGroup(name) || (appHost && appHost->IsGroup(name)) || IsFrameworkTopLevel(name);
        return isGroup;
    };
    const std::function<void(const XmlElement&, const std::string&)> check =
        [&](const XmlElement& element, const std::string& name) {
            bool isGroup = false;
            if (!known(name, isGroup)) {
                throw ConfigFileError(file.displayName, element.line,
                                      "unrecognized configuration section " + name +
                                          " (it is missing a section declaration)");
            }
            if (!isGroup) {
                return;
            }
            for (const XmlChild& child : element.children) {
                if (child.element) {
                    check(*child.element, name + "/" + child.element->name);
                }
            }
        };
    for (const XmlChild& child : configuration.children) {
        if (!child.element) {
            continue;
        }
        const XmlElement& element = *child.element;
        if (element.name == "configSections" ||
            (file.isAppHost && element.name == "configProtectedData")) {
            continue;
        }
        if (element.name != "location") {
            check(element, element.name);
            continue;
        }
        for (const XmlChild& inner : element.children) {
            if (!inner.element) {
                continue;
            }
            if (inner.element->name == "location" || inner.element->name == "configSections") {
                throw ConfigFileError(file.displayName, inner.element->line,
                                      "<" + inner.element->name + "> inside <location>");
            }
            check(*inner.element, inner.element->name);
        }
    }
}

std::shared_ptr<const AppHostLocation::Place> ConfigSession::LocateAppHost() const {
    const qm::wstring windowsPath =
        m_machine->config.windowsDirectory + u"\\System32\\inetsrv\\config\\applicationHost.config";
    const std::string displayName = qm::to_utf8(windowsPath);
    const ResolvedPath resolved = ResolveWindowsPath(m_machine->driveRoot, windowsPath);
    if (resolved.error != 0) {
        Fail(qm::hr::file_not_found, displayName + ": the file does not exist");
    }
    return std::make_shared<const AppHostLocation::Place>(
        AppHostLocation::Place{resolved.hostPath.native(), displayName});
}

WorkingFile& ConfigSession::AppHost() {
    if (m_appHost) {
        return *m_appHost;
    }
    // The remembered place is tried first; one that holds no file (any more) is looked up on
    // the drive again, since its folders may have been renamed.
    const std::shared_ptr<const AppHostLocation::Place> remembered = m_appHostLocation->Get();
    std::shared_ptr<const AppHostLocation::Place> place = remembered;
    if (!place) {
        place = LocateAppHost();
    }
    LoadedFile loaded;
    try {
        loaded = m_machine->cache->Load(place->hostPath, place->displayName);
        if (!loaded.identity.exists && remembered) {
            place = LocateAppHost();
            loaded = m_machine->cache->Load(place->hostPath, place->displayName);
        }
    } catch (const ConfigFileError& error) {
        Fail(qm::hr::invalid_data, error.what());
    }
    if (place != remembered) {
        m_appHostLocation->Set(place);
    }
    m_appHost = &Adopt(place->hostPath, place->displayName, true, {}, std::move(loaded));
    return *m_appHost;
}

WorkingFile& ConfigSession::WebConfig(const std::vector<qm::wstring>& path) {
    if (path.empty()) {
        return AppHost();
    }
    WorkingFile& appHost = AppHost();
    const qm::wstring folder =
        PhysicalFolder(*appHost.document.DocumentElement(), path, m_machine->config);
    const ResolvedPath resolvedFolder = ResolveWindowsPath(m_machine->driveRoot, folder);
    if (resolvedFolder.error != 0 || !resolvedFolder.isDirectory) {
        Fail(qm::hr::path_not_found, qm::to_utf8(folder) + ": the folder of " +
                                         qm::to_utf8(JoinSegments(path, 0, path.size())) +
                                         " does not exist");
    }
    const qm::wstring windowsPath = folder + (folder.back() == u'\\' ? u"" : u"\\") + u"web.config";
    const ResolvedPath resolvedFile = ResolveWindowsPath(m_machine->driveRoot, windowsPath);
    if (resolvedFile.error == 0 && resolvedFile.isDirectory) {
        Fail(qm::hr::path_not_found, qm::to_utf8(windowsPath) + " is a folder");
    }
    const std::filesystem::path hostPath =
        resolvedFile.error == 0 ? resolvedFile.hostPath : resolvedFolder.hostPath / "web.config";
    return Load(hostPath.native(), qm::to_utf8(windowsPath), false, path);
}

WorkingFile& ConfigSession::CommitFile() {
    return WebConfig(m_commitSegments);
}

std::vector<ConfigLevel> ConfigSession::LevelsFor(const std::vector<qm::wstring>& path) {
    WorkingFile& appHost = AppHost();
    std::vector<ConfigLevel> levels{{&appHost, {}}};
    for (size_t i = 1; i <= path.size(); ++i) {
        const std::vector<qm::wstring> prefix(path.begin(), path.begin() + static_cast<long>(i));
        levels.push_back({&appHost, prefix});
        for (size_t j = 1; j < i; ++j) {
            const std::vector<qm::wstring> above(path.begin(), path.begin() + static_cast<long>(j));
            levels.push_back(
                {&WebConfig(above), std::vector<qm::wstring>(path.begin() + static_cast<long>(j),
                                                             path.begin() + static_cast<long>(i))});
        }
        levels.push_back({&WebConfig(prefix), {}});
    }
    return levels;
}

std::vector<FoundElement> ConfigSession::SectionsAt(
    const ConfigLevel& level, const std::vector<std::string>& sectionNames) const {
    std::vector<FoundElement> found;
    const XmlDocument& document = level.file->document;
    const size_t rootIndex = document.DocumentElementIndex();
    const XmlElement& configuration = *document.root->children[rootIndex].element;
    const FoundElement start{&configuration, {{configuration.id, rootIndex}}};
    if (level.location.empty()) {
        if (FoundElement section = Descend(start, sectionNames); section.element) {
            found.push_back(std::move(section));
        }
    }
    for (size_t i = 0; i < configuration.children.size(); ++i) {
        const XmlElement* location = configuration.children[i].element.get();
        if (!location || location->name != "location" ||
            !SameSegments(LocationSegments(*location), level.location)) {
            continue;
        }
        FoundElement at = start;
        at.element = location;
        at.path.push_back({location->id, i});
        if (FoundElement section = Descend(at, sectionNames); section.element) {
            found.push_back(std::move(section));
        }
    }
    return found;
}

const XmlElement* ConfigSession::Resolve(const WorkingFile& file, const NodePath& path) const {
    const XmlElement* element = file.document.root.get();
    for (const PathStep& step : path) {
        const size_t index = FindChildIndex(*element, step);
        if (index == std::string::npos) {
            return nullptr;
        }
        element = element->children[index].element.get();
    }
    return element;
}

XmlElement& ConfigSession::MutableAt(WorkingFile& file, const NodePath& path) {
    XmlElement* element = &MakeMutable(file.document.root);
    for (const PathStep& step : path) {
        const size_t index = FindChildIndex(*element, step);
        if (index == std::string::npos) {
            Fail(qm::hr::element_not_found, "the element is no longer in the configuration");
        }
        element = &MakeMutable(element->children[index].element);
    }
    return *element;
}

ConfigSession::Writable ConfigSession::EnsureSection(const ConfigLevel& level,
                                                     const std::vector<std::string>& sectionNames,
                                                     const std::vector<std::string>& childNames) {
    WorkingFile& file = *level.file;
    const size_t rootIndex = file.document.DocumentElementIndex();
    Writable at{nullptr, {{file.document.root->children[rootIndex].element->id, rootIndex}}};
    XmlElement* parent = &MutableAt(file, at.path);
    const XmlLayout& layout = file.document.layout;
    if (!level.location.empty()) {
        // Prefer the tag that already holds the section, then one that only carries settings.
        size_t chosen = std::string::npos;
        size_t plain = std::string::npos;
        for (size_t i = 0; i < parent->children.size(); ++i) {
            const XmlElement* location = parent->children[i].element.get();
            if (!location || location->name != "location" ||
                !SameSegments(LocationSegments(*location), level.location)) {
                continue;
            }
            if (Descend({location, {}}, sectionNames).element) {
                chosen = i;
                break;
            }
            if (plain == std::string::npos && !HasDelegationAttribute(*location)) {
                plain = i;
            }
        }
        if (chosen == std::string::npos) {
            chosen = plain;
        }
        if (chosen == std::string::npos) {
            auto location = NewXmlElement("location");
            location->SetAttribute(
                "path", qm::to_utf8(JoinSegments(level.location, 0, level.location.size())));
            InsertChildElement(*parent, std::string::npos, location, layout);
            chosen = FindChildIndex(*parent, {location->id, 0});
        }
        at.path.push_back({parent->children[chosen].element->id, chosen});
        parent = &MakeMutable(parent->children[chosen].element);
    }
    std::vector<std::string> names = sectionNames;
    names.insert(names.end(), childNames.begin(), childNames.end());
    for (const std::string& name : names) {
        size_t index = FindChildIndexByName(*parent, name);
        if (index == std::string::npos) {
            auto created = NewXmlElement(name);
            InsertChildElement(*parent, std::string::npos, created, layout);
            index = FindChildIndex(*parent, {created->id, 0});
        }
        at.path.push_back({parent->children[index].element->id, index});
        parent = &MakeMutable(parent->children[index].element);
    }
    at.element = parent;
    return at;
}

std::vector<FoundElement> ConfigSession::AppHostLocations() {
    WorkingFile& appHost = AppHost();
    const size_t rootIndex = appHost.document.DocumentElementIndex();
    const XmlElement& configuration = *appHost.document.root->children[rootIndex].element;
    std::vector<FoundElement> locations;
    for (size_t i = 0; i < configuration.children.size(); ++i) {
        const XmlElement* element = configuration.children[i].element.get();
        if (element && element->name == "location") {
            locations.push_back({element, {{configuration.id, rootIndex}, {element->id, i}}});
        }
    }
    return locations;
}

}  // namespace webrig::sim::iis7
