#include "platform/sim/machine/json.h"

#include <charconv>
#include <cmath>
#include <limits>

#include "support/wide_string.h"

namespace webrig::sim {
namespace {

class Parser {
  public:
    explicit Parser(std::string_view text) : m_text(text) {}

    JsonValue ParseDocument() {
        if (m_text.substr(0, 3) == "\xEF\xBB\xBF") {
            m_pos = 3;
        }
        SkipWhitespace();
        JsonValue value = ParseValue(0);
        SkipWhitespace();
        if (m_pos < m_text.size()) {
            Fail("unexpected text after the value");
        }
        return value;
    }

  private:
    [[noreturn]] void Fail(const std::string& message) const { throw JsonError(m_line, message); }

    bool AtEnd() const { return m_pos >= m_text.size(); }
    char Peek() const { return AtEnd() ? '\0' : m_text[m_pos]; }

    void SkipWhitespace() {
        while (!AtEnd()) {
            const char c = m_text[m_pos];
            if (c == '\n') {
                ++m_line;
            } else if (c != ' ' && c != '\t' && c != '\r') {
                return;
            }
            ++m_pos;
        }
    }

    void Expect(std::string_view word) {
        if (m_text.substr(m_pos, word.size()) != word) {
            Fail("unexpected text; expected a JSON value");
        }
        m_pos += word.size();
    }

    JsonValue ParseValue(int depth) {
        const int line = m_line;
        JsonValue value;
        switch (Peek()) {
            case '{':
                value = ParseObject(depth + 1);
                break;
            case '[':
                value = ParseArray(depth + 1);
                break;
            case '"':
                value = JsonValue::String(ParseString());
                break;
            case 't':
                Expect("true");
                value = JsonValue::Bool(true);
                break;
            case 'f':
                Expect("false");
                value = JsonValue::Bool(false);
                break;
            case 'n':
                Expect("null");
                break;
            case '\0':
                if (AtEnd()) {
                    Fail("the text ends where a value was expected");
                }
                Fail("unexpected character; expected a JSON value");
            default:
                if (Peek() == '-' || (Peek() >= '0' && Peek() <= '9')) {
                    value = JsonValue::Number(ParseNumber());
                } else {
                    Fail("unexpected character; expected a JSON value");
                }
        }
        value.setLine(line);
        return value;
    }

    void Enter(int depth) const {
        if (depth > kMaxJsonDepth) {
            Fail("nesting deeper than " + std::to_string(kMaxJsonDepth) + " levels");
        }
    }

    JsonValue ParseObject(int depth) {
        Enter(depth);
        ++m_pos;  // {
        std::vector<JsonMember> members;
        SkipWhitespace();
        if (Peek() == '}') {
            ++m_pos;
            return JsonValue::Object(std::move(members));
        }
        while (true) {
            SkipWhitespace();
            if (Peek() != '"') {
                Fail("expected a quoted member name");
            }
            JsonMember member;
            member.line = m_line;
            member.key = ParseString();
            for (const auto& earlier : members) {
                if (earlier.key == member.key) {
                    Fail("duplicate key \"" + member.key + "\" (first on line " +
                         std::to_string(earlier.line) + ")");
                }
            }
            SkipWhitespace();
            if (Peek() != ':') {
                Fail("expected ':' after the member name");
            }
            ++m_pos;
            SkipWhitespace();
            member.value = ParseValue(depth);
            members.push_back(std::move(member));
            SkipWhitespace();
            if (Peek() == ',') {
                ++m_pos;
                continue;
            }
            if (Peek() == '}') {
                ++m_pos;
                return JsonValue::Object(std::move(members));
            }
            Fail(AtEnd() ? "the text ends inside an object" : "expected ',' or '}'");
        }
    }

    JsonValue ParseArray(int depth) {
        Enter(depth);
        ++m_pos;  // [
        std::vector<JsonValue> items;
        SkipWhitespace();
        if (Peek() == ']') {
            ++m_pos;
            return JsonValue::Array(std::move(items));
        }
        while (true) {
            SkipWhitespace();
            items.push_back(ParseValue(depth));
            SkipWhitespace();
            if (Peek() == ',') {
                ++m_pos;
                continue;
            }
            if (Peek() == ']') {
                ++m_pos;
                return JsonValue::Array(std::move(items));
            }
            Fail(AtEnd() ? "the text ends inside an array" : "expected ',' or ']'");
        }
    }

