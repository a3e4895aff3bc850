#include "platform/win32/win32_service_control.h"

#include <string>

#include "platform/win32/windows_api.h"

namespace webrig::win32 {
namespace {

SC_HANDLE ToHandle(platform::ServiceHandle handle) noexcept {
    return reinterpret_cast<SC_HANDLE>(static_cast<uintptr_t>(handle));
}

platform::ServiceHandle FromHandle(SC_HANDLE handle) noexcept {
    return static_cast<platform::ServiceHandle>(reinterpret_cast<uintptr_t>(handle));
}

void Copy(const SERVICE_STATUS& from, platform::ServiceStatus& to) noexcept {
    to.currentState = from.dwCurrentState;
    to.checkPoint = from.dwCheckPoint;
    to.waitHint = from.dwWaitHint;
}

}  // namespace

platform::ServiceHandle Win32ServiceControl::OpenManager(uint32_t access) {
    return FromHandle(::OpenSCManagerW(nullptr, nullptr, access));
}

platform::ServiceHandle Win32ServiceControl::OpenNamedService(platform::ServiceHandle manager,
                                                              qm::wstring_view name,
                                                              uint32_t access) {
    const std::wstring serviceName(reinterpret_cast<const wchar_t*>(name.data()), name.size());
    return FromHandle(::OpenServiceW(ToHandle(manager), serviceName.c_str(), access));
}

bool Win32ServiceControl::QueryStatus(platform::ServiceHandle service,
                                      platform::ServiceStatus& status) {
    SERVICE_STATUS current{};
    if (::QueryServiceStatus(ToHandle(service), &current) == FALSE) {
        return false;
    }
    Copy(current, status);
    return true;
}

bool Win32ServiceControl::Start(platform::ServiceHandle service) {
    return ::StartServiceW(ToHandle(service), 0, nullptr) != FALSE;
}

bool Win32ServiceControl::Control(platform::ServiceHandle service, uint32_t control,
                                  platform::ServiceStatus& status) {
    SERVICE_STATUS after{};
    if (::ControlService(ToHandle(service), control, &after) == FALSE) {
        return false;
    }
    Copy(after, status);
    return true;
}

bool Win32ServiceControl::Close(platform::ServiceHandle handle) {
    return ::CloseServiceHandle(ToHandle(handle)) != FALSE;
}

}  // namespace webrig::win32
