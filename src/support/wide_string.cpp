#include "support/wide_string.h"

namespace qm {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool is_high_surrogate(char16_t c) {
    return c >= 0xD800 && c <= 0xDBFF;
}
bool is_low_surrogate(char16_t c) {
    return c >= 0xDC00 && c <= 0xDFFF;
}

void append_utf8(std::string& out, char32_t cp) {
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

void append_utf16(wstring& out, char32_t cp) {
    if (cp < 0x10000) {
        out += static_cast<char16_t>(cp);
    } else {
        cp -= 0x10000;
        out += static_cast<char16_t>(0xD800 + (cp >> 10));
        out += static_cast<char16_t>(0xDC00 + (cp & 0x3FF));
    }
}

// Decodes one UTF-8 sequence at `pos`; returns the code point or -1 when the sequence is invalid
// (the caller then skips exactly one byte).
long decode_one(std::string_view text, size_t& pos) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(pos);
    if (lead < 0x80) {
        ++pos;
        return lead;
    }
    size_t length = 0;
    char32_t cp = 0;
    char32_t minimum = 0;
    if ((lead & 0xE0) == 0xC0) {
        length = 2, cp = lead & 0x1F, minimum = 0x80;
    } else if ((lead & 0xF0) == 0xE0) {
        length = 3, cp = lead & 0x0F, minimum = 0x800;
    } else if ((lead & 0xF8) == 0xF0) {
        length = 4, cp = lead & 0x07, minimum = 0x10000;
    } else {
        return -1;
    }
    if (pos + length > text.size()) {
        return -1;
    }
    for (size_t i = 1; i < length; ++i) {
        const unsigned char next = byte(pos + i);
        if ((next & 0xC0) != 0x80) {
            return -1;
        }
        cp = (cp << 6) | (next & 0x3F);
    }
    if (cp < minimum || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) {
        return -1;
    }
    pos += length;
    return static_cast<long>(cp);
}

}  // namespace

std::string to_utf8(wstring_view text) {
    // Most text is ASCII: that leading run is copied unit by unit, without encoding.
    size_t ascii = 0;
    while (ascii < text.size() && text[ascii] < 0x80) {
        ++ascii;
    }
    std::string out(ascii, '\0');
    for (size_t i = 0; i < ascii; ++i) {
        out[i] = static_cast<char>(text[i]);
    }
    if (ascii == text.size()) {
        return out;
    }
    out.reserve(text.size() + (text.size() - ascii) * 2);
    for (size_t i = ascii; i < text.size(); ++i) {
        const char16_t c = text[i];
        if (is_high_surrogate(c) && i + 1 < text.size() && is_low_surrogate(text[i + 1])) {
            append_utf8(out, 0x10000 + ((static_cast<char32_t>(c) - 0xD800) << 10) +
                                 (static_cast<char32_t>(text[i + 1]) - 0xDC00));
            ++i;
        } else if (is_high_surrogate(c) || is_low_surrogate(c)) {
            append_utf8(out, kReplacement);
        } else {
            append_utf8(out, c);
        }
    }
    return out;
}

wstring from_utf8(std::string_view text) {
    size_t ascii = 0;
    while (ascii < text.size() && static_cast<unsigned char>(text[ascii]) < 0x80) {
        ++ascii;
    }
    wstring out(ascii, u'\0');
    for (size_t i = 0; i < ascii; ++i) {
        out[i] = static_cast<char16_t>(text[i]);
    }
    if (ascii == text.size()) {
        return out;
    }
    out.reserve(text.size());
    size_t pos = ascii;
    while (pos < text.size()) {
        const long cp = decode_one(text, pos);
        if (cp < 0) {
            append_utf16(out, kReplacement);
            ++pos;
        } else {
            append_utf16(out, static_cast<char32_t>(cp));
        }
    }
    return out;
}

bool from_utf8_strict(std::string_view text, wstring& out, size_t& bad_offset) {
    out.clear();
    out.reserve(text.size());
    size_t pos = 0;
    while (pos < text.size()) {
        const size_t start = pos;
        const long cp = decode_one(text, pos);
        if (cp < 0) {
            bad_offset = start;
            return false;
        }
        append_utf16(out, static_cast<char32_t>(cp));
    }
    return true;
}

bool has_lone_surrogate(wstring_view text) noexcept {
    for (size_t i = 0; i < text.size(); ++i) {
        if (is_high_surrogate(text[i]) && i + 1 < text.size() && is_low_surrogate(text[i + 1])) {
            ++i;
        } else if (is_high_surrogate(text[i]) || is_low_surrogate(text[i])) {
            return true;
        }
    }
    return false;
}

wstring widen_ascii(std::string_view ascii) {
    wstring out(ascii.size(), u'\0');
    for (size_t i = 0; i < ascii.size(); ++i) {
        out[i] = static_cast<char16_t>(static_cast<unsigned char>(ascii[i]));
    }
    return out;
}

}  // namespace qm
