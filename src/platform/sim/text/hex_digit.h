#pragma once
// Hexadecimal digits as .reg files and netsh's certificate hashes write them.

namespace webrig::sim {

// 0-15 for a hexadecimal digit of either case, -1 for anything else.
constexpr int HexDigit(char16_t c) {
    if (c >= u'0' && c <= u'9') {
        return c - u'0';
    }
    if (c >= u'a' && c <= u'f') {
        return c - u'a' + 10;
    }
    if (c >= u'A' && c <= u'F') {
        return c - u'A' + 10;
    }
    return -1;
}

}  // namespace webrig::sim
