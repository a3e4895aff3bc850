#include "platform/sim/files/sim_file_system.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "support/last_error.h"
#include "support/result_codes.h"

namespace webrig::sim {
namespace {

uint32_t Fail(uint32_t error) {
    qm::set_last_error(error);
    return error;
}

class FileDescriptor {
  public:
    explicit FileDescriptor(int fd) noexcept : m_fd(fd) {}
    ~FileDescriptor() {
        if (m_fd >= 0) {
            ::close(m_fd);
        }
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    int get() const noexcept { return m_fd; }

  private:
    int m_fd;
};

}  // namespace

ResolvedPath SimFileSystem::Resolve(qm::wstring_view path) const {
    return ResolveWindowsPath(m_driveRoot, m_redirection.Redirect(path));
}

bool SimFileSystem::PathExists(qm::wstring_view path) {
    const ResolvedPath resolved = Resolve(path);
    if (resolved.error != qm::win32::success) {
        qm::set_last_error(resolved.error);
        return false;
    }
    return true;
}

uint32_t SimFileSystem::ReadWholeFile(qm::wstring_view path, uint64_t maxBytes,
                                      std::vector<std::byte>& contents) {
    contents.clear();
    const ResolvedPath resolved = Resolve(path);
    if (resolved.error != qm::win32::success) {
        return Fail(resolved.error);
    }
    if (resolved.isDirectory) {
        return Fail(qm::win32::access_denied);
    }
    const FileDescriptor file(::open(resolved.hostPath.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.get() < 0) {
        return Fail(errno == ENOENT ? qm::win32::file_not_found : qm::win32::access_denied);
    }
    struct stat info {};
    if (::fstat(file.get(), &info) != 0) {
        return Fail(qm::win32::read_fault);
    }
    if (S_ISDIR(info.st_mode)) {
        return Fail(qm::win32::access_denied);
    }
    const auto size = static_cast<uint64_t>(info.st_size);
    if (size > maxBytes) {
        return Fail(qm::win32::not_enough_memory);
    }
    std::vector<std::byte> data(static_cast<size_t>(size));
    size_t done = 0;
    while (done < data.size()) {
        const ssize_t got = ::read(file.get(), data.data() + done, data.size() - done);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            return Fail(qm::win32::read_fault);
        }
        if (got == 0) {
            break;  // the file shrank while it was read: what is there is the file
        }
        done += static_cast<size_t>(got);
    }
    data.resize(done);
    contents = std::move(data);
    return qm::win32::success;
}

}  // namespace webrig::sim
