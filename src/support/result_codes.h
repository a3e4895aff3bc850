#pragma once
// HRESULT and Win32 error values that cross the platform seam. The names are lower-case and
// namespaced so that they never collide with the macros of <windows.h>.

#include <cstdint>

namespace qm {

using hresult = int32_t;

constexpr bool failed(hresult hr) noexcept {
    return hr < 0;
}
constexpr bool succeeded(hresult hr) noexcept {
    return hr >= 0;
}

// HRESULT_FROM_WIN32.
constexpr hresult hresult_from_win32(uint32_t error) noexcept {
    return error == 0 || static_cast<int32_t>(error) < 0
               ? static_cast<hresult>(error)
               : static_cast<hresult>((error & 0xFFFFu) | 0x80070000u);
}

namespace hr {
constexpr hresult ok = 0;
constexpr hresult s_false = 1;
constexpr hresult fail = static_cast<hresult>(0x80004005u);
constexpr hresult no_interface = static_cast<hresult>(0x80004002u);
constexpr hresult pointer = static_cast<hresult>(0x80004003u);
constexpr hresult not_implemented = static_cast<hresult>(0x80004001u);
constexpr hresult out_of_memory = static_cast<hresult>(0x8007000Eu);
constexpr hresult invalid_arg = static_cast<hresult>(0x80070057u);
constexpr hresult class_not_registered = static_cast<hresult>(0x80040154u);  // REGDB_E_CLASSNOTREG
// The HRESULTs of the IIS 7+ configuration system.
constexpr hresult file_not_found = static_cast<hresult>(0x80070002u);
constexpr hresult path_not_found = static_cast<hresult>(0x80070003u);
constexpr hresult invalid_data = static_cast<hresult>(0x8007000Du);
constexpr hresult sharing_violation = static_cast<hresult>(0x80070020u);
constexpr hresult lock_violation = static_cast<hresult>(0x80070021u);
constexpr hresult not_supported = static_cast<hresult>(0x80070032u);
constexpr hresult already_exists = static_cast<hresult>(0x800700B7u);
// ERROR_CHECKOUT_REQUIRED (221): put_CommitPath while changes are pending.
constexpr hresult checkout_required = static_cast<hresult>(0x800700DDu);
constexpr hresult element_not_found = static_cast<hresult>(0x80070490u);
constexpr hresult invalid_index = static_cast<hresult>(0x80070585u);
}  // namespace hr

// Win32 error codes (GetLastError, registry and service results).
namespace win32 {
constexpr uint32_t success = 0;
constexpr uint32_t invalid_function = 1;
constexpr uint32_t file_not_found = 2;
constexpr uint32_t path_not_found = 3;
constexpr uint32_t access_denied = 5;
constexpr uint32_t invalid_handle = 6;
constexpr uint32_t not_enough_memory = 8;
constexpr uint32_t invalid_data = 13;
constexpr uint32_t not_ready = 21;
constexpr uint32_t write_fault = 29;
constexpr uint32_t read_fault = 30;
constexpr uint32_t invalid_parameter = 87;
constexpr uint32_t call_not_implemented = 120;
constexpr uint32_t insufficient_buffer = 122;
constexpr uint32_t invalid_name = 123;
constexpr uint32_t mod_not_found = 126;
constexpr uint32_t proc_not_found = 127;
constexpr uint32_t bad_pathname = 161;
constexpr uint32_t already_exists = 183;
constexpr uint32_t more_data = 234;
constexpr uint32_t no_more_items = 259;
constexpr uint32_t key_deleted = 1018;
constexpr uint32_t service_request_timeout = 1053;
constexpr uint32_t service_no_thread = 1054;
constexpr uint32_t service_database_locked = 1055;
constexpr uint32_t service_already_running = 1056;
constexpr uint32_t service_disabled = 1058;
constexpr uint32_t service_does_not_exist = 1060;
constexpr uint32_t service_cannot_accept_ctrl = 1061;
constexpr uint32_t service_not_active = 1062;
constexpr uint32_t service_dependency_fail = 1068;
constexpr uint32_t service_logon_failed = 1069;
constexpr uint32_t service_marked_for_delete = 1072;
constexpr uint32_t service_dependency_deleted = 1075;
constexpr uint32_t cancelled = 1223;
}  // namespace win32

}  // namespace qm
