#include "platform/sim/files/windows_path.h"

#include <gtest/gtest.h>

#include <fstream>

#include "support/result_codes.h"
#include "testing/temp_folder.h"

namespace webrig::sim {
namespace {

namespace win32 = qm::win32;

struct Normalized {
    const char16_t* path;
    uint32_t error;
    std::vector<qm::wstring> components;
};

class NormalizePath : public ::testing::TestWithParam<Normalized> {};

TEST_P(NormalizePath, AsGetFullPathNameDoes) {
    std::vector<qm::wstring> components{u"stale"};
    EXPECT_EQ(NormalizeWindowsPath(GetParam().path, components), GetParam().error);
    EXPECT_EQ(components, GetParam().components) << qm::to_utf8(GetParam().path);
}

INSTANTIATE_TEST_SUITE_P(
    Table, NormalizePath,
    ::testing::Values(Normalized{u"C:\\Windows\\System32", 0, {u"Windows", u"System32"}},
                      Normalized{u"c:/windows/system32/", 0, {u"windows", u"system32"}},
                      Normalized{u"C:\\", 0, {}}, Normalized{u"C:", 0, {}},
                      Normalized{u"C:\\\\a//\\b", 0, {u"a", u"b"}},
                      Normalized{u"C:\\a\\.\\b\\..\\c", 0, {u"a", u"c"}},
                      Normalized{u"C:\\..\\..\\a", 0, {u"a"}},
                      Normalized{u"C:\\a\\..\\..\\..\\", 0, {}},
                      Normalized{u"C:\\dir.\\file.txt. . ", 0, {u"dir", u"file.txt"}},
                      Normalized{u"C:\\dir \\x", 0, {u"dir ", u"x"}},
                      Normalized{u"C:\\a\\...\\b", 0, {u"a", u"...", u"b"}},
                      Normalized{u"C:\\a\\ends..\\b", 0, {u"a", u"ends..", u"b"}},
                      Normalized{u"C:\\name. \\", 0, {u"name. "}},
                      Normalized{u"D:\\Windows", win32::path_not_found, {}},
                      Normalized{u"Windows\\System32", win32::path_not_found, {}},
                      Normalized{u"C:Windows", win32::path_not_found, {}},
                      Normalized{u"\\\\server\\share", win32::path_not_found, {}},
                      Normalized{u"", win32::path_not_found, {}},
                      Normalized{u"C:\\a\\b?c", win32::invalid_name, {}},
                      Normalized{u"C:\\a\\b*", win32::invalid_name, {}},
                      Normalized{u"C:\\a:b", win32::invalid_name, {}},
                      Normalized{u"C:\\a\\b|c", win32::invalid_name, {}},
                      Normalized{u"C:\\a\x0001", win32::invalid_name, {}}));

class ResolvePath : public ::testing::Test {
  protected:
    ResolvePath() {
        std::filesystem::create_directories(drive() / "Windows" / "System32");
        std::filesystem::create_directories(drive() / "inetpub" / "wwwroot");
        std::ofstream(drive() / "Windows" / "win.ini") << "[fonts]";
        // Two spellings of one name: the exact one wins.
        std::filesystem::create_directories(drive() / "Case" / "Data");
        std::filesystem::create_directories(drive() / "Case" / "DATA");
        std::filesystem::create_directories(m_folder.path() / "outside");
        std::filesystem::create_directory_symlink(m_folder.path() / "outside", drive() / "link");
    }

    std::filesystem::path drive() const { return m_folder.path() / "drive_c"; }

    testing::TempFolder m_folder;
};

TEST_F(ResolvePath, MatchesEachNameWithoutRegardToCasePreferringTheExactSpelling) {
    const ResolvedPath resolved = ResolveWindowsPath(drive(), u"c:\\WINDOWS\\system32");
    EXPECT_EQ(resolved.error, 0u);
    EXPECT_TRUE(resolved.isDirectory);
    EXPECT_EQ(resolved.hostPath, drive() / "Windows" / "System32");
    const ResolvedPath file = ResolveWindowsPath(drive(), u"C:/windows/WIN.INI");
    EXPECT_EQ(file.error, 0u);
    EXPECT_FALSE(file.isDirectory);
    EXPECT_EQ(file.hostPath, drive() / "Windows" / "win.ini");
    EXPECT_EQ(ResolveWindowsPath(drive(), u"C:\\Case\\DATA").hostPath, drive() / "Case" / "DATA");
    EXPECT_EQ(ResolveWindowsPath(drive(), u"C:\\Case\\Data").hostPath, drive() / "Case" / "Data");
    EXPECT_EQ(ResolveWindowsPath(drive(), u"C:\\..\\..\\inetpub").hostPath, drive() / "inetpub");
}

struct Missing {
    const char16_t* path;
    uint32_t error;
};

TEST_F(ResolvePath, TellsAMissingFileFromAMissingFolder) {
    const Missing cases[] = {
        {u"C:\\Windows\\missing.dll", win32::file_not_found},
        {u"C:\\Missing\\file.txt", win32::path_not_found},
        {u"C:\\Windows\\win.ini\\below", win32::path_not_found},
        {u"C:\\Windows\\win.ini\\", win32::invalid_name},
        {u"C:\\link", win32::file_not_found},
        {u"C:\\link\\..\\..\\outside", win32::file_not_found},
        {u"C:\\..\\outside", win32::file_not_found},  // next to drive_c on the host
        {u"E:\\Windows", win32::path_not_found},
    };
    for (const Missing& c : cases) {
        EXPECT_EQ(ResolveWindowsPath(drive(), c.path).error, c.error) << qm::to_utf8(c.path);
    }
}

TEST_F(ResolvePath, MissingPartsKeepTheirSpellingForCreation) {
    const ResolvedPath resolved = ResolveWindowsPath(drive(), u"C:\\windows\\New\\File.txt");
    EXPECT_EQ(resolved.error, win32::path_not_found);
    EXPECT_EQ(resolved.hostPath, drive() / "Windows" / "New" / "File.txt");
}

}  // namespace
}  // namespace webrig::sim
