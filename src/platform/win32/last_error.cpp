// The thread's last-error value is the real one: webrig's code reads what the Windows call it
// just made left behind.

#include "support/last_error.h"

#include "platform/win32/windows_api.h"

namespace qm {

uint32_t get_last_error() noexcept {
    return ::GetLastError();
}

void set_last_error(uint32_t error) noexcept {
    ::SetLastError(error);
}

}  // namespace qm
