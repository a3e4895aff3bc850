#include <gtest/gtest.h>

#include <optional>

#include "exports/iis_pro_runtime.h"
#include "testing/case_name.h"
#include "testing/temp_machine.h"

namespace {

using webrig::platform::RegValue;

constexpr char16_t kParameters[] = u"SYSTEM\\CurrentControlSet\\Services\\W3SVC\\Parameters";

enum class Registry { no_key, key_without_value, value };

struct Case {
    const char* what;
    Registry registry;
    RegValue majorVersion;
    webrig::platform::OsVersion os;
    const char16_t* component;
    int32_t continueWithoutIIS;
    int32_t result;
    int32_t ignoreIIS;
    int32_t iisMajorVersion;
};

const webrig::platform::OsVersion kServer2019{10, 0, 17763};
const webrig::platform::OsVersion kXp{5, 1, 2600};
const webrig::platform::OsVersion kServer2003{5, 2, 3790};
const webrig::platform::OsVersion kVista{6, 0, 6000};

class CheckForContinueTest : public ::testing::TestWithParam<Case> {};

TEST_P(CheckForContinueTest, JudgesTheComponentByTheInstalledIis) {
    const Case& c = GetParam();
    webrig::sim::MachineConfig config;
    config.osVersion = c.os;
    config.iisVersion = {0, 0};  // the case decides what the registry says
    webrig::testing::TempMachine temp(config);
    auto& registry = temp.machine().registry();
    if (c.registry != Registry::no_key) {
        webrig::platform::ScopedRegKey key(registry);
        ASSERT_EQ(registry.CreateKey(webrig::platform::kLocalMachine, kParameters,
                                     webrig::platform::key_access::all_access, key.receive()),
                  0u);
        if (c.registry == Registry::value) {
            ASSERT_EQ(registry.SetValue(key.get(), u"MajorVersion", c.majorVersion), 0u);
        }
    }

    CIISProRuntime runtime(
        std::shared_ptr<webrig::platform::Platform>(webrig::sim::Machine::Open(temp.path())));
    CIISPropertyBag& bag = runtime.propertyBag;
    bag.GetOrAddComponent(u"Web").record->AddVRoot(u"Root");
    bag.GetOrAddComponent(u"Pool").record->AddAppPool(u"Pool");
    bag.GetOrAddComponent(u"Ext").record->AddWebServiceExtension(u"Ext");
    bag.GetOrAddComponent(u"Site").record->AddWebsite(u"Site");
    bag.GetOrAddComponent(u"Empty");
    bag.ignoreIIS = 7;  // whatever it was, the check decides anew

    EXPECT_EQ(runtime.CheckForContinue(c.component, c.continueWithoutIIS), c.result);
    EXPECT_EQ(bag.ignoreIIS, c.ignoreIIS);
    EXPECT_EQ(bag.iisMajorVersion, c.iisMajorVersion);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, CheckForContinueTest,
    ::testing::Values(
        Case{"no IIS", Registry::no_key, {}, kServer2019, u"Web", 0, -1, 1, 0},
        Case{"may go on without", Registry::no_key, {}, kServer2019, u"Web", 1, 0, 1, 0},
        Case{"no value", Registry::key_without_value, {}, kServer2019, u"Web", 0, -1, 1, 0},
        Case{"websites do not count", Registry::no_key, {}, kServer2019, u"Site", 0, 0, 0, 0},
        Case{"no IIS, empty component", Registry::no_key, {}, kServer2019, u"Empty", 0, 0, 0, 0},
        Case{"no IIS, name differs in case", Registry::no_key, {}, kServer2019, u"web", 0, 0, 0, 0},
        Case{"IIS 3", Registry::value, RegValue::Dword(3), kServer2019, u"Web", 0, -1, 1, 3},
        Case{"IIS 4", Registry::value, RegValue::Dword(4), kServer2019, u"Web", 0, 0, 0, 4},
        Case{"version compared unsigned", Registry::value, RegValue::Dword(0xFFFFFFFFu),
             kServer2019, u"Web", 0, 0, 0, -1},
        Case{"version as text is no version", Registry::value, RegValue::String(u"10"), kServer2019,
             u"Web", 0, -1, 1, 0},
        Case{"pool on XP is no IIS item", Registry::no_key, {}, kXp, u"Pool", 0, 0, 0, 0},
        Case{"pool on Server 2003", Registry::no_key, {}, kServer2003, u"Pool", 0, -1, 1, 0},
        Case{"extension on Vista", Registry::no_key, {}, kVista, u"Ext", 0, -1, 1, 0},
        Case{"extension on XP", Registry::no_key, {}, kXp, u"Ext", 0, 0, 0, 0}),
    webrig::testing::NameFromWhat());

}  // namespace
