#pragma once
// Asks the host engine whether a component's installation is to be recorded at all.

#include <cstdint>

#include "platform/platform.h"

namespace webrig::host {

// The folder part of a module path: everything before the last backslash, but never less than
// the drive ("C:") or the server and share ("\\server\share").
qm::wstring ModuleDirectory(qm::wstring_view modulePath);

// Calls the host's "_ComponentFileInfo" for the component; true when the host reports bit 0x40,
// meaning no item-created records are to be made for it. False when the host module is not
// loaded from webrig's own folder or does not export the function.
bool ComponentSuppressesEvents(platform::Platform& platform, uint32_t hostContext,
                               const qm::wstring& feature, const qm::wstring& component);

}  // namespace webrig::host
