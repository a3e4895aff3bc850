// Application pools: entries "add" of the applicationPools section of the main configuration
// file, keyed by their name.

#include "apphost/iis_functions_vista.h"

namespace {
constexpr char16_t kAppPoolsSection[] = u"system.applicationHost/applicationPools";
}  // namespace

int32_t CIisFunctionsVista::CreateAppPoolFunction(CIISAppPoolProp& pool) {
    LogMessage(u"CreateAppPoolFunction");
    m_sAppPoolName = pool.Name;
    if (GetAppPoolElement(pool)) {
        LogMessage(u"AppPool already exists.");
        return qm::hr::already_exists;
    }
    LogMessage(u"AppPool does not exist, attempt to create it.");
    const ElementPtr section = GetAdminSection(kAppPoolsSection, kAppHostPath);
    const CollectionPtr pools = GetElementCollection(section);
    const ElementPtr entry = CreateNewElement(pools, u"add");
    if (const int32_t code = PutPropertyValue(entry, u"name", pool.Name, false)) {
        return code;
    }
    if (const int32_t code = AddElement(pools, entry, -1)) {
        return code;
    }
    // The pool's settings commit it, in the main configuration file.
    return OpenKeyToWebsite(nullptr, nullptr, nullptr);
}

int32_t CIisFunctionsVista::RemoveAppPoolFunction(CIISAppPoolProp& pool) {
    LogMessage(u"RemoveAppPoolFunction");
    const ElementPtr section = GetAdminSection(kAppPoolsSection, kAppHostPath);
    FindElementInCollection(section, u"name", pool.Name, u"", u"", true);
    return CommitChanges();
}
