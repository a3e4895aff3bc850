// How installer values become configuration values: booleans, virtual paths, numbers, time
// spans and access flags.

#include <algorithm>

#include "apphost/iis_functions_vista.h"
#include "support/format.h"

namespace {

// "05" up to nine, "%d" above.
qm::wstring TwoDigits(int32_t number) {
    return qm::format(number <= 9 ? u"0%d" : u"%d", number);
}

}  // namespace

webrig::platform::Variant CIisFunctionsVista::MakePropertyVariant(const qm::wstring& text,
                                                                  bool isPath) {
    if (text == u"true") {
        return true;
    }
    if (text == u"false") {
        return false;
    }
    return isPath ? NormalizeVirtualPath(text) : text;
}

qm::wstring CIisFunctionsVista::NormalizeVirtualPath(qm::wstring_view text) {
    qm::wstring path(text);
    std::replace(path.begin(), path.end(), u'\\', u'/');
    if (path.empty() || path.front() != u'/') {
        path.insert(path.begin(), u'/');
    }
    return path;
}

qm::wstring CIisFunctionsVista::FormatNumber(int32_t number) {
    return qm::format(u"%d", number);
}

qm::wstring CIisFunctionsVista::FormatTimeSpanFromSeconds(int32_t seconds) {
    return qm::format(u"%02d:%02d:%02d", seconds / 3600, (seconds / 60) % 60, seconds % 60);
}

qm::wstring CIisFunctionsVista::FormatTimeSpanFromMinutes(uint32_t minutes) {
    const auto twoDigits = [](uint32_t number) { return TwoDigits(static_cast<int32_t>(number)); };
    const qm::wstring hours =
        minutes >= 1440 ? qm::format(u"%u.%s", minutes / 1440, twoDigits((minutes % 1440) / 60))
                        : twoDigits(minutes / 60);
    return qm::format(u"%s:%s:00", hours, twoDigits(minutes % 60));
}

qm::wstring CIisFunctionsVista::FormatAccessPolicy(uint32_t flags) {
    struct Flag {
        uint32_t bits;
        const char16_t* name;
    };
    // Script stands for IIS 6's script access and for execute access, which includes it.
    static constexpr Flag kFlags[] = {
        {0x200 | 0x4, u"Script"}, {0x10, u"Source"}, {0x4, u"Execute"},
        {0x2, u"Write"},          {0x1, u"Read"},
    };
    qm::wstring text;
    for (const Flag& flag : kFlags) {
        if ((flags & flag.bits) != 0) {
            if (!text.empty()) {
                text += u", ";
            }
            text += flag.name;
        }
    }
    return text;
}
