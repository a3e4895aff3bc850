#include "platform/sim/files/sim_file_system.h"

#include <gtest/gtest.h>

#include <fstream>

#include "support/last_error.h"
#include "support/result_codes.h"
#include "testing/temp_folder.h"

namespace webrig::sim {
namespace {

namespace win32 = qm::win32;

class FileSystem : public ::testing::Test {
  protected:
    FileSystem() : m_files(m_folder.path()) {
        std::filesystem::create_directories(m_folder.path() / "inetpub" / "wwwroot");
        std::ofstream(m_folder.path() / "inetpub" / "wwwroot" / "web.config") << "<configuration/>";
        std::ofstream(m_folder.path() / "inetpub" / "empty.txt");
    }

    testing::TempFolder m_folder;
    SimFileSystem m_files;
    std::vector<std::byte> m_contents;
};

// A file of exactly the largest size allowed is read (one byte less is not_enough_memory below).
TEST_F(FileSystem, ReadsAWholeFile) {
    m_contents.resize(3);
    ASSERT_EQ(m_files.ReadWholeFile(u"C:\\INETPUB\\wwwroot\\Web.Config", 16, m_contents), 0u);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(m_contents.data()), m_contents.size()),
              "<configuration/>");
    ASSERT_EQ(m_files.ReadWholeFile(u"C:\\inetpub\\empty.txt", 0, m_contents), 0u);
    EXPECT_TRUE(m_contents.empty());
}

struct ReadFailure {
    const char16_t* path;
    uint64_t maxBytes;
    uint32_t error;
};

TEST_F(FileSystem, FailuresReturnAndSetTheWin32Error) {
    const ReadFailure cases[] = {
        {u"C:\\inetpub\\missing.txt", 100, win32::file_not_found},
        {u"C:\\nowhere\\missing.txt", 100, win32::path_not_found},
        {u"C:\\inetpub\\wwwroot", 100, win32::access_denied},
        {u"C:\\", 100, win32::access_denied},
        {u"C:\\inetpub\\wwwroot\\web.config", 15, win32::not_enough_memory},
        {u"Q:\\file", 100, win32::path_not_found},
        {u"C:\\bad<name>", 100, win32::invalid_name},
    };
    for (const ReadFailure& c : cases) {
        qm::set_last_error(0);
        m_contents.assign(4, std::byte{1});
        EXPECT_EQ(m_files.ReadWholeFile(c.path, c.maxBytes, m_contents), c.error)
            << qm::to_utf8(c.path);
        EXPECT_EQ(qm::get_last_error(), c.error) << qm::to_utf8(c.path);
        EXPECT_TRUE(m_contents.empty());
    }
}

TEST_F(FileSystem, PathExistsForFilesAndFolders) {
    EXPECT_TRUE(m_files.PathExists(u"C:\\inetpub"));
    EXPECT_TRUE(m_files.PathExists(u"c:/INETPUB/wwwroot/web.config"));
    EXPECT_TRUE(m_files.PathExists(u"C:\\"));
    qm::set_last_error(0);
    EXPECT_FALSE(m_files.PathExists(u"C:\\inetpub\\nothing"));
    EXPECT_EQ(qm::get_last_error(), win32::file_not_found);
    EXPECT_FALSE(m_files.PathExists(u"C:\\nothing\\deeper"));
    EXPECT_EQ(qm::get_last_error(), win32::path_not_found);
}

}  // namespace
}  // namespace webrig::sim
