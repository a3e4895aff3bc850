#include "host/event_log.h"

namespace webrig::host {

void LogLine(IIISEvent* sink, const qm::wstring& text) noexcept {
    if (sink == nullptr) {
        return;
    }
    try {
        sink->LogMessage(text);
    } catch (...) {
        // Swallowed on purpose; see the header.
    }
}

void ReportErrorLine(IIISEvent* sink, const qm::wstring& text, int32_t code) {
    if (sink != nullptr) {
        sink->ReportError(text, code);
    }
}

}  // namespace webrig::host
