#include "controller/iis_pro_vroot_controller.h"

#include "host/component_file_info.h"
#include "host/operation_recording.h"

CIISProVRootController::CIISProVRootController(webrig::platform::Platform& platform)
    : CIISVRootController(platform) {}

IIISEvent* CIISProVRootController::SetEventSink(IIISEvent* sink) {
    m_pEventSink = sink;
    return sink;
}

void CIISProVRootController::VRootCreated(const qm::wstring& name) {
    webrig::host::RecordItemCreated(operationRecorder.get(), suppressEvents,
                                    webrig::host::kVRootCreated, name);
}

void CIISProVRootController::AppPoolCreated(const qm::wstring& name) {
    webrig::host::RecordItemCreated(operationRecorder.get(), suppressEvents,
                                    webrig::host::kAppPoolCreated, name);
}

void CIISProVRootController::WebServiceExtensionCreated(const qm::wstring& name) {
    webrig::host::RecordItemCreated(operationRecorder.get(), suppressEvents,
                                    webrig::host::kWebServiceExtensionCreated, name);
}

void CIISProVRootController::WebSiteCreated(const qm::wstring& name) {
    webrig::host::RecordItemCreated(operationRecorder.get(), suppressEvents,
                                    webrig::host::kWebSiteCreated, name);
}

void CIISProVRootController::ComponentFileInfo(uint32_t hostContext, const qm::wstring& feature,
                                               const qm::wstring& component) {
    suppressEvents =
        webrig::host::ComponentSuppressesEvents(platform(), hostContext, feature, component);
}
