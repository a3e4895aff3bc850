#pragma once
// Parsed configuration files shared by every administration manager of the process. The runtime
// creates a fresh manager for each setting it commits, so a file that has not changed on disk
// since it was read (same identity) is not read or parsed again, and one whose identity changed
// but whose bytes did not (a copy, a touch) keeps its parsed document.

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/sim/iis7/section_declarations.h"
#include "platform/sim/iis7/xml_tree.h"

namespace webrig::sim::iis7 {

// What identifies a file's content without reading it.
struct FileIdentity {
    bool exists = false;
    uint64_t device = 0;
    uint64_t inode = 0;
    uint64_t size = 0;
    int64_t modifiedNs = 0;
    int64_t changedNs = 0;

    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

FileIdentity IdentifyFile(const std::string& hostPath);

size_t HashContent(std::string_view bytes);

struct MergedCollection;

// Collections merged from unchanged cached files, kept with applicationHost.config's entry in the
// cache (so they go when that file changes or a commit replaces it): the runtime reads a collection
// through a fresh manager for every setting it commits, and merging ten thousand sites each time
// would cost more than everything else the manager does.
class MergedViews {
  public:
    // The collection stored under `key`, if it was merged from the documents whose roots are
    // `roots` (one per level; null for a file that does not exist).
    std::shared_ptr<const MergedCollection> Find(const std::string& key,
                                                 const std::vector<XmlElementPtr>& roots) const;
    // Keeps `roots` alive with the collection, which points into their documents.
    void Store(const std::string& key, std::vector<XmlElementPtr> roots,
               std::shared_ptr<const MergedCollection> merged);

  private:
    struct View {
        std::vector<XmlElementPtr> roots;
        std::shared_ptr<const MergedCollection> merged;
    };
    mutable std::mutex m_mutex;
    std::map<std::string, View, std::less<>> m_views;
};

struct LoadedFile {
    FileIdentity identity;
    size_t contentHash = 0;
    std::shared_ptr<const XmlDocument> document;  // null when the file does not exist
    // Once the file was found valid: its own <configSections>, so it is not checked again.
    std::shared_ptr<const SectionDeclarations> declarations;
};

class ConfigFileCache {
  public:
    // The file as it is on disk now. Throws ConfigFileError (naming `displayName`) when it cannot
    // be read or is not well-formed XML; such files are not cached.
    // Paths are native host paths.
    // `rootName`: the document element the file must have (a section's own name for a file that
    // a configSource names).
    LoadedFile Load(const std::string& path, const std::string& displayName,
                    std::string_view rootName = "configuration");
    // After a commit: the document now on disk.
    void Store(const std::string& path, LoadedFile file);
    // Remembers that the file, as `identity` says, was found valid with these declarations.
    void StoreDeclarations(const std::string& path, const FileIdentity& identity,
                           std::shared_ptr<const SectionDeclarations> declarations);
    // Reads the bytes of a file, and (when asked) the identity of the file read; nullopt when it
    // cannot be read.
    static std::optional<std::string> ReadBytes(const std::string& path,
                                                FileIdentity* identity = nullptr);

    // The merged collections kept with the file, while `root` is the root of its cached
    // document; null otherwise.
    std::shared_ptr<MergedViews> MergedViewsOf(const std::string& path, const XmlElementPtr& root);

    // How many times a file was parsed (for tests and benchmarks).
    uint64_t parseCount() const;

  private:
    struct Entry {
        LoadedFile file;
        std::shared_ptr<MergedViews> merged;  // made when first asked for
    };

    mutable std::mutex m_mutex;
    std::map<std::string, Entry> m_files;
    uint64_t m_parses = 0;
};

}  // namespace webrig::sim::iis7
