#include "platform/sim/machine/machine_lock.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <optional>

#include "testing/temp_folder.h"

namespace webrig::sim {
namespace {

// flock conflicts between open file descriptions as between processes: a second opening of the
// lock file stands for another process.
TEST(MachineLock, KeepsEveryOtherWriterAndReaderOutUntilReleased) {
    const testing::TempFolder folder;
    const auto path = folder.path() / "machine.lock";
    std::optional<MachineLock> lock(std::in_place, path);
    ASSERT_TRUE(lock->held());
    const int other = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_GE(other, 0);
    EXPECT_EQ(::flock(other, LOCK_SH | LOCK_NB), -1);
    EXPECT_EQ(errno, EWOULDBLOCK);
    lock.reset();
    EXPECT_EQ(::flock(other, LOCK_EX | LOCK_NB), 0);
    ::close(other);
    EXPECT_FALSE(MachineLock(folder.path() / "missing" / "machine.lock").held());
}

}  // namespace
}  // namespace webrig::sim
