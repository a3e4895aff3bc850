#include "wine_test_support.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace webrig::windows_testing {
namespace {

// The installer engine initialises COM on its thread before it calls webrig; so do the tests.
class ComApartment final : public ::testing::Environment {
  public:
    void SetUp() override {
        ASSERT_TRUE(SUCCEEDED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)));
    }
    void TearDown() override { ::CoUninitialize(); }
};

const auto* const g_apartment = ::testing::AddGlobalTestEnvironment(new ComApartment);

template <class Function>
Function Export(HMODULE module, const char* name) {
    const FARPROC found = ::GetProcAddress(module, name);
    if (found == nullptr) {
        throw std::runtime_error(std::string("QMRT.dll does not export ") + name);
    }
    return reinterpret_cast<Function>(reinterpret_cast<void*>(found));
}

}  // namespace

std::wstring ProgramFolder() {
    wchar_t path[MAX_PATH];
    const DWORD length = ::GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring folder(path, length);
    return folder.substr(0, folder.find_last_of(L'\\'));
}

ScratchFolder::ScratchFolder() {
    wchar_t temp[MAX_PATH];
    ::GetTempPathW(MAX_PATH, temp);
    static int counter = 0;
    m_path = std::wstring(temp) + L"webrig-" + std::to_wstring(::GetCurrentProcessId()) + L"-" +
             std::to_wstring(++counter);
    if (::CreateDirectoryW(m_path.c_str(), nullptr) == FALSE) {
        throw std::runtime_error("cannot create a scratch folder");
    }
}

ScratchFolder::~ScratchFolder() {
    WIN32_FIND_DATAW found;
    const HANDLE search = ::FindFirstFileW((m_path + L"\\*").c_str(), &found);
    if (search != INVALID_HANDLE_VALUE) {
        do {
            ::DeleteFileW((m_path + L"\\" + found.cFileName).c_str());
        } while (::FindNextFileW(search, &found) != FALSE);
        ::FindClose(search);
    }
    ::RemoveDirectoryW(m_path.c_str());
}

std::wstring ScratchFolder::Write(const std::wstring& name,
                                  const std::vector<std::byte>& bytes) const {
    const std::wstring path = m_path + L"\\" + name;
    const HANDLE file = ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        throw std::runtime_error("cannot write a scratch file");
    }
    DWORD written = 0;
    ::WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    ::CloseHandle(file);
    return path;
}

TestHost::TestHost()
    : m_module(::LoadLibraryW((ProgramFolder() + L"\\QMRT.dll").c_str())),
      m_reset(Export<TestHostResetFunction>(m_module, "TestHostReset")),
      m_journal(Export<TestHostJournalFunction>(m_module, "TestHostJournal")),
      m_createOperations(
          Export<TestHostCreateOperationsFunction>(m_module, "TestHostCreateOperations")) {
    m_reset();
}

TestHost::~TestHost() {
    ::FreeLibrary(m_module);
}

void TestHost::Reset() const {
    m_reset();
}

std::vector<std::wstring> TestHost::Journal() const {
    const BSTR text = m_journal();
    const std::wstring all(text, ::SysStringLen(text));
    ::SysFreeString(text);
    std::vector<std::wstring> lines;
    size_t start = 0;
    for (size_t end = all.find(L'\n'); end != std::wstring::npos; end = all.find(L'\n', start)) {
        lines.push_back(all.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

void TestHost::CreateOperations(VARIANT& operations, HRESULT recordResult) const {
    m_createOperations(&operations, recordResult);
}

bool KeyExists(const std::wstring& path, REGSAM view) {
    HKEY key = nullptr;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ | view, &key) !=
        ERROR_SUCCESS) {
        return false;
    }
    ::RegCloseKey(key);
    return true;
}

void RemoveKeyTree(const std::wstring& path) {
    for (const REGSAM view : {KEY_WOW64_32KEY, KEY_WOW64_64KEY}) {
        HKEY key = nullptr;
        if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_ALL_ACCESS | view, &key) ==
            ERROR_SUCCESS) {
            ::RegDeleteTreeW(key, nullptr);
            ::RegCloseKey(key);
            ::RegDeleteKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), view, 0);
        }
    }
}

TestService::TestService(const std::wstring& name, DWORD startType, const std::wstring& binaryPath)
    : m_name(name) {
    const SC_HANDLE manager = ::OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS);
    const SC_HANDLE service =
        ::CreateServiceW(manager, name.c_str(), name.c_str(), SERVICE_ALL_ACCESS,
                         SERVICE_WIN32_OWN_PROCESS, startType, SERVICE_ERROR_IGNORE,
                         binaryPath.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr);
    const DWORD error = ::GetLastError();
    ::CloseServiceHandle(service);
    if (service == nullptr) {
        ::CloseServiceHandle(manager);
        throw std::runtime_error("CreateServiceW failed with " + std::to_string(error));
    }
    // Wine's service manager may not find a service by name at once after creating it.
    for (int attempt = 0; attempt < 50; ++attempt) {
        const SC_HANDLE found = ::OpenServiceW(manager, name.c_str(), SERVICE_QUERY_STATUS);
        if (found != nullptr) {
            ::CloseServiceHandle(found);
            break;
        }
        ::Sleep(100);
    }
    ::CloseServiceHandle(manager);
}

TestService::~TestService() {
    const SC_HANDLE manager = ::OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS);
    const SC_HANDLE service = ::OpenServiceW(manager, m_name.c_str(), DELETE);
    ::DeleteService(service);
    ::CloseServiceHandle(service);
    ::CloseServiceHandle(manager);
}

}  // namespace webrig::windows_testing
