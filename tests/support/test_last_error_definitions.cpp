// The thread's last-error value for the support tests. The platform layer defines these two
// functions; the support tests link no platform layer yet, so they keep the value here, one per
// thread as on Windows.

#include <cstdint>

#include "support/last_error.h"

namespace qm {
namespace {
thread_local uint32_t t_last_error = 0;
}  // namespace

uint32_t get_last_error() noexcept { return t_last_error; }
void set_last_error(uint32_t error) noexcept { t_last_error = error; }

}  // namespace qm
