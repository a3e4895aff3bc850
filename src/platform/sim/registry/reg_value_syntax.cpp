#include "platform/sim/registry/reg_value_syntax.h"

#include "platform/sim/text/hex_digit.h"
#include "support/case_insensitive.h"
#include "support/wide_string.h"

namespace webrig::sim {
namespace {

using platform::RegValue;
namespace reg_type = platform::reg_type;

// Where regedit breaks a hex line: after the comma that takes the line to this column.
constexpr size_t kHexWrapColumn = 77;
constexpr qm::wstring_view kHexContinuationIndent = u"  ";

bool IsBlank(char16_t c) {
    return c == u' ' || c == u'\t';
}

class LineParser {
  public:
    explicit LineParser(const JoinedLine& line) : m_line(line), m_text(line.text()) {}

    RegValueLine Parse() {
        RegValueLine result;
        SkipBlanks();
        result.name = ParseName();
        SkipBlanks();
        if (Peek() != u'=') {
            Fail("expected '=' after the value name");
        }
        ++m_pos;
        SkipBlanks();
        const size_t dataStart = m_pos;
        if (Peek() == u'-') {
            ++m_pos;
            ExpectEnd();
            result.remove = true;
        } else if (Peek() == u'"') {
            result.value = RegValue::String(ParseQuoted());
            ExpectEnd();
        } else if (ConsumeWord(u"dword:")) {
            result.value = ParseDword();
        } else if (ConsumeWord(u"hex:")) {
            result.value = {reg_type::binary, ParseBytes()};
        } else if (ConsumeWord(u"hex(")) {
            const uint32_t type = ParseHexNumber(8, ')');
            ++m_pos;
            if (Peek() != u':') {
                Fail("expected ':' after hex(" + std::to_string(type) + ")");
            }
            ++m_pos;
            result.value = {type, ParseBytes()};
        } else {
            m_pos = dataStart;
            Fail("unknown value syntax; expected \"text\", dword:, hex:, hex(n): or -");
        }
        return result;
    }

    // The name and the '=' after it; false when the line does not start that way.
    bool SkipToData() {
        try {
            SkipBlanks();
            ParseName();
            SkipBlanks();
            if (Peek() != u'=') {
                return false;
            }
            ++m_pos;
            SkipBlanks();
            return true;
        } catch (const RegSyntaxError&) {
            return false;
        }
    }

    bool ConsumeWord(qm::wstring_view word) {
        if (qm::istarts_with(qm::wstring_view(m_text).substr(m_pos), word)) {
            m_pos += word.size();
            return true;
        }
        return false;
    }

  private:
    [[noreturn]] void Fail(const std::string& message) const {
        throw RegSyntaxError(m_line.LineAt(m_pos), message);
    }

    char16_t Peek() const { return m_pos < m_text.size() ? m_text[m_pos] : u'\0'; }
    bool AtEnd() const { return m_pos >= m_text.size(); }

    void SkipBlanks() {
        while (!AtEnd() && IsBlank(m_text[m_pos])) {
            ++m_pos;
        }
    }

    void ExpectEnd() {
        SkipBlanks();
        if (!AtEnd()) {
            Fail("unexpected text after the value");
        }
    }

    qm::wstring ParseName() {
        if (Peek() == u'@') {
            ++m_pos;
            return {};
        }
        if (Peek() != u'"') {
            Fail("expected a value name in double quotes or @");
        }
        return ParseQuoted();
    }

    qm::wstring ParseQuoted() {
        ++m_pos;  // opening quote
        qm::wstring out;
        while (true) {
            if (AtEnd()) {
                Fail("the quoted text is not closed");
            }
            const char16_t c = m_text[m_pos++];
            if (c == u'"') {
                return out;
            }
            if (c != u'\\') {
                out += c;
                continue;
            }
            if (Peek() != u'\\' && Peek() != u'"') {
                --m_pos;
                Fail("bad escape in quoted text; only \\\\ and \\\" are allowed");
            }
            out += m_text[m_pos++];
        }
    }

    uint32_t ParseHexNumber(size_t maxDigits, char16_t terminator) {
        const size_t start = m_pos;
        uint32_t number = 0;
        while (!AtEnd() && HexDigit(Peek()) >= 0) {
            if (m_pos - start == maxDigits) {
                Fail("too many hex digits");
            }
            number = (number << 4) | static_cast<uint32_t>(HexDigit(Peek()));
            ++m_pos;
        }
        if (m_pos == start) {
            Fail("expected hex digits");
        }
        if (terminator != u'\0' && Peek() != terminator) {
            Fail("unexpected character in a hex number");
        }
        return number;
    }

    RegValue ParseDword() {
        const uint32_t number = ParseHexNumber(8, u'\0');
        ExpectEnd();
        return RegValue::Dword(number);
    }

