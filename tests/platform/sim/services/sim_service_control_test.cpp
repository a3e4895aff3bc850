#include "platform/sim/services/sim_service_control.h"

#include <gtest/gtest.h>

#include <fstream>

#include "platform/sim/machine/sim_clock.h"
#include "support/last_error.h"
#include "testing/temp_folder.h"

namespace webrig::sim {
namespace {

namespace state = platform::service_state;
namespace access = platform::service_access;
using platform::ServiceHandle;
using platform::ServiceStatus;

class SimServiceControlTest : public ::testing::Test {
  protected:
    SimServiceControl& Make(ServiceScript script, uint32_t managerError = 0) {
        ServicesFile file;
        file.managerError = managerError;
        file.services.emplace(u"W3SVC", script);
        m_control =
            std::make_unique<SimServiceControl>(file, m_folder.path() / "services.json", m_clock);
        return *m_control;
    }

    ServiceHandle Open(uint32_t rights = access::all_access) {
        const ServiceHandle manager = m_control->OpenManager(access::manager_all_access);
        EXPECT_NE(manager, platform::kNoService);
        const ServiceHandle service = m_control->OpenNamedService(manager, u"w3svc", rights);
        m_control->Close(manager);
        return service;
    }

    uint32_t StateOf(ServiceHandle service) {
        ServiceStatus status;
        EXPECT_TRUE(m_control->QueryStatus(service, status));
        return status.currentState;
    }

