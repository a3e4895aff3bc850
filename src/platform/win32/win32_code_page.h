#pragma once
// The process's ANSI code page (CP_ACP) through MultiByteToWideChar and WideCharToMultiByte.

#include "platform/code_page.h"

namespace webrig::win32 {

class Win32AnsiCodePage final : public platform::AnsiCodePage {
  public:
    uint32_t Number() override;
    qm::wstring ToWide(std::span<const std::byte> bytes) override;
    std::string FromWide(qm::wstring_view text) override;
};

}  // namespace webrig::win32
