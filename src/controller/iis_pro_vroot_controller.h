#pragma once
// The script-install layer of the controller: the event sink, the component's install states,
// and the host's records of created items.

#include <memory>

#include "controller/iis_vroot_controller.h"
#include "platform/host_objects.h"

class CIISProVRootController : public CIISVRootController {
  public:
    IIISEvent* SetEventSink(IIISEvent* sink) override;
    // Every action state installs and removes.
    bool IsInstallState(int32_t /*actionState*/) override { return true; }
    bool IsRemoveState(int32_t /*actionState*/) override { return true; }

    // Item-created records, by item kind; none while the component's records are suppressed or
    // without a recorder. Throw qm::com_exception when the recorder refuses a record.
    void VRootCreated(const qm::wstring& name) override;
    void AppPoolCreated(const qm::wstring& name) override;
    void WebServiceExtensionCreated(const qm::wstring& name) override;
    void WebSiteCreated(const qm::wstring& name) override;

    // Asks the host whether the component's items are to be recorded (sets suppressEvents).
    void ComponentFileInfo(uint32_t hostContext, const qm::wstring& feature,
                           const qm::wstring& component) override;

    // The host's recorder for this install, released with the controller; none for uninstalls.
    std::shared_ptr<webrig::platform::IOperationRecorder> operationRecorder;
    bool suppressEvents = false;

  protected:
    explicit CIISProVRootController(webrig::platform::Platform& platform);
};
