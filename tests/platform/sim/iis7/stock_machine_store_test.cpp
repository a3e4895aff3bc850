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

}  // namespace
}  // namespace webrig::sim::iis7
