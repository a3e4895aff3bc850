#include "support/case_insensitive.h"

#include <algorithm>

namespace qm {

char16_t to_upper(char16_t c) noexcept {
    if (c < 0x80) {
        return (c >= u'a' && c <= u'z') ? static_cast<char16_t>(c - 0x20) : c;
    }
    // Latin-1: à..þ except ÷; ÿ has its capital in Latin Extended-A.
    if (c >= 0xE0 && c <= 0xFE && c != 0xF7) {
        return static_cast<char16_t>(c - 0x20);
    }
    if (c == 0xFF) {
        return 0x178;
    }
    // Latin Extended-A: capital and small letters alternate; the parity of the capital changes
    // at U+0138 and back at U+0149.
    if ((c >= 0x100 && c <= 0x137) || (c >= 0x14A && c <= 0x177)) {
        return (c % 2 == 1) ? static_cast<char16_t>(c - 1) : c;
    }
    if ((c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E)) {
        return (c % 2 == 0) ? static_cast<char16_t>(c - 1) : c;
    }
    // Greek.
    if ((c >= 0x3B1 && c <= 0x3C1) || (c >= 0x3C3 && c <= 0x3CB)) {
        return static_cast<char16_t>(c - 0x20);
    }
    // Archaic and Coptic letters in capital/small pairs.
    if ((c >= 0x370 && c <= 0x373) || c == 0x376 || c == 0x377 || (c >= 0x3D8 && c <= 0x3EF)) {
        return (c % 2 == 1) ? static_cast<char16_t>(c - 1) : c;
    }
    switch (c) {
        case 0x3C2:
            return 0x3A3;  // final sigma
        case 0x3AC:
            return 0x386;
        case 0x3AD:
            return 0x388;
        case 0x3AE:
            return 0x389;
        case 0x3AF:
            return 0x38A;
        case 0x3CC:
            return 0x38C;
        case 0x3CD:
            return 0x38E;
        case 0x3CE:
            return 0x38F;
        // Symbol forms of letters take the capital of the letter.
        case 0x3D0:
            return 0x392;
        case 0x3D1:
            return 0x398;
        case 0x3D5:
            return 0x3A6;
        case 0x3D6:
            return 0x3A0;
        case 0x3D7:
            return 0x3CF;
        case 0x3F0:
            return 0x39A;
        case 0x3F1:
            return 0x3A1;
        case 0x3F2:
            return 0x3F9;  // lunate sigma
        case 0x3F3:
            return 0x37F;
        case 0x3F5:
            return 0x395;
        case 0x3F8:
            return 0x3F7;
        case 0x3FB:
            return 0x3FA;
        case 0x37B:
            return 0x3FD;
        case 0x37C:
            return 0x3FE;
        case 0x37D:
            return 0x3FF;
        default:
            break;
    }
    // Cyrillic.
    if (c >= 0x430 && c <= 0x44F) {
        return static_cast<char16_t>(c - 0x20);
    }
    if (c >= 0x450 && c <= 0x45F) {
        return static_cast<char16_t>(c - 0x50);
    }
    if ((c >= 0x460 && c <= 0x481) || (c >= 0x48A && c <= 0x4BF) || (c >= 0x4D0 && c <= 0x52F)) {
        return (c % 2 == 1) ? static_cast<char16_t>(c - 1) : c;
    }
    // U+04C1..U+04CE pair the other way round (the capital is odd); U+04CF is the small palochka.
    if (c >= 0x4C1 && c <= 0x4CE) {
        return (c % 2 == 0) ? static_cast<char16_t>(c - 1) : c;
    }
    if (c == 0x4CF) {
        return 0x4C0;
    }
    // Full-width Latin.
    if (c >= 0xFF41 && c <= 0xFF5A) {
        return static_cast<char16_t>(c - 0x20);
    }
    return c;
}

wstring to_upper(wstring_view text) {
    wstring out(text);
    std::transform(out.begin(), out.end(), out.begin(), [](char16_t c) { return to_upper(c); });
    return out;
}

int icompare(wstring_view a, wstring_view b) noexcept {
    const size_t n = std::min(a.size(), b.size());
    for (size_t i = 0; i < n; ++i) {
        if (a[i] == b[i]) {
            continue;  // the common case, without folding
        }
        const char16_t ua = to_upper(a[i]);
        const char16_t ub = to_upper(b[i]);
        if (ua != ub) {
            return ua < ub ? -1 : 1;
        }
    }
    if (a.size() == b.size()) {
        return 0;
    }
    return a.size() < b.size() ? -1 : 1;
}

bool iequals(wstring_view a, wstring_view b) noexcept {
    return a.size() == b.size() && icompare(a, b) == 0;
}

bool istarts_with(wstring_view text, wstring_view prefix) noexcept {
    return text.size() >= prefix.size() && iequals(text.substr(0, prefix.size()), prefix);
}

size_t ifind(wstring_view haystack, wstring_view needle) noexcept {
    if (needle.size() > haystack.size()) {
        return wstring_view::npos;
    }
    for (size_t i = 0; i + needle.size() <= haystack.size(); ++i) {
        if (iequals(haystack.substr(i, needle.size()), needle)) {
            return i;
        }
    }
    return wstring_view::npos;
}

}  // namespace qm
