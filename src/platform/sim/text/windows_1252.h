#pragma once
// Code page 1252 (Western European), the ANSI code page of the simulated process.

#include "platform/code_page.h"

namespace webrig::sim {

class Windows1252 final : public platform::AnsiCodePage {
  public:
    uint32_t Number() override { return 1252; }
    qm::wstring ToWide(std::span<const std::byte> bytes) override;
    std::string FromWide(qm::wstring_view text) override;
};

}  // namespace webrig::sim
