#include "services/iis_admin_check.h"

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

sim::ServicesFile IisAdmin(sim::ServiceScript script, uint32_t managerError = 0) {
    return Services({{u"IISADMIN", script}}, managerError);
}

// The error report goes with the two start failures; everything else is in the log only.
struct AdminCase {
    const char* what;
    sim::ServicesFile services;
    int32_t result;
    std::vector<qm::wstring> lines;
    uint32_t elapsed = 0;
    int32_t ignoreIIS = 0;
};

std::vector<std::pair<qm::wstring, int32_t>> ErrorsOf(int32_t result) {
    if (result == -1108) {
        return {{u"IIS Admin Service is disabled", -1108}};
    }
    if (result == -1104) {
        return {{u"Unable to start IIS Admin Service", -1104}};
    }
    return {};
}

class CheckIisAdminServiceTest : public ::testing::TestWithParam<AdminCase> {};

TEST_P(CheckIisAdminServiceTest, StartsTheServiceOrSaysWhyNot) {
    const AdminCase& c = GetParam();
    ScriptedServices machine(c.services);
    // Writing a log line may change the thread's last error: the start's code must survive it.
    machine.sink.lastErrorAfterLog = 997;
    CIISPropertyBag bag;
    EXPECT_EQ(CheckIisAdminService(machine.Context(), bag), c.result);
    EXPECT_THAT(machine.sink.logLines, ElementsAreArray(c.lines));
    EXPECT_THAT(machine.sink.errors, ElementsAreArray(ErrorsOf(c.result)));
    EXPECT_EQ(machine.Elapsed(), c.elapsed);
    EXPECT_EQ(bag.ignoreIIS, c.ignoreIIS);
    EXPECT_EQ(machine.control().OpenHandleCount(), 0u);
}

sim::ServicesFile Changed(void (*change)(sim::ServiceScript&),
                          uint32_t state = platform::service_state::stopped) {
    return IisAdmin(With(Service(state, std::nullopt), change));
}

const std::vector<qm::wstring> kCannotStart = {u"Unable to start IIS Admin Service"};
const auto kOpenFails = [](uint32_t error) {
    return IisAdmin(
        With(Service(state::running), [=](sim::ServiceScript& s) { s.openError = error; }));
};

INSTANTIATE_TEST_SUITE_P(
    Cases, CheckIisAdminServiceTest,
    ::testing::Values(
        AdminCase{"running", IisAdmin(Service(state::running)), 0, {}},
        AdminCase{"starting counts as running",
                  IisAdmin(Service(state::start_pending, 3000)),
                  0,
                  {},
                  3000},
        AdminCase{"stopped: started and waited for while it progresses",
                  IisAdmin(Service(state::stopped, 5000)),
                  0,
                  {},
                  5000},
        AdminCase{"start that stands still: given up after the wait hint",
                  Changed([](sim::ServiceScript& s) { s.waitHintMs = 3000; }), 0, kCannotStart,
                  4000},
        AdminCase{"a long wait hint polls every ten seconds at most",
                  Changed([](sim::ServiceScript& s) { s.waitHintMs = 150'000; }), 0, kCannotStart,
                  160'000},
        AdminCase{"disabled",
                  Changed([](sim::ServiceScript& s) { s.startType = sim::StartType::disabled; }),
                  -1108,
                  {u"StartService returned the following: ERROR_SERVICE_DISABLED"}},
        AdminCase{"start refused",
                  Changed([](sim::ServiceScript& s) { s.startError = 1069; }),
                  -1104,
                  {u"StartService returned the following: ERROR_SERVICE_LOGON_FAILED"}},
        AdminCase{"paused cannot be started",
                  IisAdmin(Service(state::paused)),
                  -1104,
                  {u"StartService returned the following: ERROR_SERVICE_ALREADY_RUNNING"}},
        AdminCase{"state unreadable",
                  Changed([](sim::ServiceScript& s) { s.queryError = 5; }, state::running),
                  -1103,
                  {u"Unable to query the status of IIS Admin Service"}},
        AdminCase{"missing",
                  Services({}),
                  -1102,
                  {u"Unable to open the IIS Admin Service",
                   u"OpenService returned the following: ERROR_SERVICE_DOES_NOT_EXIST"}},
        AdminCase{"access denied",
                  kOpenFails(5),
                  -1102,
                  {u"Unable to open the IIS Admin Service",
                   u"OpenService returned the following: ERROR_ACCESS_DENIED"}},
        AdminCase{
            "other open failure by number",
            kOpenFails(1115),
            -1102,
            {u"Unable to open the IIS Admin Service", u"OpenService returned the following: 1115"}},
        AdminCase{"no manager",
                  IisAdmin(Service(state::running), 5),
                  -1101,
                  {u"Unable to open the Service Manager"}},
        AdminCase{"no service control on this system: IIS work off",
                  IisAdmin(Service(state::running), 120),
                  0,
                  {u"Unable to open the Service Manager",
                   u"Ignoring IIS custom actions because an unsupported version of IIS was "
                   u"detected"},
                  0,
                  1}),
    webrig::testing::NameFromWhat());

}  // namespace
}  // namespace webrig::services
