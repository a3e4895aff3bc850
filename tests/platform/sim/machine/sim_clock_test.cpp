#include "platform/sim/machine/sim_clock.h"

#include <gtest/gtest.h>

#include <chrono>

namespace webrig::sim {
namespace {

TEST(SimClock, OnlySleepingMovesTheTickCount) {
    SimClock clock;
    const uint32_t start = clock.TickCount();
    EXPECT_EQ(start, SimClock::kBootTickCount);
    EXPECT_EQ(clock.TickCount(), start);
    const auto before = std::chrono::steady_clock::now();
    clock.Sleep(15000);
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(1));
    EXPECT_EQ(clock.TickCount(), start + 15000);
}

TEST(SimClock, WrapsAtTwoToTheThirtySecond) {
    SimClock clock(0xFFFFFF00u);
    clock.Sleep(0x200);
    EXPECT_EQ(clock.TickCount(), 0x100u);
}

}  // namespace
}  // namespace webrig::sim