    unsigned ParseHex4() {
        if (m_pos + 4 > m_text.size()) {
            Fail("a \\u escape needs four hex digits");
        }
        unsigned value = 0;
        for (int i = 0; i < 4; ++i) {
            const char c = m_text[m_pos++];
            value <<= 4;
            if (c >= '0' && c <= '9') {
                value |= static_cast<unsigned>(c - '0');
            } else if (c >= 'a' && c <= 'f') {
                value |= static_cast<unsigned>(c - 'a' + 10);
            } else if (c >= 'A' && c <= 'F') {
                value |= static_cast<unsigned>(c - 'A' + 10);
            } else {
                Fail("a \\u escape needs four hex digits");
            }
        }
        return value;
    }

    void AppendEscapedCodePoint(std::string& out) {
        unsigned cp = ParseHex4();
        if (cp >= 0xDC00 && cp <= 0xDFFF) {
            Fail("a \\u escape holds a low surrogate without its high surrogate");
        }
        if (cp >= 0xD800 && cp <= 0xDBFF) {
            if (m_text.substr(m_pos, 2) != "\\u") {
                Fail("a \\u escape holds a high surrogate without its low surrogate");
            }
            m_pos += 2;
            const unsigned low = ParseHex4();
            if (low < 0xDC00 || low > 0xDFFF) {
                Fail("a \\u escape holds a high surrogate without its low surrogate");
            }
            cp = 0x10000 + ((cp - 0xD800) << 10) + (low - 0xDC00);
        }
        const std::u16string utf16 =
            cp < 0x10000 ? std::u16string(1, static_cast<char16_t>(cp))
                         : std::u16string{static_cast<char16_t>(0xD800 + ((cp - 0x10000) >> 10)),
                                          static_cast<char16_t>(0xDC00 + (cp & 0x3FF))};
        out += qm::to_utf8(utf16);
    }

    std::string ParseString() {
        ++m_pos;  // opening quote
        std::string out;
        while (true) {
            if (AtEnd()) {
                Fail("the text ends inside a string");
            }
            const char c = m_text[m_pos++];
            if (c == '"') {
                return out;
            }
            if (static_cast<unsigned char>(c) < 0x20) {
                Fail("a control character must be escaped inside a string");
            }
            if (c != '\\') {
                out += c;
                continue;
            }
            if (AtEnd()) {
                Fail("the text ends inside a string");
            }
            switch (m_text[m_pos++]) {
                case '"':
                    out += '"';
                    break;
                case '\\':
                    out += '\\';
                    break;
                case '/':
                    out += '/';
                    break;
                case 'b':
                    out += '\b';
                    break;
                case 'f':
                    out += '\f';
                    break;
                case 'n':
                    out += '\n';
                    break;
                case 'r':
                    out += '\r';
                    break;
                case 't':
                    out += '\t';
                    break;
                case 'u':
                    AppendEscapedCodePoint(out);
                    break;
                default:
                    Fail("unknown escape in a string");
            }
        }
    }

    void SkipDigits() {
        while (Peek() >= '0' && Peek() <= '9') {
            ++m_pos;
        }
    }

    double ParseNumber() {
        const size_t start = m_pos;
        if (Peek() == '-') {
            ++m_pos;
        }
        if (Peek() == '0') {
            ++m_pos;
        } else if (Peek() >= '1' && Peek() <= '9') {
            SkipDigits();
        } else {
            Fail("a number needs digits");
        }
        if (Peek() == '.') {
            ++m_pos;
            if (!(Peek() >= '0' && Peek() <= '9')) {
                Fail("a number needs digits after its decimal point");
            }
            SkipDigits();
        }
        if (Peek() == 'e' || Peek() == 'E') {
            ++m_pos;
            if (Peek() == '+' || Peek() == '-') {
                ++m_pos;
            }
            if (!(Peek() >= '0' && Peek() <= '9')) {
                Fail("a number needs digits in its exponent");
            }
            SkipDigits();
        }
        double value = 0;
        const char* first = m_text.data() + start;
        const char* last = m_text.data() + m_pos;
        const auto [end, error] = std::from_chars(first, last, value);
        if (error == std::errc::result_out_of_range) {
            Fail("number out of range");
        }
        if (error != std::errc{} || end != last) {
            Fail("malformed number");
        }
        return value;
    }

