#include "platform/sim/iis7/config_file_cache.h"

#include <sys/stat.h>

#include <fstream>
#include <functional>
#include <iterator>

#include "platform/sim/iis7/config_file_error.h"
#include "platform/sim/iis7/xml_reader.h"

namespace webrig::sim::iis7 {

FileIdentity IdentifyFile(const std::string& hostPath) {
    struct stat info {};
    FileIdentity identity;
    if (::stat(hostPath.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) {
        return identity;
    }
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

size_t HashContent(std::string_view bytes) {
    return std::hash<std::string_view>{}(bytes);
}

std::optional<std::string> ConfigFileCache::ReadBytes(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        return std::nullopt;
    }
    std::string bytes((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
    if (stream.bad()) {
        return std::nullopt;
    }
    return bytes;
}

LoadedFile ConfigFileCache::Load(const std::string& path, const std::string& displayName,
                                 std::string_view rootName) {
    const FileIdentity identity = IdentifyFile(path);
    {
        std::lock_guard lock(m_mutex);
        const auto found = m_files.find(path);
        if (found != m_files.end() && found->second.identity == identity) {
            return found->second;
        }
    }
    if (!identity.exists) {
        return LoadedFile{identity, 0, nullptr, nullptr};
    }
    std::optional<std::string> bytes = ReadBytes(path);
    if (!bytes) {
        throw ConfigFileError(displayName, 0, "the file cannot be read");
    }
    // The identity of what was read: a writer may have replaced the file since the stat.
    const FileIdentity readIdentity = IdentifyFile(path);
    const size_t hash = HashContent(*bytes);
    {
        std::lock_guard lock(m_mutex);
        const auto found = m_files.find(path);
        if (found != m_files.end() && found->second.contentHash == hash &&
            found->second.identity.size == bytes->size()) {
            found->second.identity = readIdentity;
            return found->second;
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
    m_files[path] = loaded;
    return loaded;
}

void ConfigFileCache::Store(const std::string& path, LoadedFile file) {
    std::lock_guard lock(m_mutex);
    m_files[path] = std::move(file);
}

void ConfigFileCache::StoreDeclarations(const std::string& path, const FileIdentity& identity,
                                        std::shared_ptr<const SectionDeclarations> declarations) {
    std::lock_guard lock(m_mutex);
    const auto found = m_files.find(path);
    if (found != m_files.end() && found->second.identity == identity) {
        found->second.declarations = std::move(declarations);
    }
}

uint64_t ConfigFileCache::parseCount() const {
    std::lock_guard lock(m_mutex);
    return m_parses;
}

}  // namespace webrig::sim::iis7
