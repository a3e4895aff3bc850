#pragma once
// Simulated time: the tick count moves only when the process sleeps, so a wait of many seconds
// costs nothing and every run sees the same times.

#include <atomic>

#include "platform/clock.h"

namespace webrig::sim {

class SimClock final : public platform::Clock {
  public:
    // About 20 minutes after boot, like a machine an installer runs on shortly after start-up.
    static constexpr uint32_t kBootTickCount = 1'200'000;

    explicit SimClock(uint32_t start = kBootTickCount) noexcept : m_ticks(start) {}

    uint32_t TickCount() override;
    void Sleep(uint32_t milliseconds) override;

  private:
    std::atomic<uint32_t> m_ticks;
};

}  // namespace webrig::sim
