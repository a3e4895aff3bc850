#pragma once
// A small JSON reader and writer for the machine's own files. Values remember the line they
// start on, so that a mistake in a hand-edited file can be reported where it is.

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace webrig::sim {

struct JsonMember;

class JsonValue {
  public:
    enum class Kind { null, boolean, number, string, array, object };

    JsonValue() = default;
    static JsonValue Bool(bool value);
    static JsonValue Number(double value);
    static JsonValue String(std::string utf8);
    static JsonValue Array(std::vector<JsonValue> items);
    static JsonValue Object(std::vector<JsonMember> members);

    Kind kind() const noexcept { return m_kind; }
    // 1-based line of the value's first character; 0 for values not read from text.
    int line() const noexcept { return m_line; }
    void setLine(int line) noexcept { m_line = line; }

    bool AsBool() const noexcept { return m_bool; }
    double AsNumber() const noexcept { return m_number; }
    const std::string& AsString() const noexcept { return m_string; }
    const std::vector<JsonValue>& AsArray() const noexcept { return m_items; }
    const std::vector<JsonMember>& AsObject() const noexcept { return m_members; }

    // A number without a fractional part that fits the range of `long long`.
    bool IsInteger() const noexcept;
    // The member named `key` of an object; nullptr when there is none.
    const JsonValue* Find(std::string_view key) const noexcept;

    bool operator==(const JsonValue& other) const;

  private:
    Kind m_kind = Kind::null;
    int m_line = 0;
    bool m_bool = false;
    double m_number = 0;
    std::string m_string;
    std::vector<JsonValue> m_items;
    std::vector<JsonMember> m_members;
};

struct JsonMember {
    std::string key;
    int line = 0;  // where the key is written
    JsonValue value;

    bool operator==(const JsonMember& other) const {
        return key == other.key && value == other.value;
    }
};

// Names a kind in messages: "a string", "an object", ...
const char* DescribeKind(JsonValue::Kind kind) noexcept;

class JsonError : public std::runtime_error {
  public:
    JsonError(int line, const std::string& message) : std::runtime_error(message), m_line(line) {}
    int line() const noexcept { return m_line; }

  private:
    int m_line;
};

// The whole text must be one JSON value (RFC 8259) in UTF-8; a leading byte-order mark is
// accepted. Duplicate keys and nesting deeper than kMaxJsonDepth are errors. Throws JsonError.
inline constexpr int kMaxJsonDepth = 64;
JsonValue ParseJson(std::string_view text);

// Indented with two spaces, members in their order, ending with a line break.
std::string WriteJson(const JsonValue& value);

}  // namespace webrig::sim
