#pragma once
// OLE Automation strings (BSTR): the text type the host engine's functions exchange.

#include <cstdint>

#include "support/wide_string.h"

namespace webrig::platform {

// A BSTR: points at the characters, which are preceded by their length and followed by a NUL.
using Bstr = char16_t*;

class Automation {
  public:
    virtual ~Automation() = default;

    // SysAllocStringLen: nullptr when memory cannot be had.
    virtual Bstr SysAllocStringLen(qm::wstring_view text) = 0;
    // SysFreeString: accepts nullptr.
    virtual void SysFreeString(Bstr text) = 0;
    // SysStringLen: the length in characters; 0 for nullptr.
    virtual uint32_t SysStringLen(Bstr text) = 0;
};

}  // namespace webrig::platform
