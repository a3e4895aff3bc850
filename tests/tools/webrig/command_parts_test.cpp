// The parts of the command that have no command of their own: the diff, text substitution, the
// run's output and the place of a load failure.

#include <gtest/gtest.h>

#include <sstream>

#include "command_host.h"
#include "file_diff.h"
#include "load_failure.h"
#include "run_output.h"
#include "testing/temp_folder.h"

namespace webrig::cli {
namespace {

TEST(FileDiffTest, ShowsOnlyTheChangedLinesWithThreeOfContext) {
    const std::string before = "a\r\nb\r\nc\r\nd\r\ne\r\nf\r\ng\r\nh\r\n";
    const std::string after = "a\r\nb\r\nc\r\nd\r\nE\r\nf\r\ng\r\nh\r\n";
    EXPECT_EQ(UnifiedDiff("x.config", &before, &after),
              "--- a/x.config\n+++ b/x.config\n@@ -2,7 +2,7 @@\n b\n c\n d\n-e\n+E\n f\n g\n h\n");
    EXPECT_EQ(UnifiedDiff("x.config", &before, &before), "");
    const std::string added = "new\n";
    EXPECT_EQ(UnifiedDiff("n.txt", nullptr, &added),
              "--- /dev/null\n+++ b/n.txt\n@@ -0,0 +1,1 @@\n+new\n");
    // A .reg file in UTF-16LE is compared as text; other bytes with zeros are binary.
    const std::string reg1(
        "\xFF\xFE"
        "a\0\n\0",
        6);
    const std::string reg2(
        "\xFF\xFE"
        "b\0\n\0",
        6);
    EXPECT_EQ(UnifiedDiff("HKLM.reg", &reg1, &reg2),
              "--- a/HKLM.reg\n+++ b/HKLM.reg\n@@ -1,1 +1,1 @@\n-a\n+b\n");
    const std::string key1("\x01\x00", 2);
    const std::string key2("\x02\x00", 2);
    EXPECT_EQ(UnifiedDiff("k.bin", &key1, &key2), "Binary files a/k.bin and b/k.bin differ\n");
}

TEST(SubstitutePropertiesTest, ReplacesPropertiesAsTheEngineFormatsText) {
    const std::map<qm::wstring, qm::wstring> properties = {{u"DIR", u"C:\\shop\\"},
                                                           {u"PORT", u"8080"}};
    const std::vector<std::pair<qm::wstring, qm::wstring>> cases = {
        {u"[DIR]wwwroot", u"C:\\shop\\wwwroot"},
        {u"[PORT]:[PORT]", u"8080:8080"},
        {u"[UNSET]x", u"x"},
        {u"[\\[]DIR]", u"[DIR]"},
        {u"[%TEMP] [#file] [", u"[%TEMP] [#file] ["},
        {u"[]", u"[]"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(SubstituteProperties(text, properties), expected) << qm::to_utf8(text);
    }
}

TEST(RunOutputTest, MasksSecretsAndExplainsStatusesInEveryLine) {
    testing::TempFolder temp;
    const std::string log = (temp.path() / "run.log").string();
    std::ostringstream out;
    {
        RunOutput output(out, {true, false, log, {u"Sekr3t"}});
        const std::unique_ptr<IIISEvent> sink = output.MakeSink();
        sink->LogMessage(u"SetPassword Sekr3t failed: -1322");
        sink->ShowProgress(u"Creating site Shop");
        sink->ShowProgress(u"Creating site Shop");
        sink->ReportError(u"IIS Admin Service is disabled", -1108);
        EXPECT_EQ(sink->CheckCancel(), 0);
    }
    const std::string shown = out.str();
    EXPECT_EQ(shown,
              "  SetPassword ******** failed: -1322 [-1322: a virtual directory's or website's "
              "ItemType is empty or missing]\n"
              "progress: Creating site Shop\n"
              "error: IIS Admin Service is disabled: -1108 (the IIS Admin Service is disabled)\n");
    std::ifstream in(log);
    const std::string written((std::istreambuf_iterator<char>(in)), {});
    EXPECT_EQ(written.find("Sekr3t"), std::string::npos);
    EXPECT_NE(written.find("error: IIS Admin Service is disabled"), std::string::npos);
    EXPECT_EQ(DescribeStatus(static_cast<int32_t>(0x80070003)), "-2147024893 (HRESULT 0x80070003)");
}

TEST(LoadFailureTest, NamesTheSectionAndKeyTheLoaderStopsAt) {
    const std::string lists = "[Components]\nCount=1\nc1=W\n[W_VRoots]\nCount=1\nv1=V\n";
    const std::string vroot = "[V]\nQMIISCommon=K\nParentSite=S\nDisplayName=d\nItemType=2\n";
    const struct {
        std::string text;
        int32_t status;
        std::string section;
        std::string key;
    } cases[] = {
        {"[Components]\nCount=2\nc1=W\n", -1301, "Components", "c2"},
        {lists, -1212, "V", "QMIISCommon"},
        {lists + vroot, -1203, "V", "RootDir"},
        {lists + vroot + "RootDir=C:\\x\nSessionTimeout=\n", -1306, "V", "SessionTimeout"},
        {lists + vroot + "RootDir=C:\\x\nMimeMapCount=1\nmm1=M\n[M]\nExtension=.x\n", -1230, "M",
         "Type"},
        {lists + vroot + "RootDir=C:\\x\nParent=Website_P\n[Website_P]\nItemType=1\n", -1203,
         "Website_P", "RootDir"},
        {"[Components]\nCount=1\nc1=W\n[W_AppPools]\nCount=1\na1=P\n[P]\nName=\n", -1217, "P",
         "Name"},
        {"[ProgressMessages]\nPROGMSG_IIS_REMOVESITE=\n", -1311, "ProgressMessages",
         "PROGMSG_IIS_REMOVESITE"},
    };
    for (const auto& c : cases) {
        const auto file = settings::SettingsFile::ParseText(qm::from_utf8(c.text));
        const std::optional<LoadFailure> failure = LocateLoadFailure(file);
        ASSERT_TRUE(failure.has_value()) << c.text;
        EXPECT_EQ(failure->status, c.status) << c.text;
        EXPECT_EQ(failure->section, c.section);
        EXPECT_EQ(failure->key, c.key);
    }
    EXPECT_FALSE(LocateLoadFailure(settings::SettingsFile::ParseText(
                                       qm::from_utf8(lists + vroot + "RootDir=C:\\x\n")))
                     .has_value());
}

}  // namespace
}  // namespace webrig::cli
