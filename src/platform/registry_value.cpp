#include "platform/registry.h"

namespace webrig::platform {
namespace {

void append_utf16le(std::vector<std::byte>& out, qm::wstring_view text) {
    for (const char16_t c : text) {
        out.push_back(static_cast<std::byte>(c & 0xFF));
        out.push_back(static_cast<std::byte>(c >> 8));
    }
    out.push_back(std::byte{0});
    out.push_back(std::byte{0});
}

}  // namespace

RegValue RegValue::String(qm::wstring_view text, uint32_t type) {
    RegValue value{type, {}};
    value.data.reserve(2 * text.size() + 2);
    append_utf16le(value.data, text);
    return value;
}

RegValue RegValue::Dword(uint32_t dword) {
    RegValue value{reg_type::dword, {}};
    for (int shift = 0; shift < 32; shift += 8) {
        value.data.push_back(static_cast<std::byte>((dword >> shift) & 0xFF));
    }
    return value;
}

RegValue RegValue::MultiString(std::span<const qm::wstring> strings) {
    RegValue value{reg_type::multi_sz, {}};
    for (const auto& s : strings) {
        append_utf16le(value.data, s);
    }
    value.data.push_back(std::byte{0});
    value.data.push_back(std::byte{0});
    return value;
}

qm::wstring RegValue::AsString() const {
    qm::wstring text;
    for (size_t i = 0; i + 1 < data.size(); i += 2) {
        const auto c = static_cast<char16_t>(std::to_integer<unsigned>(data[i]) |
                                             (std::to_integer<unsigned>(data[i + 1]) << 8));
        if (c == 0) {
            break;
        }
        text += c;
    }
    return text;
}

std::optional<uint32_t> RegValue::AsDword() const {
    if (data.size() < 4) {
        return std::nullopt;
    }
    uint32_t dword = 0;
    for (int i = 3; i >= 0; --i) {
        dword = (dword << 8) | std::to_integer<uint32_t>(data[static_cast<size_t>(i)]);
    }
    return dword;
}

}  // namespace webrig::platform
