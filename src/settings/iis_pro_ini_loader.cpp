#include "settings/iis_pro_ini_loader.h"

qm::wstring CIISProIniLoader::ResolveValue(qm::wstring value) {
    if (!m_hostText.Available()) {
        return value;
    }
    if (value.find(u'\\') == qm::wstring::npos) {
        return m_hostText.LoadHostString(value);
    }
    qm::wstring joined;
    size_t start = 0;
    while (start <= value.size()) {
        size_t end = value.find(u'\\', start);
        if (end == qm::wstring::npos) {
            end = value.size();
        }
        if (end > start) {
            const qm::wstring piece = m_hostText.LoadHostString(value.substr(start, end - start));
            if (!piece.empty()) {
                if (!joined.empty() && !joined.ends_with(u'\\') && !piece.starts_with(u'\\')) {
                    joined += u'\\';
                }
                joined += piece;
            }
        }
        start = end + 1;
    }
    return joined.empty() ? value : joined;
}

qm::wstring CIISProIniLoader::ResolveRootDir(qm::wstring value) {
    return SubstituteHostText(value);
}

qm::wstring CIISProIniLoader::ResolveCertPath(qm::wstring value) {
    return ResolveRootDir(std::move(value));
}

qm::wstring CIISProIniLoader::SubstituteHostText(const qm::wstring& text) {
    return m_hostText.SubstituteHostText(text);
}
