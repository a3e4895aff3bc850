// A component's items of one kind, created one after the other in key order. The first failure
// ends the kind (and the install); nothing created before it is undone.

#include "controller/iis_vroot_controller.h"
#include "support/status_codes.h"

namespace {

struct KindRules {
    bool needsIis6;           // pools and extensions exist from IIS 6 on
    const char16_t* message;  // logged for an exception
    int32_t code;             // returned for an exception
};

// Creates every item of `table` with `create`, asking after each whether the user cancelled.
template <class Table, class Create>
int32_t CreateEach(CIISVRootController& controller, const CIISPropertyBag& bag, Table& table,
                   const KindRules& rules, Create&& create) {
    try {
        if (rules.needsIis6 && bag.iisMajorVersion < 6) {
            return 0;
        }
        for (auto& [key, item] : table) {
            if (const int32_t created = create(*item); created != 0) {
                return created;
            }
            if (controller.UserCancelled()) {
                return qm::status::user_cancelled;
            }
        }
        return 0;
    } catch (...) {
        controller.LogMessage(rules.message);
        return rules.code;
    }
}

// The component-level frame around a kind's loop: the IIS version, the component and its
// install state.
template <class RunLoop>
int32_t ForComponent(CIISVRootController& controller, CIISPropertyBag& bag,
                     const qm::wstring& component, const KindRules& rules, RunLoop&& runLoop) {
    try {
        if (rules.needsIis6 && bag.iisMajorVersion < 6) {
            return 0;
        }
        const auto found = bag.components.find(component);
        if (found == bag.components.end()) {
            return 0;
        }
        if (!controller.IsInstallState(found->second->actionState)) {
            return 0;
        }
        return runLoop(*found->second);
    } catch (...) {
        controller.LogMessage(rules.message);
        return rules.code;
    }
}

// Each kind's frame and loop: the IIS version they need, and what they log and return for an
// exception.
constexpr KindRules kAppPools{true, u"Exception caught in CreateCompAppPools function",
                              qm::status::create_app_pools_failed};
constexpr KindRules kAppPoolLoop{true, u"Exception caught in CreateCompAppPools function",
                                 qm::status::app_pool_loop_failed};
constexpr KindRules kWebSites{false, u"Exception caught in CreateCompWebSites",
                              qm::status::create_websites_failed};
constexpr KindRules kWebSiteLoop{false, u"Exception caught in CreateCompWebSites for IIS component",
                                 qm::status::create_websites_failed};
constexpr KindRules kVRoots{false, u"Exception caught in CreateCompVRoots function",
                            qm::status::create_vroots_failed};
constexpr KindRules kVRootLoop{false, u"Exception caught in CreateCompVRoots function",
                               qm::status::vroot_loop_failed};
constexpr KindRules kExtensions{true,
                                u"Exception caught in CreateCompWebServiceExtensions function",
                                qm::status::create_extensions_failed};
constexpr KindRules kExtensionLoop{true,
                                   u"Exception caught in CreateCompWebServiceExtensions function",
                                   qm::status::extension_loop_failed};

}  // namespace

int32_t CIISVRootController::CreateCompAppPools(const qm::wstring& component) {
    return ForComponent(*this, *m_pPropertyBag, component, kAppPools, [&](auto& record) {
        return CreateEach(*this, *m_pPropertyBag, record.appPools, kAppPoolLoop,
                          [&](CIISAppPoolProp& pool) { return CreateAppPool(pool); });
    });
}

int32_t CIISVRootController::CreateCompWebSites(const qm::wstring& component) {
    return ForComponent(*this, *m_pPropertyBag, component, kWebSites, [&](auto& record) {
        return CreateEach(*this, *m_pPropertyBag, record.componentWebsites, kWebSiteLoop,
                          [&](CIISWebsiteProp& website) { return CreateWebSite(website); });
    });
}

int32_t CIISVRootController::CreateCompVRoots(const qm::wstring& component) {
    return ForComponent(*this, *m_pPropertyBag, component, kVRoots, [&](auto& record) {
        return CreateEach(*this, *m_pPropertyBag, record.vroots, kVRootLoop,
                          [&](CIISVRootProp& vroot) { return CreateVRoot(vroot); });
    });
}

int32_t CIISVRootController::CreateCompWebServiceExtensions(const qm::wstring& component) {
    return ForComponent(*this, *m_pPropertyBag, component, kExtensions, [&](auto& record) {
        return CreateEach(*this, *m_pPropertyBag, record.webServiceExtensions, kExtensionLoop,
                          [&](CIISWebServiceExtensionProp& extension) {
                              return CreateWebServiceExtension(extension);
                          });
    });
}
