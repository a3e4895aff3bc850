#include "platform/win32/win32_code_page.h"

#include <limits>

#include "platform/win32/windows_api.h"

namespace webrig::win32 {
namespace {

// The conversions take int lengths: longer input goes through in pieces.
constexpr size_t kPiece = static_cast<size_t>(std::numeric_limits<int>::max() / 4);

}  // namespace

uint32_t Win32AnsiCodePage::Number() {
    return ::GetACP();
}

qm::wstring Win32AnsiCodePage::ToWide(std::span<const std::byte> bytes) {
    qm::wstring text;
    while (!bytes.empty()) {
        // A piece must not end inside a double-byte character.
        size_t length = std::min(bytes.size(), kPiece);
        if (length < bytes.size()) {
            while (length > 1 && ::IsDBCSLeadByte(static_cast<BYTE>(bytes[length - 1])) != FALSE) {
                --length;
            }
        }
        const auto* source = reinterpret_cast<const char*>(bytes.data());
        const int needed =
            ::MultiByteToWideChar(CP_ACP, 0, source, static_cast<int>(length), nullptr, 0);
        const size_t start = text.size();
        text.resize(start + static_cast<size_t>(needed));
        ::MultiByteToWideChar(CP_ACP, 0, source, static_cast<int>(length),
                              reinterpret_cast<wchar_t*>(text.data() + start), needed);
        bytes = bytes.subspan(length);
    }
    return text;
}

std::string Win32AnsiCodePage::FromWide(qm::wstring_view text) {
    std::string bytes;
    while (!text.empty()) {
        size_t length = std::min(text.size(), kPiece);
        // Keep a surrogate pair in one piece.
        if (length < text.size() && text[length - 1] >= 0xD800 && text[length - 1] <= 0xDBFF) {
            --length;
        }
        const auto* source = reinterpret_cast<const wchar_t*>(text.data());
        const int needed = ::WideCharToMultiByte(CP_ACP, 0, source, static_cast<int>(length),
                                                 nullptr, 0, nullptr, nullptr);
        const size_t start = bytes.size();
        bytes.resize(start + static_cast<size_t>(needed));
        ::WideCharToMultiByte(CP_ACP, 0, source, static_cast<int>(length), bytes.data() + start,
                              needed, nullptr, nullptr);
        text.remove_prefix(length);
    }
    return bytes;
}

}  // namespace webrig::win32
