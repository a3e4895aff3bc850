#include "platform/sim/machine/sim_clock.h"

namespace webrig::sim {

uint32_t SimClock::TickCount() {
    return m_ticks.load();
}

// Unsigned addition wraps at 2^32 exactly as GetTickCount does after 49.7 days.
void SimClock::Sleep(uint32_t milliseconds) {
    m_ticks.fetch_add(milliseconds);
}

}  // namespace webrig::sim
