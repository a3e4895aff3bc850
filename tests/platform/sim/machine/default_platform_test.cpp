#include "platform/default_platform.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>

#include "platform/sim/machine/machine.h"
#include "platform/sim/machine/machine_layout.h"
#include "support/last_error.h"
#include "testing/file_bytes.h"
#include "testing/temp_machine.h"

namespace webrig::platform {
namespace {

void SetMachineVariable(const char* value) {
    value != nullptr ? ::setenv("WEBRIG_MACHINE", value, 1) : ::unsetenv("WEBRIG_MACHINE");
}

// Sets WEBRIG_MACHINE for one test and puts back what was there.
class MachineVariable {
  public:
    explicit MachineVariable(const char* value) {
        const char* old = std::getenv("WEBRIG_MACHINE");
        m_old = old != nullptr ? std::optional<std::string>(old) : std::nullopt;
        SetMachineVariable(value);
    }
    ~MachineVariable() { SetMachineVariable(m_old ? m_old->c_str() : nullptr); }

  private:
    std::optional<std::string> m_old;
};

// Every machine call fails as on a machine that is not ready; what belongs to the process works.
void ExpectUnavailable(Platform& platform) {
    RegKey key{};
    EXPECT_EQ(platform.registry().OpenKey(kLocalMachine, u"SOFTWARE", key_access::read, key),
              qm::win32::not_ready);
    EXPECT_EQ(
        platform.registry().CreateKey(kLocalMachine, u"SOFTWARE\\X", key_access::all_access, key),
        qm::win32::not_ready);
    EXPECT_FALSE(platform.files().PathExists(u"C:\\Windows"));
    std::vector<std::byte> contents;
    EXPECT_EQ(platform.files().ReadWholeFile(u"C:\\Windows\\win.ini", 100, contents),
              qm::win32::not_ready);
    EXPECT_EQ(qm::get_last_error(), qm::win32::not_ready);
    EXPECT_EQ(platform.system().WindowsDirectory(), u"");
    EXPECT_EQ(platform.system().Version().major, 0u);
    EXPECT_EQ(platform.system().NativeArchitecture(), ProcessorArchitecture::unknown);
    const uint32_t ticks = platform.clock().TickCount();
    platform.clock().Sleep(10);
    EXPECT_EQ(platform.clock().TickCount(), ticks + 10);
    EXPECT_EQ(platform.ansiCodePage().FromWide(u"\u20AC"), "\x80");
    EXPECT_NE(platform.modules().FindModule(u"webrig.dll"), kNoModule);
}

// Each problem is printed once and returned, and a malformed machine is left as it is.
TEST(OpenDefaultPlatform, AMachineThatCannotBeOpenedIsReportedAndUnavailable) {
    testing::TempMachine malformed;
    const auto json = sim::MachineJsonPath(malformed.path());
    testing::WriteBytes(json, testing::Bytes("{ not json"));
    const std::string missing = (malformed.path() / "gone").string();
    const std::pair<const char*, std::string> cases[] = {
        {nullptr, "the environment variable WEBRIG_MACHINE is not set"},
        {missing.c_str(), missing + ": the machine folder does not exist"},
        {malformed.path().c_str(), json.string() + ":1: not valid JSON"},
    };
    for (const auto& [variable, reason] : cases) {
        const MachineVariable set(variable);
        qm::wstring problem = u"stale";
        ::testing::internal::CaptureStderr();
        const auto platform = OpenDefaultPlatform(problem);
        const std::string printed = ::testing::internal::GetCapturedStderr();
        ASSERT_NE(platform, nullptr);
        EXPECT_EQ(qm::to_utf8(problem).rfind(reason, 0), 0u) << qm::to_utf8(problem);
        EXPECT_EQ(printed,
                  "webrig: the simulated machine is unavailable: " + qm::to_utf8(problem) + "\n");
        ExpectUnavailable(*platform);
    }
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
