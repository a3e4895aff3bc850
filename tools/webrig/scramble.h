#pragma once
// `webrig scramble`: a password, read from standard input, in the scrambled form the settings
// file keeps it in.

#include <istream>
#include <ostream>

namespace webrig::cli {

// Reads one line (without echo on a terminal) and writes the scrambled value: as UTF-8 text
// with a line break, or with `utf16` as the UTF-16LE bytes a UTF-16 settings file holds, without
// a line break. The exit code.
int ScramblePassword(std::istream& in, std::ostream& out, bool utf16);

}  // namespace webrig::cli
