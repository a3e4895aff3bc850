#pragma once
// Windows-1252 for tests: the code page the settings files of the tests are written in. The
// simulated machine brings its own code pages; this one only has to agree with Windows on the
// bytes the tests use.

#include <optional>

#include "platform/code_page.h"

namespace webrig::testing {

class Windows1252TestCodePage final : public platform::AnsiCodePage {
  public:
    // The byte for `character`, or nullopt when Windows-1252 has none.
    static std::optional<std::byte> Encode(char16_t character);
    static char16_t Decode(std::byte byte);

    uint32_t Number() override { return 1252; }
    qm::wstring ToWide(std::span<const std::byte> bytes) override;
    std::string FromWide(qm::wstring_view text) override;
};

}  // namespace webrig::testing
