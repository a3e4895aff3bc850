#include "platform/sim/text/windows_1252.h"

#include <gtest/gtest.h>

namespace webrig::sim {
namespace {

std::vector<std::byte> AllBytes() {
    std::vector<std::byte> bytes;
    for (int b = 0; b < 256; ++b) {
        bytes.push_back(static_cast<std::byte>(b));
    }
    return bytes;
}

TEST(Windows1252, MapsTheHighControlRangeAsMultiByteToWideChar) {
    Windows1252 codePage;
    EXPECT_EQ(codePage.Number(), 1252u);
    const qm::wstring wide = codePage.ToWide(AllBytes());
    ASSERT_EQ(wide.size(), 256u);
    const std::pair<int, char16_t> expected[] = {
        {0x00, 0x0000}, {0x41, 0x0041}, {0x7F, 0x007F}, {0x80, 0x20AC}, {0x81, 0x0081},
        {0x82, 0x201A}, {0x83, 0x0192}, {0x84, 0x201E}, {0x85, 0x2026}, {0x86, 0x2020},
        {0x87, 0x2021}, {0x88, 0x02C6}, {0x89, 0x2030}, {0x8A, 0x0160}, {0x8B, 0x2039},
        {0x8C, 0x0152}, {0x8D, 0x008D}, {0x8E, 0x017D}, {0x8F, 0x008F}, {0x90, 0x0090},
        {0x91, 0x2018}, {0x92, 0x2019}, {0x93, 0x201C}, {0x94, 0x201D}, {0x95, 0x2022},
        {0x96, 0x2013}, {0x97, 0x2014}, {0x98, 0x02DC}, {0x99, 0x2122}, {0x9A, 0x0161},
        {0x9B, 0x203A}, {0x9C, 0x0153}, {0x9D, 0x009D}, {0x9E, 0x017E}, {0x9F, 0x0178},
        {0xA0, 0x00A0}, {0xE9, 0x00E9}, {0xFF, 0x00FF}};
    for (const auto& [byte, character] : expected) {
        EXPECT_EQ(wide[static_cast<size_t>(byte)], character) << "byte " << byte;
    }
}

TEST(Windows1252, EveryByteSurvivesTheRoundTrip) {
    Windows1252 codePage;
    const std::vector<std::byte> bytes = AllBytes();
    const std::string back = codePage.FromWide(codePage.ToWide(bytes));
    ASSERT_EQ(back.size(), bytes.size());
    for (size_t i = 0; i < back.size(); ++i) {
        EXPECT_EQ(static_cast<unsigned char>(back[i]), i);
    }
}

TEST(Windows1252, CharactersWithoutAByteBecomeQuestionMarks) {
    Windows1252 codePage;
    EXPECT_EQ(codePage.FromWide(u"a\u0100b\u4E2D\u20AC"), "a?b?\x80");
    // One character outside the BMP is one question mark; a lone surrogate is one too.
    EXPECT_EQ(codePage.FromWide(u"x\U0001F600y\xD800z"), "x?y?z");
}

}  // namespace
}  // namespace webrig::sim
