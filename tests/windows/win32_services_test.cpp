// The service control layer against Wine's service control manager: failures leave Windows'
// own codes in the thread's last error.

#include <gtest/gtest.h>

#include "platform/win32/win32_service_control.h"
#include "support/last_error.h"
#include "wine_test_support.h"

namespace webrig::windows_testing {
namespace {

using platform::kNoService;
namespace service_access = platform::service_access;

class Win32ServiceControlTest : public ::testing::Test {
  protected:
    ~Win32ServiceControlTest() override {
        for (const platform::ServiceHandle handle : {service, manager}) {
            if (handle != kNoService) {
                services.Close(handle);
            }
        }
    }

    win32::Win32ServiceControl services;
    platform::ServiceHandle manager = services.OpenManager(service_access::manager_all_access);
    platform::ServiceHandle service = kNoService;
};

TEST_F(Win32ServiceControlTest, IisServicesAreAbsentUnderWine) {
    ASSERT_NE(manager, kNoService);
    for (const char16_t* name : {u"W3SVC", u"IISADMIN"}) {
        qm::set_last_error(0);
        EXPECT_EQ(services.OpenNamedService(manager, name, service_access::all_access), kNoService);
        EXPECT_EQ(qm::get_last_error(), 1060u) << "ERROR_SERVICE_DOES_NOT_EXIST";
    }
}

TEST_F(Win32ServiceControlTest, ADisabledServiceRefusesToStartWithError1058) {
    const TestService disabled(L"WebrigDisabledService", SERVICE_DISABLED,
                               L"C:\\windows\\system32\\webrig-none.exe");
    service = services.OpenNamedService(
        manager, u"WebrigDisabledService",
        service_access::query_status | service_access::start | service_access::stop);
    ASSERT_NE(service, kNoService);
    platform::ServiceStatus status;
    ASSERT_TRUE(services.QueryStatus(service, status));
    EXPECT_EQ(status.currentState, platform::service_state::stopped);
    EXPECT_FALSE(services.Start(service));
    EXPECT_EQ(qm::get_last_error(), 1058u) << "ERROR_SERVICE_DISABLED";
    // A stopped service takes no stop control.
    EXPECT_FALSE(services.Control(service, platform::kServiceControlStop, status));
    EXPECT_EQ(qm::get_last_error(), 1062u) << "ERROR_SERVICE_NOT_ACTIVE";
}

TEST_F(Win32ServiceControlTest, AClosedHandleIsInvalid) {
    platform::ServiceStatus status;
    EXPECT_FALSE(services.QueryStatus(kNoService, status));
    EXPECT_EQ(qm::get_last_error(), 6u) << "ERROR_INVALID_HANDLE";
}

}  // namespace
}  // namespace webrig::windows_testing
