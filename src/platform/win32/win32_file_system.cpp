#include "platform/win32/win32_file_system.h"

#include <string>

#include "platform/win32/windows_api.h"
// After <windows.h>, which it needs.
#include <shlwapi.h>

namespace webrig::win32 {
namespace {

class ScopedHandle {
  public:
    explicit ScopedHandle(HANDLE handle) noexcept : m_handle(handle) {}
    ~ScopedHandle() {
        if (m_handle != INVALID_HANDLE_VALUE) {
            ::CloseHandle(m_handle);
        }
    }
    ScopedHandle(const ScopedHandle&) = delete;
    ScopedHandle& operator=(const ScopedHandle&) = delete;
    HANDLE get() const noexcept { return m_handle; }

  private:
    HANDLE m_handle;
};

std::wstring Terminated(qm::wstring_view text) {
    return std::wstring(reinterpret_cast<const wchar_t*>(text.data()), text.size());
}

// Fails with `error`, which the caller also finds as the thread's last error.
uint32_t Fail(uint32_t error) noexcept {
    ::SetLastError(error);
    return error;
}

}  // namespace

bool Win32FileSystem::PathExists(qm::wstring_view path) {
    return ::PathFileExistsW(Terminated(path).c_str()) != FALSE;
}

uint32_t Win32FileSystem::ReadWholeFile(qm::wstring_view path, uint64_t maxBytes,
                                        std::vector<std::byte>& contents) {
    contents.clear();
    const std::wstring name = Terminated(path);
    const ScopedHandle file(::CreateFileW(name.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (file.get() == INVALID_HANDLE_VALUE) {
        return Fail(::GetLastError());
    }
    LARGE_INTEGER size{};
    if (::GetFileSizeEx(file.get(), &size) == FALSE) {
        return Fail(ERROR_READ_FAULT);
    }
    const auto total = static_cast<uint64_t>(size.QuadPart);
    if (total > maxBytes || total > SIZE_MAX) {
        return Fail(ERROR_NOT_ENOUGH_MEMORY);
    }
    std::vector<std::byte> data(static_cast<size_t>(total));
    size_t done = 0;
    while (done < data.size()) {
        const DWORD chunk = static_cast<DWORD>(std::min<size_t>(data.size() - done, 1u << 30));
        DWORD got = 0;
        if (::ReadFile(file.get(), data.data() + done, chunk, &got, nullptr) == FALSE) {
            return Fail(ERROR_READ_FAULT);
        }
        if (got == 0) {
            break;  // the file shrank while it was read: what is there is the file
        }
        done += got;
    }
    data.resize(done);
    contents = std::move(data);
    return ERROR_SUCCESS;
}

}  // namespace webrig::win32
