#include "controller/iis_vroot_controller.h"

#include "host/event_log.h"
#include "host/password_masking.h"
#include "host/progress.h"

CIISVRootController::CIISVRootController(webrig::platform::Platform& platform)
    : m_platform(platform) {}

CIISVRootController::~CIISVRootController() = default;

void CIISVRootController::LogMessage(const qm::wstring& text) {
    webrig::host::LogLine(m_pEventSink, text);
}

void CIISVRootController::ReportError(const qm::wstring& text, int32_t code) {
    webrig::host::ReportErrorLine(m_pEventSink, text, code);
}

qm::wstring CIISVRootController::MaskPasswordValue(qm::wstring name, const qm::wstring& value) {
    const qm::wstring_view hidden =
        m_pPropertyBag != nullptr ? qm::wstring_view(m_pPropertyBag->msiHiddenProperties) : u"";
    return webrig::host::MaskPasswordValue(hidden, name, value, m_pEventSink);
}

int32_t CIISVRootController::SetPropertyBag(CIISPropertyBag& bag) {
    m_pPropertyBag = &bag;
    return InitIISObject();
}

int32_t CIISVRootController::ProgressMessage(const qm::wstring& identifier,
                                             const qm::wstring& insertion) {
    if (m_pPropertyBag == nullptr) {
        return 0;  // no texts to show before the bag is given
    }
    return webrig::host::ProgressMessage(m_pEventSink, m_pPropertyBag->progressMessages, identifier,
                                         insertion);
}

bool CIISVRootController::UserCancelled() {
    return webrig::host::UserCancelled(m_pEventSink);
}
