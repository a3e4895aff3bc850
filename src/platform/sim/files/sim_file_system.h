#pragma once
// The files of the simulated C: drive, as the 32-bit webrig sees them: on a 64-bit machine
// through the WOW64 file-system redirector.

#include <filesystem>

#include "platform/file_system.h"
#include "platform/sim/files/windows_path.h"
#include "platform/sim/files/wow64_redirection.h"

namespace webrig::sim {

class SimFileSystem final : public platform::FileSystem {
  public:
    // `driveRoot` is the host folder that stands for C:\.
    explicit SimFileSystem(std::filesystem::path driveRoot, Wow64FileRedirection redirection = {})
        : m_driveRoot(std::move(driveRoot)), m_redirection(std::move(redirection)) {}

    // Failures also set the thread's last error, as PathFileExistsW and CreateFileW do.
    bool PathExists(qm::wstring_view path) override;
    uint32_t ReadWholeFile(qm::wstring_view path, uint64_t maxBytes,
                           std::vector<std::byte>& contents) override;

    // The Windows path an access by the 32-bit process to `path` reaches.
    qm::wstring Redirect(qm::wstring_view path) const { return m_redirection.Redirect(path); }
    // Where that access lands on the host.
    ResolvedPath Resolve(qm::wstring_view path) const;
    const std::filesystem::path& driveRoot() const noexcept { return m_driveRoot; }

  private:
    std::filesystem::path m_driveRoot;
    Wow64FileRedirection m_redirection;
};

}  // namespace webrig::sim
