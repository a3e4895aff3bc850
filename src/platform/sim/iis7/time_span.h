#pragma once
// IIS's text form of a time span: "[d.]hh:mm:ss[.fffffff]". Defaults and hand-written files may
// carry more than 23 hours without a day part ("29:00:00"); IIS itself writes the day part
// ("1.05:00:00"). Values are counted in ticks of 100 ns, as .NET's TimeSpan counts them.

#include <cstdint>
#include <optional>

#include "support/wide_string.h"

namespace webrig::sim::iis7 {

inline constexpr int64_t kTicksPerSecond = 10'000'000;

// The ticks of `text`; nullopt for anything else: a sign, blanks, a missing part, minutes or
// seconds above 59, hours above 23 next to a day part, more than seven fraction digits, or a
// value beyond the 64-bit range.
std::optional<int64_t> ParseTimeSpan(qm::wstring_view text);

// The form IIS writes: "00:20:00", "1.05:00:00", "00:00:00.5000000". `ticks` must not be negative.
qm::wstring FormatTimeSpan(int64_t ticks);

}  // namespace webrig::sim::iis7
