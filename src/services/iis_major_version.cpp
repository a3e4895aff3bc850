#include "services/iis_major_version.h"

namespace webrig::services {

uint32_t ReadIisMajorVersion(platform::Registry& registry) {
    platform::ScopedRegKey key(registry);
    if (registry.OpenKey(platform::kLocalMachine,
                         u"SYSTEM\\CurrentControlSet\\Services\\W3SVC\\Parameters",
                         platform::key_access::read, key.receive()) != qm::win32::success) {
        return 0;
    }
    platform::RegValue value;
    if (registry.QueryValue(key.get(), u"MajorVersion", value) != qm::win32::success ||
        value.type != platform::reg_type::dword) {
        return 0;
    }
    return value.AsDword().value_or(0);
}

}  // namespace webrig::services
