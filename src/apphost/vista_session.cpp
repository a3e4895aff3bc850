// The administration session of the IIS 7+ backend: the manager, its commit path, sections,
// commits, and the probe for the IIS 6 compatibility layer.

#include <algorithm>

#include "apphost/config_calls.h"
#include "apphost/iis_functions_vista.h"

using webrig::apphost::Decimal;
using webrig::apphost::JoinPath;

CIisFunctionsVista::CIisFunctionsVista(webrig::platform::Platform& platform)
    : m_platform(platform) {
    qm::wstring systemDirectory = platform.system().SystemDirectory();
    if (systemDirectory.size() >= webrig::apphost::kMaxPath) {
        systemDirectory.clear();
    }
    m_sConfigDirectory = JoinPath(systemDirectory, u"inetsrv\\config\\");
    m_sPhysicalPath = m_sConfigDirectory;
}

CIisFunctionsVista::~CIisFunctionsVista() = default;

CIisFunctionsVista::ManagerPtr CIisFunctionsVista::GetAdminManager() {
    if (!m_spAppHostAdminManager) {
        std::unique_ptr<webrig::platform::AdminManager> created;
        m_managerCreation = m_platform.iisConfiguration().CreateAdminManager(created);
        if (qm::succeeded(m_managerCreation) && created) {
            m_spAppHostAdminManager = std::move(created);
        } else {
            if (qm::succeeded(m_managerCreation)) {
                m_managerCreation = qm::hr::pointer;
            }
            LogMessage(u"m_spAppHostAdminManager NULL, CoCreateInstance returned: " +
                       Decimal(m_managerCreation));
        }
    }
    return m_spAppHostAdminManager;
}

qm::wstring CIisFunctionsVista::GetCommitPath() {
    qm::wstring path;
    const ManagerPtr manager = GetAdminManager();
    const qm::hresult hr = manager ? manager->GetCommitPath(path) : ManagerFailure();
    if (qm::failed(hr)) {
        LogMessage(u"get_CommitPath failed");
        return {};
    }
    return path;
}

int32_t CIisFunctionsVista::PutCommitPath(const qm::wstring& path) {
    LogMessage(
        qm::format(u"Changing CommitPath from '%s' to the following: %s", GetCommitPath(), path));
    const ManagerPtr manager = GetAdminManager();
    const qm::hresult hr = manager ? manager->PutCommitPath(path) : ManagerFailure();
    if (qm::failed(hr)) {
        LogMessage(qm::format(u"put_CommitPath for path '%s' failed with the following HRESULT: %d",
                              path, hr));
    }
    return hr;
}

int32_t CIisFunctionsVista::ChangeCommitPath(qm::wstring& path) {
    if (path == GetCommitPath()) {
        return 0;
    }
    std::replace(path.begin(), path.end(), u'\\', u'/');
    return PutCommitPath(path);
}

int32_t CIisFunctionsVista::SetCommitPath(const qm::wstring& siteName, const qm::wstring& appPath) {
    LogMessage(u"SetCommitPath for website '" + siteName + u"' and app '" + appPath + u"'");
    qm::wstring path = kAppHostPath;
    if (!siteName.empty()) {
        path += u'/' + siteName;
    }
    if (!appPath.empty()) {
        if (appPath.front() != u'/') {
            path += u'/';
        }
        path += appPath;
    }
    return ChangeCommitPath(path);
}

int32_t CIisFunctionsVista::OpenKeyToWebsite(CIISWebsiteProp* website, MetadataHandle*,
                                             CIISVRootProp* vroot) {
    if (website == nullptr) {
        m_sPhysicalPath = m_sConfigDirectory;
        return SetCommitPath(u"", u"");
    }
    const qm::wstring siteName = m_sSiteName.empty() ? website->DisplayName : m_sSiteName;
    qm::wstring appPath;
    if (vroot != nullptr) {
        m_sPhysicalPath = vroot->RootDir;
        if (vroot->DisplayName.find(u'\\') != qm::wstring::npos) {
            LogMessage(u"Child virtual directory.");
            if (vroot->ItemType == 2 || vroot->ItemType == 3) {
                appPath = NormalizeVirtualPath(vroot->DisplayName);
            } else {
                appPath = m_sParentAppPath + u"/" + vroot->DisplayName;
            }
        } else {
            appPath = vroot->AppName.empty() ? vroot->DisplayName : vroot->AppName;
        }
    } else {
        m_sPhysicalPath = website->RootDir;
    }
    return SetCommitPath(siteName, appPath);
}

