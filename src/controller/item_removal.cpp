// Removal of one item by name, the same during uninstall and rollback. Guards end a removal with
// 0 after their log line: the default pool and website, pools this product did not create,
// websites the user did not choose to delete or that still hold content.

#include "controller/iis_vroot_controller.h"
#include "settings/uninstall_information.h"
#include "support/case_insensitive.h"
#include "support/format.h"
#include "support/status_codes.h"

namespace {

namespace key_access = webrig::platform::key_access;

constexpr char16_t kInstalledSuffix[] = u"_Installed";

// Reads and deletes the "_Installed" marker of a pool; the product's key goes with its last
// value. A missing key or value reads as 0.
uint32_t TakeInstalledMarker(webrig::platform::Registry& registry, const qm::wstring& productCode,
                             const qm::wstring& poolKey) {
    const qm::wstring path = webrig::settings::UninstallInfoKeyPath(productCode);
    webrig::platform::ScopedRegKey key(registry);
    if (registry.OpenKey(webrig::platform::kLocalMachine, path,
                         key_access::read | key_access::set_value,
                         key.receive()) != qm::win32::success) {
        return 0;
    }
    const qm::wstring name = poolKey + kInstalledSuffix;
    webrig::platform::RegValue value;
    uint32_t marker = 0;
    if (registry.QueryValue(key.get(), name, value) == qm::win32::success) {
        marker = value.AsDword().value_or(0);
    }
    registry.DeleteValue(key.get(), name);
    qm::wstring entry;
    webrig::platform::RegValue ignored;
    const bool empty =
        registry.EnumValue(key.get(), 0, entry, ignored) == qm::win32::no_more_items &&
        registry.EnumKey(key.get(), 0, entry) == qm::win32::no_more_items;
    key.reset();
    if (empty) {
        registry.DeleteKey(webrig::platform::kLocalMachine, path);
    }
    return marker;
}

// Runs `work`; an exception is logged with `message` and answers `code`.
template <class Work>
int32_t Guarded(CIISVRootController& controller, const char16_t* message, int32_t code,
                Work&& work) {
    try {
        return work();
    } catch (...) {
        controller.LogMessage(message);
        return code;
    }
}

}  // namespace

int32_t CIISVRootController::RemoveVRootNamed(const qm::wstring& name) {
    return Guarded(*this, u"Exception caught in RemoveVRoot function",
                   qm::status::vroot_lookup_failed, [&] {
                       LogMessage(u"RemoveVRoot stringx for " + name);
                       for (auto& [componentName, component] : m_pPropertyBag->components) {
                           const auto found = component->vroots.find(name);
                           if (found != component->vroots.end()) {
                               return RemoveVRoot(*found->second);
                           }
                       }
                       return 0;
                   });
}

int32_t CIISVRootController::RemoveCompWebSiteNamed(const qm::wstring& name) {
    return Guarded(*this, u"Exception caught in RemoveCompWebSite",
                   qm::status::website_lookup_failed, [&] {
                       LogMessage(u"RemoveCompWebSite for " + name);
                       for (auto& [componentName, component] : m_pPropertyBag->components) {
                           const auto found = component->componentWebsites.find(name);
                           if (found != component->componentWebsites.end()) {
                               return RemoveCompWebSite(*found->second);
                           }
                       }
                       return 0;
                   });
}

int32_t CIISVRootController::RemoveAppPoolNamed(const qm::wstring& name) {
    return Guarded(*this, u"Exception caught in RemoveAppPool function",
                   qm::status::app_pool_lookup_failed, [&] {
                       LogMessage(u"RemoveAppPool for " + name);
                       if (m_pPropertyBag->iisMajorVersion <= 5) {
                           return 0;
                       }
                       for (auto& [componentName, component] : m_pPropertyBag->components) {
                           for (auto& [key, pool] : component->appPools) {
                               if (pool->Name == name) {
                                   return RemoveAppPool(*pool);
                               }
                           }
                       }
                       return 0;
                   });
}

int32_t CIISVRootController::RemoveWebServiceExtensionNamed(const qm::wstring& description) {
    return Guarded(*this, u"Exception caught in RemoveWebServiceExtension function",
                   qm::status::extension_lookup_failed, [&] {
                       LogMessage(u"RemoveWebServiceExtension for " + description);
                       if (m_pPropertyBag->iisMajorVersion < 6) {
                           return 0;
                       }
                       for (auto& [componentName, component] : m_pPropertyBag->components) {
                           for (auto& [key, extension] : component->webServiceExtensions) {
                               if (extension->Description == description) {
                                   return RemoveWebServiceExtension(*extension);
                               }
                           }
                       }
                       return 0;
                   });
}

