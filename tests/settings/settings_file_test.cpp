#include "settings/settings_file.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "support/wide_string.h"
#include "testing/file_bytes.h"

namespace webrig::settings {
namespace {

// Decodes bytes 0x80 and up to U+0400 onwards, so that a test can tell text that went through
// the code page from text that did not; counts its calls.
class FakeCodePage final : public platform::AnsiCodePage {
  public:
    uint32_t Number() override { return 1251; }
    qm::wstring ToWide(std::span<const std::byte> bytes) override {
        ++m_calls;
        qm::wstring text;
        for (const std::byte byte : bytes) {
            const auto value = std::to_integer<unsigned>(byte);
            text += static_cast<char16_t>(value < 0x80 ? value : 0x0400 + value - 0x80);
        }
        return text;
    }
    std::string FromWide(qm::wstring_view) override { return {}; }
    int m_calls = 0;
};

std::vector<std::byte> Bytes(std::initializer_list<int> values) {
    std::vector<std::byte> bytes;
    for (const int value : values) {
        bytes.push_back(static_cast<std::byte>(value));
    }
    return bytes;
}

// ---- Encoding ----------------------------------------------------------------------------

struct DecodeCase {
    const char* label;
    std::vector<std::byte> bytes;
    qm::wstring expected;
    bool throughCodePage;
};

TEST(DecodeSettingsText, ChoosesTheEncodingFromTheFirst1024Bytes) {
    std::vector<std::byte> zeroAt1023 = testing::Bytes(std::string(1024, 'a'));
    zeroAt1023[1023] = std::byte{0};
    std::vector<std::byte> zeroAt1024 = testing::Bytes(std::string(1025, 'a'));
    zeroAt1024[1024] = std::byte{0};

    qm::wstring ansiWithZero(1024, u'a');
    ansiWithZero += u'\0';

    const DecodeCase cases[] = {
        {"UTF-16 with BOM", Bytes({0xFF, 0xFE, '[', 0, 'S', 0, ']', 0}), u"[S]", false},
        {"UTF-16 without BOM", Bytes({'[', 0, 'S', 0, ']', 0}), u"[S]", false},
        {"UTF-16 odd final byte dropped", Bytes({'a', 0, 'b', 0, 'c'}), u"ab", false},
        {"UTF-16 BOM only", Bytes({0xFF, 0xFE, 0}), u"", false},
        {"UTF-16 BOM later in the text is kept", Bytes({'a', 0, 0xFF, 0xFE}), u"a\xFEFF", false},
        {"UTF-16 non-ASCII", Bytes({0x16, 0x04, 0x00, 0x4E}), u"\x0416\x4E00", false},
        {"zero at byte 1023 makes UTF-16", zeroAt1023, qm::wstring(511, u'\x6161') + u'\x0061',
         false},
        {"zero at byte 1024 is not looked at", zeroAt1024, ansiWithZero, true},
        {"ANSI", testing::Bytes("[S]\r\nk=v"), u"[S]\r\nk=v", true},
        {"ANSI high bytes through the code page", Bytes({'x', 0xE9}), u"x\x0469", true},
        {"ANSI FF FE is no mark", Bytes({0xFF, 0xFE, 'a'}),
         u"\x047F\x047E"
         u"a",
         true},
        {"empty file", {}, u"", true},
    };
    for (const DecodeCase& test : cases) {
        FakeCodePage ansi;
        EXPECT_EQ(DecodeSettingsText(test.bytes, ansi), test.expected) << test.label;
        EXPECT_EQ(ansi.m_calls, test.throughCodePage ? 1 : 0) << test.label;
    }
}

// ---- Line grammar --------------------------------------------------------------------------

struct GrammarCase {
    const char* label;
    qm::wstring text;
    qm::wstring section;
    qm::wstring name;
    std::optional<qm::wstring> expected;
};

TEST(SettingsFileGrammar, FindsWhatTheLineRulesSay) {
    const GrammarCase cases[] = {
        {"plain entry", u"[S]\r\nk=v\r\n", u"S", u"k", u"v"},
        {"no final line break", u"[S]\r\nk=v", u"S", u"k", u"v"},
        {"LF-only file", u"[S]\nk=v\nm=w\n", u"S", u"m", u"w"},
        {"blanks around =", u"[S]\r\nk = v\r\n", u"S", u"k", u" v"},
        {"tabs and blanks trimmed off the line, not off the value's left",
         u"[S]\r\n \t k\t=\t v \t \r\n", u"S", u"k", u"\t v"},
        {"value keeps later equals signs", u"[S]\r\nk=a=b=\r\n", u"S", u"k", u"a=b="},
        {"empty value", u"[S]\r\nk=\r\n", u"S", u"k", u""},
        {"empty name", u"[S]\r\n=v\r\n", u"S", u"", u"v"},
        {"line without = ignored", u"[S]\r\nk\r\n", u"S", u"k", std::nullopt},
        {"comment", u"[S]\r\n;k=v\r\n", u"S", u";k", std::nullopt},
        {"comment after blanks", u"[S]\r\n  ;k=v\r\n", u"S", u";k", std::nullopt},
        {"; later in the line is no comment", u"[S]\r\nk=v;w\r\n", u"S", u"k", u"v;w"},
        {"text after ] ignored", u"[S] trailing=x\r\nk=v\r\n", u"S", u"k", u"v"},
        {"text after ] opens no entry", u"[S] t=x\r\n", u"S", u"[S] t", std::nullopt},
        {"header name untrimmed", u"[ S ]\r\nk=v\r\n", u" S ", u"k", u"v"},
        {"header name ends at the first ]", u"[a]b]\r\nk=v\r\n", u"a", u"k", u"v"},
        {"header may hold =", u"[a=b]\r\nk=v\r\n", u"a=b", u"k", u"v"},
        {"empty header name", u"[]\r\nk=v\r\n", u"", u"k", u"v"},
        {"indented header", u"  \t[S]\r\nk=v\r\n", u"S", u"k", u"v"},
        {"[ without ] is an entry", u"[S]\r\n[x=1\r\n", u"S", u"[x", u"1"},
        {"later duplicate wins", u"[S]\r\nk=1\r\nk=2\r\n", u"S", u"k", u"2"},
        {"duplicate after another section still wins", u"[S]\r\nk=1\r\n[T]\r\n[S]\r\nk=2\r\n", u"S",
         u"k", u"2"},
        {"repeated header empties the section", u"[S]\r\nk=1\r\n[T]\r\nx=y\r\n[S]\r\nm=2\r\n", u"S",
         u"k", std::nullopt},
        {"repeated header keeps the later entries", u"[S]\r\nk=1\r\n[T]\r\nx=y\r\n[S]\r\nm=2\r\n",
         u"S", u"m", u"2"},
        {"entries before the first header ignored", u"k=v\r\n[S]\r\n", u"S", u"k", std::nullopt},
        {"section names match case", u"[globaloptions]\r\nk=v\r\n", u"GlobalOptions", u"k",
         std::nullopt},
        {"entry names match case", u"[S]\r\nK=v\r\n", u"S", u"k", std::nullopt},
        {"lone LF before a later CRLF stays in the line", u"[S]\r\na=1\nb=2\r\n", u"S", u"a",
         u"1\nb=2"},
        {"... and opens no entry of its own", u"[S]\r\na=1\nb=2\r\n", u"S", u"b", std::nullopt},
        {"after the last CRLF lines end at LF", u"[S]\r\na=1\r\nb=2\nc=3", u"S", u"c", u"3"},
        {"LF lines after the last CRLF", u"[S]\r\na=1\r\nb=2\nc=3", u"S", u"b", u"2"},
        {"leading LF of a CRLF line trimmed", u"[S]\r\n\nk=v\r\n", u"S", u"k", u"v"},
        {"trailing LF of a CRLF line trimmed", u"[S]\r\nk=v\n\r\n", u"S", u"k", u"v"},
        {"CR inside a line kept", u"[S]\nk=a\rb\n", u"S", u"k", u"a\rb"},
        {"CR not trimmed off a name", u"[S]\n\rk=v\n", u"S", u"\rk", u"v"},
        {"CR before = stays in the name", u"[S]\nk\r=v\n", u"S", u"k\r", u"v"},
        {"CR CR LF: the first CR stays", u"[S]\r\nk=v\r\r\n", u"S", u"k", u"v\r"},
        // The added "\n" turns a final "\r" into a line end; the text has a "\r\n" now, so the
        // "\n" after the header no longer ends a line, and "[S]\nk=v" is a header line.
        {"final CR becomes CRLF", u"[S]\nk=v\r", u"S", u"k", std::nullopt},
        {"non-ASCII names", u"[Größe]\r\nСлово=値\r\n", u"Größe", u"Слово", u"値"},
        {"U+0000 is an ordinary character", qm::wstring(u"[S]\r\nk=a\0b\r\n", 12), u"S", u"k",
         qm::wstring(u"a\0b", 3)},
    };
    for (const GrammarCase& test : cases) {
        const SettingsFile file = SettingsFile::ParseText(test.text);
        const std::optional<qm::wstring_view> found = file.Find(test.section, test.name);
        if (test.expected) {
            ASSERT_TRUE(found.has_value()) << test.label;
            EXPECT_EQ(*found, *test.expected) << test.label;
        } else {
            EXPECT_FALSE(found.has_value()) << test.label;
        }
    }
}

struct SectionCase {
    const char* label;
    qm::wstring text;
    qm::wstring section;
    bool present;
};

TEST(SettingsFileGrammar, OpensSectionsOnlyForHeaderLines) {
    const SectionCase cases[] = {
        {"header", u"[S]\r\n", u"S", true},
        {"header without entries", u"[S]\r\n[T]\r\n", u"S", true},
        {"[ without ] and without =", u"[S\r\n", u"S", false},
        {"[ without ] and without = is not a section either", u"[S\r\n", u"[S", false},
        {"commented header", u";[S]\r\n", u"S", false},
        {"other case", u"[s]\r\n", u"S", false},
        {"] before [", u"]S[\r\n", u"S", false},
        {"text before [", u"x[S]\r\n", u"S", false},
        {"lone LF hides the next header", u"[A]\r\nk=v\n[S]\r\n", u"S", false},
        {"empty file", u"", u"", false},
    };
    for (const SectionCase& test : cases) {
        EXPECT_EQ(SettingsFile::ParseText(test.text).HasSection(test.section), test.present)
            << test.label;
    }
}

TEST(SettingsFileEntries, OrderedByUtf16CodeUnitsWithTheLaterDuplicate) {
    // Code-unit order puts a surrogate pair (D83D...) before U+E000, code-point order after.
    const SettingsFile file = SettingsFile::ParseText(
        u"[S]\r\nb=1\r\na=2\r\nB=3\r\n\xE000=4\r\n\xD83D\xDE00=5\r\né=6\r\na=7\r\n[T]\r\nz=0\r\n");
    using Pair = std::pair<qm::wstring_view, qm::wstring_view>;
    const std::vector<Pair> expected = {
        {u"B", u"3"},      {u"a", u"7"}, {u"b", u"1"}, {u"é", u"6"}, {u"\xD83D\xDE00", u"5"},
        {u"\xE000", u"4"},
    };
    EXPECT_EQ(file.Entries(u"S"), expected);
    for (const Pair& entry : expected) {
        EXPECT_EQ(file.Find(u"S", entry.first), entry.second);
    }
    EXPECT_TRUE(file.Entries(u"absent").empty());
    EXPECT_TRUE(SettingsFile::ParseText(u"[E]\r\n").Entries(u"E").empty());
}

TEST(SettingsFileEntries, SectionsKeepTheirOwnEntries) {
    const SettingsFile file =
        SettingsFile::ParseText(u"[A]\r\nk=a\r\n[B]\r\nk=b\r\nm=b2\r\n[C]\r\n[A]\r\nn=a2\r\n");
    EXPECT_EQ(file.Find(u"B", u"k"), qm::wstring_view(u"b"));
    EXPECT_EQ(file.Find(u"A", u"n"), qm::wstring_view(u"a2"));
    EXPECT_EQ(file.Entries(u"A").size(), 1u);
    EXPECT_EQ(file.Entries(u"B").size(), 2u);
    EXPECT_TRUE(file.HasSection(u"C"));
    EXPECT_FALSE(file.Find(u"C", u"k").has_value());
}

// ---- Ownership and size ----------------------------------------------------------------------

TEST(SettingsFileOwnership, ViewsOutliveAMoveOfAShortFile) {
    // Short enough for the string's in-object buffer, which a move would leave behind.
    auto original = std::make_unique<SettingsFile>(SettingsFile::ParseText(u"[]\n=v"));
    const std::optional<qm::wstring_view> before = original->Find(u"", u"");
    ASSERT_TRUE(before.has_value());
    const SettingsFile moved = std::move(*original);
    original.reset();
    const std::optional<qm::wstring_view> after = moved.Find(u"", u"");
    ASSERT_TRUE(after.has_value());
    EXPECT_EQ(after->data(), before->data());
    EXPECT_EQ(*before, u"v");
    EXPECT_EQ(moved.Entries(u"").front().first.data(), before->data() - 1);
}

TEST(SettingsFileSize, LineFeedOnlyFileOfManyLinesIsReadInOnePass) {
    // Searching for "\r\n" from every line start would take hours here.
    constexpr int kLines = 200000;
    qm::wstring text = u"[S]\n";
    for (int i = 0; i < kLines; ++i) {
        text += qm::widen_ascii("k" + std::to_string(i % 1000) + "=" + std::to_string(i) + "\n");
    }
    text += u"\r";  // the one "\r\n" comes last, after the added "\n"
    const SettingsFile file = SettingsFile::ParseText(std::move(text));
    // All of it up to that "\r\n" is one header line with text after its "]".
    EXPECT_TRUE(file.HasSection(u"S"));
    EXPECT_TRUE(file.Entries(u"S").empty());

    qm::wstring lines = u"[S]\n";
    for (int i = 0; i < kLines; ++i) {
        lines += qm::widen_ascii("k" + std::to_string(i % 1000) + "=" + std::to_string(i) + "\n");
    }
    const SettingsFile lineFile = SettingsFile::ParseText(std::move(lines));
    EXPECT_EQ(lineFile.Entries(u"S").size(), 1000u);
    EXPECT_EQ(lineFile.Find(u"S", u"k7"), qm::widen_ascii(std::to_string(kLines - 1000 + 7)));
}

}  // namespace
}  // namespace webrig::settings
