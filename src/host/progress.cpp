#include "host/progress.h"

#include "host/event_log.h"
#include "support/format.h"

namespace webrig::host {

int32_t ProgressMessage(IIISEvent* sink, std::map<qm::wstring, qm::wstring>& progressMessages,
                        const qm::wstring& identifier, const qm::wstring& insertion) {
    if (sink == nullptr) {
        return 0;
    }
    try {
        const qm::wstring& text = progressMessages[identifier];
        const qm::wstring message = insertion.empty() ? qm::wstring() : qm::format(text, insertion);
        return sink->ShowProgress(message);
    } catch (...) {
        LogLine(sink, u"Exception caught in ProgressMessage for sMessageToFormat '" + identifier +
                          u"' and the following sStringToInsert: " + insertion);
        return 0;
    }
}

bool UserCancelled(IIISEvent* sink) {
    return sink != nullptr && sink->CheckCancel() == IIISEvent::kCancelled;
}

}  // namespace webrig::host
