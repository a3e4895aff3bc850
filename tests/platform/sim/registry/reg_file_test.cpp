#include "platform/sim/registry/reg_file.h"

#include <gtest/gtest.h>

#include <functional>

#include "platform/sim/machine/machine_error.h"
#include "testing/file_bytes.h"

namespace webrig::sim {
namespace {

using platform::RegValue;
using testing::Bytes;
using testing::Utf16LeWithBom;

// An export as regedit writes it, with a comment and a wrapped hex line.
constexpr char16_t kExport[] =
    u"Windows Registry Editor Version 5.00\r\n"
    u"\r\n"
    u"[HKEY_LOCAL_MACHINE\\SOFTWARE\\Contoso]\r\n"
    u"@=\"default\"\r\n"
    u"\"Blob\"=hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,13,14,15,\\\r\n"
    u"  16,17\r\n"
    u"\"Odd\"=hex(1):41,00\r\n"
    u"\r\n"
    u"; settings of the web server\r\n"
    u"[HKEY_LOCAL_MACHINE\\SOFTWARE\\Contoso\\Web]\r\n"
    u"\"Port\"=dword:00000050\r\n"
    u"\r\n";

const std::string kV5 = "Windows Registry Editor Version 5.00\n";

std::string Utf8(std::span<const std::byte> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

RegistryKey& KeyAt(const RegistryKey& root, std::initializer_list<const char16_t*> path) {
    const RegistryKey* key = &root;
    for (const char16_t* name : path) {
        key = key->FindSubKey(name);
        if (key == nullptr) {
            throw std::runtime_error("missing key");
        }
    }
    return const_cast<RegistryKey&>(*key);
}

std::string Repeat(std::string_view part, int times) {
    std::string text;
    for (int i = 0; i < times; ++i) {
        text += part;
    }
    return text;
}

TEST(RegFile, ReadsRegeditsExport) {
    const RegFile file = RegFile::Parse(Utf16LeWithBom(kExport), "HKLM.reg");
    const RegistryKey& contoso = KeyAt(file.Root(), {u"SOFTWARE", u"Contoso"});
    EXPECT_EQ(contoso.FindValue(u"")->AsString(), u"default");
    const auto& blob = contoso.FindValue(u"Blob")->data;
    ASSERT_EQ(blob.size(), 0x18u);
    EXPECT_EQ(blob.back(), std::byte{0x17});
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
        Bytes(kV5 + "[HKEY_LOCAL_MACHINE\\A]\n\"x\"=\"1\"\n[-HKEY_LOCAL_MACHINE\\A]\n"
                    "[HKEY_LOCAL_MACHINE\\B]\n\"y\"=-\n[HKEY_LOCAL_MACHINE\\B]")};
    for (const auto& bytes : files) {
        EXPECT_EQ(RegFile::Parse(bytes, "HKLM.reg").Render()->bytes, bytes);
    }
}

// A change and the exact text written: only what changed is rewritten, and it reads back as
// the tree.
struct Edit {
    const char* what;
    std::string before;
    std::function<void(RegistryKey& root)> change;
    std::string after;
};

TEST(RegFile, EditsRewriteOnlyWhatChanged) {
    const std::string contoso = "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Contoso";
    const Edit edits[] = {
        {"a changed key is the only block that changes",
         kV5 + "\n; kept\n" + contoso + "\\Web]\n\"Port\"=dword:00000050\n\n" + contoso + "]\n\n",
         [](RegistryKey& root) {
             RegistryKey& web = KeyAt(root, {u"SOFTWARE", u"Contoso", u"Web"});
             web.SetValue(u"Port", RegValue::Dword(8080));
             web.SetValue(u"Host", RegValue::String(u"www"));
             web.SetEdited(true);
         },
         kV5 + "\n; kept\n" + contoso + "\\Web]\n\"Port\"=dword:00001f90\n\"Host\"=\"www\"\n\n" +
             contoso + "]\n\n"},
        {"new keys go after their parent's sub-tree, in tree order; implied keys get no block",
         kV5 + "\n" + contoso + "]\n\n" + contoso + "\\Web]\n\n[HKEY_LOCAL_MACHINE\\SYSTEM]\n\n",
         [](RegistryKey& root) {
             RegistryKey& parent = KeyAt(root, {u"SOFTWARE", u"Contoso"});
             parent.AddSubKey(u"Zeta");
             parent.AddSubKey(u"Alpha").AddSubKey(u"Inner").SetValue(u"v", RegValue::Dword(1));
         },
         kV5 + "\n" + contoso + "]\n\n" + contoso + "\\Web]\n\n" + contoso +
             "\\Alpha\\Inner]\n\"v\"=dword:00000001\n\n" + contoso +
             "\\Zeta]\n\n[HKEY_LOCAL_MACHINE\\SYSTEM]\n\n"},
        {"a deleted key's block goes; its parent, implied before, gets one at the end",
         kV5 + "\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\A\\B]\n\n[HKEY_LOCAL_MACHINE\\SYSTEM]\n\n",
         [](RegistryKey& root) {
             KeyAt(root, {u"SOFTWARE", u"A"}).RemoveSubKey(u"B");
         },
         kV5 + "\n[HKEY_LOCAL_MACHINE\\SYSTEM]\n\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\A]\n\n"},
        {"a key keeps the spelling of its first mention when that mention goes",
         kV5 + "\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\A]\n\n[HKEY_LOCAL_MACHINE\\software\\B]\n\n",
         [](RegistryKey& root) { KeyAt(root, {u"SOFTWARE"}).RemoveSubKey(u"A"); },
         kV5 + "\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\B]\n\n"},
        {"deletion lines are applied when read and dropped when written",
         kV5 + "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Old\\Child]\n\"x\"=\"1\"\n"
               "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Keep]\n\"a\"=\"1\"\n\"b\"=\"2\"\n\"a\"=-\n"
               "[-HKEY_LOCAL_MACHINE\\SOFTWARE\\Old]\n[-HKEY_LOCAL_MACHINE\\SOFTWARE\\Never]\n"
               "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Keep]\n\"c\"=\"3\"\n",
         [](RegistryKey& root) {
             RegistryKey& software = KeyAt(root, {u"SOFTWARE"});
             EXPECT_EQ(software.FindSubKey(u"Old"), nullptr);
             const auto& values = software.FindSubKey(u"Keep")->Values();
             ASSERT_EQ(values.size(), 2u);
             EXPECT_EQ(values[0].name + values[1].name, u"bc");
             software.AddSubKey(u"New");
         },
         kV5 + "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Keep]\n\"b\"=\"2\"\n\"c\"=\"3\"\n\n"
               "[HKEY_LOCAL_MACHINE\\SOFTWARE\\New]\n\n"},
        {"a last block without a line break is ended before a new key",
         kV5 + "[HKEY_LOCAL_MACHINE\\SOFTWARE]",
         [](RegistryKey& root) { KeyAt(root, {u"SOFTWARE"}).AddSubKey(u"X"); },
         kV5 + "[HKEY_LOCAL_MACHINE\\SOFTWARE]\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\X]\n\n"},
        {"a file ending between CR and LF gets its LF",
         "Windows Registry Editor Version 5.00\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE]\r",
         [](RegistryKey& root) { KeyAt(root, {u"SOFTWARE"}).AddSubKey(u"X"); },
         "Windows Registry Editor Version 5.00\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE]\r\n"
         "[HKEY_LOCAL_MACHINE\\SOFTWARE\\X]\r\n\r\n"},
        {"the root may hold values", kV5 + "\n[HKEY_LOCAL_MACHINE]\n\"v\"=dword:1\n",
         [](RegistryKey& root) {
             EXPECT_EQ(root.FindValue(u"v")->AsDword(), 1u);
             root.AddSubKey(u"SOFTWARE");
         },
         kV5 + "\n[HKEY_LOCAL_MACHINE]\n\"v\"=dword:1\n[HKEY_LOCAL_MACHINE\\SOFTWARE]\n\n"},
    };
    for (const Edit& edit : edits) {
        RegFile file = RegFile::Parse(Bytes(edit.before), "HKLM.reg");
        edit.change(file.Root());
        const std::string text = Utf8(file.Render()->bytes);
        EXPECT_EQ(text, edit.after) << edit.what;
        EXPECT_TRUE(SameTree(RegFile::Parse(Bytes(text), "HKLM.reg").Root(), file.Root()))
            << edit.what;
    }
}

TEST(RegFile, NamesCompareWithoutCaseAndKeepTheirFirstSpelling) {
    const RegFile file =
        RegFile::Parse(Bytes(kV5 + "[HKEY_LOCAL_MACHINE\\Software\\MyApp]\n\"Name\"=\"one\"\n"
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

TEST(RegFile, NewFilesAreUtf16WithCrlfLikeRegedit) {
    RegFile file = RegFile::New();
    file.Root().AddSubKey(u"SOFTWARE").SetValue(u"v", RegValue::String(u"x"));
    EXPECT_EQ(file.Render()->bytes,
              Utf16LeWithBom(u"Windows Registry Editor Version 5.00\r\n\r\n"
                             u"[HKEY_LOCAL_MACHINE\\SOFTWARE]\r\n\"v\"=\"x\"\r\n\r\n"));
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
    RegFile utf8 = RegFile::Parse(Bytes(kV5), "HKLM.reg");
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
    file.Root().AddSubKey(u"SYSTEM");
    const auto second = file.Render()->bytes;
    EXPECT_TRUE(std::equal(firstBytes.begin(), firstBytes.end(), second.begin()));
}

void ExpectRefused(const std::vector<std::byte>& bytes, int line, const char* messagePart) {
    try {
        RegFile::Parse(bytes, "/m/registry/HKLM.reg");
        ADD_FAILURE() << "accepted: " << messagePart;
    } catch (const MachineError& error) {
        EXPECT_EQ(error.file(), "/m/registry/HKLM.reg");
        EXPECT_EQ(error.line(), line) << error.what();
        EXPECT_NE(std::string(error.what()).find(messagePart), std::string::npos) << error.what();
    }
}

struct BadFile {
    std::string text;
    int line;
    const char* messagePart;
};

TEST(RegFile, MalformedFilesAreReportedWithTheFileAndLine) {
    const std::string hdr = "Windows Registry Editor Version 5.00\r\n\r\n";
    const std::string software = hdr + "[HKEY_LOCAL_MACHINE\\SOFTWARE]\r\n";
    const BadFile cases[] = {
        {"", 1, "empty"},
        {"REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE]\r\n", 1, "REGEDIT4"},
        {"Windows Registry Editor Version 4.00\r\n", 1, "not a .reg file"},
        {hdr + "\"v\"=\"x\"\r\n", 3, "before any [key]"},
        {hdr + "[HKEY_CURRENT_USER\\Software]\r\n", 3, "HKEY_CURRENT_USER"},
        {hdr + "[HKLM\\Software]\r\n", 3, "not \"HKLM\""},
        {hdr + "[HKEY_LOCAL_MACHINE\\SOFTWARE\r\n", 3, "must end with ']'"},
        {hdr + "[HKEY_LOCAL_MACHINE\\SOFTWARE\\\\X]\r\n", 3, "empty key name"},
        {hdr + "[-HKEY_LOCAL_MACHINE]\r\n", 3, "cannot be deleted"},
        {hdr + "[-HKEY_LOCAL_MACHINE\\SOFTWARE]\r\n\"v\"=\"x\"\r\n", 4, "[-key] deletion"},
        {software + "\"a\"=\"ok\"\r\n\"b\"=\"C:\\x\"\r\n", 5, "bad escape"},
        {software + "\"b\"=hex:01,02,\\\r\n  03,4\r\n", 5, "two hex digits"},
        {software + "\"b\"=hex:01,\\\r\n", 4, "past the end of the file"},
        {software + "\"b\"=text\r\n", 4, "unknown value syntax"},
        {software + "stray words\r\n", 4, "unexpected text"},
        {hdr + "[HKEY_LOCAL_MACHINE\\SOFT\rWARE]\r\n", 3, "carriage return"},
        {hdr + "[HKEY_LOCAL_MACHINE\\" + std::string(256, 'k') + "]\r\n", 3, "longer than 255"},
        {hdr + "[HKEY_LOCAL_MACHINE" + Repeat("\\k", kMaxKeyDepth + 1) + "]\r\n", 3,
         "deeper than 512"},
    };
    for (const BadFile& bad : cases) {
        ExpectRefused(Bytes(bad.text), bad.line, bad.messagePart);
        ExpectRefused(Utf16LeWithBom(qm::from_utf8(bad.text)), bad.line, bad.messagePart);
    }
    auto truncated = Utf16LeWithBom(u"Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL]");
    truncated.pop_back();
    ExpectRefused(truncated, 3, "middle of a character");
    ExpectRefused(Bytes(kV5 + "\n[HKEY_LOCAL_MACHINE\\S\xC3]\n"), 3, "not valid UTF-8");
    ExpectRefused(Bytes("\xEF\xBB\xBF" + kV5 + "\xFF"), 2, "not valid UTF-8");
    ExpectRefused(Bytes("\xFE\xFF"), 1, "big-endian");
}

TEST(RegFile, KeysAtTheLimitsAreAccepted) {
    for (const std::string& key : {"[HKEY_LOCAL_MACHINE\\" + std::string(255, 'k'),
                                   "[HKEY_LOCAL_MACHINE" + Repeat("\\k", kMaxKeyDepth)}) {
        EXPECT_NO_THROW(RegFile::Parse(Bytes(kV5 + key + "]\n"), "HKLM.reg"));
    }
}

}  // namespace
}  // namespace webrig::sim
