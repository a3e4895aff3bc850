#pragma once
// The calling thread's last-error value (GetLastError/SetLastError on Windows).
//
// Code that builds a log text after a failed platform call must still be able to read the error
// that call left behind, so everything that builds text holds a `last_error_guard`. The two
// functions are defined by whichever platform layer is linked in: the real thread value on
// Windows, a thread-local value kept by the simulated machine on Linux.

#include <cstdint>

namespace qm {

uint32_t get_last_error() noexcept;
void set_last_error(uint32_t error) noexcept;

class last_error_guard {
  public:
    last_error_guard() noexcept : m_saved(get_last_error()) {}
    ~last_error_guard() { set_last_error(m_saved); }
    last_error_guard(const last_error_guard&) = delete;
    last_error_guard& operator=(const last_error_guard&) = delete;

  private:
    uint32_t m_saved;
};

}  // namespace qm
