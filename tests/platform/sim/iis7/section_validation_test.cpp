// Reading a section is as strict as IIS: what the files hold for it must be what the schema
// describes; the refusal names the file and line, and only that section is refused.

#include "platform/sim/iis7/section_validation.h"

#include <gtest/gtest.h>

#include "platform/sim/machine/machine_layout.h"
#include "testing/case_name.h"
#include "testing/iis_config_machine.h"
#include "testing/temp_machine.h"

namespace webrig::sim::iis7 {
namespace {

using testing::IisConfigMachine;
using testing::SchemaSource;

constexpr std::u16string_view kAppHost = testing::kAppHostPath;
constexpr char kAppHostName[] = "C:\\Windows\\System32\\inetsrv\\config\\applicationHost.config";

struct Refusal {
    const char* what;
    const char16_t* section;
    const char* anchor;   // a line of the test file that the case replaces
    const char* written;  // what the file holds instead
    const char* message;
};

class Refusals : public ::testing::TestWithParam<Refusal> {};

TEST_P(Refusals, NameTheFileAndLineAndSpareOtherSections) {
    const Refusal& want = GetParam();
    std::string text = testing::TestAppHostConfig();
    const size_t at = text.find(want.anchor);
    ASSERT_NE(at, std::string::npos);
    text.replace(at, std::string_view(want.anchor).size(), want.written);
    IisConfigMachine machine(text, SchemaSource::schemaFolder);
    auto manager = machine.NewManager();
    std::shared_ptr<platform::ConfigElement> section;
    EXPECT_EQ(manager->GetAdminSection(want.section, kAppHost, section), qm::hr::invalid_data);
    const size_t line = 1 + std::count(text.begin(), text.begin() + at, '\n');
    EXPECT_EQ(qm::to_utf8(manager->LastErrorDescription()),
              std::string(kAppHostName) + "(" + std::to_string(line) + "): " + want.message);
    EXPECT_EQ(manager->GetAdminSection(u"system.webServer/asp", kAppHost, section), 0);
}

constexpr const char16_t* kPools = u"system.applicationHost/applicationPools";
constexpr const char16_t* kBrowse = u"system.webServer/directoryBrowse";
constexpr const char16_t* kDocuments = u"system.webServer/defaultDocument";
constexpr const char* kPool = R"(<add name="DefaultAppPool" />)";

INSTANTIATE_TEST_SUITE_P(
    AsIis, Refusals,
    ::testing::Values(
        Refusal{"attributeInAnotherCase", kBrowse, R"(<directoryBrowse enabled="false" />)",
                R"(<directoryBrowse Enabled="false" />)",
                "Unrecognized attribute 'Enabled'. Note that attribute names are case-sensitive."},
        Refusal{"unknownElement", kDocuments, R"(<add value="index.html" />)",
                R"(<add value="index.html" /><default value="x" />)",
                "Unrecognized element 'default'"},
        Refusal{"removeWithMoreThanTheKey", kDocuments, R"(<add value="index.html" />)",
                R"(<remove value="x" enabled="true" />)",
                "Unrecognized attribute 'enabled'. Note that attribute names are case-sensitive."},
        Refusal{"clearWhereNone", kPools, kPool, R"(<clear />)", "Unrecognized element 'clear'"},
        Refusal{"bool", kBrowse, R"(<directoryBrowse enabled="false" />)",
                R"(<directoryBrowse enabled="yes" />)", "Boolean value must be 'true' or 'false'"},
        Refusal{"enum", kPools, kPool, R"(<add name="p" managedPipelineMode="Klassic" />)",
                "Enum must be one of Integrated, Classic"},
        Refusal{"flags", kBrowse, R"(<directoryBrowse enabled="false" />)",
                R"(<directoryBrowse showFlags="Date, Colour" />)",
                "Flags must be some combination of None, Date, Time, Size, Extension, LongDate"},
        Refusal{"integerRange", kPools, kPool, R"(<add name="p" queueLength="5" />)",
                "Integer value must be between 10 and 65535 inclusive"},
        Refusal{"notANumber", kPools, kPool, R"(<add name="p" queueLength="many" />)",
                "Invalid integer value"},
        Refusal{"excludedRange", u"system.applicationHost/sites", "<bindings>",
                R"(<limits maxBandwidth="12" /><bindings>)",
                "Integer value must not be between 0 and 1023 inclusive"},
        Refusal{"timeSpanRange", kPools, kPool,
                R"(<add name="p"><processModel idleTimeout="00:00:30" /></add>)",
                "Timespan value must be between 00:00:00 and 30.00:00:00 seconds inclusive, "
                "with a granularity of 60 seconds"},
        Refusal{"nonEmptyString", kDocuments, R"(<add value="index.html" />)",
                R"(<add value="" />)", "String must not be empty"},
        Refusal{"poolName", kPools, kPool, R"(<add name="a|b" />)",
                "Invalid application pool name"}),
    testing::NameFromWhat());

TEST(SectionValidation, ALocationTagIsCheckedWhereItApplies) {
    std::string text = testing::TestAppHostConfig();
    text.insert(text.find("</configuration>"),
                "<location path=\"Default Web Site\"><system.webServer>"
                "<directoryBrowse enabled=\"maybe\" /></system.webServer></location>\r\n");
    IisConfigMachine machine(text, SchemaSource::schemaFolder);
    auto manager = machine.NewManager();
    std::shared_ptr<platform::ConfigElement> section;
    EXPECT_EQ(manager->GetAdminSection(u"system.webServer/directoryBrowse", kAppHost, section), 0);
    EXPECT_EQ(manager->GetAdminSection(u"system.webServer/directoryBrowse",
                                       testing::kDefaultSitePath, section),
              qm::hr::invalid_data);
}

TEST(SectionValidation, AWebConfigIsNamedAndAChangeOnDiskIsSeen) {
    IisConfigMachine machine(testing::TestAppHostConfig(), SchemaSource::schemaFolder);
    const auto webConfig = machine.DrivePath("inetpub/wwwroot/web.config");
    const auto read = [&] {
        std::shared_ptr<platform::ConfigElement> section;
        auto manager = machine.NewManager();
        const qm::hresult hr = manager->GetAdminSection(u"system.webServer/defaultDocument",
                                                        testing::kDefaultSitePath, section);
        return std::make_pair(hr, qm::to_utf8(manager->LastErrorDescription()));
    };
    const std::string valid =
        "<configuration><system.webServer><defaultDocument>\r\n"
        "<files><add value=\"a.htm\" /></files>"
        "</defaultDocument></system.webServer></configuration>";
    IisConfigMachine::WriteText(webConfig, valid);
    EXPECT_EQ(read().first, 0);
    std::string invalid = valid;
    invalid.replace(invalid.find("value="), 5, "Values");  // another size: seen at once
    IisConfigMachine::WriteText(webConfig, invalid);
    const auto [hr, message] = read();
    EXPECT_EQ(hr, qm::hr::invalid_data);
    EXPECT_EQ(message,
              "C:\\inetpub\\wwwroot\\web.config(2): Unrecognized attribute 'Values'. "
              "Note that attribute names are case-sensitive.");
    IisConfigMachine::WriteText(webConfig, valid);
    EXPECT_EQ(read().first, 0);
}

// Elements real servers use, in the core sections and in the extensions' ones.
TEST(SectionValidation, ReadsWhatRealServersHold) {
    std::string text = testing::TestAppHostConfig();
    text.insert(text.find("<section name=\"asp\""), R"x(<section name="fastCgi" />
            <section name="proxy" /><section name="applicationInitialization" />
            <sectionGroup name="tracing"><section name="traceFailedRequests" /></sectionGroup>
            <sectionGroup name="rewrite"><section name="rules" /></sectionGroup>
            )x");
    text.insert(text.find("<sectionGroup name=\"authentication\">"),
                R"x(<section name="requestFiltering" /><section name="dynamicIpSecurity" />)x");
    text.insert(text.find("<authentication>"), R"x(<requestFiltering><filteringRules>
                <filteringRule name="sql" scanQueryString="true">
                    <appliesTo><add fileExtension=".asp" /></appliesTo>
                    <denyStrings><add string="--" /></denyStrings>
                    <scanHeaders><add requestHeader="User-Agent" /></scanHeaders>
                </filteringRule></filteringRules>
                <alwaysAllowedUrls><add url="/ok" /></alwaysAllowedUrls>
                <alwaysAllowedQueryStrings><add queryString="a=b" /></alwaysAllowedQueryStrings>
                <denyQueryStringSequences><add sequence="xp_" /></denyQueryStringSequences>
            </requestFiltering>
            <dynamicIpSecurity denyAction="NotFound"><denyByRequestRate enabled="true" />
            </dynamicIpSecurity>
            )x");
    text.insert(text.find("<security>"), R"x(<fastCgi>
            <application fullPath="C:\php\php-cgi.exe" monitorChangesTo="php.ini"
                         stderrMode="ReturnGeneric500"><environmentVariables>
                <environmentVariable name="PHP_FCGI_MAX_REQUESTS" value="10000" />
            </environmentVariables></application></fastCgi>
        <tracing><traceFailedRequests><add path="*.aspx"><traceAreas>
            <add provider="ASPNET" areas="Infrastructure,Module" verbosity="Warning" />
        </traceAreas><failureDefinitions statusCodes="404" /></add></traceFailedRequests></tracing>
        <rewrite><rules><rule name="proxy" stopProcessing="true"><match url="(.*)" />
            <serverVariables><set name="HTTP_X_ORIGINAL_HOST" value="{HTTP_HOST}" /></serverVariables>
            <action type="Rewrite" url="http://backend/{R:1}" /></rule></rules></rewrite>
        <proxy enabled="true" preserveHostHeader="true" timeout="00:05:00" />
        <applicationInitialization doAppInitAfterRestart="true">
            <add initializationPage="/warmup" />
        </applicationInitialization>
        )x");
    IisConfigMachine machine(text, SchemaSource::schemaFolder);
    auto manager = machine.NewManager();
    const std::vector<std::u16string> sections = testing::DeclaredSections(text);
    EXPECT_EQ(sections.size(), 16u);
    for (const std::u16string& name : sections) {
        std::shared_ptr<platform::ConfigElement> section;
        EXPECT_EQ(manager->GetAdminSection(name, kAppHost, section), 0)
            << qm::to_utf8(name) << ": " << qm::to_utf8(manager->LastErrorDescription());
    }
}

class StockMachines : public ::testing::TestWithParam<IisVersion> {};

TEST_P(StockMachines, ReadEverySectionTheirFileDeclares) {
    MachineConfig config;
    config.iisVersion = GetParam();
    testing::TempMachine temp(config);
    const std::string text = IisConfigMachine::ReadText(
        DriveCPath(temp.path()) / "Windows/System32/inetsrv/config/applicationHost.config");
    const std::vector<std::u16string> sections = testing::DeclaredSections(text);
    EXPECT_GE(sections.size(), 40u);
    std::unique_ptr<platform::AdminManager> manager;
    ASSERT_EQ(temp.machine().iisConfiguration().CreateAdminManager(manager), 0);
    for (const std::u16string& name : sections) {
        std::shared_ptr<platform::ConfigElement> section;
        EXPECT_EQ(manager->GetAdminSection(name, kAppHost, section), 0)
            << qm::to_utf8(name) << ": " << qm::to_utf8(manager->LastErrorDescription());
    }
}

INSTANTIATE_TEST_SUITE_P(Releases, StockMachines,
                         ::testing::Values(IisVersion{7, 5}, IisVersion{8, 5}, IisVersion{10, 0}));

}  // namespace
}  // namespace webrig::sim::iis7
