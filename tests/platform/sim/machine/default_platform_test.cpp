#include "platform/default_platform.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/sim/machine/machine.h"
#include "platform/sim/machine/machine_layout.h"
#include "support/last_error.h"
#include "testing/file_bytes.h"
#include "testing/temp_machine.h"

namespace webrig::platform {
namespace {

// Sets WEBRIG_MACHINE for one test and puts back what was there.
class MachineVariable {
  public:
    explicit MachineVariable(const char* value) {
        if (const char* old = std::getenv("WEBRIG_MACHINE")) {
            m_old = old;
            m_hadOld = true;
        }
        if (value != nullptr) {
            ::setenv("WEBRIG_MACHINE", value, 1);
        } else {
            ::unsetenv("WEBRIG_MACHINE");
        }
    }
    ~MachineVariable() {
        if (m_hadOld) {
            ::setenv("WEBRIG_MACHINE", m_old.c_str(), 1);
        } else {
            ::unsetenv("WEBRIG_MACHINE");
        }
    }

  private:
    std::string m_old;
    bool m_hadOld = false;
};

void ExpectUnavailable(Platform& platform) {
    RegKey key{};
    EXPECT_EQ(platform.registry().OpenKey(kLocalMachine, u"SOFTWARE", key_access::read, key),
              qm::win32::not_ready);
    EXPECT_EQ(
        platform.registry().CreateKey(kLocalMachine, u"SOFTWARE\\X", key_access::all_access, key),
        qm::win32::not_ready);
    RegValue value;
    EXPECT_EQ(platform.registry().QueryValue(kLocalMachine, u"v", value), qm::win32::not_ready);
    EXPECT_FALSE(platform.files().PathExists(u"C:\\Windows"));
    std::vector<std::byte> contents;
    EXPECT_EQ(platform.files().ReadWholeFile(u"C:\\Windows\\win.ini", 100, contents),
              qm::win32::not_ready);
    EXPECT_EQ(qm::get_last_error(), qm::win32::not_ready);
    EXPECT_EQ(platform.system().WindowsDirectory(), u"");
    EXPECT_EQ(platform.system().SystemDirectory(), u"");
    EXPECT_EQ(platform.system().Version().major, 0u);
    EXPECT_EQ(platform.system().Version().minor, 0u);
    EXPECT_EQ(platform.system().NativeArchitecture(), ProcessorArchitecture::unknown);
    // What belongs to the process still works.
    const uint32_t ticks = platform.clock().TickCount();
    platform.clock().Sleep(10);
    EXPECT_EQ(platform.clock().TickCount(), ticks + 10);
    EXPECT_EQ(platform.ansiCodePage().FromWide(u"\u20AC"), "\x80");
    const Bstr text = platform.automation().SysAllocStringLen(u"ok");
    EXPECT_EQ(platform.automation().SysStringLen(text), 2u);
    platform.automation().SysFreeString(text);
    EXPECT_NE(platform.modules().FindModule(u"webrig.dll"), kNoModule);
    std::shared_ptr<IHostOperationSource> source;
    EXPECT_EQ(platform.hostObjects().OperationSourceFrom(nullptr, source), qm::hr::pointer);
}

TEST(OpenDefaultPlatform, WithoutTheVariableTheMachineIsUnavailable) {
    const MachineVariable unset(nullptr);
    qm::wstring problem = u"stale";
    ::testing::internal::CaptureStderr();
    const auto platform = OpenDefaultPlatform(problem);
    const std::string printed = ::testing::internal::GetCapturedStderr();
    ASSERT_NE(platform, nullptr);
    EXPECT_EQ(problem, u"the environment variable WEBRIG_MACHINE is not set");
    EXPECT_EQ(printed,
              "webrig: the simulated machine is unavailable: the environment variable "
              "WEBRIG_MACHINE is not set\n");
    ExpectUnavailable(*platform);
}

TEST(OpenDefaultPlatform, AMissingFolderIsReported) {
    const testing::TempFolder folder;
    const std::string missing = (folder.path() / "gone").string();
    const MachineVariable variable(missing.c_str());
    qm::wstring problem;
    ::testing::internal::CaptureStderr();
    const auto platform = OpenDefaultPlatform(problem);
    const std::string printed = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(problem, qm::from_utf8(missing + ": the machine folder does not exist"));
    EXPECT_EQ(printed, "webrig: the simulated machine is unavailable: " + missing +
                           ": the machine folder does not exist\n");
    ExpectUnavailable(*platform);
}

TEST(OpenDefaultPlatform, AMalformedMachineIsReportedAndLeftAlone) {
    testing::TempMachine temp;
    const auto json = sim::MachineJsonPath(temp.path());
    testing::WriteBytes(json, testing::Bytes("{ not json"));
    const MachineVariable variable(temp.path().c_str());
    qm::wstring problem;
    ::testing::internal::CaptureStderr();
    const auto platform = OpenDefaultPlatform(problem);
    ::testing::internal::GetCapturedStderr();
    EXPECT_NE(problem.find(qm::from_utf8(json.string() + ":1: ")), qm::wstring::npos)
        << qm::to_utf8(problem);
    ExpectUnavailable(*platform);
    EXPECT_EQ(testing::ReadBytes(json), testing::Bytes("{ not json"));
}

TEST(OpenDefaultPlatform, OpensTheMachineTheVariableNames) {
    testing::TempMachine temp;
    const MachineVariable variable(temp.path().c_str());
    qm::wstring problem = u"stale";
    ::testing::internal::CaptureStderr();
    const auto platform = OpenDefaultPlatform(problem);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(problem, u"");
    EXPECT_EQ(platform->system().WindowsDirectory(), u"C:\\Windows");
    RegKey key{};
    EXPECT_EQ(platform->registry().CreateKey(kLocalMachine, u"SOFTWARE\\FromDefault",
                                             key_access::all_access, key),
              0u);
    EXPECT_NE(dynamic_cast<sim::Machine*>(platform.get()), nullptr);
}

}  // namespace
}  // namespace webrig::platform
