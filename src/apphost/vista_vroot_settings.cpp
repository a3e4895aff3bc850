// Virtual directory and website settings that are single attributes: authentication, access
// policy, logging and the ASP limits.

#include "apphost/iis_functions_vista.h"

namespace {

constexpr char16_t kAspSection[] = u"system.webServer/asp";

}  // namespace

// Anonymous, basic and Windows authentication, in that order. A section the item's level may not
// hold is written in the main file, and that manager is committed before the next section is
// opened at the item's level again: opened at the main file's own level it would change the
// server's setting.
int32_t CIisFunctionsVista::SetAuthentication(uint32_t flags) {
    struct Section {
        const char16_t* name;
        uint32_t bit;
    };
    static constexpr Section kSections[] = {
        {u"system.webServer/security/authentication/anonymousAuthentication", 0x1},
        {u"system.webServer/security/authentication/basicAuthentication", 0x2},
        {u"system.webServer/security/authentication/windowsAuthentication", 0x4},
    };
    const qm::wstring kept = GetCommitPath();
    for (const Section& section : kSections) {
        if (GetCommitPath() != kept) {
            if (const int32_t code = CommitChanges()) {
                return code;
            }
            if (const int32_t code = PutCommitPath(kept)) {
                return code;
            }
        }
        ElementPtr element;
        if (const int32_t code = GetConfigElement(section.name, u"", element)) {
            return code;
        }
        const char16_t* enabled = (flags & section.bit) != 0 ? u"true" : u"false";
        if (const int32_t code = PutPropertyValue(element, u"enabled", enabled, false)) {
            return code;
        }
    }
    return 0;
}

// An attribute of the section element at the commit path; a section that cannot be had leaves
// nothing to write, which counts as written.
int32_t CIisFunctionsVista::SetSectionAttribute(const qm::wstring& sectionName,
                                                const qm::wstring& attribute,
                                                const qm::wstring& value) {
    return PutPropertyValue(GetAdminSection(sectionName, GetCommitPath()), attribute, value, false);
}

// The ASP limits always go into the main file, at the location of the item.
int32_t CIisFunctionsVista::SetAspLimit(const qm::wstring& childName, const qm::wstring& attribute,
                                        const qm::wstring& value) {
    const qm::wstring location = GetCommitPath();
    PutCommitPath(kAppHostPath);
    const ElementPtr asp = GetAdminSection(kAspSection, location);
    return PutPropertyValue(GetSubElement(asp, childName), attribute, value, false);
}
