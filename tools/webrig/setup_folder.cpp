#include "setup_folder.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <system_error>

#include "command_error.h"
#include "platform/sim/machine/machine_layout.h"

namespace webrig::cli {

SetupFolder::SetupFolder(const sim::Machine& machine) {
    const std::string name = "setup-" + std::to_string(::getpid());
    m_parent = sim::DriveCPath(machine.folder()) / "ProgramData" / "webrig";
    m_folder = m_parent / name;
    std::error_code error;
    std::filesystem::create_directories(m_folder, error);
    if (error) {
        throw InputError("cannot write to the machine: " + m_folder.string() + ": " +
                         error.message());
    }
    m_windowsPath = u"C:\\ProgramData\\webrig\\" + qm::from_utf8(name);
}

SetupFolder::~SetupFolder() {
    std::error_code error;
    std::filesystem::remove_all(m_folder, error);
    // The parent goes too when nothing else is left in it.
    std::filesystem::remove(m_parent, error);
}

qm::wstring SetupFolder::Place(const std::string& name, const std::string& bytes) {
    std::ofstream out(m_folder / name, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out.flush()) {
        throw InputError("cannot write " + name + " to the machine");
    }
    return m_windowsPath + u"\\" + qm::from_utf8(name);
}

ScratchFolder::ScratchFolder() {
    std::string pattern = std::filesystem::temp_directory_path() / "webrig-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw InputError("cannot make a temporary folder");
    }
    m_path = pattern;
}

ScratchFolder::~ScratchFolder() {
    std::error_code error;
    std::filesystem::remove_all(m_path, error);
}

}  // namespace webrig::cli
