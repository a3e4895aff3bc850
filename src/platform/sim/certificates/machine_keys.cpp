#include "platform/sim/certificates/machine_keys.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/certificates.h"
#include "platform/sim/certificates/key_provider_info.h"
#include "platform/sim/machine/atomic_file.h"

namespace webrig::sim {
namespace {

constexpr mode_t kOwnerOnly = 0600;

bool IsPlainName(qm::wstring_view name) {
    return !name.empty() && name.find_first_of(u"\\/:*?\"<>|") == qm::wstring_view::npos &&
           name != u"." && name != u"..";
}

ResolvedPath KeyFile(const SimFileSystem& files, qm::wstring_view containerName) {
    return files.Resolve(qm::wstring(kMachineKeysFolder) + u"\\" + qm::wstring(containerName) +
                         u".pem");
}

}  // namespace

bool WriteMachineKey(const SimFileSystem& files, qm::wstring_view containerName,
                     std::string_view pem) {
    if (!IsPlainName(containerName)) {
        return false;
    }
    const ResolvedPath folder = files.Resolve(kMachineKeysFolder);
    std::error_code error;
    std::filesystem::create_directories(folder.hostPath, error);
    const ResolvedPath file = KeyFile(files, containerName);
    if (error || file.hostPath.empty() || file.isDirectory) {
        return false;
    }
    // The file exists with the owner's rights only before the key reaches it; the atomic
    // replacement keeps those rights.
    const int fd = ::open(file.hostPath.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, kOwnerOnly);
    if (fd < 0) {
        return false;
    }
    const bool restricted = ::fchmod(fd, kOwnerOnly) == 0;
    ::close(fd);
    return restricted &&
           WriteFileAtomically(file.hostPath, std::as_bytes(std::span(pem.data(), pem.size())));
}

bool HasMachineKey(const SimFileSystem& files, const SerializedCertificate& certificate) {
    const auto property = certificate.properties.find(platform::cert_property::key_provider_info);
    if (property == certificate.properties.end()) {
        return false;
    }
    const std::optional<KeyProviderInfo> info = ParseKeyProviderInfo(property->second);
    if (!info || !IsPlainName(info->containerName)) {
        return false;
    }
    const ResolvedPath file = KeyFile(files, info->containerName);
    return file.error == 0 && !file.isDirectory;
}

}  // namespace webrig::sim
