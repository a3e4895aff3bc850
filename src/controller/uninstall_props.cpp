// The project's uninstall properties in the registry. Each entry of the bag's `uninstallProps`
// is a REG_SZ value, named and valued as the entry, under the product's uninstall-information
// key (the fallback product code when the project gives none, as for site numbers). Nothing
// stops on a registry failure: it is logged and the next entry is taken.

#include "controller/iis_vroot_controller.h"
#include "settings/uninstall_information.h"
#include "support/format.h"

namespace {

qm::wstring UninstallPropsProductCode(const CIISPropertyBag& bag) {
    return bag.productCode.empty() ? qm::wstring(webrig::settings::kFallbackProductCode)
                                   : bag.productCode;
}

}  // namespace

int32_t CIISVRootController::WriteUninstallProps() {
    if (m_pPropertyBag == nullptr || m_pPropertyBag->uninstallProps.empty()) {
        return 0;
    }
    webrig::platform::Registry& registry = platform().registry();
    webrig::platform::ScopedRegKey key(registry);
    const qm::wstring productCode = UninstallPropsProductCode(*m_pPropertyBag);
    const uint32_t opened =
        webrig::settings::OpenOrCreateUninstallInformationKey(registry, productCode, key);
    if (opened != qm::win32::success) {
        LogMessage(qm::format(u"Unable to open the uninstall information key of '%s': error %d",
                              productCode, opened));
        return 0;
    }
    for (const auto& [name, value] : m_pPropertyBag->uninstallProps) {
        const uint32_t written =
            registry.SetValue(key.get(), name, webrig::platform::RegValue::String(value));
        if (written != qm::win32::success) {
            LogMessage(qm::format(u"Unable to write the uninstall property '%s': error %d", name,
                                  written));
        }
    }
    return 0;
}

int32_t CIISVRootController::RemoveUninstallProps() {
    if (m_pPropertyBag == nullptr || m_pPropertyBag->uninstallProps.empty()) {
        return 0;
    }
    webrig::platform::Registry& registry = platform().registry();
    webrig::platform::ScopedRegKey key(registry);
    const qm::wstring path =
        webrig::settings::UninstallInfoKeyPath(UninstallPropsProductCode(*m_pPropertyBag));
    if (registry.OpenKey(webrig::platform::kLocalMachine, path,
                         webrig::platform::key_access::set_value,
                         key.receive()) != qm::win32::success) {
        return 0;  // never written, nothing to remove
    }
    for (const auto& [name, value] : m_pPropertyBag->uninstallProps) {
        const uint32_t removed = registry.DeleteValue(key.get(), name);
        if (removed != qm::win32::success && removed != qm::win32::file_not_found) {
            LogMessage(qm::format(u"Unable to remove the uninstall property '%s': error %d", name,
                                  removed));
        }
    }
    return 0;
}
