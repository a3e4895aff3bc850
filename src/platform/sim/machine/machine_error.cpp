#include "platform/sim/machine/machine_error.h"

namespace webrig::sim {
namespace {

std::string Describe(const std::filesystem::path& file, int line, const std::string& message) {
    std::string text = file.string();
    if (line > 0) {
        text += ':' + std::to_string(line);
    }
    return text + ": " + message;
}

}  // namespace

MachineError::MachineError(std::filesystem::path file, int line, const std::string& message)
    : std::runtime_error(Describe(file, line, message)), m_file(std::move(file)), m_line(line) {}

}  // namespace webrig::sim
