#pragma once
// The runtime instance: everything that lives from one QMIISInitialize to the next.

#include <cstdint>
#include <memory>
#include <set>

#include "controller/iis_pro_vroot_controller.h"
#include "host/iis_event.h"
#include "platform/platform.h"
#include "services/service_context.h"
#include "settings/iis_loader.h"
#include "settings/iis_property_bag.h"

class CIISProRuntime final {
  public:
    explicit CIISProRuntime(std::shared_ptr<webrig::platform::Platform> platform);
    CIISProRuntime(const CIISProRuntime&) = delete;
    CIISProRuntime& operator=(const CIISProRuntime&) = delete;

    // Takes the event sink and the host context, lets the bag load itself through `loader`, and on
    // IIS before 7 makes sure the IIS Admin Service and the web service run. Returns the
    // initialization status, which the export does not pass on.
    int32_t Initialize(CIISLoader& loader, std::unique_ptr<IIISEvent> sink, uint32_t context);

    // Reads the installed IIS version and decides whether `component` can be installed: 0, or -1
    // when it has IIS items, IIS is absent or older than 4 and `continueWithoutIIS` is 0.
    int32_t CheckForContinue(const qm::wstring& component, int32_t continueWithoutIIS);

    // Whether the component creates anything IIS needs to be present for (websites alone do not
    // count).
    bool ComponentHasIISItems(const qm::wstring& component);

    // Restarts the web service at the end of a run when the project asks for it.
    int32_t RestartW3cService();

    // The IIS major version from the registry, kept in the bag as well.
    int32_t ReadIisMajorVersion();

    // Whether this call's controller works on the IIS 7+ configuration system (else the
    // metabase).
    bool UseIis7Objects();

    // A controller for one export call, over the backend this call chooses.
    std::unique_ptr<CIISProVRootController> BuildController();

    // Installs the component's IIS items through `controller`: hands it the event sink and the
    // component's file information from the host, opens the backend session, then creates the
    // pools, websites, virtual directories, the server-side-include setting and the web service
    // extensions. Returns the first non-zero status; the export does not pass it on.
    int32_t ComponentInstall(CIISProVRootController& controller, const qm::wstring& component);

    // What every uninstall call does before its removal: the controller gets the event sink and
    // the bag, which opens the backend session; its status, 0 to go on.
    int32_t OpenUninstallSession(CIISProVRootController& controller);

    // The runtime's log helper: one line to the event sink, if any.
    void Log(const qm::wstring& text);

    webrig::platform::Platform& platform() { return *m_platform; }

    CIISPropertyBag propertyBag;
    std::unique_ptr<IIISEvent> eventSink;
    uint32_t hostContext = 0;
    std::set<qm::wstring> installedComponents;
    // The status of the operation behind the latest export call, for hosts that embed webrig
    // (the exports themselves never pass it on).
    int32_t lastStatus = 0;

  private:
    webrig::services::ServiceContext ServiceContext();

    std::shared_ptr<webrig::platform::Platform> m_platform;
};
