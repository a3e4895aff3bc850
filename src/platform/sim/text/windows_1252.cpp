#include "platform/sim/text/windows_1252.h"

namespace webrig::sim {
namespace {

// Bytes 0x80..0x9F. The five bytes the code page leaves undefined (0x81, 0x8D, 0x8F, 0x90, 0x9D)
// map to the C1 control with the same number, as MultiByteToWideChar maps them.
constexpr char16_t kHighControls[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,  // 80-87
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,  // 88-8F
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,  // 90-97
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,  // 98-9F
};

char16_t ByteToChar(unsigned byte) {
    return byte >= 0x80 && byte <= 0x9F ? kHighControls[byte - 0x80] : static_cast<char16_t>(byte);
}

bool IsSurrogatePair(qm::wstring_view text, size_t i) {
    return text[i] >= 0xD800 && text[i] <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
           text[i + 1] <= 0xDFFF;
}

}  // namespace

qm::wstring Windows1252::ToWide(std::span<const std::byte> bytes) {
    qm::wstring text(bytes.size(), u'\0');
    char16_t* out = text.data();
    for (const std::byte b : bytes) {
        *out++ = ByteToChar(std::to_integer<unsigned>(b));
    }
    return text;
}

std::string Windows1252::FromWide(qm::wstring_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        const char16_t c = text[i];
        if (c < 0x80 || (c >= 0xA0 && c <= 0xFF)) {
            bytes += static_cast<char>(c);
            continue;
        }
        char mapped = '?';
        for (unsigned k = 0; k < 32; ++k) {
            if (kHighControls[k] == c) {
                mapped = static_cast<char>(0x80 + k);
                break;
            }
        }
        bytes += mapped;
        // A character outside the BMP is one character: one '?', not two.
        if (mapped == '?' && IsSurrogatePair(text, i)) {
            ++i;
        }
    }
    return bytes;
}

}  // namespace webrig::sim
