#include "support/format.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "support/result_codes.h"
#include "support/wide_string.h"

namespace {

using qm::format_arg;
using qm::wstring;

// ---------------------------------------------------------------------------------------------
// Integer, character and text conversions against the C library's own printf, for every flag,
// width and precision combination whose meaning C defines.

std::string c_format(const std::string& pattern, long long value) {
    char buffer[256];
    std::snprintf(buffer, sizeof buffer, pattern.c_str(), value);
    return buffer;
}

std::string c_format(const std::string& pattern, unsigned long long value) {
    char buffer[256];
    std::snprintf(buffer, sizeof buffer, pattern.c_str(), value);
    return buffer;
}

struct ConversionCase {
    char conversion;
    bool is_signed;
    const char* name;
};

void PrintTo(const ConversionCase& c, std::ostream* os) {
    *os << '%' << c.conversion;
}

class IntegerConversionMatchesPrintf : public ::testing::TestWithParam<ConversionCase> {};

const char* const kFlagSets[] = {"", "-", "+", " ", "#", "0", "-0", "+0", " 0", "#0", "-#", "+-"};
const char* const kWidths[] = {"", "1", "6", "12"};
const char* const kPrecisions[] = {"", ".", ".0", ".3", ".10"};

// Flags whose effect C leaves undefined for a conversion are not combined with it.
bool defined_in_c(const std::string& flags, const ConversionCase& c) {
    const bool has_alternate = flags.find('#') != std::string::npos;
    const bool has_sign = flags.find_first_of("+ ") != std::string::npos;
    if (c.is_signed || c.conversion == 'u') {
        return !has_alternate && (c.is_signed || !has_sign);
    }
    return !has_sign;
}

// Formats each value with every defined flag set, width, precision and length modifier, and
// compares with printf's "ll" form of the same conversion.
template <class Signed>
void ExpectPrintfResults(const ConversionCase& c, std::initializer_list<Signed> values,
                         std::initializer_list<const char*> widths,
                         std::initializer_list<const char*> precisions,
                         std::initializer_list<const char*> modifiers) {
    for (const char* flags : kFlagSets) {
        if (!defined_in_c(flags, c)) {
            continue;
        }
        for (const char* width : widths) {
            for (const char* precision : precisions) {
                const std::string body = std::string("%") + flags + width + precision;
                for (const char* modifier : modifiers) {
                    const std::string ours = body + modifier + c.conversion;
                    for (const Signed value : values) {
                        const auto bits = static_cast<std::make_unsigned_t<Signed>>(value);
                        const std::string expected =
                            c.is_signed ? c_format(body + "ll" + c.conversion,
                                                   static_cast<long long>(value))
                                        : c_format(body + "ll" + c.conversion,
                                                   static_cast<unsigned long long>(bits));
                        const wstring actual = c.is_signed
                                                   ? qm::format(qm::widen_ascii(ours), value)
                                                   : qm::format(qm::widen_ascii(ours), bits);
                        EXPECT_EQ(actual, qm::widen_ascii(expected))
                            << "format \"" << ours << "\" with " << value;
                    }
                }
            }
        }
    }
}

TEST_P(IntegerConversionMatchesPrintf, For32BitValues) {
    ExpectPrintfResults<int32_t>(GetParam(),
                                 {0, 1, -1, 7, -42, 255, 4096, 123456789, INT32_MAX, INT32_MIN,
                                  static_cast<int32_t>(0x80070005u)},
                                 {"", "1", "6", "12"}, {"", ".", ".0", ".3", ".10"}, {""});
}

TEST_P(IntegerConversionMatchesPrintf, For64BitValuesWithAndWithoutLengthModifier) {
    ExpectPrintfResults<int64_t>(
        GetParam(),
        {0, -1, INT64_MAX, INT64_MIN, int64_t{1} << 40, int64_t{4294967296}, int64_t{-4294967297}},
        {"", "24"}, {"", ".20"}, {"", "I64", "ll", "l"});
}

INSTANTIATE_TEST_SUITE_P(
    Conversions, IntegerConversionMatchesPrintf,
    ::testing::Values(ConversionCase{'d', true, "d"}, ConversionCase{'i', true, "i"},
                      ConversionCase{'u', false, "u"}, ConversionCase{'x', false, "x"},
                      ConversionCase{'X', false, "upper_x"}, ConversionCase{'o', false, "o"}),
    [](const auto& param_info) { return std::string(param_info.param.name); });

TEST(FormatText, MatchesPrintfForFlagsWidthsAndPrecisions) {
    const char* const texts[] = {"", "a", "hello", "hello world, longer than the widths"};
    for (const char* flags : {"", "-"}) {
        for (const char* width : kWidths) {
            for (const char* precision : kPrecisions) {
                const std::string pattern = std::string("%") + flags + width + precision + "s";
                for (const char* text : texts) {
                    char buffer[256];
                    std::snprintf(buffer, sizeof buffer, pattern.c_str(), text);
                    EXPECT_EQ(qm::format(qm::widen_ascii(pattern), qm::widen_ascii(text)),
                              qm::widen_ascii(buffer))
                        << "format \"" << pattern << "\" with \"" << text << '"';
                }
            }
        }
    }
}

TEST(FormatCharacter, MatchesPrintfForWidths) {
    for (const char* pattern : {"%c", "%1c", "%4c", "%-4c", "[%c]", "%-1c"}) {
        for (const int value : {'A', 'z', ' ', '%'}) {
            char buffer[64];
            std::snprintf(buffer, sizeof buffer, pattern, value);
            EXPECT_EQ(qm::format(qm::widen_ascii(pattern), value), qm::widen_ascii(buffer))
                << "format \"" << pattern << "\" with " << value;
        }
    }
}

// ---------------------------------------------------------------------------------------------
// Cases that come from how webrig uses the formatter.

struct FormatCase {
    const char* name;
    const char16_t* format;
    std::vector<format_arg> args;
    const char16_t* expected;
};

void PrintTo(const FormatCase& c, std::ostream* os) {
    *os << c.name;
}

class FormatCases : public ::testing::TestWithParam<FormatCase> {};

TEST_P(FormatCases, ProduceTheExpectedText) {
    const FormatCase& c = GetParam();
    EXPECT_EQ(qm::vformat(c.format, c.args), wstring(c.expected));
}

const qm::hresult kAccessDenied = static_cast<qm::hresult>(0x80070005u);

INSTANTIATE_TEST_SUITE_P(
    Webrig, FormatCases,
    ::testing::Values(
        FormatCase{"empty_format", u"", {1, u"x"}, u""},
        FormatCase{"percent_sign", u"100%% done", {}, u"100% done"},
        FormatCase{"percent_sign_takes_no_argument", u"%%%d", {7}, u"%7"},
        FormatCase{"wide_text_modifiers", u"%ls|%ws|%hs|%S", {u"a", u"b", u"c", u"d"}, u"a|b|c|d"},
        FormatCase{
            "hresult_signed_decimal", u"HRESULT: %d", {kAccessDenied}, u"HRESULT: -2147024891"},
        FormatCase{"unsigned_32_bit_as_signed", u"%d", {uint32_t{0x80070005u}}, u"-2147024891"},
        FormatCase{"negative_64_bit_as_hex", u"%x", {int64_t{-1}}, u"ffffffffffffffff"},
        FormatCase{"character", u"[%c]", {0x20AC}, u"[\u20AC]"},
        FormatCase{"character_from_char16", u"%c%c", {u'o', u'k'}, u"ok"},
        // A conversion without an argument left is copied as it stands.
        FormatCase{"missing_argument", u"%d and %s", {5}, u"5 and %s"},
        FormatCase{"missing_argument_keeps_flags", u"[%-08.3d]", {}, u"[%-08.3d]"},
        FormatCase{"extra_arguments_ignored", u"%d", {1, 2, 3}, u"1"},
        // Unknown conversions are copied and use no argument.
        FormatCase{"unknown_conversion", u"%q %d", {9}, u"%q 9"},
        FormatCase{"floating_point_not_supported", u"%5.2f|%s", {u"x"}, u"%5.2f|x"},
        FormatCase{"unknown_after_modifier", u"%lk %d", {3}, u"%lk 3"},
        // A lone '%' at the end, also after flags or modifiers.
        FormatCase{"trailing_percent", u"100%", {1}, u"100%"},
        FormatCase{"trailing_percent_with_flags", u"ab%-08", {1}, u"ab%-08"},
        // Arguments of the other kind.
        FormatCase{"text_to_decimal", u"value=%d", {u"abc"}, u"value=abc"},
        FormatCase{"text_to_hex_with_width", u"[%5x]", {u"ab"}, u"[   ab]"},
        FormatCase{"text_to_decimal_with_precision", u"%.2d", {u"abcdef"}, u"ab"},
        FormatCase{"text_to_character", u"%c", {u"word"}, u"word"},
        FormatCase{"integer_to_text", u"port %s", {8080}, u"port 8080"},
        FormatCase{"unsigned_integer_to_text", u"%s", {uint32_t{4000000000u}}, u"4000000000"},
        FormatCase{"integer_to_text_with_width", u"[%6s|%-6s]", {42, 42}, u"[    42|42    ]"},
        FormatCase{"integer_to_text_ignores_precision", u"%.1s", {12345}, u"12345"},
        FormatCase{"null_text", u"[%s]", {static_cast<const char16_t*>(nullptr)}, u"[]"},
        FormatCase{"text_keeps_percent_signs", u"%s", {u"%d %s %%"}, u"%d %s %%"},
        FormatCase{"text_keeps_surrogate_pairs", u"<%s>", {u"\U0001F600"}, u"<\U0001F600>"}),
    [](const auto& param_info) { return std::string(param_info.param.name); });

TEST(Format, TakesEachArgumentsOwnTypeAndSize) {
    const short negative_short = -1;
    const unsigned short unsigned_short = 0xFFFF;
    const long negative_long = -1;
    EXPECT_EQ(qm::format(u"%x", negative_short), u"ffffffff");
    EXPECT_EQ(qm::format(u"%u", unsigned_short), u"65535");
    EXPECT_EQ(qm::format(u"%d", negative_long), u"-1");
    EXPECT_EQ(qm::format(u"%lu", uint32_t{0xFFFFFFFFu}), u"4294967295");
    EXPECT_EQ(qm::format(u"%llu", uint64_t{0x100000000u}), u"4294967296");
    EXPECT_EQ(qm::format(u"%d", size_t{3000000000u}), u"3000000000");
}

TEST(Format, TextArgumentsComeFromEveryTextType) {
    const wstring owned = u"owned";
    const qm::wstring_view view = u"view";
    EXPECT_EQ(qm::format(u"%s %s %s", owned, view, u"literal"), u"owned view literal");
}

// ---------------------------------------------------------------------------------------------
// Sizes: widths and precisions from a settings text are bounded; the output itself is not.

constexpr size_t kPaddingBound = 4096;

TEST(FormatLimits, HugeWidthsAreBounded) {
    for (const char16_t* pattern : {u"%99999999999999999999999d", u"%-4294967296d",
                                    u"%018446744073709551617d", u"%99999999999999999999999s"}) {
        const wstring out = qm::format(pattern, 7);
        EXPECT_LE(out.size(), kPaddingBound) << qm::to_utf8(pattern);
        EXPECT_GE(out.size(), 1000u) << qm::to_utf8(pattern);
        EXPECT_NE(out.find(u'7'), wstring::npos) << qm::to_utf8(pattern);
    }
}

TEST(FormatLimits, HugePrecisionsAreBounded) {
    const wstring digits = qm::format(u"%.99999999999999999999d", 7);
    EXPECT_LE(digits.size(), kPaddingBound);
    EXPECT_EQ(digits.back(), u'7');
    EXPECT_EQ(digits.find_first_not_of(u'0'), digits.size() - 1);
    // A precision only cuts text; a huge one leaves it whole.
    EXPECT_EQ(qm::format(u"%.99999999999999999999s", u"short"), u"short");
}

TEST(FormatLimits, ModerateWidthsAreHonouredExactly) {
    EXPECT_EQ(qm::format(u"%300d", 42), wstring(298, u' ') + u"42");
}

TEST(FormatLimits, TextArgumentsAndFormatTextsHaveNoLengthLimit) {
    const wstring long_text(1'000'000, u'x');
    EXPECT_EQ(qm::format(u"<%s>", long_text), u"<" + long_text + u">");
    wstring format_text;
    std::vector<format_arg> args;
    wstring expected;
    for (int i = 0; i < 20000; ++i) {
        format_text += u"item %d;";
        args.emplace_back(i);
        expected += u"item " + qm::widen_ascii(std::to_string(i)) + u";";
    }
    EXPECT_EQ(qm::vformat(format_text, args), expected);
}

}  // namespace
