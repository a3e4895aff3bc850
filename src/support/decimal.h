#pragma once
// The one rule by which webrig reads a number from text: leading white space is skipped, an
// optional sign, then decimal digits up to the first non-digit. Text without leading digits is 0;
// a value beyond the 32-bit range is the nearest 32-bit limit (the behaviour of wcstol).

#include <cstdint>

#include "support/wide_string.h"

namespace qm {

int32_t read_decimal(wstring_view text) noexcept;

}  // namespace qm
