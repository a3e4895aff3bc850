#include "platform/sim/machine/json.h"

#include <gtest/gtest.h>

#include <string>

namespace webrig::sim {
namespace {

TEST(Json, ReadsEveryKindOfValue) {
    const JsonValue doc = ParseJson(R"({
        "null": null, "yes": true, "no": false,
        "int": -12, "real": 2.5e3, "text": "a\"b\\c\/d\b\f\n\r\t",
        "list": [1, [], {}], "nested": {"k": "v"}
    })");
    ASSERT_EQ(doc.kind(), JsonValue::Kind::object);
    EXPECT_EQ(doc.Find("null")->kind(), JsonValue::Kind::null);
    EXPECT_TRUE(doc.Find("yes")->AsBool());
    EXPECT_FALSE(doc.Find("no")->AsBool());
    EXPECT_EQ(doc.Find("int")->AsNumber(), -12);
    EXPECT_TRUE(doc.Find("int")->IsInteger());
    EXPECT_EQ(doc.Find("real")->AsNumber(), 2500);
    EXPECT_EQ(doc.Find("text")->AsString(), "a\"b\\c/d\b\f\n\r\t");
    ASSERT_EQ(doc.Find("list")->AsArray().size(), 3u);
    EXPECT_EQ(doc.Find("list")->AsArray()[1].kind(), JsonValue::Kind::array);
    EXPECT_EQ(doc.Find("nested")->Find("k")->AsString(), "v");
    EXPECT_EQ(doc.Find("absent"), nullptr);
    EXPECT_EQ(doc.Find("nested")->line(), 4);
}

TEST(Json, DecodesUnicodeEscapesAndSurrogatePairs) {
    EXPECT_EQ(ParseJson(R"("\u00e9\u20AC")").AsString(), "\xC3\xA9\xE2\x82\xAC");
    EXPECT_EQ(ParseJson(R"("\ud83d\ude00")").AsString(), "\xF0\x9F\x98\x80");
    EXPECT_EQ(ParseJson("\"\xF0\x9F\x98\x80\"").AsString(), "\xF0\x9F\x98\x80");
}

TEST(Json, FractionsAreNotIntegers) {
    EXPECT_FALSE(ParseJson("1.5").IsInteger());
    EXPECT_TRUE(ParseJson("1.0").IsInteger());
    EXPECT_FALSE(ParseJson("1e300").IsInteger());
}

struct BadJson {
    const char* text;
    int line;
    const char* messagePart;
};

class JsonErrors : public ::testing::TestWithParam<BadJson> {};

TEST_P(JsonErrors, NameTheLine) {
    const BadJson& bad = GetParam();
    try {
        ParseJson(bad.text);
        FAIL() << "accepted: " << bad.text;
    } catch (const JsonError& error) {
        EXPECT_EQ(error.line(), bad.line) << bad.text;
        EXPECT_NE(std::string(error.what()).find(bad.messagePart), std::string::npos)
            << error.what();
    }
}

INSTANTIATE_TEST_SUITE_P(
    Malformed, JsonErrors,
    ::testing::Values(
        BadJson{"", 1, "ends where a value"},
        BadJson{"{\n\"a\": 1,\n\"a\": 2\n}", 3, "duplicate key \"a\""},
        BadJson{"{\n\"a\": 1,\n}", 3, "quoted member name"},
        BadJson{"[1,\n2\n", 3, "ends inside an array"}, BadJson{"{\"a\" 1}", 1, "expected ':'"},
        BadJson{"\"abc", 1, "ends inside a string"}, BadJson{"\"a\nb\"", 1, "control character"},
        BadJson{"\"\\x\"", 1, "unknown escape"}, BadJson{"\"\\u12\"", 1, "four hex digits"},
        BadJson{"\"\\ud800\"", 1, "without its low surrogate"},
        BadJson{"\"\\ud800\\u0041\"", 1, "without its low surrogate"},
        BadJson{"\"\\udc00\"", 1, "low surrogate"}, BadJson{"01", 1, "unexpected text after"},
        BadJson{"-", 1, "needs digits"}, BadJson{"1.", 1, "after its decimal point"},
        BadJson{"1e", 1, "exponent"}, BadJson{"1e999", 1, "out of range"},
        BadJson{"+1", 1, "expected a JSON value"}, BadJson{"tru", 1, "expected a JSON value"},
        BadJson{"{} {}", 1, "unexpected text after"},
        BadJson{"\n\n\"\xC3\x28\"", 3, "not valid UTF-8"},
        BadJson{"[1 2]", 1, "expected ',' or ']'"}));

TEST(Json, NestingDeeperThanTheLimitIsRefused) {
    const std::string atLimit = std::string(kMaxJsonDepth, '[') + std::string(kMaxJsonDepth, ']');
    EXPECT_NO_THROW(ParseJson(atLimit));
    const std::string hostile(100000, '[');
    try {
        ParseJson(hostile);
        FAIL() << "accepted deep nesting";
    } catch (const JsonError& error) {
        EXPECT_NE(std::string(error.what()).find("nesting deeper"), std::string::npos);
    }
}

TEST(Json, WriterOutputReadsBackEqual) {
    const JsonValue original = ParseJson(
        R"({"s": "quote\" back\\ nl\n tab\t ctl\u0001 \u00e9", "n": [0, -1.25, 1e21],
            "b": [true, false, null], "o": {}, "a": []})");
    const std::string written = WriteJson(original);
    EXPECT_EQ(ParseJson(written), original);
    EXPECT_EQ(written.back(), '\n');
    EXPECT_NE(written.find("\\u0001"), std::string::npos);
}

}  // namespace
}  // namespace webrig::sim
