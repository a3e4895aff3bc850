#include "settings/password_scrambling.h"

#include <gtest/gtest.h>

#include "platform/sim/text/windows_1252.h"
#include "settings/settings_file.h"
#include "support/wide_string.h"
#include "testing/generated_project.h"

namespace webrig::settings {
namespace {

// Narrows characters to their low byte, as any ASCII-compatible code page does for the key.
class AsciiCodePage final : public platform::AnsiCodePage {
  public:
    uint32_t Number() override { return 20127; }
    qm::wstring ToWide(std::span<const std::byte> bytes) override {
        qm::wstring text;
        for (const std::byte byte : bytes) {
            text += static_cast<char16_t>(std::to_integer<unsigned>(byte));
        }
        return text;
    }
    std::string FromWide(qm::wstring_view text) override {
        std::string bytes;
        for (const char16_t c : text) {
            bytes += c < 0x80 ? static_cast<char>(c) : '?';
        }
        return bytes;
    }
};

// A code page that turns the key into the two bytes 0x01 0x02: shows the key is taken from it.
class OtherKeyCodePage final : public platform::AnsiCodePage {
  public:
    uint32_t Number() override { return 0; }
    qm::wstring ToWide(std::span<const std::byte>) override { return {}; }
    std::string FromWide(qm::wstring_view) override { return "\x01\x02"; }
};

qm::wstring Chars(std::initializer_list<char16_t> characters) {
    return qm::wstring(characters);
}

// Worked by hand from the rule, key "_Wexley_" = 5F 57 65 78 6C 65 79 5F:
// 'A' = 41 00:  ~41 = BE, ^5F = E1, swap -> 1E;  ~00 = FF, ^57 = A8, swap -> 8A
// 'b' = 62 00:  ~62 = 9D, ^65 = F8, swap -> 8F;  FF ^78 = 87, swap -> 78
// 'c' = 63 00:  ~63 = 9C, ^6C = F0, swap -> 0F;  FF ^65 = 9A, swap -> A9
// 'd' = 64 00:  ~64 = 9B, ^79 = E2, swap -> 2E;  FF ^5F = A0, swap -> 0A
// The fifth character starts the key again, so 'A' gives 1E 8A once more.
TEST(PasswordScrambling, KnownVectorWorkedByHand) {
    AsciiCodePage ansi;
    const qm::wstring scrambled =
        Chars({0x1E, 0x8A, 0x8F, 0x78, 0x0F, 0xA9, 0x2E, 0x0A, 0x1E, 0x8A});
    EXPECT_EQ(ScramblePassword(u"AbcdA", ansi), scrambled);
    EXPECT_EQ(DescramblePassword(scrambled, ansi), u"AbcdA");
}

TEST(PasswordScrambling, KeyBytesComeFromTheCodePage) {
    // With key 01 02: ~41 ^ 01 = BF -> FB;  ~00 ^ 02 = FD -> DF.
    OtherKeyCodePage ansi;
    EXPECT_EQ(ScramblePassword(u"A", ansi), Chars({0xFB, 0xDF}));
    EXPECT_EQ(DescramblePassword(Chars({0xFB, 0xDF}), ansi), u"A");
}

TEST(PasswordScrambling, RoundTrips) {
    AsciiCodePage ansi;
    const qm::wstring plaintexts[] = {
        u"",
        u"P@ssw0rd!",
        u"Geheimnis mit Leerzeichen",
        u"Ünïcødé-ß",
        u"日本語のパスワード",
        u"\xD83D\xDE00 surrogate pair",
        u"\x00FF\x0100\xFFFF",
    };
    for (const qm::wstring& plaintext : plaintexts) {
        const qm::wstring scrambled = ScramblePassword(plaintext, ansi);
        EXPECT_EQ(scrambled.size(), plaintext.size() * 2) << qm::to_utf8(plaintext);
        for (const char16_t c : scrambled) {
            EXPECT_LE(c, 0xFF);
        }
        EXPECT_EQ(DescramblePassword(scrambled, ansi), plaintext) << qm::to_utf8(plaintext);
    }
}

TEST(PasswordScrambling, DescramblingReadsOnlyTheLowByteOfEachCharacter) {
    AsciiCodePage ansi;
    qm::wstring scrambled = ScramblePassword(u"secret", ansi);
    for (char16_t& c : scrambled) {
        c = static_cast<char16_t>(c | 0x4200);
    }
    EXPECT_EQ(DescramblePassword(scrambled, ansi), u"secret");
}

TEST(PasswordScrambling, DescramblingStopsAtTheFirstZeroCharacter) {
    AsciiCodePage ansi;
    const qm::wstring withZero(u"ab\0cd", 5);
    EXPECT_EQ(DescramblePassword(ScramblePassword(withZero, ansi), ansi), u"ab");
}

TEST(PasswordScrambling, AnOddLastByteIsACharacterWithAZeroHighByte) {
    AsciiCodePage ansi;
    // "A" scrambles to 1E 8A; its first byte alone still gives "A".
    EXPECT_EQ(DescramblePassword(u"\x1E", ansi), u"A");
    const qm::wstring ab = ScramblePassword(u"ab", ansi);
    EXPECT_EQ(DescramblePassword(ab + ScramblePassword(u"cd", ansi).substr(0, 1), ansi).size(), 3u);
    // The usual default of a password key, "0", is one character no one chose.
    EXPECT_EQ(DescramblePassword(u"0", ansi), u"\u00A3");
}

// The scrambled characters written as the bytes they stand for into a Windows-1252 file, and
// read back as the loader reads that file.
qm::wstring ThroughWindows1252File(const qm::wstring& scrambled) {
    std::vector<std::byte> bytes;
    for (const char16_t c : scrambled) {
        bytes.push_back(static_cast<std::byte>(c & 0xFF));
    }
    return sim::Windows1252().ToWide(bytes);
}

// The high byte 00 of an ASCII first character scrambles to 8A, which comes back from a
// Windows-1252 file as U+0160: a different low byte.
TEST(PasswordScrambling, AsciiPasswordDoesNotSurviveAWindows1252File) {
    sim::Windows1252 ansi;
    const qm::wstring scrambled = ScramblePassword(u"A", ansi);
    ASSERT_EQ(scrambled, Chars({0x1E, 0x8A}));
    const qm::wstring readBack = ThroughWindows1252File(scrambled);
    EXPECT_EQ(readBack[1], u'\u0160');
    EXPECT_NE(DescramblePassword(readBack, ansi), u"A");
}

TEST(PasswordScrambling, GeneratedProjectPasswordSurvivesAWindows1252File) {
    sim::Windows1252 ansi;
    const qm::wstring scrambled = ScramblePassword(testing::kGeneratedPassword, ansi);
    ASSERT_EQ(scrambled.find(u'\0'), qm::wstring::npos);
    EXPECT_EQ(DescramblePassword(ThroughWindows1252File(scrambled), ansi),
              testing::kGeneratedPassword);
}

// "Pass" scrambles to ... 5F 0A: the final line feed (the scrambled zero high byte of the last
// character) is trimmed off the line; the byte left over still reads as "s".
TEST(PasswordScrambling, ScrambledTrailingLineFeedIsTrimmedByTheLineGrammar) {
    AsciiCodePage ansi;
    const qm::wstring scrambled = ScramblePassword(u"Pass", ansi);
    ASSERT_EQ(scrambled.back(), u'\n');
    const SettingsFile file = SettingsFile::ParseText(u"[S]\r\nPw=" + scrambled + u"\r\n");
    EXPECT_EQ(file.Find(u"S", u"Pw").value().size(), scrambled.size() - 1);
    EXPECT_EQ(DescramblePassword(file.Find(u"S", u"Pw").value(), ansi), u"Pass");
}

}  // namespace
}  // namespace webrig::settings
