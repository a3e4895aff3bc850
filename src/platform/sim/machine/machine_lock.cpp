#include "platform/sim/machine/machine_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

namespace webrig::sim {

MachineLock::MachineLock(const std::filesystem::path& lockFile) {
    const int fd = ::open(lockFile.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) {
        return;
    }
    int result = 0;
    do {
        result = ::flock(fd, LOCK_EX);
    } while (result != 0 && errno == EINTR);
    if (result != 0) {
        ::close(fd);
        return;
    }
    m_fd = fd;
}

MachineLock::~MachineLock() {
    if (m_fd >= 0) {
        ::flock(m_fd, LOCK_UN);
        ::close(m_fd);
    }
}

}  // namespace webrig::sim
