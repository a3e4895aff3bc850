#pragma once
// The registry key under HKEY_LOCAL_MACHINE where installations keep what later runs of the same
// product need: stored site numbers and the markers of application pools they created. One
// sub-key per product code. SOFTWARE is not shared between the WOW64 views, so a 32-bit module on
// 64-bit Windows reads and writes it under SOFTWARE\WOW6432Node without asking.

#include "platform/registry.h"

namespace webrig::settings {

inline constexpr char16_t kUninstallInformationKey[] =
    u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Quillmark Uninstall Information";

// The product code that new site numbers are stored under when the project gives none.
inline constexpr char16_t kFallbackProductCode[] = u"{5BD96B56-F945-4DE8-B22B-221CBA237789}";

// The product's key path below HKEY_LOCAL_MACHINE. An empty product code names the parent key
// itself: the registry reads a trailing backslash as no further level.
qm::wstring UninstallInfoKeyPath(const qm::wstring& productCode);

// Creates the product's key when it cannot be opened for reading. A Win32 code, 0 when the key
// was there or has been created.
uint32_t EnsureUninstallInfoKey(platform::Registry& registry, const qm::wstring& productCode);

// Opens the product's key with all access, creating it when it is missing. A Win32 code.
uint32_t OpenOrCreateUninstallInformationKey(platform::Registry& registry,
                                             const qm::wstring& productCode,
                                             platform::ScopedRegKey& key);

// Stores a site number for later runs as REG_SZ, its length counting no terminating NUL. False
// when the key cannot be opened or created, or the value cannot be set.
bool WriteSiteNumberValue(platform::Registry& registry, const qm::wstring& productCode,
                          const qm::wstring& valueName, const qm::wstring& siteNumber);

// The text of the value `valueName` that an earlier installation of the product stored. False
// when the key or the value is missing, is not text, or does not fit the 260-character buffer it
// is read into.
bool ReadSiteNumberValue(platform::Registry& registry, const qm::wstring& productCode,
                         const qm::wstring& valueName, qm::wstring& siteNumber);

}  // namespace webrig::settings
