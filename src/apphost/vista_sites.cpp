// Sites: entries "site" of the sites section of the main configuration file, with their
// bindings and root application; finding them by id or port, numbering and removing them.

#include <algorithm>

#include "apphost/config_calls.h"
#include "apphost/iis_functions_vista.h"
#include "support/case_insensitive.h"

using webrig::apphost::ThrowIfFailed;

namespace {

constexpr char16_t kSitesSection[] = u"system.applicationHost/sites";

}  // namespace

int32_t CIisFunctionsVista::AddWebSiteFunction(CIISWebsiteProp& website) {
    if (GetCommitPath() != kAppHostPath) {
        PutCommitPath(kAppHostPath);
    }
    const ElementPtr sites = GetAdminSection(kSitesSection, kAppHostPath);
    const CollectionPtr siteCollection = GetElementCollection(sites);
    m_spSiteElement = CreateNewElement(siteCollection, u"site");
    if (const int32_t code =
            PutPropertyValue(m_spSiteElement, u"name", website.DisplayName, false)) {
        return code;
    }
    if (const int32_t code = PutPropertyValue(m_spSiteElement, u"id", website.SiteNumber, false)) {
        return code;
    }
    const CollectionPtr bindings = GetBindingsCollection(m_spSiteElement);
    const ElementPtr binding = CreateNewElement(bindings, u"binding");
    if (const int32_t code = PutPropertyValue(binding, u"bindingInformation",
                                              GetBindingInformationString(website), false)) {
        return code;
    }
    if (const int32_t code = PutPropertyValue(
            binding, u"protocol", website.SSLCertPath.empty() ? u"http" : u"https", false)) {
        return code;
    }
    if (const int32_t code = AddElement(bindings, binding, -1)) {
        return code;
    }
    if (const int32_t code = AppCreate(website, nullptr)) {
        return code;
    }
    if (const int32_t code = AddElement(siteCollection, m_spSiteElement, -1)) {
        return code;
    }
    // A component's website is committed at once; any other stays pending, and current, for the
    // operations that follow in this session.
    if (!website.Component.empty()) {
        m_spSiteElement.reset();
        return CommitChanges();
    }
    return 0;
}

qm::wstring CIisFunctionsVista::GetBindingInformationString(const CIISWebsiteProp& website) {
    const qm::wstring& address = website.IPAddress.empty() ? u"*" : website.IPAddress;
    const qm::wstring text = qm::format(u"%s:%s:%s", address, website.Port, website.HostHeaderName);
    LogMessage(u"GetBindingInformationString is returning the following string: " + text);
    return text;
}

CIisFunctionsVista::CollectionPtr CIisFunctionsVista::GetBindingsCollection(
    const ElementPtr& site) {
    LogMessage(u"GetBindingsCollection");
    return GetElementCollection(GetSubElement(site, u"bindings"));
}

void CIisFunctionsVista::RememberSite(const CIISWebsiteProp& website) {
    m_sSitePort = website.Port;
    m_sSiteIPAddress = website.IPAddress;
    m_sSiteName.clear();
    if (m_spSiteElement) {
        if (const PropertyPtr name = GetPropertyByName(m_spSiteElement, u"name")) {
            ThrowIfFailed(name->GetStringValue(m_sSiteName));
        }
    }
}

bool CIisFunctionsVista::FindSite(CIISWebsiteProp& website,
                                  const std::function<bool(const ElementPtr&)>& matches) {
    m_spSiteElement.reset();
    if (!website.Component.empty()) {
        PutCommitPath(kAppHostPath);
    }
    const ElementPtr sites = GetAdminSection(kSitesSection, kAppHostPath);
    if (!sites) {
        LogMessage(u"No sites section found");
        return false;
    }
    CollectionPtr collection;
    if (qm::failed(sites->GetCollection(collection)) || !collection) {
        LogMessage(u"No sites collection found");
        return false;
    }
    uint32_t count = 0;
    ThrowIfFailed(collection->Count(count));
    for (uint32_t index = 0; index < count && !m_spSiteElement; ++index) {
        ElementPtr site;
        ThrowIfFailed(collection->Item(index, site));
        if (matches(site)) {
            m_spSiteElement = site;
        }
    }
    RememberSite(website);
    return m_spSiteElement != nullptr;
}

bool CIisFunctionsVista::FindSiteWithId(CIISWebsiteProp& website) {
    try {
        return FindSite(website, [&](const ElementPtr& site) {
            qm::wstring id;
            if (const PropertyPtr property = GetPropertyByName(site, u"id")) {
                ThrowIfFailed(property->GetStringValue(id));
            }
            return id == website.SiteNumber;
        });
    } catch (...) {
        LogMessage(u"Exception caught while searching for site with this id number");
        return false;
    }
}

