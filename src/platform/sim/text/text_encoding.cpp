#include "platform/sim/text/text_encoding.h"

#include <algorithm>

#include "platform/sim/machine/machine_error.h"
#include "support/wide_string.h"

namespace webrig::sim {
namespace {

int CountLinesBefore(std::span<const std::byte> bytes, size_t offset) {
    return 1 + static_cast<int>(std::count(bytes.begin(), bytes.begin() + static_cast<long>(offset),
                                           std::byte{'\n'}));
}

}  // namespace

DecodedText DecodeText(std::span<const std::byte> bytes, const std::filesystem::path& file) {
    const auto at = [&](size_t i) { return std::to_integer<unsigned>(bytes[i]); };
    DecodedText decoded;
    if (bytes.size() >= 2 && at(0) == 0xFE && at(1) == 0xFF) {
        throw MachineError(file, 1, "UTF-16 big-endian text is not supported; save it as UTF-16LE");
    }
    if (bytes.size() >= 2 && at(0) == 0xFF && at(1) == 0xFE) {
        decoded.encoding = TextEncoding::utf16le_bom;
        decoded.text.reserve(bytes.size() / 2);
        size_t i = 2;
        for (; i + 1 < bytes.size(); i += 2) {
            decoded.text += static_cast<char16_t>(at(i) | (at(i + 1) << 8));
        }
        if (i < bytes.size()) {
            const int line =
                1 + static_cast<int>(std::count(decoded.text.begin(), decoded.text.end(), u'\n'));
            throw MachineError(file, line, "the UTF-16 text ends in the middle of a character");
        }
        return decoded;
    }
    size_t start = 0;
    decoded.encoding = TextEncoding::utf8;
    if (bytes.size() >= 3 && at(0) == 0xEF && at(1) == 0xBB && at(2) == 0xBF) {
        decoded.encoding = TextEncoding::utf8_bom;
        start = 3;
    }
    const std::string_view utf8(reinterpret_cast<const char*>(bytes.data()) + start,
                                bytes.size() - start);
    size_t badOffset = 0;
    if (!qm::from_utf8_strict(utf8, decoded.text, badOffset)) {
        throw MachineError(file, CountLinesBefore(bytes, start + badOffset),
                           "the text is not valid UTF-8");
    }
    return decoded;
}

std::optional<std::vector<std::byte>> EncodeText(qm::wstring_view text, TextEncoding encoding) {
    std::vector<std::byte> bytes;
    if (encoding == TextEncoding::utf16le_bom) {
        bytes.reserve(2 + 2 * text.size());
        bytes.push_back(std::byte{0xFF});
        bytes.push_back(std::byte{0xFE});
        for (const char16_t c : text) {
            bytes.push_back(static_cast<std::byte>(c & 0xFF));
            bytes.push_back(static_cast<std::byte>(c >> 8));
        }
        return bytes;
    }
    if (qm::has_lone_surrogate(text)) {
        return std::nullopt;
    }
    if (encoding == TextEncoding::utf8_bom) {
        bytes = {std::byte{0xEF}, std::byte{0xBB}, std::byte{0xBF}};
    }
    const std::string utf8 = qm::to_utf8(text);
    const auto* first = reinterpret_cast<const std::byte*>(utf8.data());
    bytes.insert(bytes.end(), first, first + utf8.size());
    return bytes;
}

qm::wstring DetectLineEnding(qm::wstring_view text, qm::wstring_view fallback) {
    const size_t newline = text.find(u'\n');
    if (newline == qm::wstring_view::npos) {
        return qm::wstring(fallback);
    }
    return newline > 0 && text[newline - 1] == u'\r' ? u"\r\n" : u"\n";
}

}  // namespace webrig::sim
