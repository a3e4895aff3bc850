#include "platform/sim/iis7/schema_folder.h"

#include <sys/stat.h>

#include <algorithm>
#include <list>

#include "platform/sim/files/windows_path.h"
#include "platform/sim/iis7/config_failure.h"
#include "support/case_insensitive.h"

namespace webrig::sim::iis7 {
namespace {

// The identity of a folder: entries added, removed or renamed change its times.
FileIdentity IdentifyFolder(const std::string& hostPath) {
    struct stat info {};
    FileIdentity identity;
    if (::stat(hostPath.c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) {
        return identity;
    }
    identity.exists = true;
    identity.device = static_cast<uint64_t>(info.st_dev);
    identity.inode = static_cast<uint64_t>(info.st_ino);
    identity.modifiedNs = static_cast<int64_t>(info.st_mtim.tv_sec) * 1000000000 +
                          static_cast<int64_t>(info.st_mtim.tv_nsec);
    identity.changedNs = static_cast<int64_t>(info.st_ctim.tv_sec) * 1000000000 +
                         static_cast<int64_t>(info.st_ctim.tv_nsec);
    return identity;
}

bool IsSchemaFileName(const std::string& name) {
    return name.size() > 4 && qm::iequals(qm::from_utf8(name.substr(name.size() - 4)), u".xml");
}

// Schemas by the bytes of their files, so that machines with the same files share one.
std::shared_ptr<const Schema> ShareByContent(const std::vector<SchemaFile>& files) {
    static std::mutex mutex;
    static std::list<std::pair<std::string, std::shared_ptr<const Schema>>> recent;
    constexpr size_t kKept = 4;
    std::string key;
    for (const SchemaFile& file : files) {
        key += file.name + '\0' + std::to_string(file.text.size()) + '\0';
        key += file.text;
    }
    {
        std::lock_guard lock(mutex);
        for (auto at = recent.begin(); at != recent.end(); ++at) {
            if (at->first == key) {
                recent.splice(recent.begin(), recent, at);
                return recent.front().second;
            }
        }
    }
    auto schema = std::make_shared<const Schema>(Schema::FromFiles(files));
    std::lock_guard lock(mutex);
    recent.emplace_front(std::move(key), schema);
    if (recent.size() > kKept) {
        recent.pop_back();
    }
    return schema;
}

}  // namespace

SchemaFolder::SchemaFolder(std::filesystem::path driveRoot, const qm::wstring& windowsDirectory)
    : m_driveRoot(std::move(driveRoot)), m_windowsPath(WindowsPath(windowsDirectory)) {}

qm::wstring SchemaFolder::WindowsPath(const qm::wstring& windowsDirectory) {
    return windowsDirectory + u"\\System32\\inetsrv\\config\\schema";
}

bool SchemaFolder::Unchanged() const {
    return std::all_of(m_files.begin(), m_files.end(), [&](const SeenFile& file) {
        return IdentifyFile(m_hostPath + "/" + file.name) == file.identity;
    });
}

std::shared_ptr<const Schema> SchemaFolder::Current() {
    std::lock_guard lock(m_mutex);
    FileIdentity folder = m_hostPath.empty() ? FileIdentity{} : IdentifyFolder(m_hostPath);
    if (!folder.exists) {
        // Not found yet, or gone from where it was (a folder on the way renamed, say).
        const ResolvedPath resolved = ResolveWindowsPath(m_driveRoot, m_windowsPath);
        if (resolved.error != 0 || !resolved.isDirectory) {
            m_hostPath.clear();
            Fail(qm::hr::path_not_found,
                 qm::to_utf8(m_windowsPath) +
                     ": the schema folder does not exist, so the configuration system has no "
                     "schema (a machine made by this version of webrig has it)");
        }
        m_hostPath = resolved.hostPath.native();
        folder = IdentifyFolder(m_hostPath);
    }
    if (m_schema && folder == m_folder && Unchanged()) {
        return m_schema;
    }
    return Reload(folder);
}

std::shared_ptr<const Schema> SchemaFolder::Reload(const FileIdentity& folderIdentity) {
    std::vector<SeenFile> seen;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(m_hostPath, error)) {
        std::string name = entry.path().filename().native();
        if (IsSchemaFileName(name) && entry.is_regular_file(error)) {
            seen.push_back({std::move(name), FileIdentity{}});
        }
    }
    std::sort(seen.begin(), seen.end(), [](const SeenFile& a, const SeenFile& b) {
        return qm::to_upper(qm::from_utf8(a.name)) < qm::to_upper(qm::from_utf8(b.name));
    });
    // Identified before reading: a file replaced meanwhile is read again next time.
    std::vector<std::string> texts;
    for (SeenFile& file : seen) {
        const std::string hostPath = m_hostPath + "/" + file.name;
        file.identity = IdentifyFile(hostPath);
        std::optional<std::string> bytes = ConfigFileCache::ReadBytes(hostPath);
        if (!bytes) {
            Fail(qm::hr::invalid_data,
                 qm::to_utf8(m_windowsPath) + "\\" + file.name + ": the file cannot be read");
        }
        texts.push_back(std::move(*bytes));
    }
    std::vector<SchemaFile> files;
    for (size_t i = 0; i < seen.size(); ++i) {
        files.push_back({qm::to_utf8(m_windowsPath) + "\\" + seen[i].name, texts[i]});
    }
    try {
        m_schema = ShareByContent(files);
    } catch (const SchemaError& failure) {
        m_schema.reset();
        Fail(qm::hr::invalid_data, failure.what());
    }
    m_folder = folderIdentity;
    m_files = std::move(seen);
    return m_schema;
}

SchemaProvider SchemaFolderProvider(std::filesystem::path driveRoot,
                                    const qm::wstring& windowsDirectory) {
    auto folder = std::make_shared<SchemaFolder>(std::move(driveRoot), windowsDirectory);
    return [folder] { return folder->Current(); };
}

}  // namespace webrig::sim::iis7
