#include "services/service_start.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "scripted_services.h"
#include "support/format.h"
#include "support/last_error.h"

namespace webrig::services {
namespace {

using ::testing::ElementsAre;
using testing::ScriptedServices;
using testing::Service;
using testing::Services;

TEST(IsStartable, AnswersByTheStateAndPausesForPendingOnes) {
    struct Case {
        uint32_t state;
        const char16_t* line;
        bool startable;
        uint32_t sleptMs;
    };
    for (const Case& c : {Case{1, u"First case.", true, 0}, Case{6, u"Second case.", true, 1000},
                          Case{7, u"Third case.", false, 0}, Case{8, u"Fourth case.", false, 0}}) {
        ScriptedServices machine(Services({}));
        EXPECT_EQ(IsStartable(machine.Context(), c.state), c.startable) << c.state;
        EXPECT_THAT(machine.sink.logLines, ElementsAre(qm::format(u"IsStartable status: %d",
                                                                  static_cast<int32_t>(c.state)),
                                                       c.line));
        EXPECT_EQ(machine.Elapsed(), c.sleptMs) << c.state;
    }
}

// A start failure is named in the log, by number where the table has no name, and its code is
// still the last error afterwards, even where writing the log line changed it.
TEST(StartServiceWithLogging, NamesTheFailureAndKeepsItsCode) {
    for (const auto& [error, name] :
         {std::pair<uint32_t, const char16_t*>{1058, u"ERROR_SERVICE_DISABLED"},
          {5, u"ERROR_ACCESS_DENIED"},
          {1075, u"ERROR_SERVICE_DEPENDENCY_DELETED"},
          {1057, u"1057"}}) {
        sim::ServiceScript script = Service(1);
        script.startError = error;
        ScriptedServices machine(Services({{u"W3SVC", script}}));
        machine.sink.lastErrorAfterLog = 997;
        EXPECT_FALSE(StartServiceWithLogging(machine.Context(), machine.OpenW3svc()));
        EXPECT_EQ(qm::get_last_error(), error);
        EXPECT_THAT(machine.sink.logLines,
                    ElementsAre(qm::wstring(u"StartService returned the following: ") + name));
    }
}

TEST(StartServiceWithLogging, ASuccessfulStartLogsNothing) {
    ScriptedServices machine(Services({{u"W3SVC", Service(1)}}));
    EXPECT_TRUE(StartServiceWithLogging(machine.Context(), machine.OpenW3svc()));
    EXPECT_TRUE(machine.sink.logLines.empty());
    EXPECT_EQ(machine.StateOf(u"W3SVC"), platform::service_state::running);
}

TEST(WaitForServiceToReachState, PollsUntilTheStateOrTheDeadline) {
    struct Case {
        const char* what;
        std::optional<uint32_t> startMs;
        bool reached;
        uint32_t elapsed;
    };
    for (const Case& c :
         {Case{"at once", 0, true, 0}, Case{"in 1,250 ms", 1250, true, 1300},
          Case{"just in time", 15'000, true, 15'000}, Case{"too late", 15'200, false, 15'100},
          Case{"never", std::nullopt, false, 15'100}}) {
        ScriptedServices machine(Services({{u"W3SVC", Service(1, c.startMs)}}));
        const platform::ServiceHandle service = machine.OpenW3svc();
        ASSERT_TRUE(machine.control().Start(service));
        EXPECT_EQ(WaitForServiceToReachState(machine.Context(), service,
                                             platform::service_state::running, 15'000),
                  c.reached)
            << c.what;
        EXPECT_EQ(machine.Elapsed(), c.elapsed) << c.what;
        EXPECT_TRUE(machine.sink.logLines.empty());
    }
}

// The deadline is compared unsigned: one that wraps past zero is already behind a tick count
// close to the wrap, so the wait gives up at once, as GetTickCount code does there.
TEST(WaitForServiceToReachState, GivesUpAtOnceWhenTheDeadlineWraps) {
    ScriptedServices machine(Services({{u"W3SVC", Service(1, 500)}}));
    platform::Clock& clock = machine.machine().clock();
    clock.Sleep(0xFFFFFFFFu - clock.TickCount() - 5000);  // 5 s before the wrap
    const platform::ServiceHandle service = machine.OpenW3svc();
    ASSERT_TRUE(machine.control().Start(service));
    const uint32_t before = clock.TickCount();
    EXPECT_FALSE(WaitForServiceToReachState(machine.Context(), service,
                                            platform::service_state::running, 15'000));
    EXPECT_EQ(clock.TickCount() - before, 0u);
}

TEST(WaitForServiceToReachState, AFailedQueryKeepsTheLastKnownState) {
    sim::ServiceScript script = Service(4);
    script.queryError = 5;
    ScriptedServices machine(Services({{u"W3SVC", script}}));
    // Nothing was ever read: the state is unknown and the wait runs to its deadline.
    EXPECT_FALSE(WaitForServiceToReachState(machine.Context(), machine.OpenW3svc(),
                                            platform::service_state::running, 2000));
    EXPECT_EQ(machine.Elapsed(), 2100u);
}

}  // namespace
}  // namespace webrig::services
