#pragma once
// A configuration file that cannot be used: IIS answers 0x8007000D and names the file and line.

#include <stdexcept>
#include <string>

namespace webrig::sim::iis7 {

class ConfigFileError : public std::runtime_error {
  public:
    ConfigFileError(const std::string& file, int line, const std::string& message)
        : std::runtime_error(file + (line > 0 ? "(" + std::to_string(line) + ")" : "") + ": " +
                             message) {}
};

}  // namespace webrig::sim::iis7
