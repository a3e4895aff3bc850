#pragma once
// Time, as the service waits see it: part of the seam so that a simulated wait of many seconds
// takes no real time.

#include <cstdint>

namespace webrig::platform {

class Clock {
  public:
    virtual ~Clock() = default;

    // GetTickCount: milliseconds since the machine started, wrapping at 2^32.
    virtual uint32_t TickCount() = 0;
    // Sleep.
    virtual void Sleep(uint32_t milliseconds) = 0;
};

}  // namespace webrig::platform
