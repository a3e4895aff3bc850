// Applications and virtual directories of the current site: where a virtual directory belongs,
// creating applications, virtual directories and nested virtual directories, and removing them.

#include "apphost/config_calls.h"
#include "apphost/iis_functions_vista.h"
#include "support/status_codes.h"

using webrig::apphost::ThrowIfFailed;

namespace {

constexpr char16_t kApplication[] = u"application";
// "Already exists" for applications and virtual directories: a plain Win32 code.
constexpr int32_t kAlreadyExists = 183;

bool HasBackslash(const qm::wstring& text) {
    return text.find(u'\\') != qm::wstring::npos;
}

}  // namespace

int32_t CIisFunctionsVista::CreateVirtualDirVista(const ElementPtr& application,
                                                  const qm::wstring& physicalPath,
                                                  const qm::wstring& virtualPath) {
    LogMessage(qm::format(u"Creating virtual dir with path '%s' and physicalPath '%s.", virtualPath,
                          physicalPath));
    try {
        if (FindElementInCollection(application, u"path", virtualPath, u"", u"", false)) {
            LogMessage(u"Application already has this virtual dir");
            return 0;
        }
        const CollectionPtr directories = GetElementCollection(application);
        const ElementPtr directory = CreateNewElement(directories, u"virtualDirectory");
        if (const int32_t code = PutPropertyValue(directory, u"path", virtualPath, true)) {
            return code;
        }
        if (const int32_t code =
                PutPropertyValue(directory, u"physicalPath", physicalPath, false)) {
            return code;
        }
        return AddElement(directories, directory, -1);
    } catch (...) {
        LogMessage(u"Exception caught in CreateVirtualDirVista!");
        return qm::status::create_virtual_dir_failed;
    }
}

CIisFunctionsVista::ElementPtr CIisFunctionsVista::FindParentApplication(
    qm::wstring& virtualPath, qm::wstring& containingPath) {
    const qm::wstring normalized = NormalizeVirtualPath(virtualPath);
    std::vector<qm::wstring> applications;
    if (const CollectionPtr collection = GetElementCollection(m_spSiteElement)) {
        uint32_t count = 0;
        ThrowIfFailed(collection->Count(count));
        for (uint32_t index = 0; index < count; ++index) {
            ElementPtr item;
            ThrowIfFailed(collection->Item(index, item));
            qm::wstring name;
            ThrowIfFailed(item->GetName(name));
            const PropertyPtr path =
                name == kApplication ? GetPropertyByName(item, u"path") : nullptr;
            qm::wstring text;
            if (path) {
                ThrowIfFailed(path->GetStringValue(text));
            }
            if (path && text != u"/") {
                // The slash keeps /shop from holding /shopping.
                applications.push_back(text + u"/");
            }
        }
    }
    // The last match in collection order wins.
    qm::wstring best;
    for (const qm::wstring& application : applications) {
        if (normalized.starts_with(application)) {
            best = application.substr(0, application.size() - 1);
        }
    }
    if (best.empty()) {
        containingPath = u"/";
        virtualPath = normalized.substr(1);
        return FindElementInCollection(m_spSiteElement, u"path", u"/", u"", u"", false);
    }
    containingPath = best;
    virtualPath = normalized.substr(best.size());
    return FindElementInCollection(m_spSiteElement, u"path", best, u"", u"", false);
}

int32_t CIisFunctionsVista::CreateVirtualDirectory(CIISWebsiteProp&, CIISVRootProp& vroot) {
    qm::wstring virtualPath = vroot.DisplayName;
    const qm::wstring& physicalPath = vroot.RootDir;
    LogMessage(qm::format(
        u"CreateVirtualDirectory: creating virtual directory '%s' ('%s') with physical path '%s'",
        virtualPath, u"", physicalPath));
    qm::wstring containingPath;
    const ElementPtr application = FindParentApplication(virtualPath, containingPath);
    if (!application) {
        LogMessage(u"Unable to find parent application container");
        return qm::hr::path_not_found;
    }
    if (FindElementInCollection(application, u"path", NormalizeVirtualPath(virtualPath), u"", u"",
                                false)) {
        return kAlreadyExists;
    }
    if (const int32_t code = CreateVirtualDirVista(application, physicalPath, virtualPath);
        code < 0) {
        return code;
    }
    if (const int32_t code = CommitChanges(); code < 0) {
        return code;
    }
    m_sParentAppPath = containingPath;
    return 0;
}

