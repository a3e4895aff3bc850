// The simulated process keeps each thread's last-error value here, as Windows keeps it in the
// thread environment block.

#include "support/last_error.h"

namespace qm {
namespace {

thread_local uint32_t t_lastError = 0;

}  // namespace

uint32_t get_last_error() noexcept {
    return t_lastError;
}

void set_last_error(uint32_t error) noexcept {
    t_lastError = error;
}

}  // namespace qm
