#include "platform/sim/machine/atomic_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include "testing/file_bytes.h"
#include "testing/temp_folder.h"

namespace webrig::sim {
namespace {

std::vector<std::filesystem::path> FilesIn(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        files.push_back(entry.path().filename());
    }
    return files;
}

TEST(AtomicFile, ReplacesTheFileOrLeavesItAndNoTemporaryFile) {
    const testing::TempFolder folder;
    const auto path = folder.path() / "file.reg";
    ASSERT_TRUE(WriteFileAtomically(path, testing::Bytes("one")));
    ASSERT_TRUE(WriteFileAtomically(path, testing::Bytes("two")));
    EXPECT_EQ(testing::ReadBytes(path), testing::Bytes("two"));
    // A non-empty folder where the file should go: the rename over it fails.
    std::filesystem::create_directories(folder.path() / "busy" / "inside");
    EXPECT_FALSE(WriteFileAtomically(folder.path() / "busy", testing::Bytes("data")));
    EXPECT_FALSE(WriteFileAtomically(folder.path() / "no" / "file", testing::Bytes("x")));
    EXPECT_EQ(FilesIn(folder.path()).size(), 2u);  // file.reg and busy
    EXPECT_TRUE(std::filesystem::is_directory(folder.path() / "busy" / "inside"));
}

std::vector<std::string> g_calls;

int RecordFsync(int fd) {
    struct stat info {};
    ::fstat(fd, &info);
    g_calls.push_back(S_ISDIR(info.st_mode) ? "fsync folder"
                                            : "fsync file of " + std::to_string(info.st_size));
    return ::fsync(fd);
}

int RecordRename(const char* from, const char* to) {
    g_calls.push_back("rename");
    return ::rename(from, to);
}

// Without the first flush a crash after the rename could leave the new name on empty data.
TEST(AtomicFile, FlushesTheDataBeforeTheRenameAndTheFolderAfterIt) {
    const testing::TempFolder folder;
    g_calls.clear();
    ASSERT_TRUE(WriteFileAtomicallyThrough({RecordFsync, RecordRename}, folder.path() / "f",
                                           testing::Bytes("data")));
    EXPECT_EQ(g_calls, (std::vector<std::string>{"fsync file of 4", "rename", "fsync folder"}));
    EXPECT_EQ(testing::ReadBytes(folder.path() / "f"), testing::Bytes("data"));
}

TEST(AtomicFile, AFailedFlushKeepsTheOldFile) {
    const testing::TempFolder folder;
    const auto path = folder.path() / "f";
    ASSERT_TRUE(WriteFileAtomically(path, testing::Bytes("old")));
    EXPECT_FALSE(WriteFileAtomicallyThrough({[](int) { return -1; }, ::rename}, path,
                                            testing::Bytes("new")));
    EXPECT_EQ(testing::ReadBytes(path), testing::Bytes("old"));
    EXPECT_EQ(FilesIn(folder.path()), std::vector<std::filesystem::path>{"f"});
}

}  // namespace
}  // namespace webrig::sim
