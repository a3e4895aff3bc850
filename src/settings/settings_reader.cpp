#include "settings/settings_reader.h"

#include "settings/password_scrambling.h"
#include "support/decimal.h"

namespace webrig::settings {

qm::wstring SettingsReader::Raw(qm::wstring_view section, qm::wstring_view name, size_t limit,
                                qm::wstring_view fallback) const {
    const qm::wstring_view value = m_file.Find(section, name).value_or(fallback);
    return qm::wstring(value.substr(0, limit - 1));
}

qm::wstring SettingsReader::Resolved(qm::wstring_view section, qm::wstring_view name,
                                     qm::wstring_view fallback) const {
    return m_resolver.ResolveValue(Raw(section, name, kResolvedLimit, fallback));
}

qm::wstring SettingsReader::Scrambled(qm::wstring_view section, qm::wstring_view name) const {
    const qm::wstring scrambled = Raw(section, name, kNameLimit, u"0");
    return m_resolver.ResolveValue(DescramblePassword(scrambled, m_ansi));
}

int32_t SettingsReader::IntegerOr(qm::wstring_view section, qm::wstring_view name,
                                  int32_t fallback) const {
    const qm::wstring_view value = m_file.Find(section, name).value_or(u"");
    return value.empty() ? fallback : qm::read_decimal(value);
}

}  // namespace webrig::settings
