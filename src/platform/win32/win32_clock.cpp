#include "platform/win32/win32_clock.h"

#include "platform/win32/windows_api.h"

namespace webrig::win32 {

uint32_t Win32Clock::TickCount() {
    return ::GetTickCount();
}

void Win32Clock::Sleep(uint32_t milliseconds) {
    ::Sleep(milliseconds);
}

}  // namespace webrig::win32
