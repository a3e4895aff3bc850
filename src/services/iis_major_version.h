#pragma once
// The major version of the installed IIS, as IIS itself records it in the registry.

#include <cstdint>

#include "platform/registry.h"

namespace webrig::services {

// "MajorVersion" of HKLM\SYSTEM\CurrentControlSet\Services\W3SVC\Parameters; 0 when the key or
// the DWORD value is missing (no IIS).
uint32_t ReadIisMajorVersion(platform::Registry& registry);

}  // namespace webrig::services
