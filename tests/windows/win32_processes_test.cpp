// Child processes through the Win32 layer under Wine: the stand-in program (stand_in/) started
// as netsh.exe would be, its command line as it arrived and its exit code read after the wait.

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "platform/win32/win32_platform.h"
#include "support/last_error.h"
#include "wine_test_support.h"

namespace webrig::windows_testing {
namespace {

using platform::kNoProcess;

class Win32ProcessesTest : public ::testing::Test {
  protected:
    Win32ProcessesTest() { ::SetEnvironmentVariableW(L"WEBRIG_STAND_IN_JOURNAL", journal.c_str()); }
    ~Win32ProcessesTest() override {
        ::SetEnvironmentVariableW(L"WEBRIG_STAND_IN_JOURNAL", nullptr);
        ::SetEnvironmentVariableW(L"WEBRIG_STAND_IN_EXIT_CODE", nullptr);
    }

    // What the stand-in wrote: its command lines, one a line.
    std::wstring Journal() const {
        std::ifstream file(journal.c_str(), std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(file)), {});
        return std::wstring(reinterpret_cast<const wchar_t*>(bytes.data()), bytes.size() / 2);
    }

    const ScratchFolder folder;
    const std::wstring journal = folder.path() + L"\\journal.txt";
    const std::wstring program = ProgramFolder() + L"\\stand_in\\netsh.exe";
    win32::Win32Platform platform;
    platform::Processes& processes = platform.processes();
};

TEST_F(Win32ProcessesTest, AProgramRunsToItsEndWithItsCommandLineAndItsExitCodeIsRead) {
    for (const wchar_t* exitCode : {L"0", L"1", L"3221225477"}) {
        SCOPED_TRACE(exitCode);
        ::SetEnvironmentVariableW(L"WEBRIG_STAND_IN_EXIT_CODE", exitCode);
        ::DeleteFileW(journal.c_str());
        const std::wstring commandLine = L"\"" + program +
                                         L"\" http add sslcert ipport=0.0.0.0:443 certhash=AB01 "
                                         L"appid={00112233-4455-6677-8899-AABBCCDDEEFF}";
        platform::ProcessInformation info;
        ASSERT_TRUE(processes.Start(Utf16(commandLine), info)) << qm::get_last_error();
        EXPECT_NE(info.process, kNoProcess);
        EXPECT_NE(info.processId, 0u);
        EXPECT_EQ(processes.Wait(info.process, platform::kInfinite), platform::kWaitObject0);
        uint32_t code = 0;
        ASSERT_TRUE(processes.GetExitCode(info.process, code));
        EXPECT_EQ(code, std::wcstoul(exitCode, nullptr, 10));
        EXPECT_EQ(Journal(), commandLine + L"\n");
        EXPECT_TRUE(processes.Close(info.thread));
        EXPECT_TRUE(processes.Close(info.process));
    }
}

TEST_F(Win32ProcessesTest, WhatIsNoProgramIsNotStarted) {
    platform::ProcessInformation info;
    EXPECT_FALSE(processes.Start(Utf16(L"\"" + folder.path() + L"\\aspnet_regiis.exe\" -i"), info));
    EXPECT_EQ(qm::get_last_error(), 2u);
    EXPECT_EQ(info.process, kNoProcess);
    const std::wstring text =
        folder.Write(L"netsh.exe", std::vector<std::byte>(64, std::byte{'x'}));
    EXPECT_FALSE(processes.Start(Utf16(L"\"" + text + L"\""), info));
    EXPECT_EQ(qm::get_last_error(), platform::kErrorBadExeFormat);
}

}  // namespace
}  // namespace webrig::windows_testing
