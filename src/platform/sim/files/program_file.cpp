#include "platform/sim/files/program_file.h"

#include <fstream>
#include <string>

namespace webrig::sim {

bool HasProgramHeader(const std::filesystem::path& hostPath) {
    std::ifstream file(hostPath, std::ios::binary);
    char magic[2] = {};
    return file.read(magic, 2) && magic[0] == 'M' && magic[1] == 'Z';
}

std::string ProgramFileContent(std::string_view fileName) {
    return "MZ\r\n" + std::string(fileName) +
           " of a simulated Windows machine: webrig runs it as the real program would run.\r\n";
}

}  // namespace webrig::sim
