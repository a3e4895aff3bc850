#pragma once
// Command lines as Windows reads them: CreateProcessW finding the executable in the first token,
// and the C runtime of the started program splitting the rest into arguments.

#include <vector>

#include "support/wide_string.h"

namespace webrig::sim {

// The names CreateProcessW tries for the executable, in order: for a quoted first token only the
// text up to the closing quote; otherwise the text up to each space or tab in turn, ending with
// the whole line. Leading blanks are skipped. ".exe" is added to a name whose last component
// has no period.
std::vector<qm::wstring> ExecutableCandidates(qm::wstring_view commandLine);

// The program's arguments after its own name, split as CommandLineToArgvW and the Microsoft C
// runtime do: blanks separate; double quotes group and are dropped; 2n backslashes before a quote
// give n backslashes and the quote groups, 2n+1 give n and a literal quote; "" inside a quoted
// part is a literal quote; other backslashes are literal.
std::vector<qm::wstring> ProgramArguments(qm::wstring_view commandLine);

}  // namespace webrig::sim
