#include "platform/win32/win32_automation.h"

#include <limits>

#include "platform/win32/com_values.h"

namespace webrig::win32 {
namespace {

BSTR ToBstr(platform::Bstr text) noexcept {
    return reinterpret_cast<BSTR>(text);
}

}  // namespace

platform::Bstr Win32Automation::SysAllocStringLen(qm::wstring_view text) {
    if (text.size() >= std::numeric_limits<UINT>::max() / sizeof(wchar_t)) {
        return nullptr;
    }
    return reinterpret_cast<platform::Bstr>(::SysAllocStringLen(
        reinterpret_cast<const OLECHAR*>(text.data()), static_cast<UINT>(text.size())));
}

void Win32Automation::SysFreeString(platform::Bstr text) {
    ::SysFreeString(ToBstr(text));
}

uint32_t Win32Automation::SysStringLen(platform::Bstr text) {
    return ::SysStringLen(ToBstr(text));
}

qm::hresult Win32Automation::ChangeTypeToText(const platform::Variant& value, qm::wstring& text) {
    text.clear();
    ScopedVariant in;
    if (const qm::hresult hr = ToVariant(value, in.get()); qm::failed(hr)) {
        return hr;
    }
    ScopedVariant out;
    const HRESULT hr = ::VariantChangeType(&out.get(), &in.get(), 0, VT_BSTR);
    if (SUCCEEDED(hr) && out.get().bstrVal != nullptr) {
        text.assign(Utf16(out.get().bstrVal), ::SysStringLen(out.get().bstrVal));
    }
    return hr;
}

}  // namespace webrig::win32
