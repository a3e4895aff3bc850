#include "platform/sim/iis7/section_declarations.h"

#include <array>

#include "platform/sim/iis7/config_file_error.h"

namespace webrig::sim::iis7 {
namespace {

// The top-level elements machine.config declares for every .NET application.
constexpr std::array<std::string_view, 16> kFrameworkTopLevel = {"system.web",
                                                                 "system.net",
                                                                 "system.data",
                                                                 "appSettings",
                                                                 "connectionStrings",
                                                                 "runtime",
                                                                 "startup",
                                                                 "system.codedom",
                                                                 "system.diagnostics",
                                                                 "system.serviceModel",
                                                                 "system.transactions",
                                                                 "system.web.extensions",
                                                                 "system.xml.serialization",
                                                                 "system.runtime.remoting",
                                                                 "mscorlib",
                                                                 "entityFramework"};

std::string_view Attribute(const XmlElement& element, std::string_view name) {
    const XmlAttribute* attribute = element.FindAttribute(name);
    return attribute ? std::string_view(attribute->value) : std::string_view();
}

}  // namespace

void SectionDeclarations::AddFrom(const XmlElement& configSections, const std::string& fileName) {
    AddGroup(configSections, {}, fileName);
}

void SectionDeclarations::AddGroup(const XmlElement& group, const std::string& prefix,
                                   const std::string& fileName) {
    for (const XmlChild& child : group.children) {
        if (!child.element) {
            continue;
        }
        const XmlElement& element = *child.element;
        const std::string_view name = Attribute(element, "name");
        if (name.empty()) {
            throw ConfigFileError(fileName, element.line,
                                  "<" + element.name + "> in <configSections> needs a name");
        }
        const std::string fullName =
            prefix.empty() ? std::string(name) : prefix + "/" + std::string(name);
        if (element.name == "sectionGroup") {
            m_groups[fullName] = true;
            AddGroup(element, fullName, fileName);
        } else if (element.name == "section") {
            SectionDeclaration declaration;
            declaration.name = fullName;
            const std::string_view mode = Attribute(element, "overrideModeDefault");
            declaration.overrideAllowed = mode != "Deny";
            const std::string_view allow = Attribute(element, "allowDefinition");
            if (allow == "AppHostOnly") {
                declaration.allowDefinition = AllowDefinition::appHostOnly;
            } else if (allow == "MachineOnly") {
                declaration.allowDefinition = AllowDefinition::machineOnly;
            } else if (allow == "MachineToApplication") {
                declaration.allowDefinition = AllowDefinition::machineToApplication;
            }
            declaration.allowLocation = Attribute(element, "allowLocation") != "false";
            m_sections[fullName] = std::move(declaration);
        } else if (element.name != "remove" && element.name != "clear") {
            throw ConfigFileError(fileName, element.line,
                                  "unexpected <" + element.name + "> in <configSections>");
        }
    }
}

const SectionDeclaration* SectionDeclarations::FindSection(std::string_view name) const {
    const auto found = m_sections.find(name);
    return found == m_sections.end() ? nullptr : &found->second;
}

bool SectionDeclarations::IsGroup(std::string_view name) const {
    return m_groups.find(name) != m_groups.end();
}

bool IsFrameworkTopLevel(std::string_view name) {
    for (const std::string_view candidate : kFrameworkTopLevel) {
        if (candidate == name) {
            return true;
        }
    }
    return false;
}

const SectionDeclaration* FrameworkSection(std::string_view name) {
    const size_t slash = name.find('/');
    if (slash == std::string_view::npos || !IsFrameworkTopLevel(name.substr(0, slash))) {
        return nullptr;
    }
    static const SectionDeclaration anyFrameworkSection{};
    return &anyFrameworkSection;
}

}  // namespace webrig::sim::iis7
