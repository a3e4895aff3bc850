// How a website of the settings is identified in IIS: by site number, by port, or by a new site
// number that is remembered in the registry for later runs of the same product.

#include <algorithm>

#include "controller/iis_vroot_controller.h"
#include "settings/uninstall_information.h"
#include "support/format.h"

bool CIISVRootController::WebsiteExists(CIISWebsiteProp& website) {
    LogMessage(
        qm::format(u"Quillmark project contains a website with name '%s', site number "
                   u"'%s', and port '%s'. Checking if it exists...",
                   website.DisplayName, website.SiteNumber, website.Port));
    bool exists = false;
    if (website.SiteNumber == kNewSiteNumberMarker) {
        AllocateSiteNumber(website);
    } else if (website.SiteNumber != u"0" && website.Port != u"0") {
        exists = FindSiteWithId(website);
    } else {
        exists = FindSiteWithPort(website);
    }
    const qm::wstring verdict = exists ? u"Website exists." : u"Website does not exist.";
    LogMessage(verdict);
    const qm::wstring basePath = GetBasePath(website, {});
    LogMessage(qm::format(
        u"%s Additional info: Site number '%s', Port '%s', sBasePath '%s', DisplayName '%s'",
        verdict, website.SiteNumber, website.Port, basePath, website.DisplayName));
    return exists;
}

void CIISVRootController::AllocateSiteNumber(CIISWebsiteProp& website) {
    LogMessage(qm::wstring(u"Site number is ") + kNewSiteNumberMarker +
               u". Finding next available site number.");
    GetNextWebsiteId(website);

    qm::wstring productCode = m_pPropertyBag != nullptr ? m_pPropertyBag->productCode : u"";
    if (productCode.empty()) {
        productCode = webrig::settings::kFallbackProductCode;
        LogMessage(u"Product code is empty, using random product code: " + productCode);
    }
    qm::wstring valueName = website.SiteNumberProperty;
    if (valueName.empty()) {
        LogMessage(
            qm::format(u"Property not found in the registry. If using %s, the site number "
                       u"should be using a property. Otherwise the results may be "
                       u"unexpected.",
                       kNewSiteNumberMarker));
        valueName = kNewSiteNumberMarker;
    }
    // A property reference "[SITE_NO]" names the value SITE_NO.
    std::erase(valueName, u'[');
    std::erase(valueName, u']');
    // A failed write only costs later runs the number; this run goes on with it.
    webrig::settings::WriteSiteNumberValue(platform().registry(), productCode, valueName,
                                           website.SiteNumber);
    LogMessage(qm::format(u"Changing value of '%s' in registry to '%s' for future use.", valueName,
                          website.SiteNumber));
}

qm::wstring CIISVRootController::GetPortFromBindingInfo(const qm::wstring& binding) {
    LogMessage(u"GetPortFromBindingInfo: " + binding);
    // "address:port:host", "address:port" or a bare port.
    const size_t first = binding.find(u':');
    if (first == qm::wstring::npos) {
        return binding;
    }
    const qm::wstring rest = binding.substr(first + 1);
    const size_t last = rest.rfind(u':');
    return last == qm::wstring::npos ? rest : rest.substr(0, last);
}

qm::wstring CIISVRootController::GetBasePath(const CIISWebsiteProp& website,
                                             const qm::wstring& subPath) {
    constexpr char16_t kRoot[] = u"Root";
    qm::wstring basePath;
    try {
        if (website.SiteNumber.empty()) {
            LogMessage(u"WEBRIG Warning: site number is currently empty.");
        }
        basePath = qm::format(u"%s%s/%s", u"/LM/W3SVC/", website.SiteNumber, kRoot);
        if (!subPath.empty()) {
            basePath += u'/';
            basePath += subPath;
        }
    } catch (...) {
        LogMessage(qm::wstring(u"Exception in GetBasePath, svRoot = ") + kRoot);
    }
    return basePath;
}