    testing::TempFolder m_folder;
    SimClock m_clock{0xFFFFF000u};  // the tick count wraps during these tests
    std::unique_ptr<SimServiceControl> m_control;
};

ServiceScript Stopped(std::optional<uint32_t> startPendingMs = 0) {
    ServiceScript script;
    script.state = state::stopped;
    script.startPendingMs = startPendingMs;
    script.stopPendingMs = 800;
    script.waitHintMs = 2000;
    script.checkPointEveryMs = 500;
    return script;
}

TEST_F(SimServiceControlTest, AStartStaysPendingForItsTimeWhileTheCheckpointMoves) {
    Make(Stopped(1200));
    const ServiceHandle service = Open();
    ASSERT_TRUE(m_control->Start(service));
    ServiceStatus status;
    ASSERT_TRUE(m_control->QueryStatus(service, status));
    EXPECT_EQ(status.currentState, state::start_pending);
    EXPECT_EQ(status.checkPoint, 1u);
    EXPECT_EQ(status.waitHint, 2000u);
    m_clock.Sleep(1100);  // across the wrap of the tick count
    ASSERT_TRUE(m_control->QueryStatus(service, status));
    EXPECT_EQ(status.currentState, state::start_pending);
    EXPECT_EQ(status.checkPoint, 3u);
    m_clock.Sleep(100);
    ASSERT_TRUE(m_control->QueryStatus(service, status));
    EXPECT_EQ(status.currentState, state::running);
    EXPECT_EQ(status.checkPoint, 0u);
    EXPECT_EQ(status.waitHint, 0u);
}

// The file holds the state a service settles in, so that the next process finds it there; a
// start that never ends stays pending.
TEST_F(SimServiceControlTest, StateChangesReachTheFileAsTheStateTheServiceSettlesIn) {
    for (const auto& [startPendingMs, settled] :
         {std::pair{std::optional<uint32_t>(1200), state::running},
          std::pair{std::optional<uint32_t>(), state::start_pending}}) {
        Make(Stopped(startPendingMs));
        const ServiceHandle service = Open();
        ASSERT_TRUE(m_control->Start(service));
        std::ifstream saved(m_folder.path() / "services.json");
        const std::string text((std::istreambuf_iterator<char>(saved)), {});
        EXPECT_EQ(ParseServicesFile(text, "services.json").services.at(u"W3SVC").state, settled);
        m_clock.Sleep(3'600'000);
        EXPECT_EQ(StateOf(service), settled);
    }
}

// A stop, and a pending state written in the file, each take their scripted time.
TEST_F(SimServiceControlTest, PendingStatesEndAfterTheirScriptedTime) {
    struct Case {
        const char* what;
        uint32_t initial;
        bool ignoresStop;
        bool stop;
        uint32_t pending;
        uint32_t sleepMs;
        uint32_t settled;
    };
    for (const Case& c :
         {Case{"stop", state::running, false, true, state::stop_pending, 800, state::stopped},
          Case{"ignored stop", state::running, true, true, state::running, 60'000, state::running},
          Case{"stop pending in the file", state::stop_pending, false, false, state::stop_pending,
               800, state::stopped}}) {
        ServiceScript script = Stopped();
        script.state = c.initial;
        script.ignoresStop = c.ignoresStop;
        Make(script);
        const ServiceHandle service = Open();
        ServiceStatus status;
        if (c.stop) {
            ASSERT_TRUE(m_control->Control(service, platform::kServiceControlStop, status));
        }
        EXPECT_EQ(c.stop ? status.currentState : StateOf(service), c.pending) << c.what;
        m_clock.Sleep(c.sleepMs - 1);
        EXPECT_EQ(StateOf(service), c.pending) << c.what;
        m_clock.Sleep(1);
        EXPECT_EQ(StateOf(service), c.settled) << c.what;
    }
}

// Each failure a caller can meet leaves Windows' code in the last error and the state as it was.
TEST_F(SimServiceControlTest, FailuresLeaveTheirCodeInTheLastError) {
    enum Call { start, stop, query };
    struct Failure {
        const char* what;
        uint32_t initial;
        uint32_t rights;
        Call call;
        uint32_t scriptedError;  // the start, stop or query error of the script
        bool disabled;
        uint32_t error;
    };
    constexpr uint32_t kAll = access::all_access;
    for (const Failure& f : {
             Failure{"disabled", state::stopped, kAll, start, 0, true, 1058},
             Failure{"scripted start refusal", state::stopped, kAll, start, 1069, false, 1069},
             Failure{"already running", state::running, kAll, start, 0, false, 1056},
             Failure{"paused is not stopped", state::paused, kAll, start, 0, false, 1056},
             Failure{"start without the right", state::stopped, access::query_status, start, 0,
                     false, 5},
             Failure{"stop of a stopped service", state::stopped, kAll, stop, 0, false, 1062},
             Failure{"scripted stop refusal", state::running, kAll, stop, 1061, false, 1061},
             Failure{"stop without the right", state::running, access::query_status | access::start,
                     stop, 0, false, 5},
             Failure{"scripted query failure", state::running, kAll, query, 6, false, 6},
             Failure{"query without the right", state::running, access::start, query, 0, false, 5},
         }) {
        ServiceScript script = Stopped();
        script.state = f.initial;
        script.startType = f.disabled ? StartType::disabled : StartType::demand;
        (f.call == start  ? script.startError
         : f.call == stop ? script.stopError
                          : script.queryError) = f.scriptedError;
        Make(script);
        const ServiceHandle service = Open(f.rights);
        qm::set_last_error(0);
        ServiceStatus status;
        const bool succeeded =
            f.call == start  ? m_control->Start(service)
            : f.call == stop ? m_control->Control(service, platform::kServiceControlStop, status)
                             : m_control->QueryStatus(service, status);
        EXPECT_FALSE(succeeded) << f.what;
        EXPECT_EQ(qm::get_last_error(), f.error) << f.what;
        EXPECT_EQ(m_control->Snapshot().services.at(u"W3SVC").state, f.initial) << f.what;
    }
}

TEST_F(SimServiceControlTest, OpeningFailsAsTheManagerDoes) {
    Make(Stopped(), 120);
    qm::set_last_error(0);
    EXPECT_EQ(m_control->OpenManager(access::manager_all_access), platform::kNoService);
    EXPECT_EQ(qm::get_last_error(), 120u);

    ServiceScript script = Stopped();
    script.openError = 5;
    Make(script);
    const ServiceHandle manager = m_control->OpenManager(access::manager_all_access);
    struct Case {
        ServiceHandle manager;
        const char16_t* name;
        uint32_t error;
    };
    for (const Case& c :
         {Case{manager, u"W3SVC", 5}, Case{manager, u"IISADMIN", 1060}, Case{manager, u"", 123},
          Case{manager, u"W3\\SVC", 123}, Case{ServiceHandle{0x1234}, u"W3SVC", 6}}) {
        qm::set_last_error(0);
        EXPECT_EQ(m_control->OpenNamedService(c.manager, c.name, access::all_access),
                  platform::kNoService);
        EXPECT_EQ(qm::get_last_error(), c.error) << qm::to_utf8(c.name);
    }
    EXPECT_TRUE(m_control->Close(manager));
    EXPECT_FALSE(m_control->Close(manager));
    EXPECT_EQ(qm::get_last_error(), 6u);
    EXPECT_EQ(m_control->OpenHandleCount(), 0u);
}

TEST_F(SimServiceControlTest, AFailedSaveLeavesTheServiceAsItWas) {
    ServicesFile file;
    file.services.emplace(u"W3SVC", Stopped());
    m_control = std::make_unique<SimServiceControl>(
        file, m_folder.path() / "services.json", m_clock,
        [](const std::filesystem::path&, std::span<const std::byte>) { return false; });
    const ServiceHandle service = Open();
    EXPECT_FALSE(m_control->Start(service));
    EXPECT_EQ(qm::get_last_error(), 29u);
    EXPECT_EQ(StateOf(service), state::stopped);
}

}  // namespace
}  // namespace webrig::sim
