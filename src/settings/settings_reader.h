#pragma once
// The ways the loader reads a value out of the parsed settings file. Every section reader uses
// these and nothing else, so that limits, defaults and resolution are the same everywhere.

#include <cstdint>

#include "platform/code_page.h"
#include "settings/iis_loader.h"
#include "settings/settings_file.h"

namespace webrig::settings {

class SettingsReader {
  public:
    // Reading limits in characters, the terminating zero included.
    static constexpr size_t kNumberLimit = 20;
    static constexpr size_t kNameLimit = 260;
    static constexpr size_t kProgressTextLimit = 512;
    static constexpr size_t kResolvedLimit = 4096;

    SettingsReader(const SettingsFile& file, CIISLoader& resolver, platform::AnsiCodePage& ansi)
        : m_file(file), m_resolver(resolver), m_ansi(ansi) {}

    // The entry's value, or `fallback` when the section or the entry is absent, cut to at most
    // `limit` - 1 characters.
    qm::wstring Raw(qm::wstring_view section, qm::wstring_view name, size_t limit,
                    qm::wstring_view fallback) const;
    // Raw with the limit 4096, then resolved through the host engine.
    qm::wstring Resolved(qm::wstring_view section, qm::wstring_view name,
                         qm::wstring_view fallback) const;
    // A scrambled password: raw with the limit 260, descrambled, resolved; empty when absent.
    qm::wstring Scrambled(qm::wstring_view section, qm::wstring_view name) const;
    // Absent or empty gives `fallback`; otherwise the value's number.
    int32_t IntegerOr(qm::wstring_view section, qm::wstring_view name, int32_t fallback) const;

    bool HasSection(qm::wstring_view section) const { return m_file.HasSection(section); }
    const SettingsFile& file() const { return m_file; }

  private:
    const SettingsFile& m_file;
    CIISLoader& m_resolver;
    platform::AnsiCodePage& m_ansi;
};

}  // namespace webrig::settings
