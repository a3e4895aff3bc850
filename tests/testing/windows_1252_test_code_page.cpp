#include "testing/windows_1252_test_code_page.h"

#include <array>

namespace webrig::testing {
namespace {

// 0x80-0x9F; every other byte is the code point of the same number. The five bytes Windows-1252
// leaves unassigned (0x81, 0x8D, 0x8F, 0x90, 0x9D) decode to the C1 control of their number, as
// MultiByteToWideChar does.
constexpr std::array<char16_t, 32> kHighControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

}  // namespace

char16_t Windows1252TestCodePage::Decode(std::byte byte) {
    const auto value = std::to_integer<unsigned>(byte);
    return value >= 0x80 && value < 0xA0 ? kHighControls[value - 0x80]
                                         : static_cast<char16_t>(value);
}

std::optional<std::byte> Windows1252TestCodePage::Encode(char16_t character) {
    if (character < 0x80 || (character >= 0xA0 && character <= 0xFF)) {
        return static_cast<std::byte>(character);
    }
    for (size_t i = 0; i < kHighControls.size(); ++i) {
        if (kHighControls[i] == character) {
            return static_cast<std::byte>(0x80 + i);
        }
    }
    return std::nullopt;
}

qm::wstring Windows1252TestCodePage::ToWide(std::span<const std::byte> bytes) {
    qm::wstring text(bytes.size(), u'\0');
    for (size_t i = 0; i < bytes.size(); ++i) {
        text[i] = Decode(bytes[i]);
    }
    return text;
}

std::string Windows1252TestCodePage::FromWide(qm::wstring_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (const char16_t character : text) {
        bytes += static_cast<char>(
            std::to_integer<unsigned char>(Encode(character).value_or(std::byte{'?'})));
    }
    return bytes;
}

}  // namespace webrig::testing
