#pragma once
// An exclusive lock on a simulated machine, held across processes while a writer checks and
// replaces files that another writer might replace at the same time.

#include <filesystem>

namespace webrig::sim {

class MachineLock {
  public:
    // Blocks until the lock (an flock on `lockFile`, created when missing) is held.
    explicit MachineLock(const std::filesystem::path& lockFile);
    ~MachineLock();
    MachineLock(const MachineLock&) = delete;
    MachineLock& operator=(const MachineLock&) = delete;

    // False when the lock file could not be opened or locked.
    bool held() const noexcept { return m_fd >= 0; }

  private:
    int m_fd = -1;
};

}  // namespace webrig::sim
