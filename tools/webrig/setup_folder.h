#pragma once
// The folder on the simulated machine where the installer engine keeps what it extracted for a
// run (its own module, webrig.dll, the settings file, support files):
// C:\ProgramData\webrig\setup-<process id>. Removed with everything in it when the run ends, so a
// run leaves only what webrig itself wrote.

#include <filesystem>
#include <string>

#include "platform/sim/machine/machine.h"

namespace webrig::cli {

class SetupFolder {
  public:
    explicit SetupFolder(const sim::Machine& machine);
    ~SetupFolder();
    SetupFolder(const SetupFolder&) = delete;
    SetupFolder& operator=(const SetupFolder&) = delete;

    const qm::wstring& windowsPath() const { return m_windowsPath; }
    // Writes a file into the folder; its Windows path.
    qm::wstring Place(const std::string& name, const std::string& bytes);

  private:
    std::filesystem::path m_parent;  // drive_c/ProgramData/webrig
    std::filesystem::path m_folder;
    qm::wstring m_windowsPath;
};

// A temporary folder of the host (not the machine), removed with its contents at the end.
class ScratchFolder {
  public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    const std::filesystem::path& path() const { return m_path; }

  private:
    std::filesystem::path m_path;
};

}  // namespace webrig::cli
