#pragma once
// What the Windows tests share: COM on the test thread as the installer engine sets it up, the
// test host module, scratch files and a look at the registry past webrig's own view.

#include <windows.h>

#include <cstddef>
#include <string>
#include <vector>

#include "support/wide_string.h"
#include "test_host/test_host_api.h"

namespace webrig::windows_testing {

// The folder the test program runs from, where webrig.dll and QMRT.dll lie too.
std::wstring ProgramFolder();

// A fresh folder under the temporary folder, removed with its files when the owner goes.
class ScratchFolder {
  public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::wstring& path() const { return m_path; }
    // Writes `bytes` to the file `name` in the folder and returns its full path.
    std::wstring Write(const std::wstring& name, const std::vector<std::byte>& bytes) const;

  private:
    std::wstring m_path;
};

// The test host module (QMRT.dll), loaded from the program's folder for the owner's life.
class TestHost {
  public:
    TestHost();
    ~TestHost();
    TestHost(const TestHost&) = delete;
    TestHost& operator=(const TestHost&) = delete;

    HMODULE module() const { return m_module; }
    void Reset() const;
    std::vector<std::wstring> Journal() const;
    // A new operation source in `operations`; the caller clears the VARIANT.
    void CreateOperations(VARIANT& operations, HRESULT recordResult = S_OK) const;

  private:
    HMODULE m_module;
    TestHostResetFunction m_reset;
    TestHostJournalFunction m_journal;
    TestHostCreateOperationsFunction m_createOperations;
};

// Whether HKEY_LOCAL_MACHINE\<path> exists in the given registry view (KEY_WOW64_32KEY or
// KEY_WOW64_64KEY), read with the plain API.
bool KeyExists(const std::wstring& path, REGSAM view);
// Removes HKEY_LOCAL_MACHINE\<path> and everything below it in both views; absent is fine.
void RemoveKeyTree(const std::wstring& path);

// A service registered with the service control manager for one test, deleted afterwards.
class TestService {
  public:
    TestService(const std::wstring& name, DWORD startType, const std::wstring& binaryPath);
    ~TestService();
    TestService(const TestService&) = delete;
    TestService& operator=(const TestService&) = delete;

  private:
    std::wstring m_name;
};

inline qm::wstring Utf16(const std::wstring& text) {
    return qm::wstring(text.begin(), text.end());
}

}  // namespace webrig::windows_testing
