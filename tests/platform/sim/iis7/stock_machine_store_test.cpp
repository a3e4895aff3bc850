// The configuration system of a machine made by Machine::Create: the built-in schema over the
// stock applicationHost.config, as the runtime meets it.

#include <gtest/gtest.h>

#include "platform/sim/machine/machine_layout.h"
#include "testing/iis_config_machine.h"
#include "testing/temp_machine.h"

namespace webrig::sim::iis7 {
namespace {

using platform::Variant;
using testing::IisConfigMachine;

constexpr std::u16string_view kAppHost = testing::kAppHostPath;
constexpr std::u16string_view kSite = testing::kDefaultSitePath;

std::filesystem::path StockAppHost(const testing::TempMachine& machine) {
    return DriveCPath(machine.path()) / "Windows" / "System32" / "inetsrv" / "config" /
           "applicationHost.config";
}

TEST(StockMachineStore, ReadsAndWritesTheStockFileWithTheBuiltInSchema) {
    testing::TempMachine machine;
    const std::string before = IisConfigMachine::ReadText(StockAppHost(machine));
    std::unique_ptr<platform::AdminManager> manager;
    ASSERT_EQ(machine.machine().iisConfiguration().CreateAdminManager(manager), 0);
    std::u16string value;
    ASSERT_EQ(testing::ReadAttribute(*manager, u"system.webServer/handlers", kAppHost,
                                     u"accessPolicy", value),
              0);
    EXPECT_EQ(value, u"Read, Script");
    // A locked section below the main file goes to the site's location instead.
    ASSERT_EQ(manager->PutCommitPath(kSite), 0);
    EXPECT_EQ(testing::PutAttribute(*manager,
                                    u"system.webServer/security/authentication/"
                                    u"anonymousAuthentication",
                                    kSite, u"enabled", Variant{false}),
              qm::hr::lock_violation);
    ASSERT_EQ(manager->CommitChanges(), 0);
    ASSERT_EQ(manager->PutCommitPath(kAppHost), 0);
    ASSERT_EQ(testing::PutAttribute(*manager,
                                    u"system.webServer/security/authentication/"
                                    u"anonymousAuthentication",
                                    kSite, u"password", Variant{u"secret"}),
              0);
    ASSERT_EQ(manager->CommitChanges(), 0);
    const std::string after = IisConfigMachine::ReadText(StockAppHost(machine));
    EXPECT_EQ(after.find("secret"), std::string::npos);
    // Everything but the new location tag at the end stays as it was.
    const size_t location = after.find("    <location path=\"Default Web Site\">\r\n");
    ASSERT_NE(location, std::string::npos);
    const size_t end = after.find("    </location>\r\n", location);
    ASSERT_NE(end, std::string::npos);
    EXPECT_NE(after.substr(location, end - location).find("<anonymousAuthentication password="),
              std::string::npos);
    const bool unchangedElsewhere = after.substr(0, location) + after.substr(end + 17) == before;
    EXPECT_TRUE(unchangedElsewhere);

    // Another process with the same machine folder reads the password back.
    machine.Reopen();
    ASSERT_EQ(machine.machine().iisConfiguration().CreateAdminManager(manager), 0);
    ASSERT_EQ(testing::ReadAttribute(*manager,
                                     u"system.webServer/security/authentication/"
                                     u"anonymousAuthentication",
                                     kSite, u"password", value),
              0);
    EXPECT_EQ(value, u"secret");
}

// Sets text attributes of a new entry; stops at the first failure.
qm::hresult PutAll(
    platform::ConfigElement& element,
    std::initializer_list<std::pair<std::u16string_view, std::u16string_view>> values) {
    for (const auto& [name, value] : values) {
        std::shared_ptr<platform::ConfigProperty> property;
        if (const qm::hresult hr = element.GetPropertyByName(name, property); hr != 0) {
            return hr;
        }
        if (const qm::hresult hr = property->PutValue(Variant{qm::wstring(value)}); hr != 0) {
            return hr;
        }
    }
    return 0;
}

// The stock file keeps handlers in <location path="" overrideMode="Allow">, so an application's
// handler mapping goes into the application's own web.config.
TEST(StockMachineStore, AnApplicationsHandlerMappingLandsInItsWebConfig) {
    testing::TempMachine machine;
    std::filesystem::create_directories(DriveCPath(machine.path()) / "inetpub" / "app");
    std::unique_ptr<platform::AdminManager> manager;
    ASSERT_EQ(machine.machine().iisConfiguration().CreateAdminManager(manager), 0);
    std::shared_ptr<platform::ConfigElement> sites;
    ASSERT_EQ(manager->GetAdminSection(u"system.applicationHost/sites", kAppHost, sites), 0);
    std::shared_ptr<platform::ElementCollection> collection;
    std::shared_ptr<platform::ConfigElement> site;
    ASSERT_EQ(sites->GetCollection(collection), 0);
    ASSERT_EQ(collection->Item(0, site), 0);
    std::shared_ptr<platform::ElementCollection> applications;
    std::shared_ptr<platform::ConfigElement> application;
    std::shared_ptr<platform::ElementCollection> directories;
    std::shared_ptr<platform::ConfigElement> directory;
    ASSERT_EQ(site->GetCollection(applications), 0);
    ASSERT_EQ(applications->CreateNewElement(u"application", application), 0);
    ASSERT_EQ(PutAll(*application, {{u"path", u"/app"}}), 0);
    ASSERT_EQ(application->GetCollection(directories), 0);
    ASSERT_EQ(directories->CreateNewElement(u"virtualDirectory", directory), 0);
    ASSERT_EQ(PutAll(*directory, {{u"path", u"/"}, {u"physicalPath", u"C:\\inetpub\\app"}}), 0);
    ASSERT_EQ(directories->AddElement(directory, -1), 0);
    ASSERT_EQ(applications->AddElement(application, -1), 0);
    ASSERT_EQ(manager->CommitChanges(), 0);
    const std::string appHost = IisConfigMachine::ReadText(StockAppHost(machine));

    constexpr std::u16string_view kApp = u"MACHINE/WEBROOT/APPHOST/Default Web Site/app";
    ASSERT_EQ(machine.machine().iisConfiguration().CreateAdminManager(manager), 0);
    ASSERT_EQ(manager->PutCommitPath(kApp), 0);
    std::shared_ptr<platform::ConfigElement> handlers;
    ASSERT_EQ(manager->GetAdminSection(u"system.webServer/handlers", kApp, handlers), 0);
    std::shared_ptr<platform::ConfigElement> mapping;
    ASSERT_EQ(handlers->GetCollection(collection), 0);
    ASSERT_EQ(collection->CreateNewElement(u"add", mapping), 0);
    ASSERT_EQ(PutAll(*mapping, {{u"name", u"Shop"},
                                {u"path", u"*.shop"},
                                {u"verb", u"*"},
                                {u"modules", u"IsapiModule"}}),
              0);
    ASSERT_EQ(collection->AddElement(mapping, 0), 0);
    ASSERT_EQ(manager->CommitChanges(), 0);
    EXPECT_EQ(IisConfigMachine::ReadText(StockAppHost(machine)), appHost);
    const std::string webConfig =
        IisConfigMachine::ReadText(DriveCPath(machine.path()) / "inetpub" / "app" / "web.config");
    EXPECT_NE(webConfig.find("<handlers>\r\n            <add name=\"Shop\" path=\"*.shop\""),
              std::string::npos)
        << webConfig;
    EXPECT_EQ(webConfig.find("<location"), std::string::npos);
}

}  // namespace
}  // namespace webrig::sim::iis7
