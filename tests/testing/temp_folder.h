#pragma once
// A fresh folder under the system's temporary directory, removed with everything in it when
// the object goes.

#include <filesystem>

namespace webrig::testing {

class TempFolder {
  public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& path() const noexcept { return m_path; }

  private:
    std::filesystem::path m_path;
};

}  // namespace webrig::testing
