#pragma once
// Progress texts and the user's cancel, through the event sink.

#include <cstdint>
#include <map>

#include "host/iis_event.h"

namespace webrig::host {

// Shows the progress text stored under `identifier` in `progressMessages`, with `insertion`
// put into its placeholder; an identifier without a text is added with an empty one, and an
// empty insertion shows the empty text. Returns the sink's answer; 0 without a sink.
int32_t ProgressMessage(IIISEvent* sink, std::map<qm::wstring, qm::wstring>& progressMessages,
                        const qm::wstring& identifier, const qm::wstring& insertion);

// Whether the user has asked to cancel; never without a sink.
bool UserCancelled(IIISEvent* sink);

}  // namespace webrig::host
