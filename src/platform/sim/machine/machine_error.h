#pragma once
// A machine folder that cannot be used as it is: which file, which line, and what is wrong.

#include <filesystem>
#include <stdexcept>
#include <string>

namespace webrig::sim {

class MachineError : public std::runtime_error {
  public:
    // `line` is 1-based; 0 when the problem is not on a particular line (a missing file or folder).
    MachineError(std::filesystem::path file, int line, const std::string& message);

    const std::filesystem::path& file() const noexcept { return m_file; }
    int line() const noexcept { return m_line; }

  private:
    std::filesystem::path m_file;
    int m_line;
};

}  // namespace webrig::sim
