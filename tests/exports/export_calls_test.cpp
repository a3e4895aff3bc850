#include "exports/export_calls.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>

#include "exports/runtime_holder.h"
#include "testing/temp_machine.h"

namespace webrig::exports {
namespace {

namespace fs = std::filesystem;

class ExportCallsTest : public ::testing::Test {
  protected:
    void SetUp() override { ReleaseRuntime(); }
    void TearDown() override { ReleaseRuntime(); }

    std::shared_ptr<platform::Platform> OpenMachine() {
        return std::shared_ptr<platform::Platform>(sim::Machine::Open(temp.path()));
    }

    // Writes a settings file (ANSI) into the machine and returns its Windows path.
    qm::wstring WriteSettings(const std::string& text, const std::string& name = "setup.ini") {
        fs::create_directories(temp.path() / "drive_c" / "Temp");
        std::ofstream(temp.path() / "drive_c" / "Temp" / name, std::ios::binary) << text;
        return u"C:\\Temp\\" + qm::widen_ascii(name);
    }

    testing::TempMachine temp;
};

TEST_F(ExportCallsTest, EveryCallButInitializeAnswersMinusOneBeforeTheFirstInitialize) {
    const std::vector<std::function<int32_t()>> calls = {
        [] { return Uninitialize(); },
        [] { return ComponentInstall(u"Web", nullptr); },
        [] { return CheckForContinue(u"Web", 1); },
        [] { return VRootUninstall(u"Root"); },
        [] { return WebSiteUninstall(u"Site"); },
        [] { return AppPoolUninstall(u"Pool"); },
        [] { return WebServiceExtensionUninstall(u"Ext"); },
    };
    for (size_t i = 0; i < calls.size(); ++i) {
        EXPECT_EQ(calls[i](), kNoRuntime) << "call " << i;
    }
    EXPECT_EQ(CurrentRuntime(), nullptr);
}

TEST_F(ExportCallsTest, InitializeAnswersZeroEvenWhenTheSettingsCannotBeRead) {
    EXPECT_EQ(InitializeOn(OpenMachine(), u"C:\\Temp\\missing.ini", 0), 0);
    ASSERT_NE(CurrentRuntime(), nullptr);
    EXPECT_TRUE(CurrentRuntime()->propertyBag.components.empty());
    // The instance stays and answers.
    EXPECT_EQ(Uninitialize(), 0);
    EXPECT_EQ(VRootUninstall(u"Root"), 0);
}

TEST_F(ExportCallsTest, InitializeLoadsTheSettingsIntoTheNewInstance) {
    const qm::wstring file = WriteSettings(
        "[GlobalOptions]\r\nIISVERSION=10\r\nIGNOREIIS=1\r\n[Components]\r\nCount=1\r\nc1=Web\r\n");
    InitializeOn(OpenMachine(), file, 0x1234);
    CIISProRuntime* runtime = CurrentRuntime();
    ASSERT_NE(runtime, nullptr);
    EXPECT_EQ(runtime->hostContext, 0x1234u);
    EXPECT_EQ(runtime->propertyBag.iisMajorVersion, 10);
    EXPECT_EQ(runtime->propertyBag.ignoreIIS, 1);
    EXPECT_TRUE(runtime->propertyBag.components.contains(u"Web"));
    ASSERT_NE(runtime->eventSink, nullptr);
    EXPECT_EQ(runtime->eventSink->CheckCancel(), 0);
}

TEST_F(ExportCallsTest, ASecondInitializeReplacesTheInstance) {
    const qm::wstring first = WriteSettings("[GlobalOptions]\r\nIISVERSION=10\r\n", "first.ini");
    const qm::wstring second = WriteSettings("[GlobalOptions]\r\nIISVERSION=6\r\n", "second.ini");
    InitializeOn(OpenMachine(), first, 1);
    ComponentInstall(u"Web", nullptr);
    ASSERT_TRUE(CurrentRuntime()->installedComponents.contains(u"Web"));

    InitializeOn(OpenMachine(), second, 2);
    EXPECT_EQ(CurrentRuntime()->propertyBag.iisMajorVersion, 6);
    EXPECT_EQ(CurrentRuntime()->hostContext, 2u);
    EXPECT_TRUE(CurrentRuntime()->installedComponents.empty());
}

TEST_F(ExportCallsTest, AComponentIsDispatchedOncePerInstanceByItsExactName) {
    InitializeOn(OpenMachine(), u"C:\\none.ini", 0);
    EXPECT_EQ(ComponentInstall(u"Web", nullptr), 0);
    EXPECT_EQ(ComponentInstall(u"Web", nullptr), 0);
    EXPECT_EQ(ComponentInstall(u"web", nullptr), 0);
    EXPECT_EQ(CurrentRuntime()->installedComponents, (std::set<qm::wstring>{u"Web", u"web"}));
}

TEST_F(ExportCallsTest, TheUninstallCallsStillRunAfterUninitialize) {
    InitializeOn(OpenMachine(), u"C:\\none.ini", 0);
    EXPECT_EQ(Uninitialize(), 0);
    EXPECT_EQ(WebSiteUninstall(u"Site"), 0);
    EXPECT_EQ(AppPoolUninstall(u"Pool"), 0);
    EXPECT_EQ(WebServiceExtensionUninstall(u"Ext"), 0);
    EXPECT_NE(CurrentRuntime(), nullptr);
}

// The restart stops W3SVC (1 s) and starts it again (1.5 s) on the stock IIS 6 services; the
// simulated clock shows that it ran, and the service runs again afterwards.
TEST(UninitializeTest, RestartsTheWebServiceWhenAsked) {
    for (const char* restart : {"1", "0"}) {
        sim::MachineConfig config;
        config.iisVersion = {6, 0};
        testing::TempMachine temp(config);
        fs::create_directories(temp.path() / "drive_c" / "Temp");
        std::ofstream(temp.path() / "drive_c" / "Temp" / "setup.ini", std::ios::binary)
            << "[GlobalOptions]\r\nIISVERSION=6\r\nRESTARTW3SVC=" << restart << "\r\n";
        auto machine = std::shared_ptr<sim::Machine>(sim::Machine::Open(temp.path()));
        InitializeOn(machine, u"C:\\Temp\\setup.ini", 0);
        const uint32_t before = machine->clock().TickCount();
        // Only Uninitialize restarts.
        EXPECT_EQ(VRootUninstall(u"Root"), 0);
        EXPECT_EQ(WebSiteUninstall(u"Site"), 0);
        EXPECT_EQ(AppPoolUninstall(u"Pool"), 0);
        EXPECT_EQ(WebServiceExtensionUninstall(u"Ext"), 0);
        EXPECT_EQ(CheckForContinue(u"Web", 0), 0);
        EXPECT_EQ(ComponentInstall(u"Web", nullptr), 0);
        EXPECT_EQ(machine->clock().TickCount(), before);
        EXPECT_EQ(Uninitialize(), 0);
        EXPECT_EQ(machine->clock().TickCount() - before, restart == std::string("1") ? 2500u : 0u);
        EXPECT_EQ(machine->simServices().Snapshot().services.at(u"W3SVC").state,
                  platform::service_state::running);
        ReleaseRuntime();
    }
}

}  // namespace
}  // namespace webrig::exports