int32_t CIisFunctionsVista::CreateApplication(CIISWebsiteProp&, CIISVRootProp* vroot) {
    if (vroot == nullptr) {
        return qm::hr::invalid_arg;
    }
    const qm::wstring& appPath = vroot->DisplayName;
    const ElementPtr existing = FindElementInCollection(
        m_spSiteElement, u"path", NormalizeVirtualPath(appPath), u"", u"", false);
    if (appPath.empty()) {
        LogMessage(qm::format(
            u"Application %s has no application name. No virtual directories/websites associated "
            u"with this vroot will be installed.",
            vroot->DisplayName));
    }
    if (existing) {
        return kAlreadyExists;
    }
    const CollectionPtr applications = GetElementCollection(m_spSiteElement);
    const ElementPtr application = CreateNewElement(applications, kApplication);
    if (const int32_t code = PutPropertyValue(application, u"path", appPath, true)) {
        return code;
    }
    if (!vroot->AppPool.empty()) {
        if (const int32_t code =
                PutPropertyValue(application, u"applicationPool", vroot->AppPool, false)) {
            return code;
        }
    }
    if (const int32_t code = CreateVirtualDirVista(application, vroot->RootDir, u"")) {
        return code;
    }
    if (const int32_t code = AddElement(applications, application, -1)) {
        return code;
    }
    if (const int32_t code = CommitChanges()) {
        return code;
    }
    if (vroot->ItemType == 2) {
        m_sParentAppPath = appPath;
    }
    return 0;
}

int32_t CIisFunctionsVista::AppCreate(CIISWebsiteProp& website, CIISVRootProp* vroot) {
    // Without a virtual directory: the root application of a new website.
    const qm::wstring appPath = vroot != nullptr ? vroot->AppName : qm::wstring();
    const qm::wstring name = vroot != nullptr ? vroot->DisplayName : qm::wstring();
    const qm::wstring& physicalPath = vroot != nullptr ? vroot->RootDir : website.RootDir;
    const qm::wstring& pool = vroot != nullptr ? vroot->AppPool : website.AppPool;
    const ElementPtr existing =
        vroot != nullptr ? FindElementInCollection(m_spSiteElement, u"path",
                                                   NormalizeVirtualPath(appPath), u"", u"", false)
                         : nullptr;
    if (HasBackslash(name)) {
        return CreateNestedVirtualDirectory(physicalPath, name);
    }
    if (appPath.empty()) {
        LogMessage(qm::format(
            u"Virtual directory %s has no application name. No virtual directories/websites "
            u"associated with this vroot will be installed.",
            name));
    }
    if (existing) {
        return kAlreadyExists;
    }
    const CollectionPtr applications = GetElementCollection(m_spSiteElement);
    const ElementPtr application = CreateNewElement(applications, kApplication);
    if (const int32_t code = PutPropertyValue(application, u"path", appPath, true)) {
        return code;
    }
    if (!pool.empty()) {
        if (const int32_t code = PutPropertyValue(application, u"applicationPool", pool, false)) {
            return code;
        }
    }
    if (const int32_t code = CreateVirtualDirVista(application, physicalPath, u"")) {
        return code;
    }
    // The virtual directory is also a directory of its own application, on the same folder.
    if (vroot != nullptr) {
        if (const int32_t code = CreateVirtualDirVista(application, physicalPath, name)) {
            return code;
        }
    }
    if (const int32_t code = AddElement(applications, application, -1)) {
        return code;
    }
    // A new website's root application is committed with the website.
    if (vroot != nullptr) {
        if (const int32_t code = CommitChanges()) {
            return code;
        }
    }
    return 0;
}

int32_t CIisFunctionsVista::CreateNestedVirtualDirectory(const qm::wstring& physicalPath,
                                                         const qm::wstring& nestedPath) {
    const qm::wstring parentPath =
        NormalizeVirtualPath(nestedPath.substr(0, nestedPath.rfind(u'\\')));
    LogMessage(u"Searching for parent virtual directory with the following path: " + parentPath);
    if (const CollectionPtr collection = GetElementCollection(m_spSiteElement)) {
        uint32_t count = 0;
        ThrowIfFailed(collection->Count(count));
        for (uint32_t index = 0; index < count; ++index) {
            ElementPtr item;
            ThrowIfFailed(collection->Item(index, item));
            qm::wstring name;
            ThrowIfFailed(item->GetName(name));
            if (name != kApplication) {
                LogMessage(u"The following is not an application element: " + name);
                continue;
            }
            if (!FindElementInCollection(item, u"path", parentPath, u"", u"", false)) {
                continue;
            }
            if (const int32_t code = CreateVirtualDirVista(item, physicalPath, nestedPath)) {
                return code;
            }
            qm::wstring applicationPath;
            if (const PropertyPtr path = GetPropertyByName(item, u"path")) {
                ThrowIfFailed(path->GetStringValue(applicationPath));
            }
            m_sParentAppPath = applicationPath;
            return CommitChanges();
        }
    }
    return qm::hr::path_not_found;
}

