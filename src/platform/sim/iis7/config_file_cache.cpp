#include "platform/sim/iis7/config_file_cache.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <bit>
#include <cerrno>
#include <cstring>

#include "platform/sim/iis7/config_file_error.h"
#include "platform/sim/iis7/xml_reader.h"

namespace webrig::sim::iis7 {

namespace {

FileIdentity IdentityOf(const struct stat& info) {
    FileIdentity identity;
    identity.exists = true;
    identity.device = static_cast<uint64_t>(info.st_dev);
    identity.inode = static_cast<uint64_t>(info.st_ino);
    identity.size = static_cast<uint64_t>(info.st_size);
    identity.modifiedNs = static_cast<int64_t>(info.st_mtim.tv_sec) * 1000000000 +
                          static_cast<int64_t>(info.st_mtim.tv_nsec);
    identity.changedNs = static_cast<int64_t>(info.st_ctim.tv_sec) * 1000000000 +
                         static_cast<int64_t>(info.st_ctim.tv_nsec);
    return identity;
}

uint64_t Load64(const char* at) {
    uint64_t word = 0;
    std::memcpy(&word, at, 8);
    return word;
}

constexpr uint64_t kPrime1 = 0x9E3779B185EBCA87ull;
constexpr uint64_t kPrime2 = 0xC2B2AE3D27D4EB4Full;
constexpr uint64_t kPrime3 = 0x165667B19E3779F9ull;

uint64_t Round(uint64_t lane, uint64_t input) {
    return std::rotl(lane + input * kPrime2, 31) * kPrime1;
}

}  // namespace

FileIdentity IdentifyFile(const std::string& hostPath) {
    struct stat info {};
    if (::stat(hostPath.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) {
        return {};
    }
    return IdentityOf(info);
}

// Four independent lanes of multiply-rotate rounds over 32-byte blocks: several bytes a cycle,
// where a byte-at-a-time hash would take a good part of the time the parse takes.
size_t HashContent(std::string_view bytes) {
    uint64_t lanes[4] = {kPrime1 + kPrime2, kPrime2, 0, 0 - kPrime1};
    const char* at = bytes.data();
    size_t left = bytes.size();
    for (; left >= 32; at += 32, left -= 32) {
        for (int lane = 0; lane < 4; ++lane) {
            lanes[lane] = Round(lanes[lane], Load64(at + 8 * lane));
        }
    }
    uint64_t hash = std::rotl(lanes[0], 1) + std::rotl(lanes[1], 7) + std::rotl(lanes[2], 12) +
                    std::rotl(lanes[3], 18) + bytes.size();
    for (; left >= 8; at += 8, left -= 8) {
        hash = std::rotl(hash ^ Round(0, Load64(at)), 27) * kPrime1 + kPrime3;
    }
    for (; left > 0; ++at, --left) {
        hash = std::rotl(hash ^ (static_cast<unsigned char>(*at) * kPrime3), 11) * kPrime1;
    }
    hash = (hash ^ (hash >> 33)) * kPrime2;
    hash = (hash ^ (hash >> 29)) * kPrime3;
    return static_cast<size_t>(hash ^ (hash >> 32));
}

std::optional<std::string> ConfigFileCache::ReadBytes(const std::string& path,
                                                      FileIdentity* identity) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        return std::nullopt;
    }
    struct stat info {};
    std::optional<std::string> bytes;
    if (::fstat(descriptor, &info) == 0 && S_ISREG(info.st_mode)) {
        bytes.emplace();
        // Read to the end, which may lie past the size just seen if the file grows meanwhile.
        size_t size = 0;
        bytes->resize(static_cast<size_t>(info.st_size) + 1);
        while (true) {
            if (size == bytes->size()) {
                bytes->resize(bytes->size() * 2);
            }
            const ssize_t got = ::read(descriptor, bytes->data() + size, bytes->size() - size);
            if (got < 0 && errno == EINTR) {
                continue;
            }
            if (got < 0) {
                bytes.reset();
                break;
            }
            if (got == 0) {
                bytes->resize(size);
                break;
            }
            size += static_cast<size_t>(got);
        }
        // What was read: the file this descriptor opened, whatever lies at the path now.
        if (bytes && identity && ::fstat(descriptor, &info) == 0) {
            *identity = IdentityOf(info);
        }
    }
    ::close(descriptor);
    return bytes;
}

