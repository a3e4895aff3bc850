// Creation of one application pool, website or virtual directory: created or found, given its
// settings, marked as created by this run, and recorded with the host for its later removal.

#include "controller/iis_vroot_controller.h"
#include "settings/uninstall_information.h"
#include "support/format.h"
#include "support/status_codes.h"

namespace {

// ActionTaken of an item this installation created.
constexpr int32_t kCreatedHere = 3;

// Item types of a virtual directory.
constexpr int32_t kApplication = 2;
constexpr int32_t kVirtualDirectory = 3;

// Remembers for the pool's removal that this installation created it.
void MarkPoolInstalled(webrig::platform::Registry& registry, const qm::wstring& productCode,
                       const qm::wstring& poolKey) {
    webrig::platform::ScopedRegKey key(registry);
    if (webrig::settings::OpenOrCreateUninstallInformationKey(registry, productCode, key) ==
        qm::win32::success) {
        registry.SetValue(key.get(), poolKey + u"_Installed", webrig::platform::RegValue::Dword(1));
    }
}

}  // namespace

int32_t CIISVRootController::CreateAppPool(CIISAppPoolProp& pool) {
    try {
        if (m_pPropertyBag->iisMajorVersion < 6) {
            return 0;
        }
        if (ProgressMessage(u"PROGMSG_IIS_CREATEAPPPOOL", pool.Name) == IIISEvent::kCancelled) {
            return qm::status::user_cancelled;
        }
        const int32_t created = CreateAppPoolFunction(pool);
        const bool existed = created == qm::status::app_pool_already_exists;
        if (created < 0 && !existed) {
            LogMessage(u"Error adding apppool key.");
            return created;
        }
        if (!existed || pool.OverwriteExisting != u"0") {
            if (const int32_t set = SetAppPoolProperties(pool); set != 0) {
                return set;
            }
        }
        if (existed) {
            LogMessage(u"Application pool already existed.");
        } else {
            LogMessage(u"This appears to be a new apppool.");
            pool.ActionTaken = kCreatedHere;
            MarkPoolInstalled(platform().registry(), m_pPropertyBag->productCode, pool.Key);
        }
        AppPoolCreated(pool.Name);
        return 0;
    } catch (...) {
        LogMessage(u"Exception caught in CreateAppPool function");
        return qm::status::app_pool_failed_or_element_missing;
    }
}

int32_t CIISVRootController::CreateWebSite(CIISWebsiteProp& website) {
    try {
        if (ProgressMessage(u"PROGMSG_IIS_CREATEWEBSITE", website.DisplayName) ==
            IIISEvent::kCancelled) {
            return qm::status::user_cancelled;
        }
        if (WebsiteExists(website)) {
            LogMessage(qm::format(u"Website %s already exists with port %s slot %s",
                                  website.DisplayName, website.Port, website.SiteNumber));
            return 0;
        }
        LogMessage(
            qm::format(u"Creating component based website; no existing website was found "
                       u"for %s, port %s, slot %s",
                       website.DisplayName, website.Port, website.SiteNumber));
        if (const int32_t added = AddWebSiteFunction(website); added != 0) {
            return added;
        }
        website.ActionTaken = kCreatedHere;
        WebSiteCreated(website.Key);
        LogMessage(u"Setting new website properties...");
        return SetWebSiteProperties(website);
    } catch (...) {
        LogMessage(u"Exception caught in CreateWebSite");
        return qm::status::create_website_failed;
    }
}

int32_t CIISVRootController::CreateVRoot(CIISVRootProp& vroot) {
    try {
        if (ProgressMessage(u"PROGMSG_IIS_CREATEVROOT", vroot.DisplayName) ==
            IIISEvent::kCancelled) {
            return qm::status::user_cancelled;
        }
        OpenKeyToWebsite(nullptr, nullptr, nullptr);
        CIISWebsiteProp* const website = ParentWebsiteOf(vroot);
        if (website == nullptr) {
            LogMessage(
                qm::format(u"Virtual directory '%s' names the website '%s', which the "
                           u"settings do not hold; it is not created.",
                           vroot.DisplayName, vroot.ParentSite));
            return qm::status::vroot_website_missing;
        }
        // A website of a component is created only by that component's website loop.
        bool websiteCreatedHere = false;
        if (!WebsiteExists(*website) && website->Component.empty()) {
            vroot.ActionTaken = kCreatedHere;
            if (const int32_t added = AddWebSiteFunction(*website); added != 0) {
                return added;
            }
            websiteCreatedHere = true;
        }
        LogMessage(
            qm::format(u"Creating item '%s' with virtual directory '%s', website '%s', "
                       u"and physical path: '%s'",
                       vroot.AppName, vroot.DisplayName, website->SiteNumber, vroot.RootDir));
        int32_t created = 0;
        if (vroot.ItemType == kApplication) {
            created = CreateApplication(*website, &vroot);
        } else if (vroot.ItemType == kVirtualDirectory) {
            created = CreateVirtualDirectory(*website, vroot);
        } else {
            created = AppCreate(*website, &vroot);
        }
        if (created == qm::status::item_already_exists) {
            LogMessage(u"Application already exists");
            return 0;
        }
        if (created < 0) {
            return created;
        }
        vroot.ActionTaken = kCreatedHere;
        if (m_pEventSink != nullptr) {
            m_pEventSink->LogMessage(
                qm::format(u"PutActionTaken for Vroot '%s': %d", vroot.DisplayName, kCreatedHere));
        }
        LogMessage(u"Setting properties...");
        if (websiteCreatedHere) {
            if (const int32_t set = SetWebSiteProperties(*website); set != 0) {
                return set;
            }
        }
        if (const int32_t set = SetVRootProperties(vroot); set != 0) {
            return set;
        }
        VRootCreated(vroot.Key);
        return 0;
    } catch (...) {
        LogMessage(u"Exception caught in CreateVRoot function");
        return qm::status::create_vroot_or_write_property_failed;
    }
}
