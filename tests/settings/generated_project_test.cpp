// The generated project and the settings-file builder that tests, benchmarks and fuzz seeds rely
// on: what they write must load, and must read back as written.

#include "testing/generated_project.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "platform/sim/text/windows_1252.h"
#include "settings/iis_pro_ini_loader.h"
#include "settings/password_scrambling.h"
#include "settings/settings_file.h"
#include "testing/file_bytes.h"
#include "testing/settings_file_builder.h"
#include "testing/temp_machine.h"

namespace webrig::testing {
namespace {

TEST(GeneratedProject, LoadsWithEveryItemOfEveryComponent) {
    TempMachine temp;
    std::filesystem::create_directories(temp.path() / "drive_c" / "Temp");
    WriteBytes(temp.path() / "drive_c" / "Temp" / "setup.ini",
               GenerateProject(3).Bytes(SettingsEncoding::Utf16LeWithBom));
    CIISPropertyBag bag;
    CIISProIniLoader loader(temp.machine(), u"C:\\Temp\\setup.ini", platform::kNoModule, 0);
    ASSERT_EQ(loader.Load(bag), 0);
    ASSERT_EQ(bag.components.size(), 3u);
    const CIISComponentProp& component = *bag.components.at(u"Component2");
    ASSERT_EQ(component.vroots.size(), 1u);
    const CIISVRootProp& vroot = *component.vroots.begin()->second;
    EXPECT_EQ(vroot.appMaps.size(), 2u);
    EXPECT_EQ(vroot.mimeMaps.size(), 2u);
    EXPECT_EQ(vroot.metaDataProps.size(), 1u);
    EXPECT_EQ(vroot.AnonyPasswrd, kGeneratedPassword);
    EXPECT_EQ(component.appPools.size(), 1u);
    EXPECT_EQ(component.webServiceExtensions.size(), 1u);
    EXPECT_EQ(component.componentWebsites.size(), 1u);
    EXPECT_EQ(bag.websites.size(), 6u);  // each component's own and its vroot's parent
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

TEST(GeneratedProject, ReadsBackAsWrittenInEveryEncodingAndLineEnding) {
    const SettingsFileBuilder project = GenerateProject(2);
    sim::Windows1252 ansi;
    for (const SettingsEncoding encoding :
         {SettingsEncoding::Utf16LeWithBom, SettingsEncoding::Utf16Le,
          SettingsEncoding::Windows1252}) {
        for (const LineEnding ending : {LineEnding::CrLf, LineEnding::Lf}) {
            EXPECT_EQ(settings::DecodeSettingsText(project.Bytes(encoding, ending), ansi),
                      project.Text(ending))
                << static_cast<int>(encoding) << " " << static_cast<int>(ending);
        }
    }
}

TEST(SettingsFileBuilder, RefusesTextTheGrammarWouldNotReadBack) {
    const auto bytes = [](qm::wstring_view section, qm::wstring_view name, qm::wstring_view value,
                          SettingsEncoding encoding = SettingsEncoding::Utf16Le,
                          LineEnding ending = LineEnding::CrLf) {
        return SettingsFileBuilder().Section(section).Entry(name, value).Bytes(encoding, ending);
    };
    EXPECT_THROW(bytes(u"a]b", u"k", u"v"), std::invalid_argument);
    EXPECT_THROW(bytes(u"S", u"k=", u"v"), std::invalid_argument);
    EXPECT_THROW(bytes(u"S", u";k", u"v"), std::invalid_argument);
    EXPECT_THROW(bytes(u"S", u"k", u"v\t"), std::invalid_argument);
    EXPECT_THROW(bytes(u"S", u"k", u"a\rb"), std::invalid_argument);
    EXPECT_THROW(bytes(u"S", u"k", u"a\nb", SettingsEncoding::Utf16Le, LineEnding::Lf),
                 std::invalid_argument);
    EXPECT_THROW(bytes(u"S", u"k", u"\x0416", SettingsEncoding::Windows1252),
                 std::invalid_argument);
    EXPECT_THROW(bytes(u"S", u"k", qm::wstring(u"\0", 1), SettingsEncoding::Windows1252),
                 std::invalid_argument);
    EXPECT_EQ(bytes(u"S", u"k", u"\x20AC", SettingsEncoding::Windows1252, LineEnding::Lf),
              Bytes("[S]\nk=\x80\n"));
    EXPECT_EQ(bytes(u"S", u"k", u"a\nb", SettingsEncoding::Utf16LeWithBom),
              Utf16LeWithBom(u"[S]\r\nk=a\nb\r\n"));
}

}  // namespace
}  // namespace webrig::testing
