#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "exports/iis_pro_runtime.h"
#include "settings/iis_pro_ini_loader.h"
#include "testing/case_name.h"
#include "testing/recording_event_sink.h"
#include "testing/temp_machine.h"

namespace {

using ::testing::Contains;
using webrig::platform::service_state::paused;
using webrig::platform::service_state::running;
using webrig::platform::service_state::stopped;
namespace sim = webrig::sim;

// A machine with IIS 6's two services in the given states.
struct Case {
    const char* what;
    sim::IisVersion iis;
    std::string globalOptions;
    void (*script)(sim::ServicesFile&);
    int32_t status;
    uint32_t w3svcAfter;
    int32_t ignoreIIS;
    std::vector<std::pair<qm::wstring, int32_t>> errors;
    bool checkedW3svc;  // "CheckAndStartW3CService" was logged
};

void W3svcStopped(sim::ServicesFile& file) {
    file.services.at(u"W3SVC").state = stopped;
}

class RuntimeInitializeTest : public ::testing::TestWithParam<Case> {};

TEST_P(RuntimeInitializeTest, ChecksTheServicesOnlyBeforeIis7) {
    const Case& c = GetParam();
    sim::MachineConfig config;
    config.iisVersion = c.iis;
    webrig::testing::TempMachine temp(config);
    {
        sim::ServicesFile services = temp.machine().simServices().Snapshot();
        c.script(services);
        const std::string json = sim::FormatServicesFile(services);
        std::ofstream(temp.path() / "services.json", std::ios::binary) << json;
        std::filesystem::create_directories(temp.path() / "drive_c" / "Temp");
        std::ofstream(temp.path() / "drive_c" / "Temp" / "setup.ini", std::ios::binary)
            << "[GlobalOptions]\r\n"
            << c.globalOptions << "[Components]\r\nCount=0\r\n";
    }
    sim::Machine& machine = temp.Reopen();
    auto platform = std::shared_ptr<webrig::platform::Platform>(
        std::shared_ptr<void>(), static_cast<webrig::platform::Platform*>(&machine));
    CIISProRuntime runtime(platform);
    CIISProIniLoader loader(machine, u"C:\\Temp\\setup.ini", webrig::platform::kNoModule, 0);
    auto sink = std::make_unique<webrig::testing::RecordingEventSink>();
    webrig::testing::RecordingEventSink& lines = *sink;

    EXPECT_EQ(runtime.Initialize(loader, std::move(sink), 7), c.status);
    EXPECT_EQ(runtime.hostContext, 7u);
    EXPECT_EQ(runtime.propertyBag.ignoreIIS, c.ignoreIIS);
    EXPECT_EQ(machine.simServices().Snapshot().services.at(u"W3SVC").state, c.w3svcAfter);
    EXPECT_EQ(lines.errors, c.errors);
    EXPECT_EQ(std::find(lines.logLines.begin(), lines.logLines.end(), u"CheckAndStartW3CService") !=
                  lines.logLines.end(),
              c.checkedW3svc);
    EXPECT_EQ(machine.simServices().OpenHandleCount(), 0u);
}

INSTANTIATE_TEST_SUITE_P(Cases, RuntimeInitializeTest,
                         ::testing::Values(Case{"IIS 6: W3SVC started",
                                                {6, 0},
                                                "IISVERSION=6\r\n",
                                                W3svcStopped,
                                                0,
                                                running,
                                                0,
                                                {},
                                                true},
                                           Case{"IIS 10: no service is touched",
                                                {10, 0},
                                                "IISVERSION=10\r\n",
                                                W3svcStopped,
                                                0,
                                                stopped,
                                                0,
                                                {},
                                                false},
                                           Case{"IIS work off",
                                                {6, 0},
                                                "IISVERSION=6\r\nIGNOREIIS=1\r\n",
                                                W3svcStopped,
                                                0,
                                                stopped,
                                                1,
                                                {},
                                                false},
                                           Case{"IIS 5: W3SVC opened but not started",
                                                {5, 1},
                                                "IISVERSION=5\r\n",
                                                W3svcStopped,
                                                0,
                                                stopped,
                                                0,
                                                {},
                                                false},
                                           Case{"no version: treated as before IIS 6",
                                                {6, 0},
                                                "",
                                                W3svcStopped,
                                                0,
                                                stopped,
                                                0,
                                                {},
                                                false},
                                           Case{"IISADMIN disabled",
                                                {6, 0},
                                                "IISVERSION=6\r\n",
                                                [](sim::ServicesFile& file) {
                                                    W3svcStopped(file);
                                                    file.services.at(u"IISADMIN").state = stopped;
                                                    file.services.at(u"IISADMIN").startType =
                                                        sim::StartType::disabled;
                                                },
                                                -1108,
                                                stopped,
                                                0,
                                                {{u"IIS Admin Service is disabled", -1108}},
                                                false},
                                           Case{"W3SVC paused",
                                                {6, 0},
                                                "IISVERSION=6\r\n",
                                                [](sim::ServicesFile& file) {
                                                    file.services.at(u"W3SVC").state = paused;
                                                },
                                                -1106,
                                                paused,
                                                0,
                                                {},
                                                true},
                                           Case{"no service control manager: IIS work off",
                                                {6, 0},
                                                "IISVERSION=6\r\n",
                                                [](sim::ServicesFile& file) {
                                                    W3svcStopped(file);
                                                    file.managerError = 120;
                                                },
                                                0,
                                                stopped,
                                                1,
                                                {},
                                                false},
                                           Case{"W3SVC cannot be opened",
                                                {6, 0},
                                                "IISVERSION=6\r\n",
                                                [](sim::ServicesFile& file) {
                                                    file.services.at(u"W3SVC").openError = 5;
                                                },
                                                -1102,
                                                running,
                                                0,
                                                {},
                                                false}),
                         webrig::testing::NameFromWhat());

}  // namespace
