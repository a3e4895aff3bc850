// The webrig command's own commands, run as a subprocess: exit codes, machine create and show,
// check and scramble.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <regex>

#include "command_runner.h"
#include "platform/sim/text/windows_1252.h"
#include "settings/password_scrambling.h"
#include "testing/temp_folder.h"

namespace webrig::testing {
namespace {

namespace fs = std::filesystem;

class CommandLineTest : public ::testing::Test {
  protected:
    CommandResult Run(const std::vector<std::string>& args, const std::string& input = {}) {
        return RunWebrig(temp.path(), args, input);
    }
    void Write(const std::string& name, const std::string& text) {
        std::ofstream(temp.path() / name, std::ios::binary) << text;
    }
    TempFolder temp;
};

struct ExitCase {
    std::vector<std::string> args;
    int exitCode;
    std::string message;  // in standard output or error
};

TEST_F(CommandLineTest, EachRefusalHasItsExitCodeAndSaysWhy) {
    Write("bad.ini",
          "[Components]\r\nCount=1\r\nc1=Web\r\n[Web_VRoots]\r\nCount=1\r\nv1=V\r\n"
          "[V]\r\nQMIISCommon=K\r\nParentSite=S\r\nDisplayName=d\r\nRootDir=C:\\x\r\n");
    const std::vector<ExitCase> cases = {
        {{"--version"}, 0, "webrig 0.1.0"},
        {{}, 2, "subcommand"},
        {{"machine", "create", "m", "--iis", "6"}, 2, "metabase"},
        {{"machine", "create", "m", "--iis", "9"}, 2, "7.5, 8.5 or 10"},
        {{"machine", "create", "m", "--arch", "arm"}, 2, "x86 or x64"},
        {{"machine", "create", "m", "--os", "ten"}, 2, "Windows version"},
        {{"machine", "show", "nowhere"}, 2, "webrig machine create nowhere"},
        {{"install", Example("simple-site.ini"), "--machine", "nowhere"}, 2, "create one"},
        {{"install", "missing.ini"}, 2, "no settings file missing.ini"},
        {{"install", Example("simple-site.ini"), "--property", "NOVALUE"}, 2, "NAME=VALUE"},
        {{"uninstall", "--machine", "m"}, 2, "--journal"},
        {{"uninstall", "--journal", "missing.journal"}, 2, "cannot read the journal"},
        {{"check", "bad.ini"}, 2, "-1322"},
        {{"check", "bad.ini"}, 2, "in section [V] the key \"ItemType\" is missing"},
    };
    for (const ExitCase& c : cases) {
        const CommandResult result = Run(c.args);
        const std::string shown = result.out + result.err;
        EXPECT_EQ(result.exitCode, c.exitCode) << shown;
        EXPECT_NE(shown.find(c.message), std::string::npos) << shown;
    }
    // A refused machine leaves nothing behind.
    EXPECT_FALSE(fs::exists(temp.path() / "m"));
    EXPECT_EQ(std::distance(fs::directory_iterator(temp.path()), fs::directory_iterator()), 1);
}

TEST_F(CommandLineTest, MachineShowDescribesTheStockMachine) {
    ASSERT_EQ(Run({"machine", "create", "m"}).exitCode, 0);
    const CommandResult text = Run({"machine", "show", "m"});
    EXPECT_EQ(text.exitCode, 0);
    for (const char* line :
         {"Windows 10.0.20348 x64, IIS 10.0",
          "  Default Web Site (id 1)\n    binding http *:80:\n"
          "    application / (pool DefaultAppPool)\n"
          "      virtual directory / -> "
          "%SystemDrive%\\inetpub\\wwwroot",
          "DefaultAppPool: identity ApplicationPoolIdentity, runtime v4.0, pipeline Integrated"}) {
        EXPECT_NE(text.out.find(line), std::string::npos) << text.out;
    }
    ASSERT_EQ(Run({"machine", "create", "old", "--iis", "7.5", "--os", "6.1.7601", "--arch", "x86"})
                  .exitCode,
              0);
    const nlohmann::json json =
        nlohmann::json::parse(Run({"machine", "show", "old", "--json"}).out);
    EXPECT_EQ(json["iis"], "7.5");
    EXPECT_EQ(json["windows"], "6.1.7601");
    EXPECT_EQ(json["architecture"], "x86");
    EXPECT_EQ(json["sites"][0]["bindings"][0]["bindingInformation"], "*:80:");
    EXPECT_EQ(json["applicationPools"][0]["managedRuntimeVersion"], "v2.0");
    // A second create on the same folder is refused and changes nothing.
    const std::string before = ReadText(temp.path() / "m" / "registry" / "HKLM.reg");
    EXPECT_EQ(Run({"machine", "create", "m", "--iis", "8.5"}).exitCode, 2);
    EXPECT_EQ(ReadText(temp.path() / "m" / "registry" / "HKLM.reg"), before);
}

TEST_F(CommandLineTest, AMachineFromARealServersFileKeepsItByteForByte) {
    const fs::path sample = fs::path(std::getenv("WEBRIG_TEST_DATA")) / "iis-samples" /
                            "iis10-reverse-proxy.applicationHost.config";
    ASSERT_EQ(Run({"machine", "create", "m", "--apphost", sample.string()}).exitCode, 0);
    const fs::path file =
        temp.path() / "m/drive_c/Windows/System32/inetsrv/config/applicationHost.config";
    EXPECT_EQ(ReadText(file), ReadText(sample));

    // A file the configuration system cannot read is refused with its line; nothing is made.
    std::string broken = ReadText(sample);
    broken.insert(broken.find("<sites>"), "<sites\n");
    Write("broken.config", broken);
    const CommandResult refused = Run({"machine", "create", "b", "--apphost", "broken.config"});
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_NE(refused.err.find("broken.config cannot be used"), std::string::npos);
    EXPECT_TRUE(
        std::regex_search(refused.err, std::regex(R"(applicationHost\.config\([0-9]+\): )")))
        << refused.err;
    EXPECT_FALSE(fs::exists(temp.path() / "b"));
}

struct WarningCase {
    std::string name;
    std::string from;  // replaced in simple-site.ini
    std::string to;
    std::string warning;
    std::string from2 = {};  // and a second change
    std::string to2 = {};
};

TEST_F(CommandLineTest, CheckWarnsAboutWhatLoadsButWillNotWork) {
    const std::string simple = ReadText(Example("simple-site.ini"));
    const std::string pool = "[Web_AppPools]\nActionState=3\nCount=1\na1=Pool\n";
    const std::vector<WarningCase> cases = {
        {"clean", "", "", ""},
        {"no parent site", "ParentSite=SimpleSite", "ParentSite=Elsewhere",
         "[VRoot_Catalog] \"ParentSite\" names the website \"Elsewhere\""},
        {"bracketed property", "Port=8080", "Port=8080\nSiteNumberProperty=[SITE]",
         "[Site_Simple] \"SiteNumberProperty\" \"[SITE]\" is used as it stands"},
        {"empty property", "Port=8080",
         "Port=8080\nSiteNumberProperty=", "[Site_Simple] \"SiteNumberProperty\" is empty"},
        {"no product code",
         "ProductCode=", "Product=", "[Site_Simple] \"SiteNumberProperty\" needs a \"ProductCode\"",
         "Port=8080", "Port=8080\nSiteNumberProperty=SITE"},
        {"open password", "DefDoc=index.html\n\n; The", "AnonyPasswrd=Tr0ub4dor\n; The",
         "[Site_Simple] \"AnonyPasswrd\" is not scrambled"},
        {"unknown pool", "AppPool=DefaultAppPool\nDefDoc", "AppPool=Missing\nDefDoc",
         "[Site_Simple] \"AppPool\" names the application pool \"Missing\", which no component"},
        {"queue limit", "[Web_AppPools]\nActionState=3\nCount=0\n",
         pool + "[Pool]\nName=P\nRecycleTimes=\n", "[Pool] no \"QueueLimit\""},
        {"schedule", "[Web_AppPools]\nActionState=3\nCount=0\n",
         pool + "[Pool]\nName=P\nQueueLimit=1000\n", "[Pool] no \"RecycleTimes\""},
        {"nested", "DisplayName=catalog\nItemType=2", "DisplayName=shop\\catalog\nItemType=1",
         "[VRoot_Catalog] the nested virtual directory \"shop\\catalog\""},
        {"same binding", "[VRoot_Catalog]",
         "[Web_WebSites]\nCount=2\nws1=Site_Simple\nws2=Site_Twin\n[Site_Twin]\nQMIISCommon=Twin\n"
         "ItemType=1\nRootDir=C:\\twin\nPort=8080\n[VRoot_Catalog]",
         "[Site_Twin] the website has the same port 8080"},
    };
    for (const WarningCase& c : cases) {
        std::string text = simple;
        for (const auto& [from, to] : {std::pair(c.from, c.to), std::pair(c.from2, c.to2)}) {
            if (!from.empty()) {
                const size_t at = text.find(from);
                ASSERT_NE(at, std::string::npos) << c.name;
                text.replace(at, from.size(), to);
            }
        }
        Write("case.ini", text);
        const CommandResult result = Run({"check", "case.ini"});
        EXPECT_EQ(result.exitCode, 0) << c.name << result.err;
        if (c.warning.empty()) {
            EXPECT_NE(result.out.find("warnings 0"), std::string::npos) << result.out;
        } else {
            EXPECT_NE(result.out.find("warning: case.ini: " + c.warning), std::string::npos)
                << c.name << "\n"
                << result.out;
            EXPECT_NE(result.out.find("warnings 1\n"), std::string::npos) << c.name << result.out;
        }
        EXPECT_EQ(result.out.find("Tr0ub4dor"), std::string::npos);
    }
}

TEST_F(CommandLineTest, ScrambleGivesWhatTheLoaderDescrambles) {
    sim::Windows1252 ansi;
    for (const std::string password : {"P@ssw0rd!", "x", "Grüße"}) {
        const CommandResult text = Run({"scramble"}, password + "\n");
        ASSERT_EQ(text.exitCode, 0);
        ASSERT_FALSE(text.out.empty());
        EXPECT_EQ(text.out.find(password), std::string::npos);
        const qm::wstring value = qm::from_utf8(text.out.substr(0, text.out.size() - 1));
        EXPECT_EQ(qm::to_utf8(settings::DescramblePassword(value, ansi)), password);

        const CommandResult bytes = Run({"scramble", "--utf16le"}, password);
        ASSERT_EQ(bytes.out.size(), value.size() * 2);
        EXPECT_EQ(static_cast<unsigned char>(bytes.out[2]), value[1] & 0xFF);
    }
    EXPECT_EQ(Run({"scramble"}).exitCode, 2);
}

}  // namespace
}  // namespace webrig::testing
