#pragma once
// One of the machine's JSON files (machine.json, services.json), read and written with
// nlohmann/json. A document read from text keeps no positions, so the reader notes the line of
// every key as the parser passes it: a mistake in a hand-edited file is reported as MachineError
// with the file and the line.

#include <cstdint>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace webrig::sim {

// Keys stay in the order they were added, so that written files keep a stable order.
using Json = nlohmann::ordered_json;

// A member of an object in the file. `name` says which key it is in messages: "\"state\"", or
// "\"state\" in service \"W3SVC\"" where the key alone would not tell.
struct JsonMember {
    Json::json_pointer at;
    std::string key;
    std::string name;
    const Json& value;
};

class JsonFile {
  public:
    // Nesting deeper than this is refused: no file of the machine comes near it.
    static constexpr int kMaxDepth = 64;

    // Reads `text` (RFC 8259, UTF-8, a leading byte-order mark allowed). Text that is not JSON, a
    // key written twice in one object and nesting deeper than kMaxDepth throw MachineError.
    JsonFile(std::string_view text, std::filesystem::path file);

    const Json& root() const noexcept { return m_root; }

    // The members of the object at `at`, in their order; fails with "<what> must hold an object"
    // when the value there is not one. `context` ends each member's name.
    std::vector<JsonMember> Members(const Json::json_pointer& at, const std::string& what,
                                    const std::string& context = "") const;

    // 1-based line on which the key of `at` is written; for the whole document, its first line.
    int LineOf(const Json::json_pointer& at) const;

    [[noreturn]] void Fail(const Json::json_pointer& at, const std::string& message) const;

    // Fails with "<name> must be a string, not a number" unless the member's value has `type`.
    void ExpectType(const JsonMember& member, Json::value_t type) const;

    // The member's value as a whole number from 0 to `maximum`; fails with "<name> must be a
    // whole number from 0 to <maximum>" otherwise.
    uint32_t ReadCount(const JsonMember& member, uint32_t maximum = 0xFFFFFFFFu) const;

  private:
    std::filesystem::path m_file;
    Json m_root;
    std::map<std::string, int> m_keyLines;  // the JSON pointer of each key, and its line
    int m_firstLine = 1;
};

// A number from 0 to `maximum` without a fractional part (1500 and 1500.0 alike); nullopt for
// anything else.
std::optional<uint32_t> WholeNumber(const Json& value, uint32_t maximum);

// "a string", "an object", ... for messages.
std::string DescribeJsonType(Json::value_t type);

// The text of a file: indented by two spaces, keys in their order, ending with a line break.
std::string FormatJson(const Json& document);

}  // namespace webrig::sim
