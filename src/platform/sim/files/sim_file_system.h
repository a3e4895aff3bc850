#pragma once
// The files of the simulated C: drive.

#include <filesystem>

#include "platform/file_system.h"

namespace webrig::sim {

class SimFileSystem final : public platform::FileSystem {
  public:
    // `driveRoot` is the host folder that stands for C:\.
    explicit SimFileSystem(std::filesystem::path driveRoot) : m_driveRoot(std::move(driveRoot)) {}

    // Failures also set the thread's last error, as PathFileExistsW and CreateFileW do.
    bool PathExists(qm::wstring_view path) override;
    uint32_t ReadWholeFile(qm::wstring_view path, uint64_t maxBytes,
                           std::vector<std::byte>& contents) override;

  private:
    std::filesystem::path m_driveRoot;
};

}  // namespace webrig::sim
