#include "testing/settings_file_builder.h"

#include <stdexcept>
#include <string>

#include "platform/sim/text/windows_1252.h"

namespace webrig::testing {
namespace {

bool IsTrimmed(char16_t c) {
    return c == u' ' || c == u'\t' || c == u'\n';
}

void Refuse(const char* what) {
    throw std::invalid_argument(what);
}

}  // namespace

SettingsFileBuilder& SettingsFileBuilder::Section(qm::wstring_view name) {
    if (name.find_first_of(u"]\r\n") != qm::wstring_view::npos) {
        Refuse("a section name cannot hold ']' or a line break");
    }
    m_lines.push_back(Line{true, qm::wstring(name), {}});
    return *this;
}

SettingsFileBuilder& SettingsFileBuilder::Entry(qm::wstring_view name, qm::wstring_view value) {
    if (m_lines.empty()) {
        Refuse("an entry before the first section is never read");
    }
    if (name.find_first_of(u"=\r\n") != qm::wstring_view::npos) {
        Refuse("an entry name cannot hold '=' or a line break");
    }
    if (!name.empty() && (IsTrimmed(name.front()) || IsTrimmed(name.back()) ||
                          name.front() == u';' || name.front() == u'[')) {
        Refuse("an entry name would be trimmed or read as a comment or header");
    }
    // A "\n" inside a value survives a CRLF file only; Bytes() checks that for LF files.
    if (value.find(u'\r') != qm::wstring_view::npos) {
        Refuse("a value cannot hold a carriage return");
    }
    if (!value.empty() && IsTrimmed(value.back())) {
        Refuse("a value ending in a space, tab or line feed loses it when read");
    }
    m_lines.push_back(Line{false, qm::wstring(name), qm::wstring(value)});
    return *this;
}

SettingsFileBuilder& SettingsFileBuilder::Entry(qm::wstring_view name, long long value) {
    return Entry(name, qm::widen_ascii(std::to_string(value)));
}

SettingsFileBuilder& SettingsFileBuilder::Section(std::string_view asciiName) {
    return Section(qm::wstring_view(qm::widen_ascii(asciiName)));
}

SettingsFileBuilder& SettingsFileBuilder::Entry(std::string_view asciiName,
                                                std::string_view asciiValue) {
    return Entry(qm::wstring_view(qm::widen_ascii(asciiName)),
                 qm::wstring_view(qm::widen_ascii(asciiValue)));
}

SettingsFileBuilder& SettingsFileBuilder::Entry(std::string_view asciiName, long long value) {
    return Entry(qm::wstring_view(qm::widen_ascii(asciiName)), value);
}

qm::wstring SettingsFileBuilder::Text(LineEnding ending) const {
    const qm::wstring_view lineEnd = ending == LineEnding::CrLf ? u"\r\n" : u"\n";
    qm::wstring text;
    for (const Line& line : m_lines) {
        if (line.isHeader) {
            text += u'[';
            text += line.name;
            text += u']';
        } else {
            if (ending == LineEnding::Lf && line.value.find(u'\n') != qm::wstring::npos) {
                Refuse("a value holding a line feed needs a CRLF file");
            }
            text += line.name;
            text += u'=';
            text += line.value;
        }
        text += lineEnd;
    }
    return text;
}

std::vector<std::byte> SettingsFileBuilder::Bytes(SettingsEncoding encoding,
                                                  LineEnding ending) const {
    const qm::wstring text = Text(ending);
    std::vector<std::byte> bytes;
    if (encoding == SettingsEncoding::Windows1252) {
        sim::Windows1252 codePage;
        const std::string encoded = codePage.FromWide(text);
        bytes.assign(reinterpret_cast<const std::byte*>(encoded.data()),
                     reinterpret_cast<const std::byte*>(encoded.data()) + encoded.size());
        // A zero byte would make the file read as UTF-16; a character without a byte of its own
        // does not come back.
        if (encoded.find('\0') != std::string::npos || codePage.ToWide(bytes) != text) {
            Refuse("text has a character that a Windows-1252 file cannot carry");
        }
        return bytes;
    }
    bytes.reserve(text.size() * 2 + 2);
    const auto append = [&bytes](char16_t character) {
        bytes.push_back(static_cast<std::byte>(character & 0xFF));
        bytes.push_back(static_cast<std::byte>(character >> 8));
    };
    if (encoding == SettingsEncoding::Utf16LeWithBom) {
        append(0xFEFF);
    }
    for (const char16_t character : text) {
        append(character);
    }
    return bytes;
}

}  // namespace webrig::testing
