#include "services/w3svc.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "scripted_services.h"
#include "support/format.h"
#include "testing/case_name.h"

namespace webrig::services {
namespace {

using ::testing::ElementsAreArray;
using testing::ScriptedServices;
using testing::Service;
using testing::Services;
using testing::With;

namespace state = platform::service_state;

// The lines of CheckAndStartW3CService on a stopped service, up to its start, then `rest`.
std::vector<qm::wstring> StartLines(std::initializer_list<const char16_t*> rest) {
    std::vector<qm::wstring> lines = {
        u"CheckAndStartW3CService", u"The service is NOT already running.",
        u"IsStartable status: 1", u"First case.", u"IsStartable returned TRUE"};
    lines.insert(lines.end(), rest.begin(), rest.end());
    return lines;
}

const std::vector<qm::wstring> kStartsFine = StartLines(
    {u"StartServiceWithLogging returned TRUE", u"WaitForServiceToReachState returned TRUE"});

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
        StartCase{"stopped, starts in 1.5 s", Service(state::stopped), 0, kStartsFine, 1500,
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
                  StartLines({u"StartService returned the following: ERROR_SERVICE_DISABLED",
                              u"StartServiceWithLogging returned false"}),
                  0, state::stopped},
        StartCase{"never leaves start-pending", Service(state::stopped, std::nullopt), -1106,
                  StartLines({u"StartServiceWithLogging returned TRUE",
                              u"WaitForServiceToReachState returned false"}),
                  15'100, state::start_pending},
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

// The restart asked for on IIS 6, of a W3SVC that follows `script`: whatever happens, only the
// log tells.
struct RestartCase {
    const char* what;
    sim::ServiceScript script;
    std::vector<qm::wstring> lines;
    uint32_t elapsed;
};

class RestartW3cServiceTest : public ::testing::TestWithParam<RestartCase> {};

TEST_P(RestartW3cServiceTest, StopsAndStartsAndOnlyLogsTheOutcome) {
    const RestartCase& c = GetParam();
    ScriptedServices machine(Services({{u"W3SVC", c.script}}));
    CIISPropertyBag bag;
    bag.iisMajorVersion = 6;
    bag.restartW3svc = u"1";
    EXPECT_EQ(RestartW3cService(machine.Context(), bag), 0);
    EXPECT_THAT(machine.sink.logLines, ElementsAreArray(c.lines));
    EXPECT_EQ(machine.Elapsed(), c.elapsed);
    EXPECT_EQ(machine.control().OpenHandleCount(), 0u);
}

// "RestartProp value: 1", the lines between, then the final line with `result`.
std::vector<qm::wstring> Restart(std::vector<qm::wstring> between, int32_t result = 0) {
    between.insert(between.begin(), u"RestartProp value: 1");
    between.push_back(qm::format(u"RestartW3cService: final result for stop/start: %d", result));
    return between;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, RestartW3cServiceTest,
    ::testing::Values(
        RestartCase{"running: stop, then start", Service(state::running), Restart(kStartsFine),
                    2500},
        RestartCase{"stopped: started", Service(state::stopped), Restart(kStartsFine), 1500},
        RestartCase{"starting: a pause before the stop", Service(state::start_pending, 500),
                    Restart(kStartsFine), 1000 + 1000 + 500},  // pause, stop, start
        RestartCase{"paused: stopped without a pause", Service(state::paused), Restart(kStartsFine),
                    1000 + 1500},
        RestartCase{"stops during the second wait", Service(state::running, 1500, 20'000),
                    Restart(kStartsFine), 20'000 + 1500},
        RestartCase{
            "ignores the stop: waits twice and starts anyway",
            With(Service(state::running), [](sim::ServiceScript& s) { s.ignoresStop = true; }),
            Restart({u"Note: The IIS W3SSVC failed to respond to a stop request",
                     u"CheckAndStartW3CService", u"The service is already running."}),
            30'200},
        RestartCase{"in an unknown state: not stopped, not started", Service(8), Restart({}, -1105),
                    0},
        RestartCase{"state unreadable: not known to be stopped",
                    With(Service(state::running), [](sim::ServiceScript& s) { s.queryError = 5; }),
                    Restart({}, -1105), 0},
        RestartCase{
            "the start fails: only the final line tells",
            With(Service(state::running), [](sim::ServiceScript& s) { s.startError = 1069; }),
            Restart(StartLines({u"StartService returned the following: "
                                u"ERROR_SERVICE_LOGON_FAILED",
                                u"StartServiceWithLogging returned false"}),
                    -1106),
            1000}),
    webrig::testing::NameFromWhat());

TEST(RestartW3cService, OnlyIis6AndEarlierWithRestartPropExactlyOneOpenTheService) {
    struct Case {
        int32_t iisMajorVersion;
        int32_t ignoreIIS;
        const char16_t* restartProp;
        uint32_t managerError;
        int32_t result;
        std::vector<qm::wstring> lines;
    };
    for (const Case& c : {Case{7, 0, u"1", 0, 0, {}}, Case{6, 1, u"1", 0, 0, {}},
                          Case{6, 0, u"01", 0, 0, {u"RestartProp value: 01"}},
                          Case{6, 0, u" 1", 0, 0, {u"RestartProp value:  1"}},
                          Case{6, 0, u"1", 5, -1101, {u"RestartProp value: 1"}}}) {
        ScriptedServices machine(Services({{u"W3SVC", Service(state::stopped)}}, c.managerError));
        CIISPropertyBag bag;
        bag.iisMajorVersion = c.iisMajorVersion;
        bag.ignoreIIS = c.ignoreIIS;
        bag.restartW3svc = c.restartProp;
        EXPECT_EQ(RestartW3cService(machine.Context(), bag), c.result);
        EXPECT_THAT(machine.sink.logLines, ElementsAreArray(c.lines));
        EXPECT_EQ(machine.StateOf(u"W3SVC"), state::stopped);
    }
}

}  // namespace
}  // namespace webrig::services
