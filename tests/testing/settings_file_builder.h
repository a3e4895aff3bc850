#pragma once
// Writes settings files for tests and benchmarks: sections and entries in the order given, as
// UTF-16LE or Windows-1252 bytes with CRLF or LF line ends. Text the line grammar would not read
// back as written is refused with std::invalid_argument.

#include <cstddef>
#include <string_view>
#include <vector>

#include "support/wide_string.h"

namespace webrig::testing {

enum class SettingsEncoding { Utf16LeWithBom, Utf16Le, Windows1252 };
enum class LineEnding { CrLf, Lf };

class SettingsFileBuilder {
  public:
    // Starts a section; the entries that follow belong to it.
    SettingsFileBuilder& Section(qm::wstring_view name);
    SettingsFileBuilder& Entry(qm::wstring_view name, qm::wstring_view value);
    SettingsFileBuilder& Entry(qm::wstring_view name, long long value);
    // ASCII conveniences for the many plain keys of a project.
    SettingsFileBuilder& Section(std::string_view asciiName);
    SettingsFileBuilder& Entry(std::string_view asciiName, std::string_view asciiValue);
    SettingsFileBuilder& Entry(std::string_view asciiName, long long value);

    qm::wstring Text(LineEnding ending = LineEnding::CrLf) const;
    std::vector<std::byte> Bytes(SettingsEncoding encoding,
                                 LineEnding ending = LineEnding::CrLf) const;

  private:
    struct Line {
        bool isHeader;
        qm::wstring name;
        qm::wstring value;
    };
    std::vector<Line> m_lines;
};

}  // namespace webrig::testing
