#include "platform/sim/iis7/time_span.h"

#include <limits>

namespace webrig::sim::iis7 {
namespace {

constexpr int64_t kTicksPerMinute = 60 * kTicksPerSecond;
constexpr int64_t kTicksPerHour = 60 * kTicksPerMinute;
constexpr int64_t kTicksPerDay = 24 * kTicksPerHour;

// A run of 1 to `maxDigits` decimal digits, the whole of `text`.
std::optional<int64_t> ReadDigits(qm::wstring_view text, size_t maxDigits) {
    if (text.empty() || text.size() > maxDigits) {
        return std::nullopt;
    }
    int64_t value = 0;
    for (const char16_t c : text) {
        if (c < u'0' || c > u'9') {
            return std::nullopt;
        }
        value = value * 10 + (c - u'0');
    }
    return value;
}

// total += count * unit, refusing to leave the 64-bit range.
bool AddTicks(int64_t& total, int64_t count, int64_t unit) {
    constexpr int64_t kMax = std::numeric_limits<int64_t>::max();
    if (count > (kMax - total) / unit) {
        return false;
    }
    total += count * unit;
    return true;
}

void AppendTwoDigits(qm::wstring& out, int64_t value) {
    out += static_cast<char16_t>(u'0' + value / 10);
    out += static_cast<char16_t>(u'0' + value % 10);
}

}  // namespace

std::optional<int64_t> ParseTimeSpan(qm::wstring_view text) {
    const size_t firstColon = text.find(u':');
    const size_t secondColon =
        firstColon == qm::wstring_view::npos ? firstColon : text.find(u':', firstColon + 1);
    if (secondColon == qm::wstring_view::npos ||
        text.find(u':', secondColon + 1) != qm::wstring_view::npos) {
        return std::nullopt;
    }
    qm::wstring_view dayHour = text.substr(0, firstColon);
    const qm::wstring_view minutePart = text.substr(firstColon + 1, secondColon - firstColon - 1);
    qm::wstring_view secondPart = text.substr(secondColon + 1);

    std::optional<int64_t> days = 0;
    const size_t dayDot = dayHour.find(u'.');
    if (dayDot != qm::wstring_view::npos) {
        days = ReadDigits(dayHour.substr(0, dayDot), 8);
        dayHour = dayHour.substr(dayDot + 1);
    }
    // Hours run past 23 only when no day part is written.
    const std::optional<int64_t> hours = ReadDigits(dayHour, dayDot == dayHour.npos ? 12 : 2);
    const std::optional<int64_t> minutes = ReadDigits(minutePart, 2);
    std::optional<int64_t> fractionTicks = 0;
    const size_t fractionDot = secondPart.find(u'.');
    if (fractionDot != qm::wstring_view::npos) {
        const qm::wstring_view fraction = secondPart.substr(fractionDot + 1);
        fractionTicks = ReadDigits(fraction, 7);
        for (size_t digits = fraction.size(); fractionTicks && digits < 7; ++digits) {
            *fractionTicks *= 10;
        }
        secondPart = secondPart.substr(0, fractionDot);
    }
    const std::optional<int64_t> seconds = ReadDigits(secondPart, 2);
    if (!days || !hours || !minutes || !seconds || !fractionTicks || *minutes > 59 ||
        *seconds > 59 || (dayDot != qm::wstring_view::npos && *hours > 23)) {
        return std::nullopt;
    }
    int64_t total = *fractionTicks;
    if (!AddTicks(total, *seconds, kTicksPerSecond) ||
        !AddTicks(total, *minutes, kTicksPerMinute) || !AddTicks(total, *hours, kTicksPerHour) ||
        !AddTicks(total, *days, kTicksPerDay)) {
        return std::nullopt;
    }
    return total;
}

qm::wstring FormatTimeSpan(int64_t ticks) {
    qm::wstring out;
    const int64_t days = ticks / kTicksPerDay;
    if (days > 0) {
        out = qm::widen_ascii(std::to_string(days)) + u".";
    }
    AppendTwoDigits(out, ticks / kTicksPerHour % 24);
    out += u':';
    AppendTwoDigits(out, ticks / kTicksPerMinute % 60);
    out += u':';
    AppendTwoDigits(out, ticks / kTicksPerSecond % 60);
    if (const int64_t fraction = ticks % kTicksPerSecond; fraction != 0) {
        const std::string digits = std::to_string(fraction + kTicksPerSecond);  // "1" + 7 digits
        out += u'.';
        out += qm::widen_ascii(digits.substr(1));
    }
    return out;
}

}  // namespace webrig::sim::iis7
