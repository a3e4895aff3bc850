#pragma once
// Passwords in the settings file are scrambled byte by byte with the key "_Wexley_": each
// character of the stored value carries one byte of the UTF-16LE password in its low 8 bits.
//
// The scrambled form survives only a UTF-16 settings file. In an ANSI file the characters have
// to be bytes of the code page, and some do not come back as written: U+0000 cannot be stored
// (a zero byte makes the file read as UTF-16), and under Windows-1252 the bytes 0x80-0x9F other
// than 0x81, 0x8D, 0x8F, 0x90 and 0x9D decode to other code points (0x8A is U+0160). The high
// byte 0x00 of an ASCII first character scrambles to 0x8A, so nearly every password is damaged
// by an ANSI file. Either file loses a value that ends in a scrambled space, tab or line feed,
// since the line grammar trims them.

#include "platform/code_page.h"
#include "support/wide_string.h"

namespace webrig::settings {

// Each character's low 8 bits is one scrambled byte; the descrambled bytes are read as UTF-16LE
// up to the first zero character; an odd last byte makes a character with a zero high byte.
qm::wstring DescramblePassword(qm::wstring_view fileText, platform::AnsiCodePage& ansi);

// The inverse: one character U+0000..U+00FF per scrambled byte, two per plaintext character.
qm::wstring ScramblePassword(qm::wstring_view plaintext, platform::AnsiCodePage& ansi);

}  // namespace webrig::settings