    std::string_view m_text;
    size_t m_pos = 0;
    int m_line = 1;
};

int LineOfOffset(std::string_view text, size_t offset) {
    int line = 1;
    for (size_t i = 0; i < offset && i < text.size(); ++i) {
        line += text[i] == '\n' ? 1 : 0;
    }
    return line;
}

void WriteString(std::string& out, std::string_view text) {
    static constexpr char kHex[] = "0123456789abcdef";
    out += '"';
    for (const char c : text) {
        switch (c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\t':
                out += "\\t";
                break;
            default:
                if (static_cast<unsigned char>(c) < 0x20) {
                    out += "\\u00";
                    out += kHex[(c >> 4) & 0xF];
                    out += kHex[c & 0xF];
                } else {
                    out += c;
                }
        }
    }
    out += '"';
}

void WriteNumber(std::string& out, double number) {
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, number);
    out.append(buffer, result.ptr);
}

void WriteValue(std::string& out, const JsonValue& value, int indent) {
    const std::string inner(static_cast<size_t>(indent + 2), ' ');
    const std::string outer(static_cast<size_t>(indent), ' ');
    switch (value.kind()) {
        case JsonValue::Kind::null:
            out += "null";
            break;
        case JsonValue::Kind::boolean:
            out += value.AsBool() ? "true" : "false";
            break;
        case JsonValue::Kind::number:
            WriteNumber(out, value.AsNumber());
            break;
        case JsonValue::Kind::string:
            WriteString(out, value.AsString());
            break;
        case JsonValue::Kind::array: {
            if (value.AsArray().empty()) {
                out += "[]";
                break;
            }
            out += "[\n";
            bool first = true;
            for (const auto& item : value.AsArray()) {
                out += first ? "" : ",\n";
                first = false;
                out += inner;
                WriteValue(out, item, indent + 2);
            }
            out += "\n" + outer + "]";
            break;
        }
        case JsonValue::Kind::object: {
            if (value.AsObject().empty()) {
                out += "{}";
                break;
            }
            out += "{\n";
            bool first = true;
            for (const auto& member : value.AsObject()) {
                out += first ? "" : ",\n";
                first = false;
                out += inner;
                WriteString(out, member.key);
                out += ": ";
                WriteValue(out, member.value, indent + 2);
            }
            out += "\n" + outer + "}";
            break;
        }
    }
}

}  // namespace

JsonValue JsonValue::Bool(bool value) {
    JsonValue result;
    result.m_kind = Kind::boolean;
    result.m_bool = value;
    return result;
}

JsonValue JsonValue::Number(double value) {
    JsonValue result;
    result.m_kind = Kind::number;
    result.m_number = value;
    return result;
}

JsonValue JsonValue::String(std::string utf8) {
    JsonValue result;
    result.m_kind = Kind::string;
    result.m_string = std::move(utf8);
    return result;
}

JsonValue JsonValue::Array(std::vector<JsonValue> items) {
    JsonValue result;
    result.m_kind = Kind::array;
    result.m_items = std::move(items);
    return result;
}

JsonValue JsonValue::Object(std::vector<JsonMember> members) {
    JsonValue result;
    result.m_kind = Kind::object;
    result.m_members = std::move(members);
    return result;
}

bool JsonValue::IsInteger() const noexcept {
    // 2^63 itself is out of range; every double below it in magnitude converts exactly.
    constexpr double kLimit = 9223372036854775808.0;
    return m_kind == Kind::number && std::trunc(m_number) == m_number && m_number < kLimit &&
           m_number >= -kLimit;
}

const JsonValue* JsonValue::Find(std::string_view key) const noexcept {
    for (const auto& member : m_members) {
        if (member.key == key) {
            return &member.value;
        }
    }
    return nullptr;
}

bool JsonValue::operator==(const JsonValue& other) const {
    if (m_kind != other.m_kind) {
        return false;
    }
    switch (m_kind) {
        case Kind::null:
            return true;
        case Kind::boolean:
            return m_bool == other.m_bool;
        case Kind::number:
            return m_number == other.m_number;
        case Kind::string:
            return m_string == other.m_string;
        case Kind::array:
            return m_items == other.m_items;
        case Kind::object:
            return m_members == other.m_members;
    }
    return false;
}

const char* DescribeKind(JsonValue::Kind kind) noexcept {
    switch (kind) {
        case JsonValue::Kind::null:
            return "null";
        case JsonValue::Kind::boolean:
            return "a boolean";
        case JsonValue::Kind::number:
            return "a number";
        case JsonValue::Kind::string:
            return "a string";
        case JsonValue::Kind::array:
            return "an array";
        case JsonValue::Kind::object:
            return "an object";
    }
    return "a value";
}

JsonValue ParseJson(std::string_view text) {
    std::u16string ignored;
    size_t badOffset = 0;
    if (!qm::from_utf8_strict(text, ignored, badOffset)) {
        throw JsonError(LineOfOffset(text, badOffset), "the text is not valid UTF-8");
    }
    return Parser(text).ParseDocument();
}

std::string WriteJson(const JsonValue& value) {
    std::string out;
    WriteValue(out, value, 0);
    out += '\n';
    return out;
}

}  // namespace webrig::sim
