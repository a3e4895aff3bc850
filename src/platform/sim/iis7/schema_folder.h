#pragma once
// The schema of a machine's configuration system, read as IIS reads it: every *.xml file of the
// schema folder (%windir%\System32\inetsrv\config\schema on the machine's drive), in name order,
// once, when the configuration system starts (the first manager of the machine object, as of a
// process on Windows); files changed later are seen by the next start. Machine creation installs
// webrig's own files there; a file copied in adds its sections.
//
// Parsed schemas are shared by the process: found again by the identities of the folder's files
// without reading them, or by the files' bytes without parsing them.

#include <filesystem>
#include <memory>
#include <mutex>

#include "platform/sim/iis7/schema.h"
#include "support/wide_string.h"

namespace webrig::sim::iis7 {

class SchemaFolder {
  public:
    SchemaFolder(std::filesystem::path driveRoot, const qm::wstring& windowsDirectory);

    // The schema read at the first call that found one. Throws ConfigFailure: 0x80070003 when
    // the folder does not exist, 0x8007000D when a file cannot be read or is not a schema file
    // (the message names the file and line); a failed start is tried again at the next call.
    std::shared_ptr<const Schema> Current();

    // The Windows path of the folder, "C:\Windows\System32\inetsrv\config\schema".
    static qm::wstring WindowsPath(const qm::wstring& windowsDirectory);

  private:
    std::shared_ptr<const Schema> Read() const;

    std::filesystem::path m_driveRoot;
    qm::wstring m_windowsPath;
    std::mutex m_mutex;
    std::shared_ptr<const Schema> m_schema;
};

// A provider over the schema folder of the machine whose C: drive is `driveRoot`.
SchemaProvider SchemaFolderProvider(std::filesystem::path driveRoot,
                                    const qm::wstring& windowsDirectory);

}  // namespace webrig::sim::iis7
