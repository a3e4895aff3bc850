#pragma once
// Every status code webrig itself defines, by name, with a one-line meaning for people (the
// command line prints these). The list lives in status_codes.inc.

#include <cstdint>
#include <span>
#include <string_view>

namespace qm {

namespace status {
#define WEBRIG_STATUS(name, code, meaning) inline constexpr int32_t name = code;
#include "support/status_codes.inc"
#undef WEBRIG_STATUS
}  // namespace status

struct status_info {
    int32_t code;
    std::string_view name;
    std::string_view meaning;
};

// All codes, in the order of the list.
std::span<const status_info> all_statuses() noexcept;
// The entry of a code; nullptr for a code webrig does not define (an HRESULT or Win32 error).
const status_info* find_status(int32_t code) noexcept;

}  // namespace qm
