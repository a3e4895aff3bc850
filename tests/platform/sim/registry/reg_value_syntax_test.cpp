#include "platform/sim/registry/reg_value_syntax.h"

#include <gtest/gtest.h>

namespace webrig::sim {
namespace {

using platform::RegValue;
namespace reg_type = platform::reg_type;

std::vector<std::byte> B(std::initializer_list<int> bytes) {
    std::vector<std::byte> out;
    for (const int b : bytes) {
        out.push_back(static_cast<std::byte>(b));
    }
    return out;
}

struct GoodLine {
    const char16_t* line;
    const char16_t* name;
    RegValue value;
};

class ValueLines : public ::testing::TestWithParam<GoodLine> {};

TEST_P(ValueLines, ParseToTypeAndData) {
    const GoodLine& good = GetParam();
    const RegValueLine parsed = ParseValueLine(JoinedLine(good.line, 1));
    EXPECT_FALSE(parsed.remove);
    EXPECT_EQ(parsed.name, good.name);
    EXPECT_EQ(parsed.value.type, good.value.type);
    EXPECT_EQ(parsed.value.data, good.value.data);
}

INSTANTIATE_TEST_SUITE_P(
    EveryType, ValueLines,
    ::testing::Values(
        GoodLine{u"\"Path\"=\"C:\\\\inetpub\\\\\"", u"Path", RegValue::String(u"C:\\inetpub\\")},
        GoodLine{u"@=\"say \\\"hi\\\"\"", u"", RegValue::String(u"say \"hi\"")},
        GoodLine{u"\"a\\\"b\" = \"\"", u"a\"b", RegValue::String(u"")},
        GoodLine{u"\"n\"=dword:0000000a", u"n", RegValue::Dword(10)},
        GoodLine{u"\"n\"=DWORD:FFFFFFFF", u"n", RegValue::Dword(0xFFFFFFFF)},
        GoodLine{u"\"n\"=dword:1", u"n", RegValue::Dword(1)},
        GoodLine{u"\"b\"=hex:00,ff,7F", u"b", RegValue{reg_type::binary, B({0, 0xff, 0x7f})}},
        GoodLine{u"\"b\"=hex:", u"b", RegValue{reg_type::binary, {}}},
        GoodLine{u"\"e\"=hex(2):25,00,00,00", u"e",
                 RegValue{reg_type::expand_sz, B({0x25, 0, 0, 0})}},
        GoodLine{u"\"m\"=hex(7):61,00,00,00,00,00", u"m",
                 RegValue{reg_type::multi_sz, B({0x61, 0, 0, 0, 0, 0})}},
        GoodLine{u"\"q\"=hex(b):01,00,00,00,00,00,00,00", u"q",
                 RegValue{reg_type::qword, B({1, 0, 0, 0, 0, 0, 0, 0})}},
        GoodLine{u"\"z\"=hex(0):", u"z", RegValue{reg_type::none, {}}},
        GoodLine{u"\"s\"=hex(1):41,00,00,00", u"s", RegValue{reg_type::sz, B({0x41, 0, 0, 0})}},
        GoodLine{u"\"x\"=hex(FFFF0000):01", u"x", RegValue{0xFFFF0000u, B({1})}},
        GoodLine{u"\"t\"=hex:01, 02 ,03,", u"t", RegValue{reg_type::binary, B({1, 2, 3})}}));

TEST(ValueLine, DashDeletes) {
    const RegValueLine parsed = ParseValueLine(JoinedLine(u"\"gone\"=-", 1));
    EXPECT_TRUE(parsed.remove);
    EXPECT_EQ(parsed.name, u"gone");
}

struct BadLine {
    const char16_t* line;
    const char* messagePart;
};

class BadValueLines : public ::testing::TestWithParam<BadLine> {};

TEST_P(BadValueLines, AreSyntaxErrors) {
    try {
        ParseValueLine(JoinedLine(GetParam().line, 7));
        FAIL() << "accepted";
    } catch (const RegSyntaxError& error) {
        EXPECT_EQ(error.line(), 7);
        EXPECT_NE(std::string(error.what()).find(GetParam().messagePart), std::string::npos)
            << error.what();
    }
}

INSTANTIATE_TEST_SUITE_P(Malformed, BadValueLines,
                         ::testing::Values(BadLine{u"\"a\"=\"C:\\temp\"", "bad escape"},
                                           BadLine{u"\"a\\n\"=\"x\"", "bad escape"},
                                           BadLine{u"\"a\"=\"open", "not closed"},
                                           BadLine{u"\"a\"=\"x\" extra", "unexpected text after"},
                                           BadLine{u"\"a\"", "expected '='"},
                                           BadLine{u"a=\"x\"", "value name"},
                                           BadLine{u"\"a\"=hex:1,02", "two hex digits"},
                                           BadLine{u"\"a\"=hex:012", "two hex digits"},
                                           BadLine{u"\"a\"=hex:01,,02", "two hex digits"},
                                           BadLine{u"\"a\"=hex:00 01", "expected ','"},
                                           BadLine{u"\"a\"=hex(7:00", "unexpected character"},
                                           BadLine{u"\"a\"=hex(1)00", "expected ':'"},
                                           BadLine{u"\"a\"=dword:123456789", "too many hex digits"},
                                           BadLine{u"\"a\"=dword:", "expected hex digits"},
                                           BadLine{u"\"a\"=dword:12 34", "unexpected text after"},
                                           BadLine{u"\"a\"=qword:1", "unknown value syntax"},
                                           BadLine{u"\"a\"=-1", "unexpected text after"}));

TEST(ValueLine, ErrorsNameTheContinuationLineTheyAreOn) {
    JoinedLine joined(u"\"a\"=hex:01,02,", 10);
    joined.Append(u"03,zz", 11);
    try {
        ParseValueLine(joined);
        FAIL() << "accepted";
    } catch (const RegSyntaxError& error) {
        EXPECT_EQ(error.line(), 11);
    }
}

TEST(ValueLine, RemoveContinuationDropsTheBackslashAndBlanksBeforeIt) {
    JoinedLine joined(u"\"a\"=hex:01,02, \\", 1);
    EXPECT_TRUE(joined.RemoveContinuation());
    EXPECT_EQ(joined.text(), u"\"a\"=hex:01,02,");
    EXPECT_FALSE(joined.RemoveContinuation());
}

TEST(ValueLine, OnlyHexDataContinues) {
    EXPECT_TRUE(IsHexValueLine(u"\"a\"=hex:01,\\"));
    EXPECT_TRUE(IsHexValueLine(u"@ = hex(7):00,\\"));
    EXPECT_FALSE(IsHexValueLine(u"\"a\"=\"C:\\\\\""));
    EXPECT_FALSE(IsHexValueLine(u"\"hex\"=dword:1"));
}

struct Formatted {
    NamedValue value;
    const char16_t* text;
};

class FormatValue : public ::testing::TestWithParam<Formatted> {};

TEST_P(FormatValue, AsRegeditExportsIt) {
    EXPECT_EQ(FormatValueLine(GetParam().value, u"\r\n", false), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    EveryType, FormatValue,
    ::testing::Values(
        Formatted{{u"", RegValue::String(u"x")}, u"@=\"x\"\r\n"},
        Formatted{{u"a\\\"b", RegValue::String(u"C:\\\"q\"")},
                  u"\"a\\\\\\\"b\"=\"C:\\\\\\\"q\\\"\"\r\n"},
        Formatted{{u"d", RegValue::Dword(0xAB)}, u"\"d\"=dword:000000ab\r\n"},
        Formatted{{u"d", RegValue{reg_type::dword, B({1, 2})}}, u"\"d\"=hex(4):01,02\r\n"},
        Formatted{{u"b", RegValue{reg_type::binary, B({0xDE, 0xAD})}}, u"\"b\"=hex:de,ad\r\n"},
        Formatted{{u"b", RegValue{reg_type::binary, {}}}, u"\"b\"=hex:\r\n"},
        Formatted{{u"e", RegValue::String(u"%a%", reg_type::expand_sz)},
                  u"\"e\"=hex(2):25,00,61,00,25,00,00,00\r\n"},
        Formatted{{u"q", RegValue{reg_type::qword, B({1, 0, 0, 0, 0, 0, 0, 0})}},
                  u"\"q\"=hex(b):01,00,00,00,00,00,00,00\r\n"},
        Formatted{{u"n", RegValue{reg_type::none, {}}}, u"\"n\"=hex(0):\r\n"},
        Formatted{{u"big", RegValue{0x12345u, B({1})}}, u"\"big\"=hex(12345):01\r\n"},
        // REG_SZ data that "text" could not reproduce exactly.
        Formatted{{u"s", RegValue{reg_type::sz, B({0x41, 0})}}, u"\"s\"=hex(1):41,00\r\n"},
        Formatted{{u"s", RegValue{reg_type::sz, B({0x41, 0, 0, 0, 0, 0})}},
                  u"\"s\"=hex(1):41,00,00,00,00,00\r\n"},
        Formatted{{u"s", RegValue{reg_type::sz, B({0x41, 0, 0x42, 0})}},
                  u"\"s\"=hex(1):41,00,42,00\r\n"},
        Formatted{{u"s", RegValue{reg_type::sz, {}}}, u"\"s\"=hex(1):\r\n"},
        Formatted{{u"s", RegValue::String(u"a\nb")}, u"\"s\"=hex(1):61,00,0a,00,62,00,00,00\r\n"}));

TEST(FormatValue, LoneSurrogatesGoAsHexOnlyInUtf8Files) {
    const NamedValue lone{u"s", RegValue::String(u"\xD800")};
    EXPECT_EQ(FormatValueLine(lone, u"\n", false), u"\"s\"=\"\xD800\"\n");
    EXPECT_EQ(FormatValueLine(lone, u"\n", true), u"\"s\"=hex(1):00,d8,00,00\n");
}

// "ProductId"=hex: is 16 characters; 21 bytes fill the first line to column 79, and later lines
// hold 25 bytes after two spaces.
TEST(FormatValue, WrapsLongHexLikeRegedit) {
    qm::wstring expected = u"\"ProductId\"=hex:";
    for (int i = 0; i < 50; ++i) {
        expected += i == 0 ? u"" : i == 21 || i == 46 ? u",\\\r\n  " : u",";
        expected += u"ab";
    }
    const std::vector<std::byte> data(50, std::byte{0xAB});
    EXPECT_EQ(FormatValueLine({u"ProductId", RegValue{reg_type::binary, data}}, u"\r\n", false),
              expected + u"\r\n");
}

}  // namespace
}  // namespace webrig::sim
