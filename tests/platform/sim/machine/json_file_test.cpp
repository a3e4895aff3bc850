#include "platform/sim/machine/json_file.h"

#include <gtest/gtest.h>

#include "platform/sim/machine/machine_error.h"

namespace webrig::sim {
namespace {

// The library reports a byte offset; the line of a hand-edited file is what a person needs.
struct BadText {
    std::string text;
    int line;
    const char* messagePart;
};

TEST(JsonFile, RefusedTextIsReportedWithTheFileAndLine) {
    const BadText cases[] = {
        {"", 1, "not valid JSON"},
        {"{\n\"a\": 1,\n}", 3, "not valid JSON"},
        {"[1,\n2\n", 3, "end of input"},          // the end of the text
        {"\"a\nb\"", 1, "control character"},     // the break itself is on line 1
        {"\n\n\"\xC3\x28\"", 3, "UTF-8"},         // checked inside strings
        {"[1,\n1e999\n]", 2, "number overflow"},  // the library gives no position here
        {"{\n\"a\": 1,\n\"a\": 2\n}", 3, "duplicate key \"a\" (first on line 2)"},
        {"[{\"a\": 1, \"b\": {\n\"a\": 1}}, {\n\"a\": 2, \"a\": 3}]", 3, "(first on line 3)"},
        {std::string(JsonFile::kMaxDepth, '[') + "\n[", 2, "nesting deeper than 64"},
    };
    for (const BadText& bad : cases) {
        try {
            JsonFile(bad.text, "/m/x.json");
            ADD_FAILURE() << "accepted: " << bad.text;
        } catch (const MachineError& error) {
            EXPECT_EQ(error.line(), bad.line) << error.what();
            EXPECT_EQ(std::string(error.what()).rfind("/m/x.json:" + std::to_string(bad.line), 0),
                      0u);
            EXPECT_NE(std::string(error.what()).find(bad.messagePart), std::string::npos)
                << error.what();
        }
    }
    EXPECT_NO_THROW(JsonFile(
        std::string(JsonFile::kMaxDepth, '[') + std::string(JsonFile::kMaxDepth, ']'), "x.json"));
}

TEST(JsonFile, KnowsTheLineOfEveryKey) {
    const JsonFile file("\xEF\xBB\xBF\n\n{\"a\": {\"b\": [{}, {\n  \"c\":\n 1}]},\n\"d\": 2}", "x");
    EXPECT_EQ(file.LineOf(Json::json_pointer()), 3);
    EXPECT_EQ(file.LineOf(Json::json_pointer("/a/b")), 3);
    EXPECT_EQ(file.LineOf(Json::json_pointer("/a/b/1/c")), 4);
    EXPECT_EQ(file.LineOf(Json::json_pointer("/d")), 6);
}

TEST(JsonFile, WholeNumbersMayBeWrittenWithAZeroFraction) {
    EXPECT_EQ(WholeNumber(Json::parse("1500.0"), 1500), 1500u);
    EXPECT_EQ(WholeNumber(Json::parse("4294967295"), 0xFFFFFFFFu), 0xFFFFFFFFu);
    for (const char* refused : {"1500.5", "-1", "1501", "1e300", "\"1\"", "true"}) {
        EXPECT_EQ(WholeNumber(Json::parse(refused), 1500), std::nullopt) << refused;
    }
}

// Two machines are compared with a diff: one key to a line, in a fixed order.
TEST(JsonFile, WritesOneKeyToALineInTheOrderGiven) {
    Json document = Json::object();
    document["z"] = Json::array({"x"});
    document["a"] = Json::object({{"n", nullptr}});
    document["e"] = Json::array();
    EXPECT_EQ(
        FormatJson(document),
        "{\n  \"z\": [\n    \"x\"\n  ],\n  \"a\": {\n    \"n\": null\n  },\n  \"e\": []\n}\n");
}

}  // namespace
}  // namespace webrig::sim
