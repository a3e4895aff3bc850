#pragma once
// The keys under HKLM\SOFTWARE that WOW64 shares between the 32-bit and 64-bit registry views
// (Windows 7 and Server 2008 R2 onwards): a 32-bit process reaches them without redirection.
// A sub-key behaves as its nearest listed ancestor; a few keys below shared ones are redirected
// again (Classes\CLSID, Classes\Interface, ...).

#include <vector>

#include "support/wide_string.h"

namespace webrig::sim {

// `path` starts below HKEY_LOCAL_MACHINE ("SOFTWARE", "Microsoft", "SystemCertificates", ...).
bool IsSharedUnderWow64(const std::vector<qm::wstring>& path);

}  // namespace webrig::sim
