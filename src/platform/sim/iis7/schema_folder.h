#pragma once
// The schema of a machine's configuration system, read as IIS reads it: every *.xml file of the
// schema folder (%windir%\System32\inetsrv\config\schema on the machine's drive), in name order.
// Machine creation installs webrig's own files there; a file copied in adds its sections.
//
// A fresh administration manager asks for the schema, so the parsed schema is remembered by the
// identities of the folder and its files (one stat each when nothing changed), and schemas are
// shared by content across machines of the process.

#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/sim/iis7/config_file_cache.h"
#include "platform/sim/iis7/schema.h"
#include "support/wide_string.h"

namespace webrig::sim::iis7 {

class SchemaFolder {
  public:
    SchemaFolder(std::filesystem::path driveRoot, const qm::wstring& windowsDirectory);

    // The schema the folder's files describe now. Throws ConfigFailure: 0x80070003 when the
    // folder does not exist, 0x8007000D when a file cannot be read or is not a schema file (the
    // message names the file and line).
    std::shared_ptr<const Schema> Current();

    // The Windows path of the folder, "C:\Windows\System32\inetsrv\config\schema".
    static qm::wstring WindowsPath(const qm::wstring& windowsDirectory);

  private:
    struct SeenFile {
        std::string name;
        FileIdentity identity;
        bool operator==(const SeenFile&) const = default;
    };
    std::shared_ptr<const Schema> Reload(const FileIdentity& folderIdentity);
    bool Unchanged() const;

    std::filesystem::path m_driveRoot;
    qm::wstring m_windowsPath;
    std::mutex m_mutex;
    std::string m_hostPath;  // found on the drive; empty until then
    FileIdentity m_folder;
    std::vector<SeenFile> m_files;
    std::shared_ptr<const Schema> m_schema;
};

// A provider over the schema folder of the machine whose C: drive is `driveRoot`.
SchemaProvider SchemaFolderProvider(std::filesystem::path driveRoot,
                                    const qm::wstring& windowsDirectory);

}  // namespace webrig::sim::iis7
