#pragma once
// Text services of the host engine: its string table and its text substitution. Both are looked
// up in the host module at each use, never cached, and skipped when the host context is 0 or the
// host does not export them.

#include <cstdint>

#include "platform/platform.h"

namespace webrig::host {

class HostText {
  public:
    HostText(platform::Platform& platform, platform::ModuleHandle hostModule, uint32_t hostContext)
        : m_platform(platform), m_hostModule(hostModule), m_hostContext(hostContext) {}

    // The host's text for a string-table identifier, then substituted; the identifier itself when
    // the table has no text for it (or there is no host), without substitution when there is no
    // "__LoadString".
    qm::wstring LoadHostString(const qm::wstring& key);

    // The host's substitution of `text` ("[INSTALLDIR]" and the like); `text` unchanged when there
    // is no host.
    qm::wstring SubstituteHostText(const qm::wstring& text);

    // Whether the host offers either service at all.
    bool Available();

    // Beyond this a text the host claims to need is taken as a failure, not allocated.
    static constexpr uint32_t kLargestHostString = 1u << 24;
    static constexpr uint32_t kFirstBufferCapacity = 260;

  private:
    platform::ProcAddress Find(const char* name);

    platform::Platform& m_platform;
    platform::ModuleHandle m_hostModule;
    uint32_t m_hostContext;
};

}  // namespace webrig::host
