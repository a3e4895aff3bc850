#pragma once
// The value lines of a .reg file: `"name"="text"`, `@=dword:0000000a`, `"name"=hex(7):41,00,...`,
// `"name"=-`. Hex data may run over several lines, each but the last ending in a backslash.

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "platform/sim/registry/registry_key.h"

namespace webrig::sim {

class RegSyntaxError : public std::runtime_error {
  public:
    RegSyntaxError(int line, const std::string& message)
        : std::runtime_error(message), m_line(line) {}
    int line() const noexcept { return m_line; }

  private:
    int m_line;
};

// A value written over one or more lines, joined: the backslashes that continue a line and the
// indentation of the next one are gone. Remembers where each line began, for error messages.
class JoinedLine {
  public:
    JoinedLine(qm::wstring_view text, int lineNumber) : m_text(text), m_starts{{0, lineNumber}} {}
    void Append(qm::wstring_view text, int lineNumber);
    // Removes a backslash that ends the text (with blanks before it): the value goes on.
    bool RemoveContinuation();

    const qm::wstring& text() const noexcept { return m_text; }
    int LineAt(size_t offset) const noexcept;

  private:
    qm::wstring m_text;
    std::vector<std::pair<size_t, int>> m_starts;
};

struct RegValueLine {
    qm::wstring name;     // empty for the default value (@)
    bool remove = false;  // "name"=- deletes the value
    platform::RegValue value;
};

// The line holds hex data, which may continue on the next line.
bool IsHexValueLine(qm::wstring_view line);

// Throws RegSyntaxError for a malformed line.
RegValueLine ParseValueLine(const JoinedLine& line);

// The value as regedit exports it, ending with `eol`. REG_SZ data that is not exactly text and
// one NUL, or that holds a line break (or a lone surrogate, when `utf8` says the file cannot
// carry one) is written as hex(1).
qm::wstring FormatValueLine(const NamedValue& value, qm::wstring_view eol, bool utf8);

// `text` with backslashes and double quotes escaped, between double quotes.
qm::wstring QuoteRegText(qm::wstring_view text);

}  // namespace webrig::sim
