#include "machine_files.h"

#include <fstream>
#include <sstream>

#include "platform/sim/machine/machine_layout.h"

namespace webrig::cli {

MachineFiles ReadMachineFiles(const std::filesystem::path& folder) {
    MachineFiles files;
    const std::filesystem::path lock = sim::MachineLockPath(folder);
    const std::filesystem::path setup = sim::DriveCPath(folder) / "ProgramData" / "webrig";
    for (auto it = std::filesystem::recursive_directory_iterator(folder);
         it != std::filesystem::recursive_directory_iterator(); ++it) {
        if (it->path() == setup) {
            it.disable_recursion_pending();
            continue;
        }
        if (!it->is_regular_file() || it->path() == lock) {
            continue;
        }
        std::ifstream in(it->path(), std::ios::binary);
        std::ostringstream bytes;
        bytes << in.rdbuf();
        files[std::filesystem::relative(it->path(), folder).generic_string()] = bytes.str();
    }
    return files;
}

}  // namespace webrig::cli
