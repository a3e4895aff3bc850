// Virtual directory and website settings that are collection entries: default documents, custom
// errors and handler mappings. Existing entries stay; new ones are added.

#include "apphost/config_calls.h"
#include "apphost/iis_functions_vista.h"
#include "support/status_codes.h"

using webrig::apphost::SplitText;

// Documents not in the list yet go to its end, after those that are.
int32_t CIisFunctionsVista::SetDefaultDocuments(const qm::wstring& documents) {
    ElementPtr files;
    CollectionPtr collection;
    if (const int32_t code = GetConfigElementCollection(u"system.webServer/defaultDocument",
                                                        u"files", &files, &collection)) {
        return code;
    }
    for (const qm::wstring& document : SplitText(documents, u',', true)) {
        if (FindElementInCollection(files, u"value", document, u"", u"", false)) {
            continue;
        }
        const ElementPtr entry = CreateNewElement(collection, u"add");
        if (const int32_t code = PutPropertyValue(entry, u"value", document, false)) {
            return code;
        }
        if (const int32_t code = AddElement(collection, entry, -1)) {
            return code;
        }
    }
    return 0;
}

// Entries "status,substatus,mode,path" separated by ";". The modes IIS 6 wrote in capitals are
// the only ones translated: any other text becomes an empty mode, which the configuration system
// refuses.
int32_t CIisFunctionsVista::SetCustomErrors(const qm::wstring& customErrors) {
    static constexpr const char16_t* kAttributes[] = {u"statusCode", u"subStatusCode",
                                                      u"responseMode", u"path"};
    std::vector<AttributeMap> entries;
    if (!customErrors.empty()) {
        for (const qm::wstring& text : SplitText(customErrors, u';', false)) {
            const std::vector<qm::wstring> pieces = SplitText(text, u',', false);
            AttributeMap entry;
            for (size_t index = 0; index < pieces.size() && index < 4; ++index) {
                qm::wstring value = pieces[index];
                if (index == 2) {
                    value = value == u"URL" ? u"ExecuteURL" : value == u"FILE" ? u"File" : u"";
                }
                entry[kAttributes[index]] = std::move(value);
            }
            entries.push_back(std::move(entry));
        }
    }
    return MergeCollectionEntries(u"system.webServer/httpErrors", u"", u"error", u"statusCode",
                                  u"subStatusCode", entries);
}

// Application maps "extension,executable,flags[,verb...]", each ended by ";", become ISAPI
// handlers at the top of the list, so that they are matched before the inherited ones. Without
// the handlers collection there is nothing to add them to: nothing is written.
int32_t CIisFunctionsVista::SetHandlerMappings(const qm::wstring& appMaps) {
    const ElementPtr handlers = GetAdminSection(u"system.webServer/handlers", GetCommitPath());
    const CollectionPtr collection = handlers ? GetElementCollection(handlers) : nullptr;
    if (!collection) {
        LogMessage(u"No handlers collection at '" + GetCommitPath() +
                   u"', so no application map can be added.");
        return qm::status::handlers_unavailable;
    }
    if (appMaps.empty()) {
        return 0;
    }
    for (const qm::wstring& appMap : SplitText(appMaps, u';', false)) {
        LogMessage(u"Adding following app map value: " + appMap);
        const std::vector<qm::wstring> pieces = SplitText(appMap, u',', false);
        const qm::wstring& extension = pieces[0];
        qm::wstring verbs;
        for (size_t index = 3; index < pieces.size(); ++index) {
            verbs += (index > 3 ? u"," : u"") + pieces[index];
        }
        // Attributes in the order they are written.
        std::vector<std::pair<qm::wstring, qm::wstring>> attributes;
        ElementPtr handler = FindElementInCollection(handlers, u"path", extension, u"modules",
                                                     u"IsapiModule", false);
        const bool isNew = !handler;
        if (isNew) {
            handler = CreateNewElement(collection, u"add");
            attributes = {
                {u"name", extension}, {u"modules", u"IsapiModule"}, {u"resourceType", u"File"}};
        }
        attributes.emplace_back(u"path", extension);
        attributes.emplace_back(u"scriptProcessor", pieces.size() > 1 ? pieces[1] : u"");
        attributes.emplace_back(u"verb", verbs.empty() ? u"*" : verbs);
        for (const auto& [name, value] : attributes) {
            if (const int32_t code = PutPropertyValue(handler, name, value, false)) {
                return code;
            }
        }
        if (isNew) {
            if (const int32_t code = AddElement(collection, handler, 0)) {
                return code;
            }
        }
    }
    return 0;
}
