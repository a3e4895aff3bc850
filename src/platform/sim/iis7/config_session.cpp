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

// Every element `names` lead to below `start`: a section group may be written more than once in
// a file, and each copy may hold other sections.
void CollectSections(const FoundElement& start, const std::vector<std::string>& names, size_t depth,
                     std::vector<FoundElement>& found) {
    if (depth == names.size()) {
        found.push_back(start);
        return;
    }
    const auto& children = start.element->children;
    for (size_t i = 0; i < children.size(); ++i) {
        const XmlElement* child = children[i].element.get();
        if (child && child->name == names[depth]) {
            FoundElement next{child, start.path};
            next.path.push_back({child->id, i});
            CollectSections(next, names, depth + 1, found);
        }
    }
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
        return qm::hr::checkout_required;
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
    const size_t filesBefore = m_files.size();
    try {
        MountSources(*file);
    } catch (const ConfigFailure&) {
        // The file is not read; neither are the files it refers to.
        m_files.resize(filesBefore);
        throw;
    }
    file->readRoot = file->document.root;
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

// The sections of `file` that name a configSource take the referenced file's section element.
void ConfigSession::MountSources(WorkingFile& file) {
    const SectionDeclarations* own = file.declarations.get();
    const SectionDeclarations* appHost =
        file.isAppHost || !m_appHost ? nullptr : m_appHost->declarations.get();
    const auto isSection = [&](const std::string& name) {
        return (own && own->FindSection(name)) || (appHost && appHost->FindSection(name)) ||
               FrameworkSection(name);
    };
    const auto isGroup = [&](const std::string& name) {
        return (own && own->IsGroup(name)) || (appHost && appHost->IsGroup(name)) ||
               IsFrameworkTopLevel(name);
    };
    // Only section groups are walked, so the cost does not grow with the sites a file holds.
    std::vector<FoundElement> placeholders;
    const std::function<void(const FoundElement&, const std::string&)> walk =
        [&](const FoundElement& at, const std::string& group) {
            const auto& children = at.element->children;
            for (size_t i = 0; i < children.size(); ++i) {
                const XmlElement* child = children[i].element.get();
                if (!child) {
                    continue;
                }
                FoundElement next{child, at.path};
                next.path.push_back({child->id, i});
                const std::string name = group.empty() ? child->name : group + "/" + child->name;
                if (group.empty() && at.path.size() == 1 && child->name == "location") {
                    walk(next, {});
                } else if (isSection(name)) {
                    if (child->FindAttribute("configSource")) {
                        placeholders.push_back(std::move(next));
                    }
                } else if (isGroup(name)) {
                    walk(next, name);
                }
            }
        };
    const size_t rootIndex = file.document.DocumentElementIndex();
    walk({file.document.DocumentElement(),
          {{file.document.root->children[rootIndex].element->id, rootIndex}}},
         {});
    for (const FoundElement& found : placeholders) {
        const XmlElement& placeholder = *found.element;
        const std::string reference = placeholder.FindAttribute("configSource")->value;
        const std::string where = file.displayName + "(" + std::to_string(placeholder.line) + "): ";
        if (placeholder.ElementCount() != 0 || placeholder.attributes.size() != 1) {
            Fail(qm::hr::invalid_data,
                 where +
                     "A section using 'configSource' may contain no other attributes or "
                     "elements");
        }
        // IIS reads only files in the configuration file's folder or below it.
        bool below = !reference.empty() && reference.front() != '\\' &&
                     reference.find_first_of(":/") == std::string::npos;
        for (size_t start = 0; below && start <= reference.size();) {
            const size_t end = std::min(reference.find('\\', start), reference.size());
            below = reference.compare(start, end - start, "..") != 0;
            start = end + 1;
        }
        if (!below) {
            Fail(qm::hr::invalid_data,
                 where +
                     "The configSource attribute must be a relative physical path to a file in "
                     "the folder of the configuration file or below it: '" +
                     reference + "'");
        }
        SourcedSection section{found.path, nullptr, nullptr};
        section.source = &AdoptSource(file, reference, placeholder.name);
        NodePath parentPath(found.path.begin(), found.path.end() - 1);
        XmlElement& parent = MutableAt(file, parentPath);
        const size_t index = FindChildIndex(parent, found.path.back());
        section.placeholder = parent.children[index].element;
        const XmlDocument& source = section.source->document;
        parent.children[index].element =
            source.root->children[source.DocumentElementIndex()].element;
        section.path.back() = {parent.children[index].element->id, index};
        file.sourced.push_back(std::move(section));
    }
}

WorkingFile& ConfigSession::AdoptSource(const WorkingFile& owner, const std::string& reference,
                                        const std::string& rootName) {
    const std::string windowsPath =
        owner.displayName.substr(0, owner.displayName.rfind('\\') + 1) + reference;
    const ResolvedPath resolved =
        ResolveWindowsPath(m_machine->driveRoot, qm::from_utf8(windowsPath));
    if (resolved.error != 0 || resolved.isDirectory) {
        Fail(qm::hr::file_not_found, windowsPath + ": Cannot read configuration file");
    }
    const std::string hostPath = resolved.hostPath.native();
    bool taken = hostPath == owner.hostPath;
    for (const std::unique_ptr<WorkingFile>& other : m_files) {
        taken = taken || other->hostPath == hostPath;
    }
    if (taken) {
        Fail(qm::hr::invalid_data,
             windowsPath + ": the file is already read as another configuration file");
    }
    auto source = std::make_unique<WorkingFile>();
    try {
        source->loaded = m_machine->cache->Load(hostPath, windowsPath, rootName);
    } catch (const ConfigFileError& error) {
        Fail(qm::hr::invalid_data, error.what());
    }
    if (!source->loaded.document) {
        Fail(qm::hr::file_not_found, windowsPath + ": Cannot read configuration file");
    }
    source->hostPath = hostPath;
    source->displayName = windowsPath;
    source->configPath = owner.configPath;
    source->isSource = true;
    source->document = *source->loaded.document;
    source->readRoot = source->document.root;
    m_files.push_back(std::move(source));
    return *m_files.back();
}

XmlDocument ConfigSession::Rendered(const WorkingFile& file) const {
    XmlDocument document = file.document;
    for (const SourcedSection& section : file.sourced) {
        XmlElement* element = &MakeMutable(document.root);
        for (size_t i = 0; i + 1 < section.path.size() && element; ++i) {
            const size_t index = FindChildIndex(*element, section.path[i]);
            element = index == std::string::npos ? nullptr
                                                 : &MakeMutable(element->children[index].element);
        }
        const size_t index =
            element ? FindChildIndex(*element, section.path.back()) : std::string::npos;
        if (index != std::string::npos) {
            element->children[index].element = section.placeholder;
        }
    }
    return document;
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
    // A <location path=""> tag holds settings of the file's own level, as the file itself does.
    if (level.location.empty()) {
        CollectSections(start, sectionNames, 0, found);
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
        CollectSections(at, sectionNames, 0, found);
    }
    return found;
}

std::vector<FoundElement> FindSections(const XmlElement& parent,
                                       const std::vector<std::string>& names) {
    std::vector<FoundElement> found;
    CollectSections({&parent, {}}, names, 0, found);
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
    const XmlLayout& layout = file.document.layout;
    Writable at;
    XmlElement* parent = nullptr;
    std::vector<std::string> names;
    // The section's one definition for this path, wherever the file keeps it (at the top, or in a
    // <location> tag for the path), receives the change.
    if (const std::vector<FoundElement> existing = SectionsAt(level, sectionNames);
        !existing.empty()) {
        at.path = existing.front().path;
        parent = &MutableAt(file, at.path);
    } else {
        const size_t rootIndex = file.document.DocumentElementIndex();
        at.path = {{file.document.root->children[rootIndex].element->id, rootIndex}};
        parent = &MutableAt(file, at.path);
        if (!level.location.empty()) {
            // A tag for the path that only carries settings; one that delegates would lock or
            // unlock the section too.
            size_t chosen = std::string::npos;
            for (size_t i = 0; i < parent->children.size(); ++i) {
                const XmlElement* location = parent->children[i].element.get();
                if (location && location->name == "location" &&
                    SameSegments(LocationSegments(*location), level.location) &&
                    !HasDelegationAttribute(*location)) {
                    chosen = i;
                    break;
                }
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
        names = sectionNames;
    }
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
