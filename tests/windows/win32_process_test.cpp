// What the Win32 layer reads of its own process under Wine: modules and the host's functions
// called through them, and files with Windows' failure codes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/host_text.h"
#include "platform/win32/win32_platform.h"
#include "support/case_insensitive.h"
#include "support/last_error.h"
#include "wine_test_support.h"

namespace webrig::windows_testing {
namespace {

using ::testing::ElementsAre;

class Win32ProcessTest : public ::testing::Test {
  protected:
    win32::Win32Platform platform;
};

TEST_F(Win32ProcessTest, TheHostModuleIsFoundOnceLoadedAndItsFunctionsCalledAsStdcall) {
    EXPECT_EQ(platform.modules().FindModule(u"QMRT.DLL"), platform::kNoModule);
    const TestHost host;
    const platform::ModuleHandle module = platform.modules().FindModule(u"qmrt.dll");
    EXPECT_EQ(static_cast<uintptr_t>(module), reinterpret_cast<uintptr_t>(host.module()));
    const qm::wstring path = platform.modules().ModuleFileName(module);
    EXPECT_TRUE(qm::iequals(path, Utf16(ProgramFolder() + L"\\QMRT.dll"))) << qm::to_utf8(path);
    EXPECT_EQ(platform.modules().FindModule(path), module);
    EXPECT_EQ(platform.modules().FindFunction(module, "__loadstring"), nullptr);

    host::HostText text(platform, module, 7);
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
    EXPECT_EQ(files.ReadWholeFile(file + u".missing", 100, read), 2u);
    EXPECT_EQ(qm::get_last_error(), 2u);
    EXPECT_EQ(files.ReadWholeFile(Utf16(folder.path()), 100, read), 5u) << "a folder";
    EXPECT_TRUE(files.PathExists(Utf16(folder.path())));
    EXPECT_FALSE(files.PathExists(file + u".missing"));
}

}  // namespace
}  // namespace webrig::windows_testing
