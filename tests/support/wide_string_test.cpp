#include "support/wide_string.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using qm::wstring;

struct ValidText {
    const char* name;
    wstring utf16;
    std::string utf8;
};

void PrintTo(const ValidText& c, std::ostream* os) {
    *os << c.name;
}

class ValidTextConverts : public ::testing::TestWithParam<ValidText> {};

TEST_P(ValidTextConverts, BothWays) {
    const ValidText& c = GetParam();
    EXPECT_EQ(qm::to_utf8(c.utf16), c.utf8);
    EXPECT_EQ(qm::from_utf8(c.utf8), c.utf16);
    wstring strict = u"left over from before";
    size_t bad_offset = 12345;
    EXPECT_TRUE(qm::from_utf8_strict(c.utf8, strict, bad_offset));
    EXPECT_EQ(strict, c.utf16);
    EXPECT_EQ(bad_offset, 12345u) << "a successful conversion reports no offset";
}

INSTANTIATE_TEST_SUITE_P(
    Texts, ValidTextConverts,
    ::testing::Values(ValidText{"empty", u"", ""},
                      ValidText{"ascii", u"Default Web Site", "Default Web Site"},
                      ValidText{"embedded_nul", wstring(u"a\0b", 3), std::string("a\0b", 3)},
                      ValidText{"first_two_byte", u"\u0080", "\xC2\x80"},
                      ValidText{"euro", u"\u20AC", "\xE2\x82\xAC"},
                      ValidText{"emoji", u"\U0001F600", "\xF0\x9F\x98\x80"},
                      ValidText{"last_code_point", u"\U0010FFFF", "\xF4\x8F\xBF\xBF"},
                      ValidText{"mixed", u"C:\\\u0421\u0430\u0439\u0442\\\U0001F310.htm",
                                "C:\\\xD0\xA1\xD0\xB0\xD0\xB9\xD1\x82\\\xF0\x9F\x8C\x90.htm"}),
    [](const auto& param_info) { return std::string(param_info.param.name); });

TEST(WideString, EveryBmpCharacterAndSupplementaryBoundaryRoundTrips) {
    wstring all;
    for (char32_t c = 1; c <= 0xFFFF; ++c) {
        if (c < 0xD800 || c > 0xDFFF) {
            all += static_cast<char16_t>(c);
        }
    }
    for (char16_t high : {u'\xD800', u'\xDBFF'}) {
        for (char16_t low : {u'\xDC00', u'\xDFFF'}) {
            all += high;
            all += low;
        }
    }
    const std::string utf8 = qm::to_utf8(all);
    EXPECT_EQ(utf8.size(), 0x7Fu * 1 + (0x7FF - 0x7F) * 2 + (0xFFFF - 0x7FF - 0x800) * 3 + 4 * 4);
    EXPECT_EQ(qm::from_utf8(utf8), all);
    wstring strict;
    size_t bad_offset = 0;
    ASSERT_TRUE(qm::from_utf8_strict(utf8, strict, bad_offset));
    EXPECT_EQ(strict, all);
}

// UTF-16 text from outside may hold surrogates that do not pair up.
struct LoneSurrogate {
    const char* name;
    wstring utf16;
    std::string utf8;
};

void PrintTo(const LoneSurrogate& c, std::ostream* os) {
    *os << c.name;
}

class LoneSurrogatesBecomeReplacement : public ::testing::TestWithParam<LoneSurrogate> {};

TEST_P(LoneSurrogatesBecomeReplacement, InUtf8) {
    EXPECT_EQ(qm::to_utf8(GetParam().utf16), GetParam().utf8);
}

#define FFFD "\xEF\xBF\xBD"

INSTANTIATE_TEST_SUITE_P(
    Texts, LoneSurrogatesBecomeReplacement,
    ::testing::Values(LoneSurrogate{"high_alone", wstring{u'\xD800'}, FFFD},
                      LoneSurrogate{"low_alone", wstring{u'\xDC00'}, FFFD},
                      LoneSurrogate{"high_at_end", wstring{u'a', u'\xDBFF'}, "a" FFFD},
                      LoneSurrogate{"high_then_letter", wstring{u'\xD83D', u'x'}, FFFD "x"},
                      LoneSurrogate{"two_highs_then_low", wstring{u'\xD800', u'\xD800', u'\xDC00'},
                                    FFFD "\xF0\x90\x80\x80"},
                      LoneSurrogate{"pair_then_low", wstring{u'\xD83D', u'\xDE00', u'\xDE00'},
                                    "\xF0\x9F\x98\x80" FFFD}),
    [](const auto& param_info) { return std::string(param_info.param.name); });

