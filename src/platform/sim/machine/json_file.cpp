#include "platform/sim/machine/json_file.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "platform/sim/machine/machine_error.h"

namespace webrig::sim {
namespace {

// How far the parser has read: the line of the last character it has taken other than a line
// break. The parser reports a key as soon as it has read the closing quote, and stops at a
// number too large one character after it, so this is the line of the key or the number.
struct ReadingProgress {
    int lineBreaks = 0;
    int lastLine = 1;
};

// Walks the text for the parser and keeps the ReadingProgress.
class ProgressIterator {
  public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    ProgressIterator(const char* at, ReadingProgress* progress) : m_at(at), m_progress(progress) {}

    reference operator*() const { return *m_at; }
    ProgressIterator& operator++() {
        if (*m_at == '\n') {
            ++m_progress->lineBreaks;
        } else {
            m_progress->lastLine = m_progress->lineBreaks + 1;
        }
        ++m_at;
        return *this;
    }
    bool operator==(const ProgressIterator& other) const { return m_at == other.m_at; }

  private:
    const char* m_at = nullptr;
    ReadingProgress* m_progress = nullptr;
};

// Where the parser is in the document: each open object or array, and the key or index of the
// member being read in it.
struct Container {
    Json::json_pointer at;
    bool array = false;
    std::string key;
    std::size_t index = 0;

    Json::json_pointer Child() const { return array ? at / index : at / key; }
};

int LineOfByte(std::string_view text, std::size_t offset) {
    const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(offset, text.size()));
    return 1 + static_cast<int>(std::count(text.begin(), end, '\n'));
}

// The library's message without its "[json.exception...] parse error at line 1, column 2: "
// prefix: the caller reports the line.
std::string ParseErrorText(const Json::exception& error) {
    const std::string what = error.what();
    const size_t column = what.find(", column ");
    const size_t end = column != std::string::npos ? what.find(": ", column) : what.find("] ");
    return "not valid JSON: " + (end == std::string::npos ? what : what.substr(end + 2));
}

}  // namespace

JsonFile::JsonFile(std::string_view text, std::filesystem::path file) : m_file(std::move(file)) {
    const size_t start = text.substr(0, 3) == "\xEF\xBB\xBF" ? 3 : 0;
    m_firstLine = LineOfByte(text, text.find_first_not_of(" \t\r\n", start));

    ReadingProgress progress;
    std::vector<Container> open;
    const auto noteEvent = [&](int, Json::parse_event_t event, Json& parsed) {
        using Event = Json::parse_event_t;
        switch (event) {
            case Event::object_start:
            case Event::array_start:
                if (open.size() >= kMaxDepth) {
                    throw MachineError(
                        m_file, progress.lastLine,
                        "nesting deeper than " + std::to_string(kMaxDepth) + " levels");
                }
                open.push_back(Container{open.empty() ? Json::json_pointer() : open.back().Child(),
                                         event == Event::array_start, "", 0});
                break;
            case Event::key: {
                Container& object = open.back();
                object.key = parsed.get<std::string>();
                const auto [earlier, added] =
                    m_keyLines.emplace(object.Child().to_string(), progress.lastLine);
                if (!added) {
                    throw MachineError(m_file, progress.lastLine,
                                       "duplicate key \"" + object.key + "\" (first on line " +
                                           std::to_string(earlier->second) + ")");
                }
                break;
            }
            case Event::object_end:
            case Event::array_end:
                open.pop_back();
                [[fallthrough]];
            case Event::value:
                if (!open.empty() && open.back().array) {
                    ++open.back().index;
                }
                break;
        }
        return true;
    };
    try {
        m_root = Json::parse(ProgressIterator(text.data(), &progress),
                             ProgressIterator(text.data() + text.size(), &progress), noteEvent);
    } catch (const Json::parse_error& error) {
        // `byte` counts from 1 and names the character the parser stopped at.
        throw MachineError(m_file, LineOfByte(text, error.byte == 0 ? 0 : error.byte - 1),
                           ParseErrorText(error));
    } catch (const Json::exception& error) {
        // A number out of range, reported without a position.
        throw MachineError(m_file, progress.lastLine, ParseErrorText(error));
    }
}

std::vector<JsonMember> JsonFile::Members(const Json::json_pointer& at, const std::string& what,
                                          const std::string& context) const {
    const Json& object = m_root.at(at);
    if (!object.is_object()) {
        Fail(at, what + " must hold an object");
    }
    std::vector<JsonMember> members;
    for (const auto& [key, value] : object.items()) {
        members.push_back({at / key, key, "\"" + key + "\"" + context, value});
    }
    return members;
}

int JsonFile::LineOf(const Json::json_pointer& at) const {
    const auto found = m_keyLines.find(at.to_string());
    return found == m_keyLines.end() ? m_firstLine : found->second;
}

void JsonFile::Fail(const Json::json_pointer& at, const std::string& message) const {
    throw MachineError(m_file, LineOf(at), message);
}

void JsonFile::ExpectType(const JsonMember& member, Json::value_t type) const {
    const bool number = type == Json::value_t::number_unsigned && member.value.is_number();
    if (member.value.type() != type && !number) {
        Fail(member.at, member.name + " must be " + DescribeJsonType(type) + ", not " +
                            DescribeJsonType(member.value.type()));
    }
}

uint32_t JsonFile::ReadCount(const JsonMember& member, uint32_t maximum) const {
    ExpectType(member, Json::value_t::number_unsigned);
    const std::optional<uint32_t> count = WholeNumber(member.value, maximum);
    if (!count) {
        Fail(member.at,
             member.name + " must be a whole number from 0 to " + std::to_string(maximum));
    }
    return *count;
}

std::optional<uint32_t> WholeNumber(const Json& value, uint32_t maximum) {
    if (value.is_number_unsigned()) {
        const auto number = value.get<uint64_t>();
        return number <= maximum ? std::optional(static_cast<uint32_t>(number)) : std::nullopt;
    }
    if (value.is_number_float()) {
        const auto number = value.get<double>();
        if (std::trunc(number) == number && number >= 0 && number <= maximum) {
            return static_cast<uint32_t>(number);
        }
    }
    return std::nullopt;  // negative, fractional or not a number
}

std::string DescribeJsonType(Json::value_t type) {
    const std::string name = Json(type).type_name();  // "object", "number", "null", ...
    return name == "null" ? name : (name[0] == 'o' || name[0] == 'a' ? "an " : "a ") + name;
}

std::string FormatJson(const Json& document) {
    return document.dump(2) + "\n";
}

}  // namespace webrig::sim
