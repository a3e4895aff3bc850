#pragma once
// Windows paths on the simulated C: drive, a folder of the host. A path is normalized as
// GetFullPathNameW does it, then each component is looked up without regard to letter case in the
// real listing of its folder, so "C:\WINDOWS\system32" finds drive_c/Windows/System32.

#include <filesystem>
#include <string>
#include <vector>

#include "support/wide_string.h"

namespace webrig::sim {

// The components of an absolute path on drive C after normalization: either slash separates,
// runs of separators count as one, "." and ".." are resolved (".." stops at the root), a
// component loses one trailing period and the last one all trailing periods and spaces.
// Returns 0, win32::path_not_found for a relative path or another drive, or
// win32::invalid_name for a character no file name may hold.
uint32_t NormalizeWindowsPath(qm::wstring_view path, std::vector<qm::wstring>& components);

struct ResolvedPath {
    // 0 when the path exists; win32::file_not_found when only its last component is missing;
    // win32::path_not_found when a folder on the way is missing (or is a file); or the error of
    // NormalizeWindowsPath; win32::invalid_name for a file named with a trailing separator.
    uint32_t error = 0;
    // The host path: the existing part with the names found on disk, then the missing components
    // as written. Empty when the path could not be normalized.
    std::filesystem::path hostPath;
    bool isDirectory = false;
};

// Looks `windowsPath` up under `driveRoot` (the folder that is C:\). Symbolic links are not
// followed, so no path ever leads out of the drive.
ResolvedPath ResolveWindowsPath(const std::filesystem::path& driveRoot,
                                qm::wstring_view windowsPath);

}  // namespace webrig::sim
