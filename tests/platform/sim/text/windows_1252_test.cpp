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
    // The five bytes without a character keep their value, as MultiByteToWideChar gives them.
    const std::pair<int, char16_t> expected[] = {
        {0x00, 0x0000}, {0x7F, 0x007F}, {0x80, 0x20AC}, {0x81, 0x0081}, {0x8A, 0x0160},
        {0x8D, 0x008D}, {0x8F, 0x008F}, {0x90, 0x0090}, {0x99, 0x2122}, {0x9D, 0x009D},
        {0x9F, 0x0178}, {0xA0, 0x00A0}, {0xFF, 0x00FF}};
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
