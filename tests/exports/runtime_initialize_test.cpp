#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "exports/iis_pro_runtime.h"
#include "settings/iis_pro_ini_loader.h"
#include "testing/case_name.h"
#include "testing/recording_event_sink.h"
#include "testing/temp_machine.h"

namespace {

using webrig::platform::service_state::paused;
using webrig::platform::service_state::running;
using webrig::platform::service_state::stopped;
namespace sim = webrig::sim;

// The stock services of the machine's IIS, W3SVC stopped unless the case says otherwise.
struct Case {
    const char* what;
    uint32_t machineIis;        // major version; IIS 7 is 7.5
    std::string globalOptions;  // lines of "GlobalOptions"
    void (*script)(sim::ServicesFile&);
    int32_t status;
    uint32_t w3svcAfter;
    int32_t ignoreIIS;
    bool checkedW3svc;  // "CheckAndStartW3CService" was logged
};

void Unchanged(sim::ServicesFile&) {}

class RuntimeInitializeTest : public ::testing::TestWithParam<Case> {};

TEST_P(RuntimeInitializeTest, ChecksTheServicesOnlyBeforeIis7) {
    const Case& c = GetParam();
    sim::MachineConfig config;
    config.iisVersion = {c.machineIis, c.machineIis == 7 ? 5u : 0u};
    webrig::testing::TempMachine temp(config);
    {
        sim::ServicesFile services = temp.machine().simServices().Snapshot();
        services.services.at(u"W3SVC").state = stopped;
        c.script(services);
        std::ofstream(temp.path() / "services.json", std::ios::binary)
            << sim::FormatServicesFile(services);
        std::filesystem::create_directories(temp.path() / "drive_c" / "Temp");
        std::ofstream(temp.path() / "drive_c" / "Temp" / "setup.ini", std::ios::binary)
            << "[GlobalOptions]\r\n"
            << c.globalOptions << "[Components]\r\nCount=0\r\n";
    }
    sim::Machine& machine = temp.Reopen();
    CIISProRuntime runtime(std::shared_ptr<webrig::platform::Platform>(
        std::shared_ptr<void>(), static_cast<webrig::platform::Platform*>(&machine)));
    CIISProIniLoader loader(machine, u"C:\\Temp\\setup.ini", webrig::platform::kNoModule, 0);
    auto sink = std::make_unique<webrig::testing::RecordingEventSink>();
    const std::vector<qm::wstring>& lines = sink->logLines;

    EXPECT_EQ(runtime.Initialize(loader, std::move(sink), 7), c.status);
    EXPECT_EQ(runtime.hostContext, 7u);
    EXPECT_EQ(runtime.propertyBag.ignoreIIS, c.ignoreIIS);
    EXPECT_EQ(machine.simServices().Snapshot().services.at(u"W3SVC").state, c.w3svcAfter);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), u"CheckAndStartW3CService"),
              c.checkedW3svc ? 1 : 0);
    EXPECT_EQ(machine.simServices().OpenHandleCount(), 0u);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, RuntimeInitializeTest,
    ::testing::Values(
        Case{"IIS 6: W3SVC started", 6, "IISVERSION=6\r\n", Unchanged, 0, running, 0, true},
        Case{"IIS 7: no service is touched", 7, "IISVERSION=7\r\n", Unchanged, 0, stopped, 0,
             false},
        Case{"IIS 10: no service is touched", 10, "IISVERSION=10\r\n", Unchanged, 0, stopped, 0,
             false},
        Case{"IIS work off", 6, "IISVERSION=6\r\nIGNOREIIS=1\r\n", Unchanged, 0, stopped, 1, false},
        Case{"IIS 5: W3SVC opened but not started", 5, "IISVERSION=5\r\n", Unchanged, 0, stopped, 0,
             false},
        Case{"no version: treated as before IIS 6", 6, "", Unchanged, 0, stopped, 0, false},
        Case{"IISADMIN disabled", 6, "IISVERSION=6\r\n",
             [](sim::ServicesFile& file) {
                 file.services.at(u"IISADMIN").state = stopped;
                 file.services.at(u"IISADMIN").startType = sim::StartType::disabled;
             },
             -1108, stopped, 0, false},
        Case{"W3SVC paused", 6, "IISVERSION=6\r\n",
             [](sim::ServicesFile& file) { file.services.at(u"W3SVC").state = paused; }, -1106,
             paused, 0, true},
        Case{"no service control manager: IIS work off", 6, "IISVERSION=6\r\n",
             [](sim::ServicesFile& file) { file.managerError = 120; }, 0, stopped, 1, false},
        Case{"W3SVC cannot be opened", 6, "IISVERSION=6\r\n",
             [](sim::ServicesFile& file) { file.services.at(u"W3SVC").openError = 5; }, -1102,
             stopped, 0, false}),
    webrig::testing::NameFromWhat());

}  // namespace
