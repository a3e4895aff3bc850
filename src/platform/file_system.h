#pragma once
// Files by their Windows paths.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "support/wide_string.h"

namespace webrig::platform {

class FileSystem {
  public:
    virtual ~FileSystem() = default;

    // PathFileExistsW: a file or a folder exists at the path.
    virtual bool PathExists(qm::wstring_view path) = 0;

    // Reads a whole existing file, opened for reading with shared reading allowed. Returns a
    // Win32 error: win32::file_not_found or win32::path_not_found when it is missing,
    // win32::access_denied for a folder, win32::not_enough_memory when the file is larger than
    // `maxBytes` (the caller could not hold it), win32::read_fault when reading fails.
    virtual uint32_t ReadWholeFile(qm::wstring_view path, uint64_t maxBytes,
                                   std::vector<std::byte>& contents) = 0;
};

}  // namespace webrig::platform
