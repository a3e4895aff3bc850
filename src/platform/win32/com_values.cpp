#include "platform/win32/com_values.h"

#include <limits>

namespace webrig::win32 {

ScopedBstr::ScopedBstr(qm::wstring_view text) noexcept : m_wanted(true) {
    if (text.size() < std::numeric_limits<UINT>::max() / sizeof(wchar_t)) {
        m_text = ::SysAllocStringLen(reinterpret_cast<const OLECHAR*>(text.data()),
                                     static_cast<UINT>(text.size()));
    }
}

qm::wstring ScopedBstr::Text() const {
    if (m_text == nullptr) {
        return {};
    }
    return qm::wstring(Utf16(m_text), ::SysStringLen(m_text));
}

qm::hresult ToVariant(const platform::Variant& value, VARIANT& out) {
    ::VariantClear(&out);
    return std::visit(
        [&out](const auto& held) -> qm::hresult {
            using Held = std::decay_t<decltype(held)>;
            if constexpr (std::is_same_v<Held, std::monostate>) {
                out.vt = VT_EMPTY;
            } else if constexpr (std::is_same_v<Held, bool>) {
                out.vt = VT_BOOL;
                out.boolVal = held ? VARIANT_TRUE : VARIANT_FALSE;
            } else if constexpr (std::is_same_v<Held, int32_t>) {
                out.vt = VT_I4;
                out.lVal = held;
            } else if constexpr (std::is_same_v<Held, uint32_t>) {
                out.vt = VT_UI4;
                out.ulVal = held;
            } else if constexpr (std::is_same_v<Held, int64_t>) {
                out.vt = VT_I8;
                out.llVal = held;
            } else if constexpr (std::is_same_v<Held, uint64_t>) {
                out.vt = VT_UI8;
                out.ullVal = held;
            } else {
                ScopedBstr text(held);
                if (text.Failed()) {
                    return qm::hr::out_of_memory;
                }
                out.vt = VT_BSTR;
                out.bstrVal = text.release();
            }
            return qm::hr::ok;
        },
        value);
}

qm::hresult FromVariant(const VARIANT& value, platform::Variant& out) {
    switch (value.vt) {
        case VT_EMPTY:
        case VT_NULL:
            out = std::monostate{};
            return qm::hr::ok;
        case VT_BOOL:
            out = value.boolVal != VARIANT_FALSE;
            return qm::hr::ok;
        case VT_I1:
            out = static_cast<int32_t>(value.cVal);
            return qm::hr::ok;
        case VT_I2:
            out = static_cast<int32_t>(value.iVal);
            return qm::hr::ok;
        case VT_I4:
        case VT_INT:
            out = static_cast<int32_t>(value.lVal);
            return qm::hr::ok;
        case VT_UI1:
            out = static_cast<uint32_t>(value.bVal);
            return qm::hr::ok;
        case VT_UI2:
            out = static_cast<uint32_t>(value.uiVal);
            return qm::hr::ok;
        case VT_UI4:
        case VT_UINT:
            out = static_cast<uint32_t>(value.ulVal);
            return qm::hr::ok;
        case VT_I8:
            out = static_cast<int64_t>(value.llVal);
            return qm::hr::ok;
        case VT_UI8:
            out = static_cast<uint64_t>(value.ullVal);
            return qm::hr::ok;
        case VT_BSTR:
            out = value.bstrVal == nullptr
                      ? qm::wstring()
                      : qm::wstring(Utf16(value.bstrVal), ::SysStringLen(value.bstrVal));
            return qm::hr::ok;
        default:
            break;
    }
    ScopedVariant text;
    const HRESULT hr = ::VariantChangeType(&text.get(), const_cast<VARIANT*>(&value), 0, VT_BSTR);
    if (FAILED(hr)) {
        return hr;
    }
    out = text.get().bstrVal == nullptr
              ? qm::wstring()
              : qm::wstring(Utf16(text.get().bstrVal), ::SysStringLen(text.get().bstrVal));
    return qm::hr::ok;
}

}  // namespace webrig::win32
