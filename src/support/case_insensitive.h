#pragma once
// Comparisons that ignore letter case. Most comparisons in webrig are exact; these serve the few
// that Windows or IIS make without regard to case (registry key names, file paths, "Website_",
// "DefaultAppPool", ...). Letter case is folded by upper-casing, as CharUpperW and the registry do.

#include <string>

#include "support/wide_string.h"

namespace qm {

// Simple (one code unit to one code unit) upper-case mapping for Basic Latin, Latin-1, Latin
// Extended-A, Greek and Coptic, Cyrillic (up to U+052F) and the full-width Latin letters; other
// code units map to themselves.
char16_t to_upper(char16_t c) noexcept;
wstring to_upper(wstring_view text);

int icompare(wstring_view a, wstring_view b) noexcept;
bool iequals(wstring_view a, wstring_view b) noexcept;
bool istarts_with(wstring_view text, wstring_view prefix) noexcept;
// Finds `needle` in `haystack` ignoring case; npos when absent.
size_t ifind(wstring_view haystack, wstring_view needle) noexcept;

// Ordering for maps and sets keyed without regard to case.
struct iless {
    using is_transparent = void;
    bool operator()(wstring_view a, wstring_view b) const noexcept { return icompare(a, b) < 0; }
};

// Character traits that compare by upper-cased code units.
struct ci_char_traits : std::char_traits<char16_t> {
    static bool eq(char16_t a, char16_t b) noexcept { return to_upper(a) == to_upper(b); }
    static bool lt(char16_t a, char16_t b) noexcept { return to_upper(a) < to_upper(b); }
    static int compare(const char16_t* a, const char16_t* b, size_t n) noexcept {
        return icompare(wstring_view(a, n), wstring_view(b, n));
    }
    static const char16_t* find(const char16_t* s, size_t n, char16_t c) noexcept {
        const char16_t upper = to_upper(c);
        for (size_t i = 0; i < n; ++i) {
            if (to_upper(s[i]) == upper) {
                return s + i;
            }
        }
        return nullptr;
    }
};

// The case-insensitive string type.
using _stringx = std::basic_string<char16_t, ci_char_traits>;

}  // namespace qm