int32_t CIISVRootController::RemoveAppPool(CIISAppPoolProp& pool) {
    return Guarded(
        *this, u"Exception caught in RemoveAppPool function", qm::status::remove_app_pool_failed,
        [&] {
            if (m_pPropertyBag->iisMajorVersion < 6) {
                return 0;
            }
            LogMessage(u"RemoveAppPool for " + pool.Name);
            if (ProgressMessage(u"PROGMSG_IIS_REMOVEAPPPOOL", pool.Name) == IIISEvent::kCancelled) {
                return qm::status::user_cancelled;
            }
            if (qm::iequals(pool.Name, u"DefaultAppPool")) {
                LogMessage(u"DefaultAppPool found.  Do not remove the DefaultAppPool.");
                return 0;
            }
            const uint32_t marker =
                TakeInstalledMarker(platform().registry(), m_pPropertyBag->productCode, pool.Key);
            if (pool.OverwriteExisting != u"0" || marker != 0) {
                return RemoveAppPoolFunction(pool);
            }
            return 0;  // there before the installation, and not to be overwritten
        });
}

int32_t CIISVRootController::RemoveVRoot(CIISVRootProp& vroot) {
    return Guarded(
        *this, u"Exception caught in RemoveVRoot function", qm::status::remove_vroot_failed, [&] {
            LogMessage(u"RemoveVRoot for " + vroot.DisplayName);
            if (ProgressMessage(u"PROGMSG_IIS_REMOVEVROOT", vroot.DisplayName) ==
                IIISEvent::kCancelled) {
                return qm::status::user_cancelled;
            }
            CIISWebsiteProp* const website = ParentWebsiteOf(vroot);
            if (website == nullptr) {
                LogMessage(
                    qm::format(u"Virtual directory '%s' names the website '%s', "
                               u"which the settings do not hold; it is not "
                               u"removed.",
                               vroot.DisplayName, vroot.ParentSite));
                return qm::status::vroot_website_missing;
            }
            if (!WebsiteExists(*website)) {
                LogMessage(u"Found no website at the path, so there is nothing to remove.");
                return 0;
            }
            if (CompareDirValues(*website, vroot) != 0) {
                LogMessage(vroot.DisplayName +
                           u" : VRoot is not deleted as the VRoot's associated "
                           u"directory is not matched with the target directory in "
                           u"the package");
                return 0;
            }
            int32_t removed = 0;
            if (vroot.ItemType == 2) {
                removed = RemoveApplication(*website, vroot);
            } else if (vroot.ItemType == 3) {
                removed = RemoveVirtualDirectory(*website, vroot);
            } else {
                removed = RemoveLegacyApplication(*website, vroot);
            }
            if (removed < 0) {
                return removed;
            }
            vroot.ActionTaken = 2;
            if (!CanRemoveWebsite(*website)) {
                LogMessage(u"IIS runtime determined that the site '" + website->SiteNumber +
                           u"' will not be uninstalled at this time.");
                return 0;
            }
            if (!website->Component.empty()) {
                return 0;  // removed through its own record
            }
            LogMessage(u"Removing site: " + website->SiteNumber);
            if (ProgressMessage(u"PROGMSG_IIS_REMOVESITE", vroot.ParentSite) ==
                IIISEvent::kCancelled) {
                return qm::status::user_cancelled;
            }
            return RemoveWebsite(*website);
        });
}

int32_t CIISVRootController::RemoveCompWebSite(CIISWebsiteProp& website) {
    return Guarded(
        *this, u"Exception caught in RemoveCompWebSite for website",
        qm::status::remove_website_failed, [&] {
            LogMessage(qm::format(u"RemoveCompWebSite for website %s", website.DisplayName));
            if (!WebsiteExists(website)) {
                LogMessage(u"Website was not found, skipping");
                return 0;
            }
            if (!CanRemoveWebsite(website)) {
                LogMessage(
                    u"The website will not be uninstalled at this time since "
                    u"there are child nodes remaining");
                return 0;
            }
            LogMessage(u"Removing website " + website.SiteNumber);
            if (ProgressMessage(u"PROGMSG_IIS_REMOVESITE", website.DisplayName) ==
                IIISEvent::kCancelled) {
                return qm::status::user_cancelled;
            }
            const int32_t removed = RemoveWebsite(website);
            if (removed != 0) {
                return removed;
            }
            website.ActionTaken = 2;
            return 0;
        });
}

bool CIISVRootController::CanRemoveWebsite(CIISWebsiteProp& website) {
    if ((website.WebSiteProps & 0x1) == 0 && website.Component.empty()) {
        LogMessage(u"User does not appear to have chosen the option to delete the website");
        return false;
    }
    if (website.SiteNumber == u"1" || qm::iequals(website.DisplayName, u"Default Web Site")) {
        LogMessage(u"Do not remove because this looks like the default web site.");
        return false;
    }
    const qm::wstring base = GetBasePath(website, u"");
    if (!CanDeletePath(base, u"")) {
        return false;
    }
    return CanDeletePath(base, u"Root");
}

CIISWebsiteProp* CIISVRootController::ParentWebsiteOf(const CIISVRootProp& vroot) {
    const auto found = m_pPropertyBag->websites.find(vroot.ParentSite);
    return found != m_pPropertyBag->websites.end() ? found->second.get() : nullptr;
}
