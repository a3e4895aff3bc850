#pragma once
// Program and library files on the simulated drive. Windows loads only files that begin with the
// "MZ" of an executable's DOS header; the stock programs of a simulated machine are such files,
// standing in for the real ones.

#include <filesystem>
#include <string_view>

namespace webrig::sim {

// Whether the host file begins with "MZ".
bool HasProgramHeader(const std::filesystem::path& hostPath);

// The content of a stock program file named `fileName`.
std::string ProgramFileContent(std::string_view fileName);

}  // namespace webrig::sim
