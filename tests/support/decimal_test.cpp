#include "support/decimal.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

namespace {

struct DecimalCase {
    const char* name;
    qm::wstring text;
    int32_t value;
};

void PrintTo(const DecimalCase& c, std::ostream* os) {
    *os << c.name;
}

class ReadDecimal : public ::testing::TestWithParam<DecimalCase> {};

TEST_P(ReadDecimal, ReadsLikeWcstol) {
    EXPECT_EQ(qm::read_decimal(GetParam().text), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, ReadDecimal,
    ::testing::Values(
        DecimalCase{"plain", u"42", 42}, DecimalCase{"zero", u"0", 0},
        DecimalCase{"leading_zeros", u"007", 7}, DecimalCase{"plus_sign", u"+15", 15},
        DecimalCase{"minus_sign", u"-15", -15}, DecimalCase{"leading_spaces", u"   80", 80},
        DecimalCase{"leading_control_white_space", u"\t\n\v\f\r 7", 7},
        DecimalCase{"white_space_then_sign", u" \t-3", -3},
        DecimalCase{"stops_at_first_non_digit", u"12abc", 12},
        DecimalCase{"stops_at_decimal_point", u"3.9", 3}, DecimalCase{"empty", u"", 0},
        DecimalCase{"letters", u"abc", 0}, DecimalCase{"sign_alone", u"-", 0},
        DecimalCase{"space_after_sign", u"- 5", 0}, DecimalCase{"two_signs", u"+-5", 0},
        DecimalCase{"hex_is_not_read", u"0x1A", 0},
        DecimalCase{"no_space_before_number_after_text", u"x 5", 0},
        DecimalCase{"fullwidth_digits_are_not_digits", u"\uFF11\uFF12", 0},
        DecimalCase{"largest", u"2147483647", INT32_MAX},
        DecimalCase{"smallest", u"-2147483648", INT32_MIN},
        DecimalCase{"one_above_largest", u"2147483648", INT32_MAX},
        DecimalCase{"one_below_smallest", u"-2147483649", INT32_MIN},
        DecimalCase{"twenty_digits", u"99999999999999999999", INT32_MAX},
        DecimalCase{"twenty_digits_negative", u"-99999999999999999999", INT32_MIN},
        DecimalCase{"large_then_letters", u"3000000000px", INT32_MAX}),
    [](const auto& param_info) { return std::string(param_info.param.name); });

TEST(ReadDecimalLongInput, AMillionDigitsClampAndAMillionLeadingZerosDoNot) {
    const qm::wstring nines(1'000'000, u'9');
    EXPECT_EQ(qm::read_decimal(nines), INT32_MAX);
    EXPECT_EQ(qm::read_decimal(u"  -" + nines + u"abc"), INT32_MIN);
    const qm::wstring zeros(1'000'000, u'0');
    EXPECT_EQ(qm::read_decimal(zeros + u"42"), 42);
    EXPECT_EQ(qm::read_decimal(u"-" + zeros + u"2147483648"), INT32_MIN);
    EXPECT_EQ(qm::read_decimal(zeros + u"2147483648"), INT32_MAX);
}

}  // namespace
