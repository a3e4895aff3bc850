// MIME maps of a virtual directory or website: entries of the staticContent section for the
// extensions that have none. An existing map is never changed.

#include "apphost/iis_functions_vista.h"
#include "support/format.h"

int32_t CIisFunctionsVista::InstallMimeTypes(
    MetadataHandle, const std::vector<std::unique_ptr<CIISMimeMapProp>>& mimeMaps) {
    qm::wstring kept = GetCommitPath();
    const ElementPtr section = GetAdminSection(u"system.webServer/staticContent", kept);
    const CollectionPtr collection = GetElementCollection(section);
    LogMessage(u"Installing MIME types...");
    if (!collection) {
        LogMessage(
            u"Unable to retrieve MIME collection from staticContent or staticContent element.");
        return 1;
    }
    bool added = false;
    for (const std::unique_ptr<CIISMimeMapProp>& mimeMap : mimeMaps) {
        if (FindElementInCollection(section, u"fileExtension", mimeMap->Extension, u"", u"",
                                    false)) {
            continue;
        }
        LogMessage(qm::format(u"Installing mime map for extension '%s'", mimeMap->Extension));
        const ElementPtr entry = CreateNewElement(collection, u"mimeMap");
        if (!entry) {
            LogMessage(u"Failed to create new mimeMap element for collection");
            return qm::hr::fail;
        }
        if (const int32_t code =
                PutPropertyValue(entry, u"fileExtension", mimeMap->Extension, false)) {
            return code;
        }
        if (const int32_t code = PutPropertyValue(entry, u"mimeType", mimeMap->Type, false)) {
            return code;
        }
        if (const int32_t code = AddElement(collection, entry, -1)) {
            return code;
        }
        added = true;
    }
    if (!added) {
        return 0;
    }
    if (const int32_t code = CommitChanges()) {
        return code;
    }
    return ChangeCommitPath(kept);
}
