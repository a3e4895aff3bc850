#include "platform/sim/iis7/physical_folders.h"

#include "platform/sim/iis7/config_failure.h"
#include "platform/sim/iis7/config_path.h"
#include "platform/sim/machine/machine_variables.h"
#include "support/case_insensitive.h"

namespace webrig::sim::iis7 {
namespace {

const XmlElement* Child(const XmlElement& parent, std::string_view name) {
    for (const XmlChild& child : parent.children) {
        if (child.element && child.element->name == name) {
            return child.element.get();
        }
    }
    return nullptr;
}

std::vector<qm::wstring> VirtualSegments(std::string_view path) {
    return SplitLocationPath(qm::from_utf8(path));
}

}  // namespace

const XmlElement* FindSite(const XmlElement& configuration, qm::wstring_view siteName) {
    const XmlElement* host = Child(configuration, "system.applicationHost");
    const XmlElement* sites = host ? Child(*host, "sites") : nullptr;
    if (!sites) {
        return nullptr;
    }
    const std::string name = qm::to_utf8(siteName);
    for (const XmlChild& child : sites->children) {
        if (child.element && child.element->name == "site") {
            const XmlAttribute* attribute = child.element->FindAttribute("name");
            if (attribute && EqualsIgnoringCase(attribute->value, name)) {
                return child.element.get();
            }
        }
    }
    return nullptr;
}

qm::wstring PhysicalFolder(const XmlElement& configuration, const std::vector<qm::wstring>& path,
                           const MachineConfig& machine) {
    const XmlElement* site = FindSite(configuration, path.front());
    if (!site) {
        Fail(qm::hr::file_not_found, "the site \"" + qm::to_utf8(path.front()) +
                                         "\" does not exist in applicationHost.config");
    }
    const std::vector<qm::wstring> wanted(path.begin() + 1, path.end());
    const XmlAttribute* best = nullptr;
    size_t bestLength = 0;
    for (const XmlChild& application : site->children) {
        if (!application.element || application.element->name != "application") {
            continue;
        }
        const XmlAttribute* applicationPath = application.element->FindAttribute("path");
        const std::vector<qm::wstring> base =
            VirtualSegments(applicationPath ? applicationPath->value : "/");
        for (const XmlChild& directory : application.element->children) {
            if (!directory.element || directory.element->name != "virtualDirectory") {
                continue;
            }
            const XmlAttribute* directoryPath = directory.element->FindAttribute("path");
            const XmlAttribute* physicalPath = directory.element->FindAttribute("physicalPath");
            std::vector<qm::wstring> full = base;
            for (qm::wstring& segment :
                 VirtualSegments(directoryPath ? directoryPath->value : "/")) {
                full.push_back(std::move(segment));
            }
            if (physicalPath && IsPathPrefix(full, wanted) && (!best || full.size() > bestLength)) {
                best = physicalPath;
                bestLength = full.size();
            }
        }
    }
    if (!best) {
        Fail(qm::hr::path_not_found, "no virtual directory of the site \"" +
                                         qm::to_utf8(path.front()) + "\" holds the path");
    }
    qm::wstring folder = ExpandMachineVariables(qm::from_utf8(best->value), machine);
    while (!folder.empty() && (folder.back() == u'\\' || folder.back() == u'/')) {
        folder.pop_back();
    }
    for (size_t i = bestLength; i < wanted.size(); ++i) {
        folder += u'\\';
        folder += wanted[i];
    }
    if (folder.size() == 2 && folder[1] == u':') {
        folder += u'\\';  // the root of a drive
    }
    return folder;
}

}  // namespace webrig::sim::iis7
