// What a removed site or virtual directory leaves behind in the main configuration file: the
// metadata the IIS 6 compatibility layer keeps for it, and location tags for its path.

#include "apphost/config_calls.h"
#include "apphost/iis_functions_vista.h"

using webrig::apphost::Decimal;
using webrig::apphost::ThrowIfFailed;

void CIisFunctionsVista::RemoveApplicationLeftovers(const CIISWebsiteProp& website,
                                                    const CIISVRootProp* vroot) {
    LogMessage(u"RemoveApplicationLeftovers");
    const ElementPtr metadata =
        GetAdminSection(u"system.applicationHost/customMetadata", kAppHostPath);
    const qm::wstring key = u"LM/W3SVC/" + website.SiteNumber;
    if (vroot == nullptr) {
        FindElementInCollection(metadata, u"path", key + u"/ROOT/aspnet_client", u"", u"", true);
        FindElementInCollection(metadata, u"path", key, u"", u"", true);
    } else {
        FindElementInCollection(metadata, u"path", key + u"/ROOT/" + vroot->DisplayName, u"", u"",
                                true);
    }

    const ManagerPtr manager = GetAdminManager();
    std::shared_ptr<webrig::platform::ConfigManager> configManager;
    qm::hresult hr = manager ? manager->GetConfigManager(configManager) : ManagerFailure();
    if (qm::failed(hr) || !configManager) {
        LogMessage(u"get_ConfigManager failed with the following HRESULT: " + Decimal(hr));
        return;
    }
    std::shared_ptr<webrig::platform::ConfigFile> file;
    hr = configManager->GetConfigFile(kAppHostPath, file);
    if (qm::failed(hr) || !file) {
        LogMessage(u"GetConfigFile failed with the following HRESULT: " + Decimal(hr));
        return;
    }
    std::shared_ptr<webrig::platform::ConfigLocations> locations;
    hr = file->GetLocations(locations);
    if (qm::failed(hr) || !locations) {
        LogMessage(u"get_Locations failed with the following HRESULT: " + Decimal(hr));
        return;
    }
    qm::wstring target = m_sSiteName;
    if (vroot != nullptr) {
        target += u"/" + vroot->DisplayName;
    }
    LogMessage(u"Attempting to delete the following location: " + target);
    // The count is read once: after a deletion the later locations move down one index, so the
    // one that takes a deleted one's place is passed over and the last indices are past the end.
    uint32_t count = 0;
    ThrowIfFailed(locations->Count(count));
    for (uint32_t index = 0; index < count; ++index) {
        std::shared_ptr<webrig::platform::ConfigLocation> location;
        qm::wstring path;
        if (qm::failed(locations->Item(index, location)) || !location ||
            qm::failed(location->GetPath(path))) {
            continue;
        }
        if (path == target) {
            LogMessage(u"DeleteLocation returned: " + Decimal(locations->DeleteLocation(index)));
        }
    }
}
