#pragma once
// The module's text type. Everything inside webrig is UTF-16, as on Windows; UTF-8 appears only
// at the edges (command line, terminal logs, file names of the simulated machine).

#include <string>
#include <string_view>

namespace qm {

using wstring = std::u16string;
using wstring_view = std::u16string_view;

// UTF-16 to UTF-8. A lone surrogate becomes U+FFFD: text from outside may be malformed.
std::string to_utf8(wstring_view text);

// UTF-8 to UTF-16. Invalid or overlong sequences become U+FFFD.
wstring from_utf8(std::string_view text);

// Strict UTF-8 to UTF-16 for input whose damage must be reported, not repaired. Returns false and
// sets `bad_offset` to the byte offset of the first invalid sequence.
bool from_utf8_strict(std::string_view text, wstring& out, size_t& bad_offset);

// Whether the text holds a surrogate that is not half of a pair (UTF-8 cannot carry it).
bool has_lone_surrogate(wstring_view text) noexcept;

// ASCII-only literal helper for places that build text from narrow constants.
wstring widen_ascii(std::string_view ascii);

}  // namespace qm
