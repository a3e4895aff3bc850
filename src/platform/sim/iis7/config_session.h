#pragma once
// The state of one administration manager: its commit path, the configuration files it has read
// (each read once, from the shared cache) with the changes not yet committed, and the hierarchy
// of levels whose settings apply at a configuration path.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/sim/iis7/config_encryption.h"
#include "platform/sim/iis7/config_file_cache.h"
#include "platform/sim/iis7/schema.h"
#include "platform/sim/iis7/section_declarations.h"
#include "platform/sim/iis7/xml_tree.h"
#include "platform/sim/machine/atomic_file.h"
#include "platform/sim/machine/machine_config.h"
#include "support/result_codes.h"
#include "support/wide_string.h"

namespace webrig::sim::iis7 {

// What the configuration system needs from the machine it runs on.
struct ConfigMachine {
    std::filesystem::path driveRoot;  // the folder that is C:\ .
    std::filesystem::path lockFile;   // MachineLock while committing
    MachineConfig config;
    // The schema a fresh manager reads with (the machine's schema folder).
    SchemaProvider schema;
    // The machine's encryption of secret attributes; asked for only when one is read or written.
    std::function<const ConfigEncryption&()> encryption;
    ConfigFileCache* cache = nullptr;
    FileWriter writer = WriteFileAtomically;
};

// Where applicationHost.config was found on the drive, so that fresh managers need not look
// it up folder by folder again.
class AppHostLocation {
  public:
    struct Place {
        std::string hostPath;  // native; a string, since copying a std::filesystem::path is costly
        std::string displayName;  // the Windows path, for messages
    };
    // Null until found.
    std::shared_ptr<const Place> Get() const;
    void Set(std::shared_ptr<const Place> place);

  private:
    mutable std::mutex m_mutex;
    std::shared_ptr<const Place> m_place;
};

// A step of the way from a document's root to an element: the element's id and the index where
// it was last found among its parent's children.
struct PathStep {
    uint64_t id = 0;
    mutable size_t hint = 0;
};
using NodePath = std::vector<PathStep>;

struct WorkingFile;

// A section a file keeps in a file of its own (`configSource`): while the manager works, the
// referenced file's section element stands where the placeholder element was, so that reads and
// writes reach it; a commit puts the placeholder back and writes the section to its file.
struct SourcedSection {
    NodePath path;              // to the section element in the owner's working document
    XmlElementPtr placeholder;  // "<directoryBrowse configSource="..." />" as read
    WorkingFile* source = nullptr;
};

// A configuration file as this manager sees it.
struct WorkingFile {
    std::string hostPath;     // native path on the host
    std::string displayName;  // the Windows path, for messages
    bool isAppHost = false;
    std::vector<qm::wstring> configPath;  // the level the file serves (empty: APPHOST)
    LoadedFile loaded;                    // as read from disk (no document when missing)
    XmlElementPtr readRoot;               // the root as read (a new file's template)
    XmlDocument document;                 // with this manager's changes
    std::shared_ptr<const SectionDeclarations> declarations;  // its own <configSections>
    std::vector<SourcedSection> sourced;
    bool isSource = false;  // holds one section of another file, not a level

    bool Changed() const { return document.root != readRoot; }
};

// A level of the hierarchy: a file's own settings, or its <location> tags for a path below it.
struct ConfigLevel {
    WorkingFile* file = nullptr;
    std::vector<qm::wstring> location;  // relative to the file's level; empty: the file's own
};

// An element found in a document, with the way to find it again after changes.
struct FoundElement {
    const XmlElement* element = nullptr;
    NodePath path;  // from the document's root, the document element first
};

class ConfigSession {
  public:
    ConfigSession(std::shared_ptr<const ConfigMachine> machine,
                  std::shared_ptr<AppHostLocation> appHostLocation);

    const ConfigMachine& machine() const noexcept { return *m_machine; }
    // The schema this manager reads with, taken from the machine when first needed; throws
    // ConfigFailure when the machine has none.
    const Schema& schema();

    qm::wstring_view commitPath() const noexcept;
    const std::vector<qm::wstring>& commitSegments() const noexcept { return m_commitSegments; }
    qm::hresult PutCommitPath(qm::wstring_view path);

    bool pending() const noexcept { return m_pending; }
    // Counts changes, so that views computed from the documents know when to compute again.
    uint64_t version() const noexcept { return m_version; }
    void MarkChanged() noexcept {
        m_pending = true;
        ++m_version;
    }

