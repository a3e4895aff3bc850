#include "host/host_text.h"

#include <vector>

#include "host/host_functions.h"

namespace webrig::host {

platform::ProcAddress HostText::Find(const char* name) {
    if (m_hostContext == 0 || m_hostModule == platform::kNoModule) {
        return nullptr;
    }
    return m_platform.modules().FindFunction(m_hostModule, name);
}

bool HostText::Available() {
    return Find(kLoadStringExport) != nullptr || Find(kTextSubstituteExport) != nullptr;
}

qm::wstring HostText::LoadHostString(const qm::wstring& key) {
    const auto loadString = reinterpret_cast<LoadStringFunction>(Find(kLoadStringExport));
    if (loadString == nullptr) {
        return key;
    }
    std::vector<char16_t> buffer(kFirstBufferCapacity, u'\0');
    int32_t result =
        loadString(m_hostContext, key.c_str(), buffer.data(), static_cast<uint32_t>(buffer.size()));
    if (result > 0) {
        const auto needed = static_cast<uint32_t>(result) + 1;
        if (needed > kLargestHostString) {
            return SubstituteHostText(key);
        }
        buffer.assign(needed, u'\0');
        result = loadString(m_hostContext, key.c_str(), buffer.data(), needed);
    }
    if (result != 0) {
        return SubstituteHostText(key);
    }
    // The text ends at its NUL, or at the end of the buffer when the host wrote none.
    const qm::wstring_view filled(buffer.data(), buffer.size());
    return SubstituteHostText(qm::wstring(filled.substr(0, filled.find(u'\0'))));
}

qm::wstring HostText::SubstituteHostText(const qm::wstring& text) {
    const auto substitute = reinterpret_cast<TextSubstituteFunction>(Find(kTextSubstituteExport));
    if (substitute == nullptr) {
        return text;
    }
    platform::Automation& automation = m_platform.automation();
    platform::Bstr bstr = automation.SysAllocStringLen(text);
    if (bstr == nullptr && !text.empty()) {
        return text;
    }
    substitute(m_hostContext, &bstr);
    qm::wstring substituted;
    if (bstr != nullptr) {
        substituted.assign(bstr, automation.SysStringLen(bstr));
    }
    automation.SysFreeString(bstr);
    return substituted;
}

}  // namespace webrig::host
