#include "platform/sim/iis7/admin_manager.h"

#include "platform/sim/iis7/config_failure.h"
#include "platform/sim/iis7/config_locations.h"
#include "platform/sim/iis7/config_objects.h"
#include "platform/sim/iis7/config_path.h"
#include "platform/sim/iis7/section_delegation.h"
#include "platform/sim/iis7/section_validation.h"

namespace webrig::sim::iis7 {
namespace {

SectionDeclaration MachineConfigSection(const std::string& name,
                                        const MachineConfigDeclaration& declared) {
    SectionDeclaration declaration;
    declaration.name = name;
    declaration.overrideAllowed = declared.overrideModeDefault != u"Deny";
    if (declared.allowDefinition == u"AppHostOnly") {
        declaration.allowDefinition = AllowDefinition::appHostOnly;
    } else if (declared.allowDefinition == u"MachineOnly") {
        declaration.allowDefinition = AllowDefinition::machineOnly;
    } else if (declared.allowDefinition == u"MachineToApplication") {
        declaration.allowDefinition = AllowDefinition::machineToApplication;
    }
    return declaration;
}

// IIS's words for a section that a lower level may not set.
constexpr std::string_view kLockedText =
    "This configuration section cannot be used at this path. This happens when the section is "
    "locked at a parent level. Locking is either by default (overrideModeDefault=\"Deny\"), or "
    "set explicitly by a location tag with overrideMode=\"Deny\" or the legacy "
    "allowOverride=\"false\".";

bool OnlyInAppHost(const SectionDeclaration& declaration) {
    return declaration.allowDefinition == AllowDefinition::appHostOnly ||
           declaration.allowDefinition == AllowDefinition::machineOnly;
}

const XmlElement& Configuration(const WorkingFile& file) {
    return *file.document.DocumentElement();
}

// Why the section may not be written at the target level, or ok.
void DecideWriteRefusal(SectionView& view, const SectionDeclaration& declaration,
                        const std::vector<qm::wstring>& relative, const WorkingFile& appHost) {
    const WorkingFile& file = *view.levels[view.target].file;
    if (OnlyInAppHost(declaration) && (!file.isAppHost || !relative.empty())) {
        view.writeRefusal = qm::hr::lock_violation;
        view.refusalText =
            "the section " + declaration.name + " can only be set in applicationHost.config itself";
    } else if (!declaration.allowLocation && !relative.empty()) {
        view.writeRefusal = qm::hr::lock_violation;
        view.refusalText = "the section " + declaration.name + " cannot be set in a location tag";
    } else if (!file.isAppHost && !OverrideAllowed(declaration, view.sectionNames(),
                                                   Configuration(appHost), file.configPath)) {
        view.writeRefusal = qm::hr::lock_violation;
        view.refusalText = qm::to_utf8(JoinSegments(file.configPath, 0, file.configPath.size())) +
                           ": " + declaration.name + ": " + std::string(kLockedText);
    }
}

// A web.config that already holds a section it may not hold cannot be read.
void CheckReadable(const SectionView& view, const SectionDeclaration& declaration,
                   const WorkingFile& appHost) {
    for (const ConfigLevel& level : view.levels) {
        const WorkingFile& file = *level.file;
        if (file.isAppHost) {
            continue;
        }
        const std::vector<FoundElement> sections =
            view.session->SectionsAt(level, view.sectionNames());
        if (sections.empty()) {
            continue;
        }
        if (OnlyInAppHost(declaration) ||
            !OverrideAllowed(declaration, view.sectionNames(), Configuration(appHost),
                             file.configPath)) {
            Fail(qm::hr::lock_violation,
                 file.displayName + "(" + std::to_string(sections.front().element->line) +
                     "): " + declaration.name + ": " + std::string(kLockedText));
        }
    }
}

// One path may define a section once per file: at the top or in a <location path=""> tag for the
// file's own level, in one <location> tag for a path below it.
void RefuseSecondDefinitions(const SectionView& view, const std::string& name) {
    for (const ConfigLevel& level : view.levels) {
        const std::vector<FoundElement> sections =
            view.session->SectionsAt(level, view.sectionNames());
        if (sections.size() > 1) {
            Fail(qm::hr::already_exists,
                 level.file->displayName + "(" + std::to_string(sections[1].element->line) +
                     "): Config section '" + name +
                     "' already defined. Sections must only appear once per config file. See the "
                     "help topic <location> for exceptions");
        }
    }
}

}  // namespace

AdminManagerImpl::AdminManagerImpl(std::shared_ptr<const ConfigMachine> machine,
                                   std::shared_ptr<AppHostLocation> appHostLocation)
    : m_session(std::make_shared<ConfigSession>(std::move(machine), std::move(appHostLocation))) {}

qm::hresult AdminManagerImpl::GetAdminSection(qm::wstring_view sectionName, qm::wstring_view path,
                                              std::shared_ptr<platform::ConfigElement>& section) {
    section.reset();
    return Guarded(*m_session, [&] {
        const std::optional<std::vector<qm::wstring>> segments = SplitConfigPath(path);
        if (!segments) {
            Fail(qm::hr::invalid_arg,
                 "not a configuration path below MACHINE/WEBROOT/APPHOST: " + qm::to_utf8(path));
        }
        const std::vector<qm::wstring>& commit = m_session->commitSegments();
        if (!IsPathPrefix(commit, *segments)) {
            Fail(qm::hr::invalid_arg, qm::to_utf8(path) + " lies outside the commit path " +
                                          qm::to_utf8(m_session->commitPath()));
        }
        WorkingFile& appHost = m_session->AppHost();
        const Schema& schemas = m_session->schema();
        const SectionSchema* schema = schemas.FindSection(sectionName);
        // The schema keeps the name in UTF-8; an unknown one is converted for the messages.
        const std::string unknownName = schema ? std::string() : qm::to_utf8(sectionName);
        const std::string& name = schema ? schema->utf8Name : unknownName;
        const SectionDeclaration* declaration = appHost.declarations->FindSection(name);
        SectionDeclaration machineConfig;
        if (!declaration && schema && schema->machineConfigDeclaration) {
            // Declared by .NET's machine.config on Windows; the schema carries the declaration.
            machineConfig = MachineConfigSection(name, *schema->machineConfigDeclaration);
            declaration = &machineConfig;
        }
        if (!declaration) {
            declaration = FrameworkSection(name);
        }
        if (!declaration || !schema) {
            Fail(qm::hr::not_supported, "The configuration section '" + name +
                                            "' cannot be read because it is missing " +
                                            (declaration ? "schema" : "a section declaration"));
        }
        auto view = std::make_shared<SectionView>();
        view->session = m_session;
        view->schema = schema;
        view->levels = m_session->LevelsFor(*segments);
        WorkingFile& commitFile = m_session->CommitFile();
        const std::vector<qm::wstring> relative(
            segments->begin() + static_cast<long>(commit.size()), segments->end());
        for (size_t i = 0; i < view->levels.size(); ++i) {
            if (view->levels[i].file == &commitFile &&
                SameSegments(view->levels[i].location, relative)) {
                view->target = i;
            }
        }
        RefuseSecondDefinitions(*view, name);
        CheckReadable(*view, *declaration, appHost);
        ValidateSection(*view, schemas);
        DecideWriteRefusal(*view, *declaration, relative, appHost);
        section = std::make_shared<ConfigElementImpl>(view, &schema->root, nullptr,
                                                      std::vector<std::string>{});
    });
}

qm::hresult AdminManagerImpl::CommitChanges() {
    return Guarded(*m_session, [&] {
        const qm::hresult result = m_session->Commit();
        if (qm::failed(result)) {
            Fail(result, m_session->errorText());
        }
    });
}

qm::hresult AdminManagerImpl::GetCommitPath(qm::wstring& path) {
    path = qm::wstring(m_session->commitPath());
    return qm::hr::ok;
}

qm::hresult AdminManagerImpl::PutCommitPath(qm::wstring_view path) {
    return m_session->PutCommitPath(path);
}

qm::hresult AdminManagerImpl::GetConfigManager(std::shared_ptr<platform::ConfigManager>& manager) {
    manager = std::make_shared<ConfigManagerImpl>(m_session);
    return qm::hr::ok;
}

qm::wstring AdminManagerImpl::LastErrorDescription() {
    return qm::from_utf8(m_session->errorText());
}

}  // namespace webrig::sim::iis7
