#include "testing/generated_project.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/sim/text/windows_1252.h"
#include "settings/password_scrambling.h"
#include "settings/settings_file.h"
#include "support/decimal.h"
#include "testing/settings_file_builder.h"

namespace webrig::testing {
namespace {

using settings::SettingsFile;

qm::wstring W(const std::string& ascii) {
    return qm::widen_ascii(ascii);
}

// Every section a loader reaches from "Components", in reading order.
std::vector<qm::wstring> ReachableSections(const SettingsFile& file) {
    std::vector<qm::wstring> sections = {u"GlobalOptions", u"Components", u"FeatureComponents",
                                         u"ProgressMessages", u"UninstallProps"};
    const int components = qm::read_decimal(file.Find(u"Components", u"Count").value());
    for (int c = 1; c <= components; ++c) {
        const qm::wstring name(file.Find(u"Components", W("c" + std::to_string(c))).value());
        const std::pair<const char16_t*, const char*> lists[] = {{u"_VRoots", "v"},
                                                                 {u"_AppPools", "a"},
                                                                 {u"_WebServiceExtensions", "w"},
                                                                 {u"_WebSites", "ws"}};
        for (const auto& [suffix, prefix] : lists) {
            const qm::wstring list = name + suffix;
            sections.push_back(list);
            const int count = qm::read_decimal(file.Find(list, u"Count").value());
            for (int i = 1; i <= count; ++i) {
                const qm::wstring item(file.Find(list, W(prefix + std::to_string(i))).value());
                sections.push_back(item);
                const std::pair<const char*, const char*> countedLists[] = {
                    {"MetaDataPropCount", "mdp"}, {"AppMapCount", "a"}, {"MimeMapCount", "mm"}};
                for (const auto& [countKey, entryPrefix] : countedLists) {
                    const auto countValue = file.Find(item, W(countKey));
                    const int n = countValue ? qm::read_decimal(*countValue) : 0;
                    for (int k = 1; k <= n; ++k) {
                        sections.emplace_back(
                            file.Find(item, W(entryPrefix + std::to_string(k))).value());
                    }
                }
                if (const auto parent = file.Find(item, u"Parent")) {
                    sections.emplace_back(*parent);
                }
            }
        }
    }
    return sections;
}

TEST(GeneratedProject, EveryReferencedSectionExistsAndHoldsItsRequiredKeys) {
    const SettingsFile file = SettingsFile::ParseText(GenerateProject(3).Text());
    const std::vector<qm::wstring> sections = ReachableSections(file);
    // 5 global, then per component 4 lists, 1 vroot + 1 meta + 2 maps + 2 mimes + parent site,
    // 1 pool, 1 extension, 1 website.
    EXPECT_EQ(sections.size(), 5u + 3u * (4 + 7 + 3));
    for (const qm::wstring& section : sections) {
        EXPECT_TRUE(file.HasSection(section)) << qm::to_utf8(section);
    }
    for (const char16_t* key :
         {u"QMIISCommon", u"ParentSite", u"DisplayName", u"ItemType", u"RootDir", u"Parent"}) {
        EXPECT_TRUE(file.Find(u"VRoot_Component2", key).has_value()) << qm::to_utf8(key);
    }
    EXPECT_EQ(file.Find(u"Website_Parent_Component2", u"IsComponentBased"), qm::wstring_view(u"0"));
    EXPECT_EQ(file.Find(u"Site_Component2", u"IsComponentBased"), qm::wstring_view(u"1"));
    EXPECT_EQ(file.Entries(u"ProgressMessages").size(), 21u);
    EXPECT_EQ(file.Entries(u"AppPool_Component3").size(), 17u);
}

TEST(GeneratedProject, LinesStayUnder200Characters) {
    const qm::wstring text = GenerateProject(10000).Text();
    size_t longest = 0;
    for (size_t start = 0, end = 0; start < text.size(); start = end + 2) {
        end = text.find(u"\r\n", start);
        ASSERT_NE(end, qm::wstring::npos);
        longest = std::max(longest, end - start);
    }
    EXPECT_LT(longest, 200u);
    EXPECT_GT(longest, 100u);
}

TEST(GeneratedProject, ReadsTheSameInEveryEncodingAndLineEnding) {
    const SettingsFileBuilder project = GenerateProject(2);
    const SettingsFile reference = SettingsFile::ParseText(project.Text());
    const std::vector<qm::wstring> sections = ReachableSections(reference);
    sim::Windows1252 ansi;
    for (const SettingsEncoding encoding :
         {SettingsEncoding::Utf16LeWithBom, SettingsEncoding::Utf16Le,
          SettingsEncoding::Windows1252}) {
        for (const LineEnding ending : {LineEnding::CrLf, LineEnding::Lf}) {
            const SettingsFile file = SettingsFile::Parse(project.Bytes(encoding, ending), ansi);
            for (const qm::wstring& section : sections) {
                EXPECT_EQ(file.Entries(section), reference.Entries(section))
                    << qm::to_utf8(section) << " encoding " << static_cast<int>(encoding)
                    << " ending " << static_cast<int>(ending);
            }
            EXPECT_EQ(settings::DescramblePassword(
                          file.Find(u"AppPool_Component1", u"UserPassword").value(), ansi),
                      kGeneratedPassword);
        }
    }
}

struct RefusalCase {
    const char* label;
    qm::wstring section;
    qm::wstring name;
    qm::wstring value;
    SettingsEncoding encoding;
    LineEnding ending;
};

TEST(SettingsFileBuilder, RefusesTextTheGrammarWouldNotReadBack) {
    const RefusalCase cases[] = {
        {"] in a section name", u"a]b", u"k", u"v", SettingsEncoding::Utf16Le, LineEnding::CrLf},
        {"= in a name", u"S", u"k=", u"v", SettingsEncoding::Utf16Le, LineEnding::CrLf},
        {"name read as a comment", u"S", u";k", u"v", SettingsEncoding::Utf16Le, LineEnding::CrLf},
        {"name with a trailing blank", u"S", u"k ", u"v", SettingsEncoding::Utf16Le,
         LineEnding::CrLf},
        {"value with a trailing tab", u"S", u"k", u"v\t", SettingsEncoding::Utf16Le,
         LineEnding::CrLf},
        {"value with a CR", u"S", u"k", u"a\rb", SettingsEncoding::Utf16Le, LineEnding::CrLf},
        {"value with a LF in an LF file", u"S", u"k", u"a\nb", SettingsEncoding::Utf16Le,
         LineEnding::Lf},
        {"character outside Windows-1252", u"S", u"k", u"\x0416", SettingsEncoding::Windows1252,
         LineEnding::CrLf},
        {"U+008A has no Windows-1252 byte", u"S", u"k", u"\x008A", SettingsEncoding::Windows1252,
         LineEnding::CrLf},
        {"zero in a Windows-1252 file", u"S", u"k", qm::wstring(u"\0", 1),
         SettingsEncoding::Windows1252, LineEnding::CrLf},
    };
    for (const RefusalCase& test : cases) {
        EXPECT_THROW(SettingsFileBuilder()
                         .Section(qm::wstring_view(test.section))
                         .Entry(qm::wstring_view(test.name), qm::wstring_view(test.value))
                         .Bytes(test.encoding, test.ending),
                     std::invalid_argument)
            << test.label;
    }
    // The same builder calls succeed for text that reads back.
    EXPECT_NO_THROW(SettingsFileBuilder()
                        .Section(u"S")
                        .Entry(u"k", u"a\nb \x20AC")
                        .Bytes(SettingsEncoding::Windows1252, LineEnding::CrLf));
}

TEST(SettingsFileBuilder, WritesTheChosenEncodingAndLineEnding) {
    SettingsFileBuilder builder;
    builder.Section(u"S").Entry(u"k", u"\x20AC");
    const std::vector<std::byte> ansi =
        builder.Bytes(SettingsEncoding::Windows1252, LineEnding::Lf);
    const std::vector<std::byte> expectedAnsi = {std::byte{'['},  std::byte{'S'}, std::byte{']'},
                                                 std::byte{'\n'}, std::byte{'k'}, std::byte{'='},
                                                 std::byte{0x80}, std::byte{'\n'}};
    EXPECT_EQ(ansi, expectedAnsi);
    const std::vector<std::byte> utf16 = builder.Bytes(SettingsEncoding::Utf16LeWithBom);
    ASSERT_EQ(utf16.size(), 2u + 2u * 10u);
    EXPECT_EQ(utf16[0], std::byte{0xFF});
    EXPECT_EQ(utf16[1], std::byte{0xFE});
    EXPECT_EQ(utf16[2 + 2 * 7], std::byte{0xAC});
    EXPECT_EQ(utf16[2 + 2 * 7 + 1], std::byte{0x20});
    EXPECT_EQ(utf16[2 + 2 * 3], std::byte{'\r'});
    EXPECT_EQ(builder.Bytes(SettingsEncoding::Utf16Le).size(), 2u * 10u);
}

}  // namespace
}  // namespace webrig::testing
