#pragma once
// The <configSections> of a configuration file: which sections exist, where they may be set and
// whether lower levels may override them unless a <location overrideMode="Allow"> says so.

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "platform/sim/iis7/xml_tree.h"

namespace webrig::sim::iis7 {

enum class AllowDefinition { everywhere, machineToApplication, appHostOnly, machineOnly };

struct SectionDeclaration {
    std::string name;             // full name, "system.webServer/handlers"
    bool overrideAllowed = true;  // overrideModeDefault
    AllowDefinition allowDefinition = AllowDefinition::everywhere;
    bool allowLocation = true;
};

class SectionDeclarations {
  public:
    // Reads <configSections>; throws ConfigFileError for a malformed declaration.
    void AddFrom(const XmlElement& configSections, const std::string& fileName);

    const SectionDeclaration* FindSection(std::string_view name) const;
    // A declared section group ("system.webServer", "system.webServer/security").
    bool IsGroup(std::string_view name) const;
    bool empty() const { return m_sections.empty(); }

  private:
    void AddGroup(const XmlElement& group, const std::string& prefix, const std::string& fileName);

    std::map<std::string, SectionDeclaration, std::less<>> m_sections;
    std::map<std::string, bool, std::less<>> m_groups;
};

// Sections of the groups the .NET Framework's machine.config declares (system.web, appSettings,
// ...), which web.config files may hold without declaring them, with the default declaration;
// nullptr for other names. Where the schema describes such a section it also carries its real
// declaration (system.web/authentication).
const SectionDeclaration* FrameworkSection(std::string_view name);
// True for a top-level element the framework owns ("system.web", "appSettings", ...).
bool IsFrameworkTopLevel(std::string_view name);

}  // namespace webrig::sim::iis7
