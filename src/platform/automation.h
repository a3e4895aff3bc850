#pragma once
// OLE Automation strings (BSTR): the text type the host engine's functions exchange.

#include <cstdint>
#include <variant>

#include "support/result_codes.h"
#include "support/wide_string.h"

namespace webrig::platform {

// A BSTR: points at the characters, which are preceded by their length and followed by a NUL.
using Bstr = char16_t*;

// A VARIANT of the kinds webrig exchanges with COM objects: VT_EMPTY, VT_BOOL, VT_I4, VT_UI4,
// VT_I8, VT_UI8 and VT_BSTR, in that order.
using Variant =
    std::variant<std::monostate, bool, int32_t, uint32_t, int64_t, uint64_t, qm::wstring>;

class Automation {
  public:
    virtual ~Automation() = default;

    // SysAllocStringLen: nullptr when memory cannot be had.
    virtual Bstr SysAllocStringLen(qm::wstring_view text) = 0;
    // SysFreeString: accepts nullptr.
    virtual void SysFreeString(Bstr text) = 0;
    // SysStringLen: the length in characters; 0 for nullptr.
    virtual uint32_t SysStringLen(Bstr text) = 0;
    // VariantChangeType(&out, &value, 0, VT_BSTR): the text OLE Automation makes of a value, with
    // the HRESULT of the conversion.
    virtual qm::hresult ChangeTypeToText(const Variant& value, qm::wstring& text) = 0;
};

}  // namespace webrig::platform
