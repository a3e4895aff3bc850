#include "exports/iis_pro_runtime.h"

#include "host/event_log.h"
#include "services/iis_major_version.h"

CIISProRuntime::CIISProRuntime(std::shared_ptr<webrig::platform::Platform> platform)
    : m_platform(std::move(platform)) {}

int32_t CIISProRuntime::Initialize(CIISLoader& loader, std::unique_ptr<IIISEvent> sink,
                                   uint32_t context) {
    eventSink = std::move(sink);
    hostContext = context;
    return loader.Load(propertyBag);
}

int32_t CIISProRuntime::CheckForContinue(const qm::wstring& component, int32_t continueWithoutIIS) {
    const uint32_t version = webrig::services::ReadIisMajorVersion(m_platform->registry());
    propertyBag.iisMajorVersion = static_cast<int32_t>(version);
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
