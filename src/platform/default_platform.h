#pragma once
// The platform the eight exports run on: Windows itself in webrig.dll; in libwebrig.so the
// simulated machine in the folder named by the environment variable WEBRIG_MACHINE.

#include <memory>

#include "platform/platform.h"

namespace webrig::platform {

// Never null. When the machine cannot be opened, `problem` says why (otherwise it is cleared) and
// the platform returned fails every call the way a broken machine would.
std::shared_ptr<Platform> OpenDefaultPlatform(qm::wstring& problem);

}  // namespace webrig::platform
