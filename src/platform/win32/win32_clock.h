#pragma once
// GetTickCount and Sleep.

#include "platform/clock.h"

namespace webrig::win32 {

class Win32Clock final : public platform::Clock {
  public:
    uint32_t TickCount() override;
    void Sleep(uint32_t milliseconds) override;
};

}  // namespace webrig::win32
