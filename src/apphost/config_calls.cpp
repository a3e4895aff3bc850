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

std::vector<qm::wstring> SplitText(qm::wstring_view text, char16_t separator, bool trailingPiece) {
    std::vector<qm::wstring> pieces;
    size_t start = 0;
    while (true) {
        const size_t end = text.find(separator, start);
        if (end == qm::wstring_view::npos) {
            if (start < text.size() || trailingPiece || pieces.empty()) {
                pieces.emplace_back(text.substr(start));
            }
            return pieces;
        }
        pieces.emplace_back(text.substr(start, end - start));
        start = end + 1;
    }
}

qm::wstring JoinPath(const qm::wstring& first, const qm::wstring& second) {
    if (second.empty()) {
        return first;
    }
    if (first.empty()) {
        return second;
    }
    const bool firstEnds = first.back() == u'\\';
    const bool secondStarts = second.front() == u'\\';
    if (firstEnds && secondStarts) {
        return first + second.substr(1);
    }
    if (!firstEnds && !secondStarts) {
        return first + u'\\' + second;
    }
    return first + second;
}

}  // namespace webrig::apphost