// Damaged UTF-8: the lenient conversion gives one U+FFFD per byte it cannot use and goes on with
// the next byte; the strict one reports where the first damaged sequence starts.
struct DamagedUtf8 {
    const char* name;
    std::string utf8;
    wstring lenient;
    size_t bad_offset;
};

void PrintTo(const DamagedUtf8& c, std::ostream* os) {
    *os << c.name;
}

class DamagedUtf8Converts : public ::testing::TestWithParam<DamagedUtf8> {};

TEST_P(DamagedUtf8Converts, WithReplacementOrAnOffset) {
    const DamagedUtf8& c = GetParam();
    EXPECT_EQ(qm::from_utf8(c.utf8), c.lenient);
    wstring strict;
    size_t bad_offset = 999;
    EXPECT_FALSE(qm::from_utf8_strict(c.utf8, strict, bad_offset));
    EXPECT_EQ(bad_offset, c.bad_offset);
}

constexpr char16_t R = u'\xFFFD';

INSTANTIATE_TEST_SUITE_P(
    Texts, DamagedUtf8Converts,
    ::testing::Values(
        DamagedUtf8{"lone_continuation", "\x80", {R}, 0},
        DamagedUtf8{"continuation_after_text",
                    "ab\xBF"
                    "c",
                    {u'a', u'b', R, u'c'},
                    2},
        DamagedUtf8{"overlong_slash_two_bytes", "a\xC0\xAF", {u'a', R, R}, 1},
        DamagedUtf8{"overlong_three_bytes", "\xE0\x80\xAF", {R, R, R}, 0},
        DamagedUtf8{"overlong_four_bytes", "\xF0\x80\x80\xAF", {R, R, R, R}, 0},
        DamagedUtf8{"overlong_largest_three_byte", "\xF0\x8F\xBF\xBF", {R, R, R, R}, 0},
        DamagedUtf8{"encoded_high_surrogate", "\xED\xA0\x80", {R, R, R}, 0},
        DamagedUtf8{"encoded_low_surrogate", "x\xED\xBF\xBF", {u'x', R, R, R}, 1},
        DamagedUtf8{"beyond_last_code_point", "\xF4\x90\x80\x80", {R, R, R, R}, 0},
        DamagedUtf8{"five_byte_form", "\xF8\x88\x80\x80\x80", {R, R, R, R, R}, 0},
        DamagedUtf8{"byte_ff", "ok\xFF", {u'o', u'k', R}, 2},
        DamagedUtf8{"truncated_at_end", "ab\xE2\x82", {u'a', u'b', R, R}, 2},
        DamagedUtf8{"lead_byte_at_end", "\xC3\xA9\xC3", {u'\xE9', R}, 2},
        DamagedUtf8{"sequence_broken_by_ascii",
                    "\xE2\x82"
                    "A",
                    {R, R, u'A'},
                    0},
        DamagedUtf8{"four_byte_broken_by_lead", "\xF0\x9F\xC3\xA9", {R, R, u'\xE9'}, 0},
        DamagedUtf8{
            "valid_text_after_damage", "\xFF\xF0\x9F\x98\x80", {R, u'\xD83D', u'\xDE00'}, 0}),
    [](const auto& param_info) { return std::string(param_info.param.name); });

TEST(WideString, StrictConversionReportsTheFirstOfSeveralDamagedSequences) {
    wstring out;
    size_t bad_offset = 0;
    EXPECT_FALSE(
        qm::from_utf8_strict("abc\xC3\xA9\xE2\x82\xAC"
                             "d\x80\xFF",
                             out, bad_offset));
    EXPECT_EQ(bad_offset, 9u);
}

}  // namespace

namespace qm {
namespace {

TEST(HasLoneSurrogate, FindsOnlyUnpairedHalves) {
    EXPECT_FALSE(has_lone_surrogate(u""));
    EXPECT_FALSE(has_lone_surrogate(u"plain \u00E9"));
    EXPECT_FALSE(has_lone_surrogate(u"\U0001F600 paired"));
    EXPECT_TRUE(has_lone_surrogate(wstring(1, char16_t{0xD800})));
    EXPECT_TRUE(has_lone_surrogate(u"x" + wstring(1, char16_t{0xDC00})));
    EXPECT_TRUE(has_lone_surrogate(wstring{char16_t{0xDC00}, char16_t{0xD800}}));  // reversed
    EXPECT_TRUE(has_lone_surrogate(u"\U0001F600" + wstring(1, char16_t{0xD83D})));
}

}  // namespace
}  // namespace qm
