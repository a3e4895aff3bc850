#include "exports/iis_pro_runtime.h"

#include "controller/controller_factory.h"
#include "host/event_log.h"
#include "services/backend_choice.h"
#include "services/iis_admin_check.h"
#include "services/iis_major_version.h"
#include "services/w3svc.h"

CIISProRuntime::CIISProRuntime(std::shared_ptr<webrig::platform::Platform> platform)
    : m_platform(std::move(platform)) {}

int32_t CIISProRuntime::Initialize(CIISLoader& loader, std::unique_ptr<IIISEvent> sink,
                                   uint32_t context) {
    eventSink = std::move(sink);
    hostContext = context;
    const int32_t loaded = loader.Load(propertyBag);
    // IIS 7 and later need neither service to be configured.
    if (propertyBag.ignoreIIS != 0 || propertyBag.iisMajorVersion >= 7) {
        return 0;
    }
    const webrig::services::ServiceContext services = ServiceContext();
    if (const int32_t checked = webrig::services::CheckIisAdminService(services, propertyBag);
        checked != 0) {
        return checked;
    }
    if (propertyBag.ignoreIIS != 0) {
        return 0;
    }
    webrig::services::ServiceHandles w3svc(services.services);
    if (const int32_t opened = webrig::services::OpenW3svc(services, w3svc); opened != 0) {
        return opened;
    }
    if (propertyBag.iisMajorVersion < 6) {
        return 0;
    }
    const int32_t started = webrig::services::CheckAndStartW3CService(services, w3svc.service);
    return started != 0 ? started : loaded;
}

int32_t CIISProRuntime::RestartW3cService() {
    return webrig::services::RestartW3cService(ServiceContext(), propertyBag);
}

int32_t CIISProRuntime::ReadIisMajorVersion() {
    const uint32_t version = webrig::services::ReadIisMajorVersion(m_platform->registry());
    propertyBag.iisMajorVersion = static_cast<int32_t>(version);
    return propertyBag.iisMajorVersion;
}

bool CIISProRuntime::UseIis7Objects() {
    return webrig::services::UseIis7Objects(propertyBag, m_platform->comClasses(), eventSink.get());
}

std::unique_ptr<CIISProVRootController> CIISProRuntime::BuildController() {
    return webrig::controller::BuildController(UseIis7Objects(), *m_platform);
}

int32_t CIISProRuntime::ComponentInstall(CIISProVRootController& controller,
                                         const qm::wstring& component) {
    if (propertyBag.ignoreIIS != 0) {
        return 0;
    }
    controller.SetEventSink(eventSink.get());
    const auto found = propertyBag.components.find(component);
    const qm::wstring feature =
        found != propertyBag.components.end() ? found->second->feature : qm::wstring();
    controller.ComponentFileInfo(hostContext, feature, component);
    if (const int32_t opened = controller.SetPropertyBag(propertyBag); opened != 0) {
        return opened;
    }
    // Pools before the websites that use them, websites before their virtual directories.
    int32_t status = controller.CreateCompAppPools(component);
    if (status == 0) {
        status = controller.CreateCompWebSites(component);
    }
    if (status == 0) {
        status = controller.CreateCompVRoots(component);
    }
    if (status == 0) {
        status = controller.SetSSIEnableCmdDirective();
    }
    if (status == 0) {
        status = controller.CreateCompWebServiceExtensions(component);
    }
    return status;
}

int32_t CIISProRuntime::OpenUninstallSession(CIISProVRootController& controller) {
    controller.SetEventSink(eventSink.get());
    return controller.SetPropertyBag(propertyBag);
}

webrig::services::ServiceContext CIISProRuntime::ServiceContext() {
    return {m_platform->services(), m_platform->clock(), eventSink.get()};
}

int32_t CIISProRuntime::CheckForContinue(const qm::wstring& component, int32_t continueWithoutIIS) {
    const auto version = static_cast<uint32_t>(ReadIisMajorVersion());
    if (version < 4) {
        propertyBag.ignoreIIS = 1;
        if (ComponentHasIISItems(component)) {
            return continueWithoutIIS != 0 ? 0 : -1;
        }
    }
    propertyBag.ignoreIIS = 0;
    return 0;
}

bool CIISProRuntime::ComponentHasIISItems(const qm::wstring& component) {
    const auto found = propertyBag.components.find(component);
    if (found == propertyBag.components.end()) {
        return false;
    }
    const CIISComponentProp& record = *found->second;
    if (!record.vroots.empty()) {
        return true;
    }
    // Application pools and web service extensions exist from Windows Server 2003 (5.2) on.
    const auto os = m_platform->system().Version();
    const bool poolsExist = os.major >= 6 || (os.major == 5 && os.minor > 1);
    return poolsExist && (!record.appPools.empty() || !record.webServiceExtensions.empty());
}

void CIISProRuntime::Log(const qm::wstring& text) {
    webrig::host::LogLine(eventSink.get(), text);
}