    // applicationHost.config; throws ConfigFailure when it is missing or malformed.
    WorkingFile& AppHost();
    // The web.config of a path below APPHOST; throws ConfigFailure (0x80070002 no such site,
    // 0x80070003 no folder, 0x8007000D malformed).
    WorkingFile& WebConfig(const std::vector<qm::wstring>& path);
    // The file that receives changes at the commit path.
    WorkingFile& CommitFile();

    // The levels whose settings apply at `path`, from applicationHost.config down.
    std::vector<ConfigLevel> LevelsFor(const std::vector<qm::wstring>& path);

    // The section elements a level holds for `sectionNames` (the section's name split at "/"),
    // in file order: at the file's own level the top-level ones and those of <location path="">
    // tags. More than one is a second definition, which IIS refuses.
    std::vector<FoundElement> SectionsAt(const ConfigLevel& level,
                                         const std::vector<std::string>& sectionNames) const;

    // The element at `path`, or null when it is gone.
    const XmlElement* Resolve(const WorkingFile& file, const NodePath& path) const;
    // The element at `path`, made changeable (elements on the way are copied when shared).
    XmlElement& MutableAt(WorkingFile& file, const NodePath& path);
    // The element below the section element of `level` that `names` lead to (the section's own
    // name split at "/", then child names), created with its location tag when missing. An
    // existing definition of the section receives the change, wherever the file holds it.
    struct Writable {
        XmlElement* element = nullptr;
        NodePath path;
    };
    Writable EnsureSection(const ConfigLevel& level, const std::vector<std::string>& sectionNames,
                           const std::vector<std::string>& childNames = {});

    // <location> tags of applicationHost.config (working document).
    std::vector<FoundElement> AppHostLocations();

    qm::hresult Commit();

    void SetError(std::string text) { m_errorText = std::move(text); }
    const std::string& errorText() const noexcept { return m_errorText; }

  private:
    WorkingFile& Load(const std::string& hostPath, std::string displayName, bool isAppHost,
                      std::vector<qm::wstring> configPath);
    // Takes a file read from the cache into this session (`loaded` has no document when the
    // file does not exist).
    WorkingFile& Adopt(const std::string& hostPath, std::string displayName, bool isAppHost,
                       std::vector<qm::wstring> configPath, LoadedFile loaded);
    // Where applicationHost.config lies on the drive, looked up folder by folder.
    std::shared_ptr<const AppHostLocation::Place> LocateAppHost() const;
    void Validate(WorkingFile& file) const;
    // Puts the sections that name a configSource in place; throws ConfigFailure for a reference
    // IIS refuses or a referenced file that is missing or malformed.
    void MountSources(WorkingFile& file);
    WorkingFile& AdoptSource(const WorkingFile& owner, const std::string& reference,
                             const std::string& rootName);
    // The document to write for `file`: the working one with its placeholders back.
    XmlDocument Rendered(const WorkingFile& file) const;

    std::shared_ptr<const ConfigMachine> m_machine;
    std::shared_ptr<AppHostLocation> m_appHostLocation;
    std::shared_ptr<const Schema> m_schema;
    qm::wstring m_commitPath;  // empty: MACHINE/WEBROOT/APPHOST, where a fresh manager starts
    std::vector<qm::wstring> m_commitSegments;
    bool m_pending = false;
    uint64_t m_version = 0;
    // In the order they were read; a manager holds a handful at most.
    std::vector<std::unique_ptr<WorkingFile>> m_files;
    WorkingFile* m_appHost = nullptr;
    std::string m_errorText;
};

// Every element below `parent` that `names` lead to, in file order (section groups may repeat).
std::vector<FoundElement> FindSections(const XmlElement& parent,
                                       const std::vector<std::string>& names);
// Follows child names down from `start`; null element when one is missing.
FoundElement DescendByNames(FoundElement start, const std::vector<std::string>& names);
// Child element of `parent` by name, or null.
const XmlElement* FindChild(const XmlElement& parent, std::string_view name);
// The location path of a <location> element, as segments.
std::vector<qm::wstring> LocationSegments(const XmlElement& location);
bool SameSegments(const std::vector<qm::wstring>& a, const std::vector<qm::wstring>& b);

}  // namespace webrig::sim::iis7
