#pragma once
// The WOW64 file-system redirector, as a 32-bit process on 64-bit Windows meets it: access to
// %windir%\System32 reaches %windir%\SysWOW64, except in the folders Windows exempts (catroot,
// catroot2, driverstore, drivers\etc, logfiles, spool); %windir%\Sysnative reaches the real
// System32; %windir%\lastgood\system32 and %windir%\regedit.exe go to their SysWOW64 twins.

#include <vector>

#include "support/wide_string.h"

namespace webrig::sim {

class Wow64FileRedirection {
  public:
    // No redirection: a 32-bit machine, or a process of the machine's own bitness.
    Wow64FileRedirection() = default;
    // `driverStoreExempt`: Windows 7 and Server 2008 R2 and later leave
    // System32\driverstore alone; earlier releases redirect it.
    Wow64FileRedirection(qm::wstring_view windowsDirectory, bool driverStoreExempt);

    bool enabled() const noexcept { return m_enabled; }

    // The path the access reaches, normalized as GetFullPathNameW does. A path that cannot be
    // normalized comes back unchanged, for the caller's lookup to refuse.
    qm::wstring Redirect(qm::wstring_view path) const;

  private:
    bool m_enabled = false;
    bool m_driverStoreExempt = true;
    std::vector<qm::wstring> m_windows;  // the Windows directory's components
};

}  // namespace webrig::sim
