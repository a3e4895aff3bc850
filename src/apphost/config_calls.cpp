#include "apphost/config_calls.h"

namespace webrig::apphost {

bool EqualsIgnoringAsciiCase(qm::wstring_view a, qm::wstring_view b) noexcept {
    if (a.size() != b.size()) {
        return false;
    }
    const auto fold = [](char16_t c) {
        return c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - (u'a' - u'A')) : c;
    };
    for (size_t i = 0; i < a.size(); ++i) {
        if (fold(a[i]) != fold(b[i])) {
            return false;
        }
    }
    return true;
}

}  // namespace webrig::apphost
