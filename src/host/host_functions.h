#pragma once
// The plain functions the host engine module exports for webrig, and their exact types. A host
// on Linux implements them with these signatures; webrig.dll calls them as __stdcall.

#include <cstdint>

#include "platform/automation.h"

#if defined(_WIN32) && !defined(_WIN64)
#define WEBRIG_HOST_CALL __stdcall
#else
#define WEBRIG_HOST_CALL
#endif

namespace webrig::host {

// The host engine's module, already loaded by the installer before webrig.
inline constexpr char16_t kHostModuleName[] = u"QMRT.DLL";
// webrig's own module, next to which the host module is looked for.
inline constexpr char16_t kOwnModuleName[] = u"webrig.dll";

inline constexpr char kLoadStringExport[] = "__LoadString";
inline constexpr char kTextSubstituteExport[] = "TextSubSubstitute";
inline constexpr char kComponentFileInfoExport[] = "_ComponentFileInfo";

// The text of a string-table identifier: 0 on success, a positive value is the capacity (in
// characters) the text needs, anything else is a failure.
using LoadStringFunction = int32_t(WEBRIG_HOST_CALL*)(uint32_t hostContext, const char16_t* key,
                                                      char16_t* buffer, uint32_t capacity);

// Replaces the BSTR at `text` with its substituted text (the host frees the one it replaces).
using TextSubstituteFunction = int32_t(WEBRIG_HOST_CALL*)(uint32_t hostContext,
                                                          platform::Bstr* text);

// Information about a component's files: 0 on success, with `*result` set.
using ComponentFileInfoFunction = int32_t(WEBRIG_HOST_CALL*)(
    uint32_t hostContext, const char16_t* media, const char16_t* feature, const char16_t* component,
    uint32_t selector, uint32_t* result, uint32_t reserved);

}  // namespace webrig::host
