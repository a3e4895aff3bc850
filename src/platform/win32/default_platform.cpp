// webrig.dll runs on the Windows it is loaded into.

#include "platform/default_platform.h"

#include "platform/win32/win32_platform.h"

namespace webrig::platform {

std::shared_ptr<Platform> OpenDefaultPlatform(qm::wstring& problem) {
    problem.clear();
    return std::make_shared<win32::Win32Platform>();
}

}  // namespace webrig::platform
