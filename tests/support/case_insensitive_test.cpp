#include "support/case_insensitive.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace {

using qm::wstring;
using qm::wstring_view;

// ---------------------------------------------------------------------------------------------
// The upper-case mapping, block by block: each small letter maps to its capital (the simple
// mapping of the Unicode character database), everything else in the block to itself.

struct CaseRun {
    char16_t first_small;
    char16_t last_small;
    char16_t step;
    int to_capital;  // capital = small + to_capital
};

struct CaseBlock {
    const char* name;
    char16_t first;
    char16_t last;
    std::vector<CaseRun> runs;
    // Code units whose mapping is left out of the check (see the block's table).
    std::vector<char16_t> unchecked;
};

void PrintTo(const CaseBlock& b, std::ostream* os) {
    *os << b.name;
}

class UpperCaseMapping : public ::testing::TestWithParam<CaseBlock> {};

TEST_P(UpperCaseMapping, MapsEverySmallLetterOfTheBlockAndNothingElse) {
    const CaseBlock& block = GetParam();
    std::map<char16_t, char16_t> capitals;
    for (const CaseRun& run : block.runs) {
        for (unsigned c = run.first_small; c <= run.last_small; c += run.step) {
            capitals[static_cast<char16_t>(c)] =
                static_cast<char16_t>(static_cast<int>(c) + run.to_capital);
        }
    }
    for (unsigned c = block.first; c <= block.last; ++c) {
        const auto unit = static_cast<char16_t>(c);
        if (std::find(block.unchecked.begin(), block.unchecked.end(), unit) !=
            block.unchecked.end()) {
            continue;
        }
        const auto found = capitals.find(unit);
        const char16_t expected = found != capitals.end() ? found->second : unit;
        EXPECT_EQ(static_cast<unsigned>(qm::to_upper(unit)), static_cast<unsigned>(expected))
            << "U+" << std::hex << std::uppercase << c;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Blocks, UpperCaseMapping,
    ::testing::Values(
        CaseBlock{"basic_latin", 0x0000, 0x007F, {{0x61, 0x7A, 1, -0x20}}, {}},
        // U+00B5 MICRO SIGN maps to Greek capital mu in the Unicode data; whether Windows
        // folds it is not settled here.
        CaseBlock{"latin1",
                  0x0080,
                  0x00FF,
                  {{0xE0, 0xF6, 1, -0x20}, {0xF8, 0xFE, 1, -0x20}, {0xFF, 0xFF, 1, 0x178 - 0xFF}},
                  {0xB5}},
        // U+0131 dotless i and U+017F long s map to ASCII capitals in the Unicode data; left out
        // for the same reason as the micro sign.
        CaseBlock{"latin_extended_a",
                  0x0100,
                  0x017F,
                  {{0x101, 0x12F, 2, -1},
                   {0x133, 0x137, 2, -1},
                   {0x13A, 0x148, 2, -1},
                   {0x14B, 0x177, 2, -1},
                   {0x17A, 0x17E, 2, -1}},
                  {0x131, 0x17F}},
        CaseBlock{"greek",
                  0x0370,
                  0x03FF,
                  {{0x371, 0x373, 2, -1},
                   {0x377, 0x377, 1, -1},
                   {0x37B, 0x37D, 1, 0x3FD - 0x37B},
                   {0x3AC, 0x3AC, 1, 0x386 - 0x3AC},
                   {0x3AD, 0x3AF, 1, 0x388 - 0x3AD},
                   {0x3B1, 0x3C1, 1, -0x20},
                   {0x3C2, 0x3C2, 1, 0x3A3 - 0x3C2},  // final sigma
                   {0x3C3, 0x3CB, 1, -0x20},
                   {0x3CC, 0x3CC, 1, 0x38C - 0x3CC},
                   {0x3CD, 0x3CE, 1, 0x38E - 0x3CD},
                   {0x3D0, 0x3D0, 1, 0x392 - 0x3D0},
                   {0x3D1, 0x3D1, 1, 0x398 - 0x3D1},
                   {0x3D5, 0x3D5, 1, 0x3A6 - 0x3D5},
                   {0x3D6, 0x3D6, 1, 0x3A0 - 0x3D6},
                   {0x3D7, 0x3D7, 1, 0x3CF - 0x3D7},
                   {0x3D9, 0x3EF, 2, -1},
                   {0x3F0, 0x3F0, 1, 0x39A - 0x3F0},
                   {0x3F1, 0x3F1, 1, 0x3A1 - 0x3F1},
                   {0x3F2, 0x3F2, 1, 0x3F9 - 0x3F2},
                   {0x3F3, 0x3F3, 1, 0x37F - 0x3F3},
                   {0x3F5, 0x3F5, 1, 0x395 - 0x3F5},
                   {0x3F8, 0x3F8, 1, -1},
                   {0x3FB, 0x3FB, 1, -1}},
                  {}},
        CaseBlock{"cyrillic",
                  0x0400,
                  0x052F,
                  {{0x430, 0x44F, 1, -0x20},
                   {0x450, 0x45F, 1, -0x50},
                   {0x461, 0x481, 2, -1},
                   {0x48B, 0x4BF, 2, -1},
                   {0x4C2, 0x4CE, 2, -1},
                   {0x4CF, 0x4CF, 1, 0x4C0 - 0x4CF},
                   {0x4D1, 0x52F, 2, -1}},
                  {}},
        CaseBlock{"fullwidth_forms", 0xFF00, 0xFFEF, {{0xFF41, 0xFF5A, 1, -0x20}}, {}}),
    [](const auto& param_info) { return std::string(param_info.param.name); });

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
    ::testing::Values(
        EqualityCase{"same", u"Website_1", u"Website_1", true},
        EqualityCase{"empty", u"", u"", true},
        EqualityCase{"ascii_case", u"DefaultAppPool", u"defaultapppool", true},
        EqualityCase{"ascii_mixed", u"Website_Main", u"wEBSITE_mAIN", true},
        EqualityCase{"default_web_site", u"Default Web Site", u"DEFAULT WEB SITE", true},
        EqualityCase{"remove_uninst_props", u"RemoveUninstProps", u"REMOVEUNINSTPROPS", true},
        EqualityCase{"different_letter", u"Website_", u"Websitf_", false},
        EqualityCase{"prefix_is_not_equal", u"Website", u"Website_", false},
        EqualityCase{"empty_and_text", u"", u"a", false},
        EqualityCase{"at_and_backtick", u"@", u"`", false},
        EqualityCase{"brackets_and_braces", u"[\\]^", u"{|}~", false},
        EqualityCase{"underscore_and_delete", u"_", u"\x7F", false},
        EqualityCase{"latin1_e_acute", u"caf\u00E9", u"CAF\u00C9", true},
        EqualityCase{"latin1_thorn", u"\u00FE", u"\u00DE", true},
        EqualityCase{"division_and_multiplication", u"\u00F7", u"\u00D7", false},
        EqualityCase{"sharp_s_is_not_ss", u"stra\u00DFe", u"STRASSE", false},
        EqualityCase{"y_diaeresis", u"\u00FF", u"\u0178", true},
        EqualityCase{"y_diaeresis_is_not_y", u"\u00FF", u"Y", false},
        EqualityCase{"latin_extended_a", u"\u0142\u00F3d\u017A", u"\u0141\u00D3D\u0179", true},
        EqualityCase{"greek_word", u"\u03BB\u03CC\u03B3\u03BF\u03C2",
                     u"\u039B\u038C\u0393\u039F\u03A3", true},
        EqualityCase{"greek_final_and_medial_sigma", u"\u03C2", u"\u03C3", true},
        EqualityCase{"greek_final_sigma_and_capital", u"\u03C2", u"\u03A3", true},
        EqualityCase{"greek_accented_omega", u"\u03CE", u"\u038F", true},
        EqualityCase{"cyrillic_word", u"\u043F\u0440\u0438\u0432\u0435\u0442",
                     u"\u041F\u0420\u0418\u0412\u0415\u0422", true},
        EqualityCase{"cyrillic_yo", u"\u0451", u"\u0401", true},
        EqualityCase{"cyrillic_yat", u"\u0463", u"\u0462", true},
        EqualityCase{"cyrillic_zhe_breve", u"\u04C2", u"\u04C1", true},
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

TEST(CaseInsensitiveMap, KeysDifferingInCaseAreOneKey) {
    std::map<wstring, int, qm::iless> pools;
    EXPECT_TRUE(pools.emplace(u"DefaultAppPool", 1).second);
    EXPECT_FALSE(pools.emplace(u"DEFAULTAPPPOOL", 2).second);
    EXPECT_TRUE(pools.emplace(u"Classic .NET AppPool", 3).second);
    EXPECT_TRUE(pools.emplace(u"\u041F\u0443\u043B", 4).second);
    EXPECT_FALSE(pools.emplace(u"\u043F\u0423\u041B", 5).second);
    ASSERT_EQ(pools.size(), 3u);

    // Lookups by view, without building a key.
    const auto found = pools.find(wstring_view(u"defaultapppool"));
    ASSERT_NE(found, pools.end());
    EXPECT_EQ(found->first, u"DefaultAppPool");
    EXPECT_EQ(found->second, 1);
    EXPECT_EQ(pools.count(wstring_view(u"classic .net apppool")), 1u);
    EXPECT_EQ(pools.find(wstring_view(u"DefaultAppPool2")), pools.end());
}

TEST(CaseInsensitiveMap, OrdersKeysIgnoringCase) {
    std::map<wstring, int, qm::iless> keys;
    for (const char16_t* key : {u"cherry", u"Banana", u"apple", u"BANANA2", u"Apple1"}) {
        keys.emplace(key, 0);
    }
    std::vector<wstring> order;
    for (const auto& [key, unused] : keys) {
        order.push_back(key);
    }
    EXPECT_EQ(order, (std::vector<wstring>{u"apple", u"Apple1", u"Banana", u"BANANA2", u"cherry"}));
}

}  // namespace
