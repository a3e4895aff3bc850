#pragma once
// The thread's ANSI code page (CP_ACP), for single-byte text from outside.

#include <cstddef>
#include <span>
#include <string>

#include "support/wide_string.h"

namespace webrig::platform {

class AnsiCodePage {
  public:
    virtual ~AnsiCodePage() = default;

    // The code page number, e.g. 1252.
    virtual uint32_t Number() = 0;
    // MultiByteToWideChar(CP_ACP, ...): every byte yields one character.
    virtual qm::wstring ToWide(std::span<const std::byte> bytes) = 0;
    // WideCharToMultiByte(CP_ACP, ...): characters without a byte become '?'.
    virtual std::string FromWide(qm::wstring_view text) = 0;
};

}  // namespace webrig::platform
