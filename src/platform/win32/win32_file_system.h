#pragma once
// Files through CreateFileW and ReadFile; existence through PathFileExistsW.

#include "platform/file_system.h"

namespace webrig::win32 {

class Win32FileSystem final : public platform::FileSystem {
  public:
    bool PathExists(qm::wstring_view path) override;
    uint32_t ReadWholeFile(qm::wstring_view path, uint64_t maxBytes,
                           std::vector<std::byte>& contents) override;
};

}  // namespace webrig::win32
