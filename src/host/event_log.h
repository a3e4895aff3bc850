#pragma once
// Lines and errors to the event sink, as every controller and the runtime send them.

#include <cstdint>

#include "host/iis_event.h"

namespace webrig::host {

// One log line; nothing without a sink. A sink that throws is ignored: logging never ends an
// operation.
void LogLine(IIISEvent* sink, const qm::wstring& text) noexcept;

// An error with its status; nothing without a sink. Exceptions of the sink pass.
void ReportErrorLine(IIISEvent* sink, const qm::wstring& text, int32_t code);

}  // namespace webrig::host
