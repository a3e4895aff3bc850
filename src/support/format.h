#pragma once
// printf-style formatting of wide text without a length limit.
//
// Conversions: %s %d %i %u %x %X %o %c %%, with flags (- + space # 0), width, precision and the
// length modifiers of the Windows C library (h l ll I32 I64 ...), which are accepted and ignored:
// each argument carries its own type and size, so "%x" of a 32-bit HRESULT prints 8 digits and
// "%d" of it prints it as signed decimal, as on 32-bit Windows.
//
// Format texts may come from a settings file, so nothing here can fail: a conversion without an
// argument left is copied as it stands, an integer conversion of a text argument prints the
// text, and a text conversion of an integer prints it in decimal.

#include <array>
#include <concepts>
#include <cstdint>
#include <span>

#include "support/wide_string.h"

namespace qm {

class format_arg {
  public:
    enum class kind { signed_integer, unsigned_integer, text };

    template <std::integral T>
    requires(!std::same_as<T, bool> && !std::same_as<T, char>) format_arg(T value)
    noexcept  // NOLINT(google-explicit-constructor): used implicitly
        : m_kind(std::is_signed_v<T> ? kind::signed_integer : kind::unsigned_integer),
          m_bits(static_cast<uint64_t>(value)),
          m_size(sizeof(T) > 4 ? 8 : 4) {}
    format_arg(wstring_view text) noexcept : m_kind(kind::text), m_text(text) {}    // NOLINT
    format_arg(const wstring& text) noexcept : m_kind(kind::text), m_text(text) {}  // NOLINT
    format_arg(const char16_t* text) noexcept                                       // NOLINT
        : m_kind(kind::text), m_text(text != nullptr ? wstring_view(text) : wstring_view()) {}

    kind type() const noexcept { return m_kind; }
    // The value as the signed or unsigned integer of the argument's own size.
    int64_t as_signed() const noexcept;
    uint64_t as_unsigned() const noexcept;
    wstring_view text() const noexcept { return m_text; }

  private:
    kind m_kind;
    uint64_t m_bits = 0;
    unsigned m_size = 0;
    wstring_view m_text;
};

wstring vformat(wstring_view format, std::span<const format_arg> args);

template <class... Args>
wstring format(wstring_view format_text, const Args&... args) {
    const std::array<format_arg, sizeof...(Args)> packed{format_arg(args)...};
    return vformat(format_text, packed);
}

}  // namespace qm
