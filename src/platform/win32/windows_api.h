#pragma once
// The one way this layer includes the Windows headers: lean, without min/max macros, Unicode.

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef UNICODE
#define UNICODE
#endif

#include <windows.h>
// COM and OLE Automation need <windows.h> first.
#include <objbase.h>
#include <oleauto.h>

#include <string>

#include "support/wide_string.h"

namespace webrig::win32 {

static_assert(sizeof(wchar_t) == sizeof(char16_t), "Windows text is UTF-16");

// NUL-terminated views between the module's text and the wide-character API.
inline const wchar_t* Wide(const qm::wstring& text) noexcept {
    return reinterpret_cast<const wchar_t*>(text.c_str());
}
inline const char16_t* Utf16(const wchar_t* text) noexcept {
    return reinterpret_cast<const char16_t*>(text);
}

}  // namespace webrig::win32
