#include "support/format.h"

#include "support/last_error.h"

namespace qm {

int64_t format_arg::as_signed() const noexcept {
    return m_size == 8 ? static_cast<int64_t>(m_bits)
                       : static_cast<int64_t>(static_cast<int32_t>(static_cast<uint32_t>(m_bits)));
}

uint64_t format_arg::as_unsigned() const noexcept {
    return m_size == 8 ? m_bits : static_cast<uint32_t>(m_bits);
}

namespace {

struct directive {
    bool left = false;
    bool plus = false;
    bool space = false;
    bool alternate = false;
    bool zero = false;
    size_t width = 0;
    bool has_precision = false;
    size_t precision = 0;
    char16_t conversion = 0;
};

bool is_digit(char16_t c) {
    return c >= u'0' && c <= u'9';
}

// Widths and precisions beyond this are taken as this: a settings text must not be able to ask
// for gigabytes of padding.
constexpr size_t kMaxPadding = 4096;

size_t read_number(wstring_view text, size_t& pos) {
    size_t value = 0;
    while (pos < text.size() && is_digit(text[pos])) {
        value = std::min(kMaxPadding, value * 10 + static_cast<size_t>(text[pos] - u'0'));
        ++pos;
    }
    return value;
}

// Parses the conversion that starts after a '%' at `pos`. On success `pos` is past the conversion
// character; returns false when the text ends first.
bool parse_directive(wstring_view text, size_t& pos, directive& out) {
    for (; pos < text.size(); ++pos) {
        const char16_t c = text[pos];
        if (c == u'-') {
            out.left = true;
        } else if (c == u'+') {
            out.plus = true;
        } else if (c == u' ') {
            out.space = true;
        } else if (c == u'#') {
            out.alternate = true;
        } else if (c == u'0') {
            out.zero = true;
        } else {
            break;
        }
    }
    out.width = read_number(text, pos);
    if (pos < text.size() && text[pos] == u'.') {
        ++pos;
        out.has_precision = true;
        out.precision = read_number(text, pos);
    }
    // Length modifiers: the argument knows its own size.
    while (pos < text.size()) {
        const wstring_view rest = text.substr(pos);
        if (rest.starts_with(u"I64") || rest.starts_with(u"I32")) {
            pos += 3;
        } else if (rest[0] == u'h' || rest[0] == u'l' || rest[0] == u'L' || rest[0] == u'I' ||
                   rest[0] == u'w' || rest[0] == u'z' || rest[0] == u'j' || rest[0] == u't') {
            ++pos;
        } else {
            break;
        }
    }
    if (pos >= text.size()) {
        return false;
    }
    out.conversion = text[pos++];
    return true;
}

void pad(wstring& out, size_t count, char16_t fill) {
    out.append(count, fill);
}

void emit_padded(wstring& out, const directive& s, wstring_view body) {
    const size_t padding = s.width > body.size() ? s.width - body.size() : 0;
    if (!s.left) {
        pad(out, padding, u' ');
    }
    out += body;
    if (s.left) {
        pad(out, padding, u' ');
    }
}

wstring digits_of(uint64_t value, unsigned base, bool upper) {
    const char16_t* const alphabet = upper ? u"0123456789ABCDEF" : u"0123456789abcdef";
    wstring digits;
    do {
        digits.insert(digits.begin(), alphabet[value % base]);
        value /= base;
    } while (value != 0);
    return digits;
}

void emit_integer(wstring& out, const directive& s, const format_arg& arg) {
    wstring sign;
    wstring prefix;
    wstring digits;
    switch (s.conversion) {
        case u'd':
        case u'i': {
            const int64_t value = arg.as_signed();
            const uint64_t magnitude = value < 0 ? uint64_t{0} - static_cast<uint64_t>(value)
                                                 : static_cast<uint64_t>(value);
            digits = digits_of(magnitude, 10, false);
            if (value < 0) {
                sign.push_back(u'-');
            } else if (s.plus) {
                sign.push_back(u'+');
            } else if (s.space) {
                sign.push_back(u' ');
            }
            break;
        }
        case u'u':
            digits = digits_of(arg.as_unsigned(), 10, false);
            break;
        case u'o':
            digits = digits_of(arg.as_unsigned(), 8, false);
            break;
        default: {  // x, X
            const bool upper = s.conversion == u'X';
            digits = digits_of(arg.as_unsigned(), 16, upper);
            if (s.alternate && arg.as_unsigned() != 0) {
                prefix.push_back(u'0');
                prefix.push_back(upper ? u'X' : u'x');
            }
            break;
        }
    }
    if (s.has_precision) {
        if (s.precision == 0 && digits == u"0") {
            digits.clear();
        } else if (digits.size() < s.precision) {
            digits.insert(0, s.precision - digits.size(), u'0');
        }
    }
    // '#' with 'o' asks for a leading zero, added only when the precision did not give one.
    if (s.conversion == u'o' && s.alternate && (digits.empty() || digits.front() != u'0')) {
        prefix.assign(1, u'0');
    }
    const size_t length = sign.size() + prefix.size() + digits.size();
    if (s.zero && !s.left && !s.has_precision && s.width > length) {
        digits.insert(0, s.width - length, u'0');
    }
    sign.append(prefix).append(digits);
    emit_padded(out, s, sign);
}

void emit_text(wstring& out, const directive& s, wstring_view text) {
    if (s.has_precision && text.size() > s.precision) {
        text = text.substr(0, s.precision);
    }
    emit_padded(out, s, text);
}

}  // namespace

wstring vformat(wstring_view format, std::span<const format_arg> args) {
    last_error_guard keep_last_error;
    wstring out;
    out.reserve(format.size() + 16 * args.size());
    size_t next_arg = 0;
    size_t pos = 0;
    while (pos < format.size()) {
        const size_t percent = format.find(u'%', pos);
        if (percent == wstring_view::npos) {
            out.append(format.substr(pos));
            break;
        }
        out.append(format.substr(pos, percent - pos));
        pos = percent + 1;
        directive s;
        if (!parse_directive(format, pos, s)) {
            out.append(format.substr(percent));
            break;
        }
        const wstring_view verbatim = format.substr(percent, pos - percent);
        if (s.conversion == u'%') {
            out += u'%';
            continue;
        }
        const bool known = wstring_view(u"diuoxXcsS").find(s.conversion) != wstring_view::npos;
        if (!known || next_arg >= args.size()) {
            out.append(verbatim);
            continue;
        }
        const format_arg& arg = args[next_arg++];
        if (arg.type() == format_arg::kind::text) {
            emit_text(out, s, arg.text());
        } else if (s.conversion == u's' || s.conversion == u'S') {
            directive decimal = s;
            decimal.conversion = arg.type() == format_arg::kind::signed_integer ? u'd' : u'u';
            decimal.has_precision = false;
            emit_integer(out, decimal, arg);
        } else if (s.conversion == u'c') {
            const char16_t c = static_cast<char16_t>(arg.as_unsigned());
            emit_text(out, directive{.left = s.left, .width = s.width}, wstring_view(&c, 1));
        } else {
            emit_integer(out, s, arg);
        }
    }
    return out;
}

}  // namespace qm