bool CIisFunctionsVista::FindSiteWithPort(CIISWebsiteProp& website) {
    try {
        return FindSite(website, [&](const ElementPtr& site) {
            // Port "0" takes the first site.
            if (website.Port != u"0" && !SiteHasPort(site, website.Port)) {
                return false;
            }
            qm::wstring id;
            if (const PropertyPtr property = GetPropertyByName(site, u"id")) {
                ThrowIfFailed(property->GetStringValue(id));
            }
            website.SetSiteNumber(id);
            return true;
        });
    } catch (...) {
        LogMessage(u"Exception caught while searching for site with this port number");
        return false;
    }
}

bool CIisFunctionsVista::SiteHasPort(const ElementPtr& site, const qm::wstring& port) {
    LogMessage(u"Check if site has port number: " + port);
    const CollectionPtr bindings = GetBindingsCollection(site);
    if (!bindings) {
        return false;
    }
    LogMessage(u"Searching for binding element");
    uint32_t count = 0;
    ThrowIfFailed(bindings->Count(count));
    for (uint32_t index = 0; index < count; ++index) {
        ElementPtr binding;
        ThrowIfFailed(bindings->Item(index, binding));
        qm::wstring information;
        if (const PropertyPtr property = GetPropertyByName(binding, u"bindingInformation")) {
            ThrowIfFailed(property->GetStringValue(information));
        }
        LogMessage(qm::format(u"Found site with a boundingInformation of '%s'.", information));
        if (GetPortFromBindingInfo(information) == port) {
            LogMessage(u"Found site with the same port number.");
            return true;
        }
    }
    LogMessage(u"This site does not have the same port number.");
    return false;
}

qm::wstring CIisFunctionsVista::GetNextWebsiteId() {
    LogMessage(u"GetNextWebsiteId");
    const ElementPtr sites = GetAdminSection(kSitesSection, kAppHostPath);
    if (!sites) {
        LogMessage(u"Sites section not found.");
        return u"1";
    }
    CollectionPtr collection;
    if (qm::failed(sites->GetCollection(collection)) || !collection) {
        LogMessage(u"Not sites collection found.");
        return u"1";
    }
    uint64_t highest = 1;
    uint32_t count = 0;
    ThrowIfFailed(collection->Count(count));
    for (uint32_t index = 0; index < count; ++index) {
        ElementPtr site;
        ThrowIfFailed(collection->Item(index, site));
        qm::wstring name;
        qm::wstring id;
        if (const PropertyPtr property = GetPropertyByName(site, u"name")) {
            ThrowIfFailed(property->GetStringValue(name));
        }
        if (const PropertyPtr property = GetPropertyByName(site, u"id")) {
            ThrowIfFailed(property->GetStringValue(id));
        }
        LogMessage(qm::format(u"Found site '%s' with id '%s'", name, id));
        // Text that is not a number counts as 0.
        uint64_t number = 0;
        for (const char16_t c : id) {
            if (c < u'0' || c > u'9' || number > UINT32_MAX) {
                number = 0;
                break;
            }
            number = number * 10 + static_cast<uint64_t>(c - u'0');
        }
        highest = std::max(highest, number);
    }
    const qm::wstring next = qm::format(u"%u", highest + 1);
    LogMessage(u"Next site id is: " + next);
    return next;
}

void CIisFunctionsVista::GetNextWebsiteId(CIISWebsiteProp& website) {
    m_spSiteElement.reset();
    if (!website.Component.empty()) {
        PutCommitPath(kAppHostPath);
    }
    website.SetSiteNumber(GetNextWebsiteId());
    m_sSitePort = website.Port;
    m_sSiteIPAddress = website.IPAddress;
    m_sSiteName.clear();
}

int32_t CIisFunctionsVista::RemoveWebsite(CIISWebsiteProp& website) {
    if (!m_spSiteElement) {
        LogMessage(u"no site found, nothing to remove");
        return 0;
    }
    LogMessage(u"Website found. Attempting to delete the following site: " + website.DisplayName);
    if (!qm::iequals(m_sSiteName, website.DisplayName)) {
        LogMessage(qm::format(
            u"Display name '%s' is different from installed website name '%s', do not remove.",
            website.DisplayName, m_sSiteName));
        return 0;
    }
    FindElementInCollection(GetAdminSection(kSitesSection, kAppHostPath), u"name",
                            website.DisplayName, u"", u"", true);
    RemoveApplicationLeftovers(website, nullptr);
    return CommitChanges();
}
