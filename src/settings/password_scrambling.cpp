#include "settings/password_scrambling.h"

#include <cstdint>
#include <string>

namespace webrig::settings {
namespace {

// The key goes through the thread's code page as the settings tool did when it scrambled.
std::string KeyBytes(platform::AnsiCodePage& ansi) {
    return ansi.FromWide(u"_Wexley_");
}

uint8_t KeyByte(const std::string& key, size_t position) {
    // Every code page has bytes for ASCII; an empty key would only come from a broken one.
    return key.empty() ? 0 : static_cast<uint8_t>(key[position % key.size()]);
}

uint8_t SwapHalves(uint8_t value) {
    return static_cast<uint8_t>((value << 4) | (value >> 4));
}

uint8_t Scramble(uint8_t plain, uint8_t key) {
    return SwapHalves(static_cast<uint8_t>(~plain ^ key));
}

uint8_t Descramble(uint8_t scrambled, uint8_t key) {
    return static_cast<uint8_t>(~(SwapHalves(scrambled) ^ key));
}

}  // namespace

qm::wstring DescramblePassword(qm::wstring_view fileText, platform::AnsiCodePage& ansi) {
    const std::string key = KeyBytes(ansi);
    qm::wstring plaintext;
    plaintext.reserve(fileText.size() / 2);
    for (size_t i = 0; i < fileText.size(); i += 2) {
        const uint8_t low = Descramble(static_cast<uint8_t>(fileText[i]), KeyByte(key, i));
        // A last byte without its partner is read with the zero that ends the byte buffer.
        const uint8_t high =
            i + 1 < fileText.size()
                ? Descramble(static_cast<uint8_t>(fileText[i + 1]), KeyByte(key, i + 1))
                : uint8_t{0};
        const auto character = static_cast<char16_t>(low | high << 8);
        if (character == u'\0') {
            break;
        }
        plaintext += character;
    }
    return plaintext;
}

qm::wstring ScramblePassword(qm::wstring_view plaintext, platform::AnsiCodePage& ansi) {
    const std::string key = KeyBytes(ansi);
    qm::wstring scrambled;
    scrambled.reserve(plaintext.size() * 2);
    size_t position = 0;
    for (const char16_t character : plaintext) {
        for (const auto byte :
             {static_cast<uint8_t>(character & 0xFF), static_cast<uint8_t>(character >> 8)}) {
            scrambled += static_cast<char16_t>(Scramble(byte, KeyByte(key, position++)));
        }
    }
    return scrambled;
}

}  // namespace webrig::settings
