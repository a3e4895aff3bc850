#pragma once
// Keeps secrets out of log lines: property values pass through here before they are logged.

#include "host/iis_event.h"

namespace webrig::host {

inline constexpr char16_t kMaskedValue[] = u"********";

// The text to log for a property's value. Masked when the property (its name, or its metabase
// identifier in decimal) is listed in `hiddenProperties` (the pieces between its ";" separators,
// exact letter case; an empty piece lists the empty name), has "PASSWORD" in its name in any
// letter case, or is the anonymous-user password (6021) or the application-pool identity
// password (7502). `sink` receives the line of a failure, if any.
qm::wstring MaskPasswordValue(qm::wstring_view hiddenProperties, const qm::wstring& name,
                              const qm::wstring& value, IIISEvent* sink);

}  // namespace webrig::host
