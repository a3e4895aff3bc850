#pragma once
// The checks every reader of one of the machine's JSON files makes, reported as MachineError
// with the file and the line.

#include <filesystem>
#include <string>

#include "platform/sim/machine/json.h"
#include "platform/sim/machine/machine_error.h"

namespace webrig::sim {

class JsonFileReader {
  public:
    explicit JsonFileReader(const std::filesystem::path& file) : m_file(file) {}

    [[noreturn]] void Fail(int line, const std::string& message) const {
        throw MachineError(m_file, line, message);
    }

    void ExpectKind(const JsonMember& member, JsonValue::Kind kind) const {
        if (member.value.kind() != kind) {
            Fail(member.value.line(), "\"" + member.key + "\" must be " + DescribeKind(kind) +
                                          ", not " + DescribeKind(member.value.kind()));
        }
    }

  private:
    const std::filesystem::path& m_file;
};

}  // namespace webrig::sim