std::shared_ptr<const MergedCollection> MergedViews::Find(
    const std::string& key, const std::vector<XmlElementPtr>& roots) const {
    std::lock_guard lock(m_mutex);
    const auto found = m_views.find(key);
    if (found == m_views.end() || found->second.roots.size() != roots.size()) {
        return nullptr;
    }
    for (size_t i = 0; i < roots.size(); ++i) {
        if (found->second.roots[i] != roots[i]) {
            return nullptr;
        }
    }
    return found->second.merged;
}

void MergedViews::Store(const std::string& key, std::vector<XmlElementPtr> roots,
                        std::shared_ptr<const MergedCollection> merged) {
    std::lock_guard lock(m_mutex);
    m_views[key] = View{std::move(roots), std::move(merged)};
}

LoadedFile ConfigFileCache::Load(const std::string& path, const std::string& displayName,
                                 std::string_view rootName) {
    const FileIdentity identity = IdentifyFile(path);
    {
        std::lock_guard lock(m_mutex);
        const auto found = m_files.find(path);
        if (found != m_files.end() && found->second.file.identity == identity) {
            return found->second.file;
        }
    }
    if (!identity.exists) {
        return LoadedFile{identity, 0, nullptr, nullptr};
    }
    // The identity of what was read: a writer may have replaced the file since the stat.
    FileIdentity readIdentity;
    std::optional<std::string> bytes = ReadBytes(path, &readIdentity);
    if (!bytes) {
        throw ConfigFileError(displayName, 0, "the file cannot be read");
    }
    const size_t hash = HashContent(*bytes);
    {
        std::lock_guard lock(m_mutex);
        const auto found = m_files.find(path);
        if (found != m_files.end() && found->second.file.contentHash == hash &&
            found->second.file.identity.size == bytes->size()) {
            // The same document: what was merged from it still holds.
            found->second.file.identity = readIdentity;
            return found->second.file;
        }
    }
    std::shared_ptr<XmlDocument> document;
    try {
        document = std::make_shared<XmlDocument>(
            ReadXml(std::make_shared<const std::string>(std::move(*bytes))));
    } catch (const XmlSyntaxError& error) {
        throw ConfigFileError(displayName, error.line(), error.what());
    }
    const XmlElement* root = document->DocumentElement();
    if (!root || root->name != rootName) {
        throw ConfigFileError(displayName, root ? root->line : 1,
                              "the root element must be <" + std::string(rootName) + ">");
    }
    LoadedFile loaded{readIdentity, hash, std::move(document), nullptr};
    std::lock_guard lock(m_mutex);
    ++m_parses;
    m_files[path] = Entry{loaded, nullptr};
    return loaded;
}

void ConfigFileCache::Store(const std::string& path, LoadedFile file) {
    std::lock_guard lock(m_mutex);
    m_files[path] = Entry{std::move(file), nullptr};
}

void ConfigFileCache::StoreDeclarations(const std::string& path, const FileIdentity& identity,
                                        std::shared_ptr<const SectionDeclarations> declarations) {
    std::lock_guard lock(m_mutex);
    const auto found = m_files.find(path);
    if (found != m_files.end() && found->second.file.identity == identity) {
        found->second.file.declarations = std::move(declarations);
    }
}

std::shared_ptr<MergedViews> ConfigFileCache::MergedViewsOf(const std::string& path,
                                                            const XmlElementPtr& root) {
    std::lock_guard lock(m_mutex);
    const auto found = m_files.find(path);
    if (found == m_files.end() || !found->second.file.document ||
        found->second.file.document->root != root) {
        return nullptr;
    }
    if (!found->second.merged) {
        found->second.merged = std::make_shared<MergedViews>();
    }
    return found->second.merged;
}

uint64_t ConfigFileCache::parseCount() const {
    std::lock_guard lock(m_mutex);
    return m_parses;
}

}  // namespace webrig::sim::iis7
