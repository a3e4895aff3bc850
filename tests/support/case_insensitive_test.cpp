#include "support/case_insensitive.h"

#include <gtest/gtest.h>
#include <locale.h>
#include <wctype.h>

#include <map>
#include <set>
#include <string>

namespace {

using qm::wstring;
using qm::wstring_view;

// ---------------------------------------------------------------------------------------------
// The upper-case mapping in the blocks webrig folds: each small letter maps to its capital, by
// the simple mapping of the Unicode character database (glibc's C.UTF-8 locale here), everything
// else to itself. Blocks outside these are left as they are.

TEST(UpperCase, FollowsTheUnicodeSimpleMappingInTheFoldedBlocks) {
    const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", locale_t{});
    ASSERT_NE(unicode, locale_t{}) << "the C.UTF-8 locale is missing";
    // Micro sign, dotless i and long s map to Greek or ASCII capitals in the Unicode data;
    // whether Windows folds them is not settled here.
    const std::set<unsigned> unchecked = {0xB5, 0x131, 0x17F};
    const std::pair<unsigned, unsigned> blocks[] = {
        {0x0000, 0x017F}, {0x0370, 0x03FF}, {0x0400, 0x052F}, {0xFF00, 0xFFEF}};
    for (const auto& [first, last] : blocks) {
        for (unsigned c = first; c <= last; ++c) {
            if (!unchecked.contains(c)) {
                EXPECT_EQ(static_cast<unsigned>(qm::to_upper(static_cast<char16_t>(c))),
                          static_cast<unsigned>(towupper_l(c, unicode)))
                    << "U+" << std::hex << std::uppercase << c;
            }
        }
    }
    EXPECT_EQ(qm::to_upper(u'ƀ'), u'ƀ');  // Latin Extended-B is not folded
    freelocale(unicode);
}

TEST(UpperCase, WholeTextIsMappedUnitByUnit) {
    EXPECT_EQ(qm::to_upper(u"Default Web Site \u00FF\u03C2\u0451\U0001F600"),
              u"DEFAULT WEB SITE \u0178\u03A3\u0401\U0001F600");
    EXPECT_EQ(qm::to_upper(u""), u"");
}

// ---------------------------------------------------------------------------------------------
// Comparisons.

struct EqualityCase {
    const char* name;
    const char16_t* a;
    const char16_t* b;
    bool equal;
};

void PrintTo(const EqualityCase& c, std::ostream* os) {
    *os << c.name;
}

class CaseInsensitiveEquality : public ::testing::TestWithParam<EqualityCase> {};

TEST_P(CaseInsensitiveEquality, AgreesInEveryForm) {
    const EqualityCase& c = GetParam();
    EXPECT_EQ(qm::iequals(c.a, c.b), c.equal);
    EXPECT_EQ(qm::iequals(c.b, c.a), c.equal);
    EXPECT_EQ(qm::icompare(c.a, c.b) == 0, c.equal);
    EXPECT_EQ(qm::icompare(c.a, c.b), -qm::icompare(c.b, c.a));
    EXPECT_EQ(qm::_stringx(c.a) == qm::_stringx(c.b), c.equal);
    EXPECT_EQ(qm::_stringx(c.a).compare(c.b) == 0, c.equal);
    const qm::iless less;
    EXPECT_EQ(!less(c.a, c.b) && !less(c.b, c.a), c.equal);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, CaseInsensitiveEquality,
    ::testing::Values(EqualityCase{"same", u"Website_1", u"Website_1", true},
                      EqualityCase{"empty", u"", u"", true},
                      EqualityCase{"ascii_case", u"DefaultAppPool", u"defaultapppool", true},
                      EqualityCase{"different_letter", u"Website_", u"Websitf_", false},
                      EqualityCase{"prefix_is_not_equal", u"Website", u"Website_", false},
                      EqualityCase{"at_and_backtick", u"@", u"`", false},
                      EqualityCase{"brackets_and_braces", u"[\\]^", u"{|}~", false},
                      EqualityCase{"underscore_and_delete", u"_", u"\x7F", false},
                      EqualityCase{"latin1_e_acute", u"caf\u00E9", u"CAF\u00C9", true},
                      EqualityCase{"division_and_multiplication", u"\u00F7", u"\u00D7", false},
                      EqualityCase{"sharp_s_is_not_ss", u"stra\u00DFe", u"STRASSE", false},
                      EqualityCase{"y_diaeresis_is_not_y", u"\u00FF", u"Y", false},
                      EqualityCase{"greek_final_and_medial_sigma", u"\u03C2", u"\u03C3", true},
                      EqualityCase{"cyrillic_yo", u"\u0451", u"\u0401", true},
                      EqualityCase{"cyrillic_is_not_latin", u"\u0430", u"A", false},
                      EqualityCase{"fullwidth", u"\uFF41\uFF5A", u"\uFF21\uFF3A", true},
                      EqualityCase{"fullwidth_is_not_ascii", u"\uFF21", u"A", false},
                      EqualityCase{"supplementary_unchanged", u"\U0001F600", u"\U0001F600", true}),
    [](const auto& param_info) { return std::string(param_info.param.name); });

struct OrderCase {
    const char16_t* a;
    const char16_t* b;
    int sign;
};

TEST(CaseInsensitiveOrder, ComparesUpperCasedUnitsThenLength) {
    const OrderCase cases[] = {
        {u"apple", u"BANANA", -1}, {u"Banana", u"apple", 1},
        {u"abc", u"ABCD", -1},     {u"ABCD", u"abc", 1},
        {u"", u"a", -1},           {u"a_", u"A[", 1},
        {u"z", u"\u00E0", -1},     {u"\u00E0", u"\u00C1", -1},
        {u"\u03C9", u"\u0391", 1},
    };
    for (const OrderCase& c : cases) {
        const int result = qm::icompare(c.a, c.b);
        EXPECT_EQ((result > 0) - (result < 0), c.sign)
            << qm::to_utf8(c.a) << " <> " << qm::to_utf8(c.b);
        EXPECT_EQ(qm::iless{}(c.a, c.b), c.sign < 0);
    }
}

struct SearchCase {
    const char16_t* haystack;
    const char16_t* needle;
    size_t position;  // npos: absent
};

TEST(CaseInsensitiveSearch, FindsAndTestsPrefixesIgnoringCase) {
    const SearchCase cases[] = {
        {u"C:\\InetPub\\WWWRoot", u"wwwroot", 11},
        {u"C:\\InetPub\\WWWRoot", u"INETPUB\\", 3},
        {u"Website_Main", u"website_", 0},
        {u"abcabc", u"CA", 2},
        {u"abc", u"", 0},
        {u"", u"", 0},
        {u"", u"a", wstring_view::npos},
        {u"ab", u"abc", wstring_view::npos},
        {u"abc", u"abd", wstring_view::npos},
        {u"\u041F\u0420\u0418\u0412\u0415\u0422", u"\u0432\u0435\u0442", 3},
        {u"x\u03A3\u03A3", u"\u03C2\u03C3", 1},
    };
    for (const SearchCase& c : cases) {
        SCOPED_TRACE(qm::to_utf8(c.haystack) + " / " + qm::to_utf8(c.needle));
        EXPECT_EQ(qm::ifind(c.haystack, c.needle), c.position);
        EXPECT_EQ(qm::istarts_with(c.haystack, c.needle), c.position == 0);
        EXPECT_EQ(qm::_stringx(c.haystack).find(c.needle), c.position);
    }
}

TEST(CaseInsensitiveString, FindsSingleCharactersIgnoringCase) {
    const qm::_stringx text = u"Default Web Site";
    EXPECT_EQ(text.find(u'w'), 8u);
    EXPECT_EQ(text.find(u'S'), 12u);
    EXPECT_EQ(text.find(u'q'), qm::_stringx::npos);
    EXPECT_EQ(text.rfind(u'E'), 15u);
    EXPECT_EQ(text.find_first_of(u"TW"), 6u);
}

TEST(CaseInsensitiveMap, KeysDifferingInCaseAreOneKeyFoundByView) {
    std::map<wstring, int, qm::iless> pools;
    EXPECT_TRUE(pools.emplace(u"DefaultAppPool", 1).second);
    EXPECT_FALSE(pools.emplace(u"DEFAULTAPPPOOL", 2).second);
    EXPECT_TRUE(pools.emplace(u"\u041F\u0443\u043B", 4).second);
    EXPECT_FALSE(pools.emplace(u"\u043F\u0423\u041B", 5).second);
    EXPECT_EQ(pools.size(), 2u);
    const auto found = pools.find(wstring_view(u"defaultapppool"));
    ASSERT_NE(found, pools.end());
    EXPECT_EQ(found->second, 1);
    EXPECT_EQ(pools.find(wstring_view(u"DefaultAppPool2")), pools.end());
}

}  // namespace
