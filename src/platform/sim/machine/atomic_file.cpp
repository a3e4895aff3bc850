#include "platform/sim/machine/atomic_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <string>

namespace webrig::sim {
namespace {

class FileDescriptor {
  public:
    explicit FileDescriptor(int fd) noexcept : m_fd(fd) {}
    ~FileDescriptor() { Close(); }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int get() const noexcept { return m_fd; }
    bool Close() noexcept {
        const int fd = m_fd;
        m_fd = -1;
        return fd < 0 || ::close(fd) == 0;
    }

  private:
    int m_fd;
};

bool WriteAll(int fd, std::span<const std::byte> bytes) {
    size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t written = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        done += static_cast<size_t>(written);
    }
    return true;
}

// Unique among the threads and processes that may save the same machine.
std::filesystem::path TemporaryPathFor(const std::filesystem::path& path) {
    static std::atomic<unsigned> counter{0};
    return path.parent_path() /
           ("." + path.filename().string() + ".tmp-" + std::to_string(::getpid()) + "-" +
            std::to_string(counter.fetch_add(1)));
}

// The new file keeps the permissions of the one it replaces.
mode_t ModeFor(const std::filesystem::path& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 ? (info.st_mode & 07777) : 0644;
}

}  // namespace

bool WriteFileAtomically(const std::filesystem::path& path, std::span<const std::byte> bytes) {
    return WriteFileAtomicallyThrough({::fsync, ::rename}, path, bytes);
}

bool WriteFileAtomicallyThrough(const DiskCalls& calls, const std::filesystem::path& path,
                                std::span<const std::byte> bytes) {
    const std::filesystem::path temporary = TemporaryPathFor(path);
    FileDescriptor file(
        ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, ModeFor(path)));
    if (file.get() < 0) {
        return false;
    }
    const bool written = WriteAll(file.get(), bytes) && calls.fsync(file.get()) == 0;
    if (!file.Close() || !written || calls.rename(temporary.c_str(), path.c_str()) != 0) {
        ::unlink(temporary.c_str());
        return false;
    }
    // The rename itself must reach the disk, or a crash could bring back the old name.
    const std::filesystem::path folder =
        path.parent_path().empty() ? std::filesystem::path(".") : path.parent_path();
    FileDescriptor directory(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.get() >= 0) {
        calls.fsync(directory.get());
    }
    return true;
}

}  // namespace webrig::sim
