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

struct AdminCase {
    const char* what;
    sim::ServicesFile services;
    int32_t result;
    std::vector<qm::wstring> lines;
    std::vector<std::pair<qm::wstring, int32_t>> errors;
    uint32_t elapsed;
    int32_t ignoreIIS;
};

class CheckIisAdminServiceTest : public ::testing::TestWithParam<AdminCase> {};

TEST_P(CheckIisAdminServiceTest, StartsTheServiceOrSaysWhyNot) {
    const AdminCase& c = GetParam();
    ScriptedServices machine(c.services);
    // Writing a log line may change the thread's last error: the start's code must survive it.
    machine.sink.lastErrorAfterLog = 997;
    CIISPropertyBag bag;
    EXPECT_EQ(CheckIisAdminService(machine.Context(), bag), c.result);
    EXPECT_THAT(machine.sink.logLines, ElementsAreArray(c.lines));
    EXPECT_THAT(machine.sink.errors, ElementsAreArray(c.errors));
    EXPECT_EQ(machine.Elapsed(), c.elapsed);
    EXPECT_EQ(bag.ignoreIIS, c.ignoreIIS);
    EXPECT_EQ(machine.control().OpenHandleCount(), 0u);
}

const auto kOpenFails = [](uint32_t error) {
    return IisAdmin(
        With(Service(state::running), [=](sim::ServiceScript& s) { s.openError = error; }));
};

INSTANTIATE_TEST_SUITE_P(
    Cases, CheckIisAdminServiceTest,
    ::testing::Values(
        AdminCase{"running", IisAdmin(Service(state::running)), 0, {}, {}, 0, 0},
        AdminCase{"starting counts as running",
                  IisAdmin(Service(state::start_pending, 3000)),
                  0,
                  {},
                  {},
                  3000,
                  0},
        AdminCase{"stopped: started and waited for while it progresses",
                  IisAdmin(Service(state::stopped, 5000)),
                  0,
                  {},
                  {},
                  5000,
                  0},
        AdminCase{"start that stands still: given up after the wait hint",
                  IisAdmin(With(Service(state::stopped, std::nullopt),
                                [](sim::ServiceScript& s) { s.waitHintMs = 3000; })),
                  0,
                  {u"Unable to start IIS Admin Service"},
                  {},
                  4000,
                  0},
        AdminCase{"a long wait hint polls every ten seconds at most",
                  IisAdmin(With(Service(state::stopped, std::nullopt),
                                [](sim::ServiceScript& s) { s.waitHintMs = 150'000; })),
                  0,
                  {u"Unable to start IIS Admin Service"},
                  {},
                  160'000,
                  0},
        AdminCase{
            "disabled",
            IisAdmin(With(Service(state::stopped),
                          [](sim::ServiceScript& s) { s.startType = sim::StartType::disabled; })),
            -1108,
            {u"StartService returned the following: ERROR_SERVICE_DISABLED"},
            {{u"IIS Admin Service is disabled", -1108}},
            0,
            0},
        AdminCase{"start refused",
                  IisAdmin(With(Service(state::stopped),
                                [](sim::ServiceScript& s) { s.startError = 1069; })),
                  -1104,
                  {u"StartService returned the following: ERROR_SERVICE_LOGON_FAILED"},
                  {{u"Unable to start IIS Admin Service", -1104}},
                  0,
                  0},
        AdminCase{"paused cannot be started",
                  IisAdmin(Service(state::paused)),
                  -1104,
                  {u"StartService returned the following: ERROR_SERVICE_ALREADY_RUNNING"},
                  {{u"Unable to start IIS Admin Service", -1104}},
                  0,
                  0},
        AdminCase{"state unreadable",
                  IisAdmin(With(Service(state::running),
                                [](sim::ServiceScript& s) { s.queryError = 5; })),
                  -1103,
                  {u"Unable to query the status of IIS Admin Service"},
                  {},
                  0,
                  0},
        AdminCase{"missing",
                  Services({}),
                  -1102,
                  {u"Unable to open the IIS Admin Service",
                   u"OpenService returned the following: ERROR_SERVICE_DOES_NOT_EXIST"},
                  {},
                  0,
                  0},
        AdminCase{"access denied",
                  kOpenFails(5),
                  -1102,
                  {u"Unable to open the IIS Admin Service",
                   u"OpenService returned the following: ERROR_ACCESS_DENIED"},
                  {},
                  0,
                  0},
        AdminCase{
            "other open failure by number",
            kOpenFails(1115),
            -1102,
            {u"Unable to open the IIS Admin Service", u"OpenService returned the following: 1115"},
            {},
            0,
            0},
        AdminCase{"no manager",
                  IisAdmin(Service(state::running), 5),
                  -1101,
                  {u"Unable to open the Service Manager"},
                  {},
                  0,
                  0},
        AdminCase{"no service control on this system: IIS work off",
                  IisAdmin(Service(state::running), 120),
                  0,
                  {u"Unable to open the Service Manager",
                   u"Ignoring IIS custom actions because an unsupported version of IIS was "
                   u"detected"},
                  {},
                  0,
                  1}),
    webrig::testing::NameFromWhat());

}  // namespace
}  // namespace webrig::services
