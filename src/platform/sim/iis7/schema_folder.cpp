#include "platform/sim/iis7/schema_folder.h"

#include <algorithm>
#include <list>
#include <vector>

#include "platform/sim/files/windows_path.h"
#include "platform/sim/iis7/config_failure.h"
#include "platform/sim/iis7/config_file_cache.h"
#include "support/case_insensitive.h"

namespace webrig::sim::iis7 {
namespace {

struct SeenFile {
    std::string name;
    FileIdentity identity;
    bool operator==(const SeenFile&) const = default;
};

// What a folder held when its schema was read: its host path and its files.
struct FolderState {
    std::string hostPath;
    std::vector<SeenFile> files;
    bool operator==(const FolderState&) const = default;
};

// A few recent entries, the most recently used first.
template <typename Key>
class RecentSchemas {
  public:
    std::shared_ptr<const Schema> Find(const Key& key) {
        std::lock_guard lock(m_mutex);
        for (auto at = m_entries.begin(); at != m_entries.end(); ++at) {
            if (at->first == key) {
                m_entries.splice(m_entries.begin(), m_entries, at);
                return m_entries.front().second;
            }
        }
        return nullptr;
    }
    void Add(Key key, std::shared_ptr<const Schema> schema) {
        std::lock_guard lock(m_mutex);
        m_entries.emplace_front(std::move(key), std::move(schema));
        if (m_entries.size() > 8) {
            m_entries.pop_back();
        }
    }

  private:
    std::mutex m_mutex;
    std::list<std::pair<Key, std::shared_ptr<const Schema>>> m_entries;
};

RecentSchemas<FolderState>& ByIdentity() {
    static RecentSchemas<FolderState> schemas;
    return schemas;
}

RecentSchemas<std::string>& ByContent() {
    static RecentSchemas<std::string> schemas;
    return schemas;
}

bool IsSchemaFileName(const std::string& name) {
    return name.size() > 4 && qm::iequals(qm::from_utf8(name.substr(name.size() - 4)), u".xml");
}

}  // namespace

SchemaFolder::SchemaFolder(std::filesystem::path driveRoot, const qm::wstring& windowsDirectory)
    : m_driveRoot(std::move(driveRoot)), m_windowsPath(WindowsPath(windowsDirectory)) {}

qm::wstring SchemaFolder::WindowsPath(const qm::wstring& windowsDirectory) {
    return windowsDirectory + u"\\System32\\inetsrv\\config\\schema";
}

std::shared_ptr<const Schema> SchemaFolder::Current() {
    std::lock_guard lock(m_mutex);
    if (!m_schema) {
        m_schema = Read();
    }
    return m_schema;
}

std::shared_ptr<const Schema> SchemaFolder::Read() const {
    const std::string folderName = qm::to_utf8(m_windowsPath);
    const ResolvedPath resolved = ResolveWindowsPath(m_driveRoot, m_windowsPath);
    if (resolved.error != 0 || !resolved.isDirectory) {
        Fail(qm::hr::path_not_found,
             folderName +
                 ": the schema folder does not exist, so the configuration system has "
                 "no schema (machines made by this version of webrig have it)");
    }
    FolderState state{resolved.hostPath.native(), {}};
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(state.hostPath, error)) {
        std::string name = entry.path().filename().native();
        if (IsSchemaFileName(name) && entry.is_regular_file(error)) {
            state.files.push_back({std::move(name), FileIdentity{}});
        }
    }
    // The order a Windows folder lists its files in.
    std::sort(state.files.begin(), state.files.end(), [](const SeenFile& a, const SeenFile& b) {
        return qm::to_upper(qm::from_utf8(a.name)) < qm::to_upper(qm::from_utf8(b.name));
    });
    for (SeenFile& file : state.files) {
        // Identified before reading: a file replaced meanwhile is read again next time.
        file.identity = IdentifyFile(state.hostPath + "/" + file.name);
    }
    if (std::shared_ptr<const Schema> known = ByIdentity().Find(state)) {
        return known;
    }
    std::vector<std::string> texts;
    std::string content;
    for (const SeenFile& file : state.files) {
        std::optional<std::string> bytes =
            ConfigFileCache::ReadBytes(state.hostPath + "/" + file.name);
        if (!bytes) {
            Fail(qm::hr::invalid_data, folderName + "\\" + file.name + ": the file cannot be read");
        }
        content += file.name + '\0' + std::to_string(bytes->size()) + '\0' + *bytes;
        texts.push_back(std::move(*bytes));
    }
    std::shared_ptr<const Schema> schema = ByContent().Find(content);
    if (!schema) {
        std::vector<SchemaFile> files;
        for (size_t i = 0; i < texts.size(); ++i) {
            files.push_back({folderName + "\\" + state.files[i].name, texts[i]});
        }
        try {
            schema = std::make_shared<const Schema>(Schema::FromFiles(files));
        } catch (const SchemaError& failure) {
            Fail(qm::hr::invalid_data, failure.what());
        }
        ByContent().Add(std::move(content), schema);
    }
    ByIdentity().Add(std::move(state), schema);
    return schema;
}

SchemaProvider SchemaFolderProvider(std::filesystem::path driveRoot,
                                    const qm::wstring& windowsDirectory) {
    auto folder = std::make_shared<SchemaFolder>(std::move(driveRoot), windowsDirectory);
    return [folder] { return folder->Current(); };
}

}  // namespace webrig::sim::iis7
