#include "platform/sim/iis7/attribute_value.h"

#include <gtest/gtest.h>

#include "platform/sim/iis7/time_span.h"
#include "testing/case_name.h"

namespace webrig::sim::iis7 {
namespace {

AttributeSchema Typed(AttributeType type) {
    AttributeSchema attribute;
    attribute.name = u"a";
    attribute.type = type;
    return attribute;
}

AttributeSchema Ranged(AttributeType type, int64_t minimum, int64_t maximum,
                       uint32_t granularity = 0) {
    AttributeSchema attribute = Typed(type);
    attribute.minimum = minimum;
    attribute.maximum = maximum;
    attribute.granularitySeconds = granularity;
    return attribute;
}

AttributeSchema Named(AttributeType type, std::vector<NamedValue> values) {
    AttributeSchema attribute = Typed(type);
    attribute.values = std::move(values);
    return attribute;
}

// The handlers section's accessPolicy, in its schema order.
AttributeSchema AccessPolicy() {
    return Named(AttributeType::flags, {{u"None", 0},
                                        {u"Read", 1},
                                        {u"Write", 2},
                                        {u"Execute", 4},
                                        {u"Source", 16},
                                        {u"Script", 512},
                                        {u"NoRemoteWrite", 1024}});
}

AttributeSchema ShowFlagsWithoutZero() {
    return Named(AttributeType::flags, {{u"Date", 2}, {u"Time", 4}, {u"Size", 8}});
}

AttributeSchema NonEmptyFlags() {
    AttributeSchema attribute = ShowFlagsWithoutZero();
    attribute.validateNonEmpty = true;
    return attribute;
}

AttributeSchema Identity() {
    return Named(AttributeType::enumeration, {{u"LocalSystem", 0},
                                              {u"LocalService", 1},
                                              {u"NetworkService", 2},
                                              {u"SpecificUser", 3},
                                              {u"ApplicationPoolIdentity", 4}});
}

AttributeSchema StringWith(bool nonEmpty, std::u16string invalid, bool virtualPath) {
    AttributeSchema attribute = Typed(AttributeType::string);
    attribute.validateNonEmpty = nonEmpty;
    attribute.invalidCharacters = std::move(invalid);
    attribute.validateVirtualPath = virtualPath;
    return attribute;
}

struct Case {
    const char* what;
    AttributeSchema attribute;
    const char16_t* text;
    std::optional<std::u16string> stored;  // nullopt: refused
};

class ValueRules : public ::testing::TestWithParam<Case> {};

TEST_P(ValueRules, AcceptNormaliseOrRefuse) {
    const Case& c = GetParam();
    EXPECT_EQ(NormalizeAttributeText(c.attribute, c.text), c.stored) << c.what;
}

const std::nullopt_t refused = std::nullopt;

INSTANTIATE_TEST_SUITE_P(
    Booleans, ValueRules,
    ::testing::Values(Case{"lower", Typed(AttributeType::boolean), u"true", u"true"},
                      Case{"capital", Typed(AttributeType::boolean), u"True", u"true"},
                      Case{"upper", Typed(AttributeType::boolean), u"FALSE", u"false"},
                      Case{"number", Typed(AttributeType::boolean), u"1", refused},
                      Case{"yes", Typed(AttributeType::boolean), u"yes", refused},
                      Case{"blank", Typed(AttributeType::boolean), u" true", refused},
                      Case{"empty", Typed(AttributeType::boolean), u"", refused}),
    testing::NameFromWhat());

INSTANTIATE_TEST_SUITE_P(
    Numbers, ValueRules,
    ::testing::Values(
        Case{"uint", Typed(AttributeType::uint32), u"4294967295", u"4294967295"},
        Case{"uint past 32 bits", Typed(AttributeType::uint32), u"4294967296", refused},
        Case{"uint negative", Typed(AttributeType::uint32), u"-1", refused},
        Case{"leading zeros", Typed(AttributeType::uint32), u"0010", u"10"},
        Case{"plus", Typed(AttributeType::uint32), u"+5", refused},
        Case{"hex", Typed(AttributeType::uint32), u"0x10", refused},
        Case{"blank", Typed(AttributeType::uint32), u"5 ", refused},
        Case{"empty", Typed(AttributeType::uint32), u"", refused},
        Case{"int lowest", Typed(AttributeType::int32), u"-2147483648", u"-2147483648"},
        Case{"int below", Typed(AttributeType::int32), u"-2147483649", refused},
        Case{"int highest", Typed(AttributeType::int32), u"2147483647", u"2147483647"},
        Case{"minus zero", Typed(AttributeType::int32), u"-0", u"0"},
        Case{"lone minus", Typed(AttributeType::int32), u"-", refused},
        Case{"int64", Typed(AttributeType::int64), u"-9223372036854775808",
             u"-9223372036854775808"},
        Case{"int64 past", Typed(AttributeType::int64), u"9223372036854775808", refused},
        Case{"range low edge", Ranged(AttributeType::uint32, 10, 65535), u"10", u"10"},
        Case{"range below", Ranged(AttributeType::uint32, 10, 65535), u"9", refused},
        Case{"range high edge", Ranged(AttributeType::uint32, 10, 65535), u"65535", u"65535"},
        Case{"range above", Ranged(AttributeType::uint32, 10, 65535), u"65536", refused},
        Case{"sub-status -1", Ranged(AttributeType::int32, -1, 999), u"-1", u"-1"},
        Case{"sub-status -2", Ranged(AttributeType::int32, -1, 999), u"-2", refused}),
    testing::NameFromWhat());

INSTANTIATE_TEST_SUITE_P(
    TimeSpans, ValueRules,
    ::testing::Values(
        Case{"plain", Typed(AttributeType::timeSpan), u"00:20:00", u"00:20:00"},
        Case{"hours past a day", Typed(AttributeType::timeSpan), u"29:00:00", u"1.05:00:00"},
        Case{"day part", Typed(AttributeType::timeSpan), u"1.05:00:00", u"1.05:00:00"},
        Case{"one-digit parts", Typed(AttributeType::timeSpan), u"0:5:7", u"00:05:07"},
        Case{"fraction", Typed(AttributeType::timeSpan), u"00:00:01.5", u"00:00:01.5000000"},
        Case{"seven digits", Typed(AttributeType::timeSpan), u"00:00:00.0000001",
             u"00:00:00.0000001"},
        Case{"eight digits", Typed(AttributeType::timeSpan), u"00:00:00.00000001", refused},
        Case{"zero fraction", Typed(AttributeType::timeSpan), u"00:00:01.0", u"00:00:01"},
        Case{"minutes 60", Typed(AttributeType::timeSpan), u"00:60:00", refused},
        Case{"seconds 60", Typed(AttributeType::timeSpan), u"00:00:60", refused},
        Case{"hours 24 with days", Typed(AttributeType::timeSpan), u"1.24:00:00", refused},
        Case{"no seconds", Typed(AttributeType::timeSpan), u"00:20", refused},
        Case{"days only", Typed(AttributeType::timeSpan), u"20", refused},
        Case{"negative", Typed(AttributeType::timeSpan), u"-00:20:00", refused},
        Case{"blank", Typed(AttributeType::timeSpan), u" 00:20:00", refused},
        Case{"four parts", Typed(AttributeType::timeSpan), u"00:00:00:00", refused},
        Case{"empty day", Typed(AttributeType::timeSpan), u".01:00:00", refused},
        Case{"overflow", Typed(AttributeType::timeSpan), u"99999999.00:00:00", refused},
        Case{"idle 30 days", Ranged(AttributeType::timeSpan, 0, 2592000, 60), u"30.00:00:00",
             u"30.00:00:00"},
        Case{"idle past 30 days", Ranged(AttributeType::timeSpan, 0, 2592000, 60), u"30.00:01:00",
             refused},
        Case{"idle in seconds", Ranged(AttributeType::timeSpan, 0, 2592000, 60), u"00:20:30",
             refused},
        Case{"idle fraction", Ranged(AttributeType::timeSpan, 0, 2592000, 60), u"00:20:00.5",
             refused},
        Case{"schedule last minute", Ranged(AttributeType::timeSpan, 0, 86340, 60), u"23:59:00",
             u"23:59:00"},
        Case{"schedule midnight", Ranged(AttributeType::timeSpan, 0, 86340, 60), u"24:00:00",
             refused},
        Case{"minimum", Ranged(AttributeType::timeSpan, 60, 3600), u"00:00:59", refused}),
    testing::NameFromWhat());

INSTANTIATE_TEST_SUITE_P(
    Enums, ValueRules,
    ::testing::Values(Case{"name", Identity(), u"NetworkService", u"NetworkService"},
                      Case{"other case", Identity(), u"networkservice", u"NetworkService"},
                      Case{"number", Identity(), u"4", u"ApplicationPoolIdentity"},
                      Case{"number zero", Identity(), u"0", u"LocalSystem"},
                      Case{"unknown number", Identity(), u"5", refused},
                      Case{"unknown name", Identity(), u"Network", refused},
                      Case{"empty", Identity(), u"", refused},
                      Case{"negative", Identity(), u"-1", refused}),
    testing::NameFromWhat());

INSTANTIATE_TEST_SUITE_P(
    Flags, ValueRules,
    ::testing::Values(Case{"schema order", AccessPolicy(), u"Script, Read", u"Read, Script"},
                      Case{"no spaces", AccessPolicy(), u"Script,Execute,Read",
                           u"Read, Execute, Script"},
                      Case{"spaces", AccessPolicy(), u" read ,  SCRIPT ", u"Read, Script"},
                      Case{"repeated", AccessPolicy(), u"Read,Read", u"Read"},
                      Case{"None with others", AccessPolicy(), u"None, Write", u"Write"},
                      Case{"number", AccessPolicy(), u"517", u"Read, Execute, Script"},
                      Case{"zero", AccessPolicy(), u"0", u"None"},
                      Case{"empty", AccessPolicy(), u"", u"None"},
                      Case{"unknown bit", AccessPolicy(), u"8", refused},
                      Case{"unknown name", AccessPolicy(), u"Read, Delete", refused},
                      Case{"empty piece", AccessPolicy(), u"Read,,Script", refused},
                      Case{"trailing comma", AccessPolicy(), u"Read,", refused},
                      Case{"zero without a name", ShowFlagsWithoutZero(), u"0", u""},
                      Case{"all", ShowFlagsWithoutZero(), u"14", u"Date, Time, Size"},
                      Case{"non-empty given nothing", NonEmptyFlags(), u" ", refused},
                      Case{"non-empty given 0", NonEmptyFlags(), u"0", refused},
                      Case{"non-empty given a name", NonEmptyFlags(), u"time", u"Time"}),
    testing::NameFromWhat());

INSTANTIATE_TEST_SUITE_P(
    Strings, ValueRules,
    ::testing::Values(
        Case{"anything", Typed(AttributeType::string), u" Any text ", u" Any text "},
        Case{"empty", Typed(AttributeType::string), u"", u""},
        Case{"empty refused", StringWith(true, u"", false), u"", refused},
        Case{"site name", StringWith(true, u"/?", false), u"Default Web Site", u"Default Web Site"},
        Case{"site name slash", StringWith(true, u"/?", false), u"a/b", refused},
        Case{"pool name", StringWith(true, u"|<>&\"/[]+=;:,?*@", false), u".NET v4.5",
             u".NET v4.5"},
        Case{"pool name colon", StringWith(true, u"|<>&\"/[]+=;:,?*@", false), u"a:b", refused},
        Case{"root path", StringWith(false, u"", true), u"/", u"/"},
        Case{"path", StringWith(false, u"", true), u"/app/sub", u"/app/sub"},
        Case{"trailing slash", StringWith(false, u"", true), u"/app/", refused},
        Case{"no leading slash", StringWith(false, u"", true), u"app", refused},
        Case{"dot segment", StringWith(false, u"", true), u"/a/./b", refused},
        Case{"dot-dot segment", StringWith(false, u"", true), u"/a/..", refused},
        Case{"empty segment", StringWith(false, u"", true), u"/a//b", refused},
        Case{"dots in a name", StringWith(false, u"", true), u"/a..b", u"/a..b"},
        Case{"empty path", StringWith(false, u"", true), u"", refused}),
    testing::NameFromWhat());

TEST(ValueRules, EveryBuiltInDefaultIsStoredAsItIs) {
    // The schema reader checks this too; here it runs over every attribute a section has.
    size_t checked = 0;
    std::vector<const ElementSchema*> pending;
    for (const SectionSchema& section : Schema::BuiltIn().sections()) {
        pending.push_back(&section.root);
    }
    while (!pending.empty()) {
        const ElementSchema* element = pending.back();
        pending.pop_back();
        for (const AttributeSchema& attribute : element->attributes) {
            if (!attribute.defaultValue.empty()) {
                EXPECT_EQ(NormalizeAttributeText(attribute, attribute.defaultValue),
                          attribute.defaultValue)
                    << qm::to_utf8(element->name) << "/" << qm::to_utf8(attribute.name);
                ++checked;
            }
        }
        for (const auto* list : {&element->children, &element->entries}) {
            for (const ElementSchema& next : *list) {
                pending.push_back(&next);
            }
        }
    }
    EXPECT_GT(checked, 200u);
}

TEST(ValueRules, TypedValuesGoThroughTheSameRules) {
    struct Given {
        AttributeSchema attribute;
        platform::Variant value;
        std::optional<std::u16string> stored;
    };
    const Given cases[] = {
        {Typed(AttributeType::boolean), true, u"true"},
        {Typed(AttributeType::boolean), int32_t{0}, u"false"},
        {Typed(AttributeType::boolean), int32_t{-1}, u"true"},
        {Typed(AttributeType::boolean), std::u16string(u"TRUE"), u"true"},
        {Typed(AttributeType::string), true, u"true"},
        {Typed(AttributeType::string), int32_t{42}, u"42"},
        {Ranged(AttributeType::uint32, 10, 65535), uint32_t{4000}, u"4000"},
        {Ranged(AttributeType::uint32, 10, 65535), int32_t{5}, std::nullopt},
        {Typed(AttributeType::uint32), int32_t{-1}, std::nullopt},
        {Typed(AttributeType::int64), uint64_t{UINT64_MAX}, std::nullopt},
        {Identity(), int32_t{2}, u"NetworkService"},
        {Identity(), false, std::nullopt},
        {AccessPolicy(), int32_t{513}, u"Read, Script"},
        {Typed(AttributeType::timeSpan), std::u16string(u"25:01:01"), u"1.01:01:01"},
        // A number is a count of ticks, as the value read back is.
        {Typed(AttributeType::timeSpan), uint64_t{12'000'000'000}, u"00:20:00"},
        {Typed(AttributeType::timeSpan), int32_t{-1}, std::nullopt},
        {Typed(AttributeType::string), std::monostate{}, std::nullopt},
    };
    for (size_t i = 0; i < std::size(cases); ++i) {
        EXPECT_EQ(NormalizeAttributeValue(cases[i].attribute, cases[i].value), cases[i].stored)
            << "case " << i;
    }
}

// The VARIANT kinds get_Value gives on Windows, which the runtime turns into text to compare.
TEST(ValueRules, ReadingGivesTheKindsOfEachType) {
    struct Read {
        AttributeSchema attribute;
        const char16_t* stored;
        platform::Variant value;
    };
    const Read cases[] = {
        {Typed(AttributeType::boolean), u"true", true},
        {Typed(AttributeType::boolean), u"False", false},
        {Typed(AttributeType::uint32), u"4294967295", uint32_t{4294967295}},
        {Typed(AttributeType::int32), u"-1", int32_t{-1}},
        {Typed(AttributeType::int64), u"20971520", int64_t{20971520}},
        {Typed(AttributeType::timeSpan), u"00:20:00", uint64_t{12'000'000'000}},
        {Identity(), u"NetworkService", int32_t{2}},
        {AccessPolicy(), u"Read, Script", int32_t{513}},
        {Typed(AttributeType::string), u"IUSR", std::u16string(u"IUSR")},
        // A hand-edited file's wrong text comes back as it stands.
        {Typed(AttributeType::boolean), u"yes", std::u16string(u"yes")},
        {Typed(AttributeType::uint32), u"many", std::u16string(u"many")},
    };
    for (size_t i = 0; i < std::size(cases); ++i) {
        EXPECT_EQ(ReadAttributeValue(cases[i].attribute, cases[i].stored), cases[i].value)
            << "case " << i;
    }
}

TEST(TimeSpan, FormatsAsIisWrites) {
    struct Formatted {
        int64_t ticks;
        const char16_t* text;
    };
    const Formatted cases[] = {
        {0, u"00:00:00"},
        {20 * 60 * kTicksPerSecond, u"00:20:00"},
        {29 * 3600 * kTicksPerSecond, u"1.05:00:00"},
        {(86400 - 1) * kTicksPerSecond, u"23:59:59"},
        {86400 * kTicksPerSecond, u"1.00:00:00"},
        {365 * 86400 * kTicksPerSecond + 1, u"365.00:00:00.0000001"},
        {kTicksPerSecond / 2, u"00:00:00.5000000"},
    };
    for (const Formatted& f : cases) {
        EXPECT_EQ(FormatTimeSpan(f.ticks), f.text);
        EXPECT_EQ(ParseTimeSpan(f.text), f.ticks) << qm::to_utf8(f.text);
    }
    EXPECT_EQ(ParseTimeSpan(u"10675199.02:48:05.4775807"), INT64_MAX);
    EXPECT_EQ(ParseTimeSpan(u"10675199.02:48:05.4775808"), std::nullopt);
}

}  // namespace
}  // namespace webrig::sim::iis7
