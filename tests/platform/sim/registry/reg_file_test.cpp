#include "platform/sim/registry/reg_file.h"

#include <gtest/gtest.h>

#include "platform/sim/machine/machine_error.h"
#include "testing/file_bytes.h"

namespace webrig::sim {
namespace {

using platform::RegValue;
using testing::Bytes;
using testing::Utf16LeWithBom;
namespace reg_type = platform::reg_type;

// An export as regedit writes it, with a comment and a wrapped hex line.
constexpr char16_t kExport[] =
    u"Windows Registry Editor Version 5.00\r\n"
    u"\r\n"
    u"[HKEY_LOCAL_MACHINE\\SOFTWARE]\r\n"
    u"\r\n"
    u"[HKEY_LOCAL_MACHINE\\SOFTWARE\\Contoso]\r\n"
    u"@=\"default\"\r\n"
    u"\"Path\"=\"C:\\\\Program Files\\\\Contoso\\\\\"\r\n"
    u"\"Quote\"=\"say \\\"hi\\\"\"\r\n"
    u"\"Count\"=dword:0000002a\r\n"
    u"\"Blob\"=hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,13,14,15,\\\r\n"
    u"  16,17\r\n"
    u"\"Expand\"=hex(2):25,00,58,00,25,00,00,00\r\n"
    u"\"Multi\"=hex(7):61,00,00,00,62,00,00,00,00,00\r\n"
    u"\"Big\"=hex(b):01,00,00,00,00,00,00,00\r\n"
    u"\"Odd\"=hex(1):41,00\r\n"
    u"\r\n"
    u"; settings of the web server\r\n"
    u"[HKEY_LOCAL_MACHINE\\SOFTWARE\\Contoso\\Web]\r\n"
    u"\"Port\"=dword:00000050\r\n"
    u"\r\n"
    u"[HKEY_LOCAL_MACHINE\\SYSTEM]\r\n"
    u"\r\n";

std::u16string Utf16(std::span<const std::byte> bytes) {
    std::u16string text;
    for (size_t i = 2; i + 1 < bytes.size(); i += 2) {
        text += static_cast<char16_t>(std::to_integer<unsigned>(bytes[i]) |
                                      (std::to_integer<unsigned>(bytes[i + 1]) << 8));
    }
    return text;
}

std::string Utf8(std::span<const std::byte> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

const RegistryKey& KeyAt(const RegistryKey& root, std::initializer_list<const char16_t*> path) {
    const RegistryKey* key = &root;
    for (const char16_t* name : path) {
        key = key->FindSubKey(name);
        if (key == nullptr) {
            throw std::runtime_error("missing key");
        }
    }
    return *key;
}

RegistryKey& KeyAt(RegistryKey& root, std::initializer_list<const char16_t*> path) {
    return const_cast<RegistryKey&>(KeyAt(static_cast<const RegistryKey&>(root), path));
}

std::vector<std::byte> Range(int first, int last) {
    std::vector<std::byte> bytes;
    for (int b = first; b <= last; ++b) {
        bytes.push_back(static_cast<std::byte>(b));
    }
    return bytes;
}

TEST(RegFile, ReadsEveryValueType) {
    const RegFile file = RegFile::Parse(Utf16LeWithBom(kExport), "HKLM.reg");
    const RegistryKey& contoso = KeyAt(file.Root(), {u"SOFTWARE", u"Contoso"});
    EXPECT_EQ(contoso.FindValue(u"")->AsString(), u"default");
    EXPECT_EQ(contoso.FindValue(u"Path")->AsString(), u"C:\\Program Files\\Contoso\\");
    EXPECT_EQ(contoso.FindValue(u"Quote")->AsString(), u"say \"hi\"");
    EXPECT_EQ(*contoso.FindValue(u"Count"), RegValue::Dword(42));
    EXPECT_EQ(*contoso.FindValue(u"Blob"), (RegValue{reg_type::binary, Range(0, 0x17)}));
    EXPECT_EQ(*contoso.FindValue(u"Expand"), RegValue::String(u"%X%", reg_type::expand_sz));
    const std::vector<qm::wstring> multi{u"a", u"b"};
    EXPECT_EQ(*contoso.FindValue(u"Multi"), RegValue::MultiString(multi));
    EXPECT_EQ(contoso.FindValue(u"Big")->type, reg_type::qword);
    EXPECT_EQ(contoso.FindValue(u"Odd")->data.size(), 2u);
    EXPECT_EQ(KeyAt(file.Root(), {u"SOFTWARE", u"Contoso", u"Web"}).FindValue(u"Port")->AsDword(),
              80u);
    EXPECT_EQ(file.encoding(), TextEncoding::utf16le_bom);
    EXPECT_EQ(file.lineEnding(), u"\r\n");
}

TEST(RegFile, UntouchedFilesAreWrittenBackByteForByte) {
    std::u16string lf = kExport;
    for (size_t at; (at = lf.find(u"\r\n")) != std::u16string::npos;) {
        lf.erase(at, 1);
    }
    const std::string utf8 = qm::to_utf8(lf);
    const std::vector<std::vector<std::byte>> files = {
        Utf16LeWithBom(kExport), Bytes(utf8), Bytes("\xEF\xBB\xBF" + utf8),
        // Irregular but valid: deletion lines, a key in two blocks, no final line break.
        Bytes(
            "Windows Registry Editor Version 5.00\n[HKEY_LOCAL_MACHINE\\A]\n\"x\"=\"1\"\n"
            "[-HKEY_LOCAL_MACHINE\\A]\n[HKEY_LOCAL_MACHINE\\B]\n\"y\"=-\n[HKEY_LOCAL_MACHINE\\B]")};
    for (const auto& bytes : files) {
        const RegFile file = RegFile::Parse(bytes, "HKLM.reg");
        EXPECT_EQ(file.Render()->bytes, bytes);
    }
}

TEST(RegFile, AChangedKeyIsTheOnlyBlockThatChanges) {
    const auto original = Utf16LeWithBom(kExport);
    RegFile file = RegFile::Parse(original, "HKLM.reg");
    RegistryKey& web = KeyAt(file.Root(), {u"SOFTWARE", u"Contoso", u"Web"});
    web.SetValue(u"Port", RegValue::Dword(8080));
    web.SetValue(u"Host", RegValue::String(u"www"));
    web.SetEdited(true);
    const auto rendering = file.Render();
    ASSERT_TRUE(rendering);
    const std::u16string before = kExport;
    const std::u16string after = Utf16(rendering->bytes);
    const std::u16string oldBlock =
        u"[HKEY_LOCAL_MACHINE\\SOFTWARE\\Contoso\\Web]\r\n\"Port\"=dword:00000050\r\n\r\n";
    const std::u16string newBlock =
        u"[HKEY_LOCAL_MACHINE\\SOFTWARE\\Contoso\\Web]\r\n\"Port\"=dword:00001f90\r\n"
        u"\"Host\"=\"www\"\r\n\r\n";
    std::u16string expected = before;
    expected.replace(expected.find(oldBlock), oldBlock.size(), newBlock);
    EXPECT_EQ(after, expected);

    const RegFile reread = RegFile::Parse(rendering->bytes, "HKLM.reg");
    EXPECT_TRUE(SameTree(reread.Root(), file.Root()));
}

TEST(RegFile, NewKeysGoAfterTheirParentsSubTreeInTreeOrder) {
    RegFile file = RegFile::Parse(Utf16LeWithBom(kExport), "HKLM.reg");
    RegistryKey& contoso = KeyAt(file.Root(), {u"SOFTWARE", u"Contoso"});
    contoso.AddSubKey(u"Zeta");
    RegistryKey& alpha = contoso.AddSubKey(u"Alpha");
    alpha.AddSubKey(u"Inner").SetValue(u"v", RegValue::Dword(1));
    const std::u16string text = Utf16(file.Render()->bytes);
    const size_t web = text.find(u"[HKEY_LOCAL_MACHINE\\SOFTWARE\\Contoso\\Web]");
    const size_t newAlpha = text.find(u"[HKEY_LOCAL_MACHINE\\SOFTWARE\\Contoso\\Alpha\\Inner]");
    const size_t zeta = text.find(u"[HKEY_LOCAL_MACHINE\\SOFTWARE\\Contoso\\Zeta]");
    const size_t system = text.find(u"[HKEY_LOCAL_MACHINE\\SYSTEM]");
    // Alpha itself is implied by Alpha\Inner and needs no block of its own.
    EXPECT_EQ(text.find(u"Contoso\\Alpha]"), std::u16string::npos);
    EXPECT_LT(web, newAlpha);
    EXPECT_LT(newAlpha, zeta);
    EXPECT_LT(zeta, system);
    const RegFile reread = RegFile::Parse(Utf16LeWithBom(text), "HKLM.reg");
    EXPECT_TRUE(SameTree(reread.Root(), file.Root()));
}

TEST(RegFile, DeletedKeysLoseTheirBlockAndImpliedParentsGetOne) {
    RegFile file = RegFile::Parse(
        Bytes("Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\A\\B]\n\n"
              "[HKEY_LOCAL_MACHINE\\SYSTEM]\n\n"),
        "HKLM.reg");
    KeyAt(file.Root(), {u"SOFTWARE", u"A"}).RemoveSubKey(u"B");
    // A was implied by A\B; alone now, it needs a block, after the last block of the tree.
    const std::string text = Utf8(file.Render()->bytes);
    EXPECT_EQ(text,
              "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\SYSTEM]\n\n"
              "[HKEY_LOCAL_MACHINE\\SOFTWARE\\A]\n\n");
    const RegFile reread = RegFile::Parse(Bytes(text), "HKLM.reg");
    EXPECT_TRUE(SameTree(reread.Root(), file.Root()));
}

TEST(RegFile, KeepsTheSpellingOfAKeyWhoseFirstMentionIsDropped) {
    RegFile file = RegFile::Parse(
        Bytes("Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\A]\n\n"
              "[HKEY_LOCAL_MACHINE\\software\\B]\n\n"),
        "HKLM.reg");
    KeyAt(file.Root(), {u"SOFTWARE"}).RemoveSubKey(u"A");
    const std::string text = Utf8(file.Render()->bytes);
    EXPECT_EQ(text,
              "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\B]\n\n");
    const RegFile reread = RegFile::Parse(Bytes(text), "HKLM.reg");
    EXPECT_EQ(reread.Root().SubKeys().begin()->second->Name(), u"SOFTWARE");
}

TEST(RegFile, DeletionLinesAreAppliedOnLoadAndDroppedOnTheNextSave) {
    RegFile file = RegFile::Parse(
        Bytes("Windows Registry Editor Version 5.00\n"
              "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Old\\Child]\n\"x\"=\"1\"\n"
              "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Keep]\n\"a\"=\"1\"\n\"b\"=\"2\"\n\"a\"=-\n"
              "[-HKEY_LOCAL_MACHINE\\SOFTWARE\\Old]\n"
              "[-HKEY_LOCAL_MACHINE\\SOFTWARE\\NeverThere]\n"
              "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Keep]\n\"c\"=\"3\"\n"),
        "HKLM.reg");
    const RegistryKey& software = KeyAt(file.Root(), {u"SOFTWARE"});
    EXPECT_EQ(software.FindSubKey(u"Old"), nullptr);
    const RegistryKey& keep = *software.FindSubKey(u"Keep");
    ASSERT_EQ(keep.Values().size(), 2u);
    EXPECT_EQ(keep.Values()[0].name, u"b");
    EXPECT_EQ(keep.Values()[1].name, u"c");

    KeyAt(file.Root(), {u"SOFTWARE"}).AddSubKey(u"New");
    const std::string text = Utf8(file.Render()->bytes);
    EXPECT_EQ(text.find("[-"), std::string::npos);
    EXPECT_EQ(text.find("Old"), std::string::npos);
    const RegFile reread = RegFile::Parse(Bytes(text), "HKLM.reg");
    EXPECT_TRUE(SameTree(reread.Root(), file.Root()));
}

TEST(RegFile, NamesCompareWithoutCaseAndKeepTheirFirstSpelling) {
    const RegFile file =
        RegFile::Parse(Bytes("Windows Registry Editor Version 5.00\n"
                             "[HKEY_LOCAL_MACHINE\\Software\\MyApp]\n\"Name\"=\"one\"\n"
                             "[hkey_local_machine\\SOFTWARE\\MYAPP]\n\"NAME\"=\"two\"\n"),
                       "HKLM.reg");
    ASSERT_EQ(file.Root().SubKeys().size(), 1u);
    const RegistryKey& app = KeyAt(file.Root(), {u"SOFTWARE", u"myapp"});
    EXPECT_EQ(app.Name(), u"MyApp");
    EXPECT_EQ(app.Parent()->Name(), u"Software");
    ASSERT_EQ(app.Values().size(), 1u);
    EXPECT_EQ(app.Values()[0].name, u"Name");
    EXPECT_EQ(app.FindValue(u"nAmE")->AsString(), u"two");
}

TEST(RegFile, TheRootMayHoldValues) {
    RegFile file = RegFile::Parse(
        Bytes("Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE]\n\"v\"=dword:1\n"),
        "HKLM.reg");
    EXPECT_EQ(file.Root().FindValue(u"v")->AsDword(), 1u);
    file.Root().AddSubKey(u"SOFTWARE");
    const RegFile reread = RegFile::Parse(file.Render()->bytes, "HKLM.reg");
    EXPECT_TRUE(SameTree(reread.Root(), file.Root()));
}

TEST(RegFile, NewFilesAreUtf16WithCrlfLikeRegedit) {
    RegFile file = RegFile::New();
    file.Root().AddSubKey(u"SOFTWARE").SetValue(u"v", RegValue::String(u"x"));
    const auto bytes = file.Render()->bytes;
    EXPECT_EQ(Utf16(bytes),
              u"Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE]\r\n"
              u"\"v\"=\"x\"\r\n\r\n");
    EXPECT_EQ(bytes[0], std::byte{0xFF});
    EXPECT_EQ(bytes[1], std::byte{0xFE});
}

TEST(RegFile, ABlockWithoutFinalLineBreakIsEndedBeforeANewKey) {
    RegFile file = RegFile::Parse(
        Bytes("Windows Registry Editor Version 5.00\n[HKEY_LOCAL_MACHINE\\SOFTWARE]"), "HKLM.reg");
    KeyAt(file.Root(), {u"SOFTWARE"}).AddSubKey(u"X");
    EXPECT_EQ(Utf8(file.Render()->bytes),
              "Windows Registry Editor Version 5.00\n[HKEY_LOCAL_MACHINE\\SOFTWARE]\n"
              "[HKEY_LOCAL_MACHINE\\SOFTWARE\\X]\n\n");
}

TEST(RegFile, AFileEndingBetweenCrAndLfGetsItsLf) {
    RegFile file = RegFile::Parse(
        Bytes("Windows Registry Editor Version 5.00\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE]\r"),
        "HKLM.reg");
    KeyAt(file.Root(), {u"SOFTWARE"}).AddSubKey(u"X");
    EXPECT_EQ(Utf8(file.Render()->bytes),
              "Windows Registry Editor Version 5.00\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE]\r\n"
              "[HKEY_LOCAL_MACHINE\\SOFTWARE\\X]\r\n\r\n");
}

TEST(RegFile, NamesTheFileCannotHoldMakeRenderingFail) {
    RegFile withBreak = RegFile::New();
    withBreak.Root().AddSubKey(u"SOFTWARE").AddSubKey(u"two\nlines");
    EXPECT_FALSE(withBreak.Render());
    RegFile valueName = RegFile::New();
    RegistryKey& software = valueName.Root().AddSubKey(u"SOFTWARE");
    software.SetValue(u"a\rb", RegValue::Dword(1));
    software.SetEdited(true);
    EXPECT_FALSE(valueName.Render());
    RegFile utf8 = RegFile::Parse(Bytes("Windows Registry Editor Version 5.00\n"), "HKLM.reg");
    utf8.Root().AddSubKey(u"SOFTWARE").AddSubKey(u"\xD800");
    EXPECT_FALSE(utf8.Render());
}

TEST(RegFile, AdoptedRenderingIsKeptByLaterRenderings) {
    RegFile file = RegFile::Parse(Utf16LeWithBom(kExport), "HKLM.reg");
    KeyAt(file.Root(), {u"SOFTWARE"}).AddSubKey(u"First");
    auto first = file.Render();
    const auto firstBytes = first->bytes;
    file.Adopt(std::move(*first));
    EXPECT_EQ(file.Render()->bytes, firstBytes);
    KeyAt(file.Root(), {u"SYSTEM"}).AddSubKey(u"Second");
    const std::u16string text = Utf16(file.Render()->bytes);
    EXPECT_EQ(text.substr(0, Utf16(firstBytes).size()), Utf16(firstBytes));
}

struct BadFile {
    const char* text;
    int line;
    const char* messagePart;
};

class MalformedRegFiles : public ::testing::TestWithParam<BadFile> {};

TEST_P(MalformedRegFiles, NameTheFileAndLine) {
    const BadFile& bad = GetParam();
    for (const bool utf16 : {false, true}) {
        const auto bytes = utf16 ? Utf16LeWithBom(qm::from_utf8(bad.text)) : Bytes(bad.text);
        try {
            RegFile::Parse(bytes, "/m/registry/HKLM.reg");
            FAIL() << "accepted: " << bad.text;
        } catch (const MachineError& error) {
            EXPECT_EQ(error.file(), "/m/registry/HKLM.reg");
            EXPECT_EQ(error.line(), bad.line) << error.what();
            EXPECT_NE(std::string(error.what()).find(bad.messagePart), std::string::npos)
                << error.what();
        }
    }
}

#define HDR "Windows Registry Editor Version 5.00\r\n\r\n"
INSTANTIATE_TEST_SUITE_P(
    Malformed, MalformedRegFiles,
    ::testing::Values(
        BadFile{"", 1, "empty"},
        BadFile{"REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE]\r\n", 1, "REGEDIT4"},
        BadFile{"Windows Registry Editor Version 4.00\r\n", 1, "not a .reg file"},
        BadFile{HDR "\"v\"=\"x\"\r\n", 3, "before any [key]"},
        BadFile{HDR "[HKEY_CURRENT_USER\\Software]\r\n", 3, "HKEY_CURRENT_USER"},
        BadFile{HDR "[HKLM\\Software]\r\n", 3, "not \"HKLM\""},
        BadFile{HDR "[HKEY_LOCAL_MACHINE\\SOFTWARE\r\n", 3, "must end with ']'"},
        BadFile{HDR "[HKEY_LOCAL_MACHINE\\SOFTWARE\\\\X]\r\n", 3, "empty key name"},
        BadFile{HDR "[-HKEY_LOCAL_MACHINE]\r\n", 3, "cannot be deleted"},
        BadFile{HDR "[-HKEY_LOCAL_MACHINE\\SOFTWARE]\r\n\"v\"=\"x\"\r\n", 4, "[-key] deletion"},
        BadFile{HDR "[HKEY_LOCAL_MACHINE\\SOFTWARE]\r\n\"a\"=\"ok\"\r\n\"b\"=\"C:\\x\"\r\n", 5,
                "bad escape"},
        BadFile{HDR "[HKEY_LOCAL_MACHINE\\SOFTWARE]\r\n\"b\"=hex:01,02,\\\r\n  03,4\r\n", 5,
                "two hex digits"},
        BadFile{HDR "[HKEY_LOCAL_MACHINE\\SOFTWARE]\r\n\"b\"=hex:01,\\\r\n", 4,
                "past the end of the file"},
        BadFile{HDR "[HKEY_LOCAL_MACHINE\\SOFTWARE]\r\n\"b\"=text\r\n", 4, "unknown value syntax"},
        BadFile{HDR "[HKEY_LOCAL_MACHINE\\SOFTWARE]\r\nstray words\r\n", 4, "unexpected text"},
        BadFile{HDR "[HKEY_LOCAL_MACHINE\\SOFT\rWARE]\r\n", 3, "carriage return"}));
#undef HDR

TEST(RegFile, KeyNamesLongerThan255CharactersAreRefused) {
    const std::string name(256, 'k');
    EXPECT_THROW(
        RegFile::Parse(
            Bytes("Windows Registry Editor Version 5.00\n[HKEY_LOCAL_MACHINE\\" + name + "]\n"),
            "HKLM.reg"),
        MachineError);
    EXPECT_NO_THROW(
        RegFile::Parse(Bytes("Windows Registry Editor Version 5.00\n[HKEY_LOCAL_MACHINE\\" +
                             name.substr(1) + "]\n"),
                       "HKLM.reg"));
}

TEST(RegFile, KeysDeeperThanTheRegistryAllowsAreRefused) {
    std::string path = "[HKEY_LOCAL_MACHINE";
    for (int i = 0; i < kMaxKeyDepth + 1; ++i) {
        path += "\\k";
    }
    EXPECT_THROW(
        RegFile::Parse(Bytes("Windows Registry Editor Version 5.00\n" + path + "]\n"), "HKLM.reg"),
        MachineError);
}

struct BadEncoding {
    std::vector<std::byte> bytes;
    int line;
    const char* messagePart;
};

TEST(RegFile, BrokenEncodingsNameTheLine) {
    auto truncated =
        Utf16LeWithBom(u"Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL_MACHINE]");
    truncated.pop_back();
    auto bigEndian = Bytes("\xFE\xFF");
    const std::vector<BadEncoding> cases = {
        {truncated, 3, "middle of a character"},
        {Bytes("Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\S\xC3]\n"), 3,
         "not valid UTF-8"},
        {Bytes("\xEF\xBB\xBFWindows Registry Editor Version 5.00\n\xFF"), 2, "not valid UTF-8"},
        {bigEndian, 1, "big-endian"},
    };
    for (const auto& bad : cases) {
        try {
            RegFile::Parse(bad.bytes, "HKLM.reg");
            FAIL() << bad.messagePart;
        } catch (const MachineError& error) {
            EXPECT_EQ(error.line(), bad.line) << error.what();
            EXPECT_NE(std::string(error.what()).find(bad.messagePart), std::string::npos)
                << error.what();
        }
    }
}

}  // namespace
}  // namespace webrig::sim
