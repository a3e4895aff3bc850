#include "services/w3svc.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "scripted_services.h"
#include "testing/case_name.h"

namespace webrig::services {
namespace {

using ::testing::ElementsAreArray;
using testing::ScriptedServices;
using testing::Service;
using testing::Services;
using testing::With;

namespace state = platform::service_state;

constexpr const char16_t* kStartsFine[] = {
    u"CheckAndStartW3CService",
    u"The service is NOT already running.",
    u"IsStartable status: 1",
    u"First case.",
    u"IsStartable returned TRUE",
    u"StartServiceWithLogging returned TRUE",
    u"WaitForServiceToReachState returned TRUE",
};

struct StartCase {
    const char* what;
    sim::ServiceScript script;
    int32_t result;
    std::vector<qm::wstring> lines;
    uint32_t elapsed;
    uint32_t finalState;
};

class CheckAndStartW3CServiceTest : public ::testing::TestWithParam<StartCase> {};

TEST_P(CheckAndStartW3CServiceTest, LogsEachStepAndTakesItsTime) {
    const StartCase& c = GetParam();
    ScriptedServices machine(Services({{u"W3SVC", c.script}}));
    EXPECT_EQ(CheckAndStartW3CService(machine.Context(), machine.OpenW3svc()), c.result);
    EXPECT_THAT(machine.sink.logLines, ElementsAreArray(c.lines));
    EXPECT_EQ(machine.Elapsed(), c.elapsed);
    EXPECT_EQ(machine.StateOf(u"W3SVC"), c.finalState);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, CheckAndStartW3CServiceTest,
    ::testing::Values(
        StartCase{"already running",
                  Service(state::running),
                  0,
                  {u"CheckAndStartW3CService", u"The service is already running."},
                  0,
                  state::running},
        StartCase{"stopped, starts in 1.5 s", Service(state::stopped), 0,
                  std::vector<qm::wstring>(std::begin(kStartsFine), std::end(kStartsFine)), 1500,
                  state::running},
        StartCase{"paused",
                  Service(state::paused),
                  -1106,
                  {u"CheckAndStartW3CService", u"The service is NOT already running.",
                   u"IsStartable status: 7", u"Third case.", u"IsStartable returned false"},
                  0,
                  state::paused},
        StartCase{"stopped and disabled",
                  With(Service(state::stopped),
                       [](sim::ServiceScript& s) { s.startType = sim::StartType::disabled; }),
                  -1106,
                  {u"CheckAndStartW3CService", u"The service is NOT already running.",
                   u"IsStartable status: 1", u"First case.", u"IsStartable returned TRUE",
                   u"StartService returned the following: ERROR_SERVICE_DISABLED",
                   u"StartServiceWithLogging returned false"},
                  0,
                  state::stopped},
        StartCase{"never leaves start-pending",
                  Service(state::stopped, std::nullopt),
                  -1106,
                  {u"CheckAndStartW3CService", u"The service is NOT already running.",
                   u"IsStartable status: 1", u"First case.", u"IsStartable returned TRUE",
                   u"StartServiceWithLogging returned TRUE",
                   u"WaitForServiceToReachState returned false"},
                  15'100,
                  state::start_pending},
        StartCase{
            "still stopping: a pause, then the start",
            Service(state::stop_pending, 1500, 800),
            0,
            {u"CheckAndStartW3CService", u"The service is NOT already running.",
             u"IsStartable status: 3", u"Second case.", u"IsStartable returned TRUE",
             u"StartServiceWithLogging returned TRUE", u"WaitForServiceToReachState returned TRUE"},
            2500,
            state::running},
        StartCase{"status cannot be read",
                  With(Service(state::stopped), [](sim::ServiceScript& s) { s.queryError = 5; }),
                  -1106,
                  {u"CheckAndStartW3CService", u"QueryServiceStatus failed.",
                   u"GetLastError returned: 5"},
                  0,
                  state::stopped}),
    webrig::testing::NameFromWhat());

TEST(OpenW3svc, NamesWhichHandleFailedAndLeavesNoneOpen) {
    struct Case {
        sim::ServicesFile services;
        int32_t result;
    };
    for (const Case& c :
         {Case{Services({{u"W3SVC", Service(state::running)}}), 0},
          Case{Services({{u"W3SVC", Service(state::running)}}, 5), -1101},
          Case{Services({}), -1102},
          Case{Services({{u"W3SVC", With(Service(state::running),
                                         [](sim::ServiceScript& s) { s.openError = 5; })}}),
               -1102}}) {
        ScriptedServices machine(c.services);
        {
            ServiceHandles handles(machine.control());
            EXPECT_EQ(OpenW3svc(machine.Context(), handles), c.result);
            EXPECT_EQ(handles.service != platform::kNoService, c.result == 0);
            EXPECT_EQ(handles.manager != platform::kNoService, c.result == 0);
        }
        EXPECT_EQ(machine.control().OpenHandleCount(), 0u);
        EXPECT_TRUE(machine.sink.logLines.empty());
    }
}

struct RestartCase {
    const char* what;
    int32_t iisMajorVersion;
    int32_t ignoreIIS;
    const char16_t* restartProp;
    sim::ServicesFile services;
    int32_t result;
    std::vector<qm::wstring> lines;
    uint32_t elapsed;
};

class RestartW3cServiceTest : public ::testing::TestWithParam<RestartCase> {};

TEST_P(RestartW3cServiceTest, StopsAndStartsAsAskedAndOnlyLogsTheOutcome) {
    const RestartCase& c = GetParam();
    ScriptedServices machine(c.services);
    CIISPropertyBag bag;
    bag.iisMajorVersion = c.iisMajorVersion;
    bag.ignoreIIS = c.ignoreIIS;
    bag.restartW3svc = c.restartProp;
    EXPECT_EQ(RestartW3cService(machine.Context(), bag), c.result);
    EXPECT_THAT(machine.sink.logLines, ElementsAreArray(c.lines));
    EXPECT_EQ(machine.Elapsed(), c.elapsed);
    EXPECT_EQ(machine.control().OpenHandleCount(), 0u);
}

std::vector<qm::wstring> Lines(std::initializer_list<const char16_t*> before,
                               std::initializer_list<const char16_t*> after) {
    std::vector<qm::wstring> lines(before.begin(), before.end());
    lines.insert(lines.end(), after.begin(), after.end());
    return lines;
}

std::vector<qm::wstring> RestartedLines(std::initializer_list<const char16_t*> between = {}) {
    std::vector<qm::wstring> lines = Lines({u"RestartProp value: 1"}, between);
    lines.insert(lines.end(), std::begin(kStartsFine), std::end(kStartsFine));
    lines.push_back(u"RestartW3cService: final result for stop/start: 0");
    return lines;
}

const sim::ServicesFile kRunning = Services({{u"W3SVC", Service(state::running)}});

INSTANTIATE_TEST_SUITE_P(
    Cases, RestartW3cServiceTest,
    ::testing::Values(
        RestartCase{"IIS 7 does nothing", 7, 0, u"1", kRunning, 0, {}, 0},
        RestartCase{"IIS work off does nothing", 6, 1, u"1", kRunning, 0, {}, 0},
        RestartCase{"only 1 asks", 6, 0, u"01", kRunning, 0, {u"RestartProp value: 01"}, 0},
        RestartCase{"a space is not 1", 6, 0, u" 1", kRunning, 0, {u"RestartProp value:  1"}, 0},
        RestartCase{"running: stop, then start", 6, 0, u"1", kRunning, 0, RestartedLines(), 2500},
        RestartCase{"stopped: started", 5, 0, u"1", Services({{u"W3SVC", Service(state::stopped)}}),
                    0, RestartedLines(), 1500},
        RestartCase{"starting: a pause before the stop", 6, 0, u"1",
                    Services({{u"W3SVC", Service(state::start_pending, 500)}}), 0, RestartedLines(),
                    1000 + 1000 + 500},  // pause, stop, start,
        RestartCase{
            "ignores the stop: waits twice and starts anyway",
            6,
            0,
            u"1",
            Services({{u"W3SVC", With(Service(state::running),
                                      [](sim::ServiceScript& s) { s.ignoresStop = true; })}}),
            0,
            {u"RestartProp value: 1", u"Note: The IIS W3SSVC failed to respond to a stop request",
             u"CheckAndStartW3CService", u"The service is already running.",
             u"RestartW3cService: final result for stop/start: 0"},
            30'200},
        RestartCase{"paused: stopped without a pause", 6, 0, u"1",
                    Services({{u"W3SVC", Service(state::paused)}}), 0, RestartedLines(), 2500},
        RestartCase{"stops during the second wait", 6, 0, u"1",
                    Services({{u"W3SVC", Service(state::running, 1500, 20'000)}}), 0,
                    RestartedLines(), 20'000 + 1500},
        RestartCase{
            "in an unknown state: not stopped, not started",
            6,
            0,
            u"1",
            Services({{u"W3SVC", Service(8)}}),
            0,
            {u"RestartProp value: 1", u"RestartW3cService: final result for stop/start: -1105"},
            0},
        RestartCase{
            "the start fails: only the final line tells",
            6,
            0,
            u"1",
            Services({{u"W3SVC", With(Service(state::running),
                                      [](sim::ServiceScript& s) { s.startError = 1069; })}}),
            0,
            {u"RestartProp value: 1", u"CheckAndStartW3CService",
             u"The service is NOT already running.", u"IsStartable status: 1", u"First case.",
             u"IsStartable returned TRUE",
             u"StartService returned the following: ERROR_SERVICE_LOGON_FAILED",
             u"StartServiceWithLogging returned false",
             u"RestartW3cService: final result for stop/start: -1106"},
            1000},
        RestartCase{"no W3SVC", 6, 0, u"1", Services({}), -1102, {u"RestartProp value: 1"}, 0},
        RestartCase{"no manager", 6, 0, u"1", Services({}, 5), -1101, {u"RestartProp value: 1"}, 0},
        RestartCase{
            "state unreadable: not known to be stopped",
            6,
            0,
            u"1",
            Services({{u"W3SVC", With(Service(state::running),
                                      [](sim::ServiceScript& s) { s.queryError = 5; })}}),
            0,
            {u"RestartProp value: 1", u"RestartW3cService: final result for stop/start: -1105"},
            0}),
    webrig::testing::NameFromWhat());

}  // namespace
}  // namespace webrig::services