CIisFunctionsVista::ElementPtr CIisFunctionsVista::GetAdminSection(const qm::wstring& sectionName,
                                                                   const qm::wstring& path,
                                                                   bool retried) {
    const qm::wstring oldCommitPath = GetCommitPath();
    LogMessage(qm::format(u"GetAdminSection for section '%s' and path '%s' and commitpath '%s'.",
                          sectionName, path, oldCommitPath));
    m_sSectionName = sectionName;
    ElementPtr section;
    const ManagerPtr manager = GetAdminManager();
    qm::hresult hr =
        manager ? manager->GetAdminSection(sectionName, path, section) : ManagerFailure();
    if (qm::succeeded(hr) && section) {
        return section;
    }
    if (qm::succeeded(hr)) {
        hr = qm::hr::pointer;
    }
    qm::wstring text = u"GetAdminSection returned: " + Decimal(hr);
    if (hr == qm::hr::invalid_data) {
        text += u". The data is invalid.";
    } else if (hr == qm::hr::file_not_found) {
        text += u". The system cannot find the file specified.";
    }
    LogMessage(text);
    if (UseMainConfigurationFile(section, hr) < 0) {
        return nullptr;
    }
    // The same section through a fresh manager in the main configuration file, at the location
    // that was the commit path.
    return retried ? nullptr : GetAdminSection(sectionName, oldCommitPath, true);
}

int32_t CIisFunctionsVista::UseMainConfigurationFile(ElementPtr& element, int32_t failure) {
    if (GetCommitPath() == kAppHostPath) {
        LogMessage(u"Error: already using the main configuration file.");
        return failure;
    }
    element.reset();
    m_spAppHostAdminManager.reset();
    return 0;
}

int32_t CIisFunctionsVista::CommitChanges() {
    const qm::wstring commitPath = GetCommitPath();
    const qm::wstring& reported = commitPath == kAppHostPath ? m_sConfigDirectory : m_sPhysicalPath;
    LogMessage(
        qm::format(u"CommitChanges for path '%s' and physical path '%s'.", commitPath, reported));
    const ManagerPtr manager = GetAdminManager();
    const qm::hresult hr = manager ? manager->CommitChanges() : ManagerFailure();
    if (qm::failed(hr)) {
        qm::wstring text =
            qm::format(u"CommitChanges failed with the following HRESULT: '%d'. ", hr);
        if (hr == qm::hr::path_not_found || hr == qm::hr::file_not_found) {
            text += u"The system cannot find the path specified. ";
        } else if (hr == qm::hr::not_supported) {
            text += u"The request is not supported. ";
        }
        if (!m_platform.files().PathExists(m_sPhysicalPath)) {
            text += u"Physical path not found. ";
        }
        LogMessage(text);
    }
    // Every commit ends the session: the next operation starts at the main configuration file.
    m_spAppHostAdminManager.reset();
    if (hr == 0) {
        return 0;
    }
    if (!m_bValueChanged) {
        LogMessage(
            u"put_Value determined that property is not actually changing, so ignore "
            u"CommitChanges failure.");
        m_bValueChanged = true;
        return 0;
    }
    if (hr == qm::hr::already_exists) {
        LogMessage(u"Ignoring error because it indicates that the item already exists.");
        return 0;
    }
    return hr;
}

int32_t CIisFunctionsVista::InitIISObject() {
    LogMessage(u"InitIISObject");
    bool supported = false;
    std::unique_ptr<webrig::platform::AdminBaseClassFactory> factory;
    qm::hresult hr = m_platform.comClasses().GetAdminBaseClassFactory(factory);
    if (qm::failed(hr) || !factory) {
        LogMessage(u"CoGetClassObject(GETAdminBaseCLSID(TRUE) error: " + Decimal(hr));
    } else {
        hr = factory->CreateAdminBase();
        if (qm::failed(hr)) {
            LogMessage(u"CreateInstance IID_IMSAdminBase error: " + Decimal(hr));
        } else {
            supported = true;
        }
    }
    LogMessage(supported ? u"Legacy objects are supported" : u"Legacy objects not supported");
    return 0;
}