    std::vector<std::byte> ParseBytes() {
        std::vector<std::byte> bytes;
        SkipBlanks();
        if (AtEnd()) {
            return bytes;
        }
        while (true) {
            SkipBlanks();
            const size_t start = m_pos;
            while (!AtEnd() && HexDigit(Peek()) >= 0) {
                ++m_pos;
            }
            if (m_pos - start != 2) {
                m_pos = start;
                if (AtEnd() && !bytes.empty()) {
                    return bytes;  // a trailing comma
                }
                Fail("each byte must be two hex digits");
            }
            bytes.push_back(
                static_cast<std::byte>(HexDigit(m_text[start]) * 16 + HexDigit(m_text[start + 1])));
            SkipBlanks();
            if (AtEnd()) {
                return bytes;
            }
            if (Peek() != u',') {
                Fail("expected ',' between bytes");
            }
            ++m_pos;
        }
    }

    const JoinedLine& m_line;
    const qm::wstring& m_text;
    size_t m_pos = 0;
};

// REG_SZ data that `"text"` reproduces exactly.
bool WritableAsText(const RegValue& value, bool utf8) {
    const auto& data = value.data;
    if (value.type != reg_type::sz || data.size() < 2 || data.size() % 2 != 0 ||
        data[data.size() - 2] != std::byte{0} || data.back() != std::byte{0}) {
        return false;
    }
    const qm::wstring text = value.AsString();
    if (text.size() * 2 + 2 != data.size() || text.find_first_of(u"\r\n") != qm::wstring::npos) {
        return false;
    }
    return !(utf8 && qm::has_lone_surrogate(text));
}

void AppendHex(qm::wstring& out, uint32_t number, int minimumDigits) {
    static constexpr char16_t kDigits[] = u"0123456789abcdef";
    char16_t buffer[8];
    int count = 0;
    do {
        buffer[count++] = kDigits[number & 0xF];
        number >>= 4;
    } while (number != 0);
    for (int i = count; i < minimumDigits; ++i) {
        out += u'0';
    }
    while (count > 0) {
        out += buffer[--count];
    }
}

}  // namespace

void JoinedLine::Append(qm::wstring_view text, int lineNumber) {
    m_starts.emplace_back(m_text.size(), lineNumber);
    m_text += text;
}

bool JoinedLine::RemoveContinuation() {
    if (m_text.empty() || m_text.back() != u'\\') {
        return false;
    }
    m_text.pop_back();
    while (!m_text.empty() && IsBlank(m_text.back())) {
        m_text.pop_back();
    }
    return true;
}

int JoinedLine::LineAt(size_t offset) const noexcept {
    int line = m_starts.front().second;
    for (const auto& [start, number] : m_starts) {
        if (start <= offset) {
            line = number;
        }
    }
    return line;
}

bool IsHexValueLine(qm::wstring_view line) {
    const JoinedLine joined(line, 0);
    LineParser parser(joined);
    return parser.SkipToData() && parser.ConsumeWord(u"hex");
}

RegValueLine ParseValueLine(const JoinedLine& line) {
    return LineParser(line).Parse();
}

qm::wstring QuoteRegText(qm::wstring_view text) {
    qm::wstring out;
    out.reserve(text.size() + 2);
    out += u'"';
    for (const char16_t c : text) {
        if (c == u'\\' || c == u'"') {
            out += u'\\';
        }
        out += c;
    }
    out += u'"';
    return out;
}

qm::wstring FormatValueLine(const NamedValue& named, qm::wstring_view eol, bool utf8) {
    const RegValue& value = named.value;
    qm::wstring line = named.name.empty() ? qm::wstring(u"@") : QuoteRegText(named.name);
    line += u'=';
    if (WritableAsText(value, utf8)) {
        line += QuoteRegText(value.AsString());
        line += eol;
        return line;
    }
    if (value.type == reg_type::dword && value.data.size() == 4) {
        line += u"dword:";
        AppendHex(line, *value.AsDword(), 8);
        line += eol;
        return line;
    }
    if (value.type == reg_type::binary) {
        line += u"hex:";
    } else {
        line += u"hex(";
        AppendHex(line, value.type, 1);
        line += u"):";
    }
    size_t column = line.size();
    for (size_t i = 0; i < value.data.size(); ++i) {
        AppendHex(line, std::to_integer<uint32_t>(value.data[i]), 2);
        column += 2;
        if (i + 1 == value.data.size()) {
            break;
        }
        line += u',';
        ++column;
        if (column >= kHexWrapColumn) {
            line += u'\\';
            line += eol;
            line += kHexContinuationIndent;
            column = kHexContinuationIndent.size();
        }
    }
    line += eol;
    return line;
}

}  // namespace webrig::sim
