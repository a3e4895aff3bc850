// What the Win32 layer reads of its own process and machine under Wine: modules and the host's
// functions called through them, files, folders and version, time, the thread's last error and
// the ANSI code page.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/host_text.h"
#include "platform/win32/win32_platform.h"
#include "support/case_insensitive.h"
#include "support/format.h"
#include "support/last_error.h"
#include "wine_test_support.h"

namespace webrig::windows_testing {
namespace {

using ::testing::ElementsAre;

class Win32ProcessTest : public ::testing::Test {
  protected:
    win32::Win32Platform platform;
};

TEST_F(Win32ProcessTest, ModulesAreFoundOnlyOnceLoadedByNameOrPath) {
    EXPECT_EQ(platform.modules().FindModule(u"QMRT.DLL"), platform::kNoModule);
    const TestHost host;
    const platform::ModuleHandle byName = platform.modules().FindModule(u"qmrt.dll");
    EXPECT_EQ(static_cast<uintptr_t>(byName), reinterpret_cast<uintptr_t>(host.module()));
    const qm::wstring path = platform.modules().ModuleFileName(byName);
    EXPECT_TRUE(qm::iequals(path, Utf16(ProgramFolder() + L"\\QMRT.dll"))) << qm::to_utf8(path);
    EXPECT_EQ(platform.modules().FindModule(path), byName);
    EXPECT_NE(platform.modules().FindFunction(byName, "__LoadString"), nullptr);
    EXPECT_EQ(platform.modules().FindFunction(byName, "__loadstring"), nullptr);
    EXPECT_EQ(platform.modules().FindFunction(platform::kNoModule, "__LoadString"), nullptr);
    EXPECT_EQ(platform.modules().ModuleFileName(platform::kNoModule), u"");
}

TEST_F(Win32ProcessTest, TheHostsStringsAreFetchedAndSubstitutedThroughItsExports) {
    const TestHost host;
    host::HostText text(platform, platform.modules().FindModule(u"QMRT.DLL"), 7);
    EXPECT_EQ(text.LoadHostString(u"IDS_LONG"), qm::wstring(300, u'x'));
    EXPECT_EQ(text.LoadHostString(u"[INSTALLDIR]www"), u"C:\\Shop\\www");
    EXPECT_THAT(
        host.Journal(),
        ElementsAre(L"__LoadString 7 IDS_LONG 260", L"__LoadString 7 IDS_LONG 301",
                    L"TextSubSubstitute 7 " + std::wstring(300, L'x'),
                    L"__LoadString 7 [INSTALLDIR]www 260", L"TextSubSubstitute 7 [INSTALLDIR]www"));
}

TEST_F(Win32ProcessTest, FilesAreReadWholeAndFailuresCarryWindowsCodes) {
    const ScratchFolder folder;
    const std::vector<std::byte> bytes{std::byte{0xFF}, std::byte{0xFE}, std::byte{0},
                                       std::byte{1}};
    const qm::wstring file = Utf16(folder.Write(L"settings.ini", bytes));
    platform::FileSystem& files = platform.files();
    std::vector<std::byte> read;

    EXPECT_EQ(files.ReadWholeFile(file, 4, read), 0u);
    EXPECT_EQ(read, bytes);
    EXPECT_EQ(files.ReadWholeFile(file, 3, read), 8u) << "larger than the caller can hold";
    EXPECT_TRUE(read.empty());
    EXPECT_EQ(files.ReadWholeFile(file + u".missing", 100, read), 2u);
    EXPECT_EQ(qm::get_last_error(), 2u);
    EXPECT_EQ(files.ReadWholeFile(Utf16(folder.path()) + u"\\no\\x.ini", 100, read), 3u);
    EXPECT_EQ(files.ReadWholeFile(Utf16(folder.path()), 100, read), 5u) << "a folder";
    EXPECT_TRUE(files.PathExists(file));
    EXPECT_TRUE(files.PathExists(Utf16(folder.path())));
    EXPECT_FALSE(files.PathExists(file + u".missing"));
}

TEST_F(Win32ProcessTest, SystemFoldersVersionAndProcessorAreWines) {
    platform::SystemInfo& system = platform.system();
    EXPECT_TRUE(qm::iequals(system.WindowsDirectory(), u"C:\\windows"))
        << qm::to_utf8(system.WindowsDirectory());
    EXPECT_TRUE(qm::iequals(system.SystemDirectory(), system.WindowsDirectory() + u"\\system32"));
    EXPECT_GE(system.Version().major, 6u);
    EXPECT_EQ(system.NativeArchitecture(), platform::ProcessorArchitecture::amd64);
}

TEST_F(Win32ProcessTest, TheClockAdvancesAcrossASleep) {
    const uint32_t before = platform.clock().TickCount();
    platform.clock().Sleep(60);
    EXPECT_GE(platform.clock().TickCount() - before, 50u);
}

TEST_F(Win32ProcessTest, TheLastErrorIsTheThreadsOwnAndSurvivesTextBuilding) {
    qm::set_last_error(1234);
    EXPECT_EQ(::GetLastError(), 1234u);
    ::SetLastError(1058);
    const qm::wstring text = qm::format(u"%s %d", u"StartService", 1058);
    EXPECT_EQ(qm::get_last_error(), 1058u);
}

TEST_F(Win32ProcessTest, AnsiTextGoesThroughTheProcessCodePage) {
    platform::AnsiCodePage& ansi = platform.ansiCodePage();
    ASSERT_EQ(ansi.Number(), ::GetACP());
    if (ansi.Number() != 1252) {
        GTEST_SKIP() << "the prefix's ANSI code page is " << ansi.Number() << ", not 1252";
    }
    const std::vector<std::byte> bytes{std::byte{0x80}, std::byte{'A'}, std::byte{0xE9}};
    EXPECT_EQ(ansi.ToWide(bytes), u"\u20ACA\u00E9");
    EXPECT_EQ(ansi.FromWide(u"\u20ACA\u00E9\u4E00"),
              "\x80"
              "A\xE9?");
}

}  // namespace
}  // namespace webrig::windows_testing
