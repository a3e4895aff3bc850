#include "support/decimal.h"

#include <limits>

namespace qm {

int32_t read_decimal(wstring_view text) noexcept {
    size_t pos = 0;
    while (pos < text.size() && (text[pos] == u' ' || (text[pos] >= u'\t' && text[pos] <= u'\r'))) {
        ++pos;
    }
    bool negative = false;
    if (pos < text.size() && (text[pos] == u'+' || text[pos] == u'-')) {
        negative = text[pos] == u'-';
        ++pos;
    }
    // Accumulate the magnitude and stop growing it once it is past every 32-bit limit, so that a
    // million digits cost no more than reading them.
    constexpr int64_t kBeyond = int64_t{std::numeric_limits<int32_t>::max()} + 2;
    int64_t magnitude = 0;
    for (; pos < text.size() && text[pos] >= u'0' && text[pos] <= u'9'; ++pos) {
        if (magnitude < kBeyond) {
            magnitude = magnitude * 10 + (text[pos] - u'0');
        }
    }
    const int64_t value = negative ? -magnitude : magnitude;
    if (value > std::numeric_limits<int32_t>::max()) {
        return std::numeric_limits<int32_t>::max();
    }
    if (value < std::numeric_limits<int32_t>::min()) {
        return std::numeric_limits<int32_t>::min();
    }
    return static_cast<int32_t>(value);
}

}  // namespace qm
