#include "platform/sim/files/wow64_redirection.h"

#include "platform/sim/files/windows_path.h"
#include "support/case_insensitive.h"
#include "support/result_codes.h"

namespace webrig::sim {
namespace {

bool IsSeparator(char16_t c) {
    return c == u'\\' || c == u'/';
}

bool Is(const qm::wstring& name, qm::wstring_view expected) {
    return qm::iequals(name, expected);
}

}  // namespace

Wow64FileRedirection::Wow64FileRedirection(qm::wstring_view windowsDirectory,
                                           bool driverStoreExempt)
    : m_driverStoreExempt(driverStoreExempt) {
    m_enabled = NormalizeWindowsPath(windowsDirectory, m_windows) == qm::win32::success &&
                !m_windows.empty();
}

qm::wstring Wow64FileRedirection::Redirect(qm::wstring_view path) const {
    std::vector<qm::wstring> names;
    if (!m_enabled || NormalizeWindowsPath(path, names) != qm::win32::success ||
        names.size() <= m_windows.size()) {
        return qm::wstring(path);
    }
    const size_t w = m_windows.size();
    for (size_t i = 0; i < w; ++i) {
        if (!qm::iequals(names[i], m_windows[i])) {
            return qm::wstring(path);
        }
    }
    const auto below = [&](size_t offset) -> const qm::wstring* {
        return w + offset < names.size() ? &names[w + offset] : nullptr;
    };
    const qm::wstring* first = below(1);
    const qm::wstring* second = below(2);
    bool changed = true;
    if (Is(names[w], u"System32")) {
        const bool exempt =
            first != nullptr &&
            (Is(*first, u"catroot") || Is(*first, u"catroot2") || Is(*first, u"logfiles") ||
             Is(*first, u"spool") || (m_driverStoreExempt && Is(*first, u"driverstore")) ||
             (Is(*first, u"drivers") && second != nullptr && Is(*second, u"etc")));
        changed = !exempt;
        if (changed) {
            names[w] = u"SysWOW64";
        }
    } else if (Is(names[w], u"Sysnative")) {
        names[w] = u"System32";
    } else if (Is(names[w], u"lastgood") && first != nullptr && Is(*first, u"system32")) {
        names[w + 1] = u"SysWOW64";
    } else if (Is(names[w], u"regedit.exe") && first == nullptr) {
        names.insert(names.begin() + static_cast<std::ptrdiff_t>(w), u"SysWOW64");
    } else {
        changed = false;
    }
    if (!changed) {
        return qm::wstring(path);
    }
    qm::wstring result = u"C:";
    for (const qm::wstring& name : names) {
        result += u'\\';
        result += name;
    }
    if (IsSeparator(path.back())) {
        result += u'\\';
    }
    return result;
}

}  // namespace webrig::sim