int32_t CIisFunctionsVista::RemoveApplication(CIISWebsiteProp& website, CIISVRootProp& vroot) {
    return RemoveApplicationAt(website, vroot);
}

int32_t CIisFunctionsVista::RemoveLegacyApplication(CIISWebsiteProp& website,
                                                    CIISVRootProp& vroot) {
    LogMessage(u"RemoveLegacyApplication");
    return RemoveApplicationAt(website, vroot);
}

int32_t CIisFunctionsVista::RemoveApplicationAt(CIISWebsiteProp& website, CIISVRootProp& vroot) {
    if (!m_spSiteElement) {
        LogMessage(u"no site found, nothing to remove");
        return 0;
    }
    const qm::wstring path =
        NormalizeVirtualPath(vroot.ItemType == 2 ? vroot.DisplayName : vroot.AppName);
    if (path == u"/") {
        LogMessage(qm::format(
            u"The application provided for the virtual directory %s resolves to the root "
            u"application path '/'. Removing this will break the default website if this vroot "
            u"was installed there. Skipping removal of application.",
            vroot.DisplayName));
    } else {
        LogMessage(u"RemoveApplication: removing " + path);
        FindElementInCollection(m_spSiteElement, u"path", path, u"", u"", true);
    }
    RemoveApplicationLeftovers(website, &vroot);
    const int32_t result = CommitChanges();
    LogMessage(FindElementInCollection(m_spSiteElement, u"path", path, u"", u"", false)
                   ? u"Application still appears to exist, it was not removed!"
                   : u"Application does not exist, so it has been removed.");
    return result;
}

int32_t CIisFunctionsVista::RemoveVirtualDirectory(CIISWebsiteProp& website, CIISVRootProp& vroot) {
    LogMessage(
        qm::format(u"RemoveVirtualDirectory: removing virtual directory '%s'", vroot.DisplayName));
    qm::wstring path = vroot.DisplayName;
    ElementPtr application;
    if (HasBackslash(path)) {
        qm::wstring containingPath;
        application = FindParentApplication(path, containingPath);
    } else {
        application = FindElementInCollection(m_spSiteElement, u"path", u"/", u"", u"", false);
    }
    if (!application) {
        LogMessage(
            u"Note: Unable to find containing application for virtual directory, ignoring...");
        return 0;
    }
    RemoveApplicationLeftovers(website, &vroot);
    FindElementInCollection(application, u"path", NormalizeVirtualPath(path), u"", u"", true);
    return CommitChanges();
}

bool CIisFunctionsVista::CanDeletePath() {
    if (!m_spSiteElement) {
        LogMessage(u"no site found, nothing to remove");
        return false;
    }
    try {
        const CollectionPtr collection = GetElementCollection(m_spSiteElement);
        if (!collection) {
            LogMessage(u"No collection found, nothing to remove");
            return false;
        }
        uint32_t count = 0;
        ThrowIfFailed(collection->Count(count));
        for (uint32_t index = 0; index < count; ++index) {
            ElementPtr item;
            ThrowIfFailed(collection->Item(index, item));
            qm::wstring name;
            ThrowIfFailed(item->GetName(name));
            if (name != kApplication) {
                continue;
            }
            const PropertyPtr path = GetPropertyByName(item, u"path");
            qm::wstring text;
            if (path) {
                ThrowIfFailed(path->GetStringValue(text));
                if (text == NormalizeVirtualPath(u"")) {
                    continue;
                }
            }
            LogMessage(
                u"Site still appears to contain application elements so do not remove. "
                u"Application path found: " +
                text);
            return false;
        }
        LogMessage(u"No applications found in the site, safe to remove");
        return true;
    } catch (...) {
        LogMessage(
            u"Exception caught in CanDeletePath function, since there was a problem, do not "
            u"delete.");
        return false;
    }
}
