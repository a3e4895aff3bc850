// Every registry change is on disk when the call returns, and a change that cannot be saved is
// not made at all.

#include <gtest/gtest.h>

#include <functional>

#include "platform/sim/machine/atomic_file.h"
#include "platform/sim/machine/machine_layout.h"
#include "platform/sim/registry/sim_registry.h"
#include "testing/file_bytes.h"
#include "testing/temp_machine.h"

namespace webrig::sim {
namespace {

using platform::kLocalMachine;
using platform::kNoKey;
using platform::RegKey;
using platform::RegValue;
namespace key_access = platform::key_access;

TEST(RegistrySave, KeepsTheEncodingAndLineEndsOfAHandWrittenFile) {
    testing::TempMachine machine;
    const auto regPath = LocalMachineRegPath(machine.path());
    const std::string text =
        "Windows Registry Editor Version 5.00\n\n; kept\n[HKEY_LOCAL_MACHINE\\SOFTWARE]\n\n"
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\WOW6432Node]\n\n[HKEY_LOCAL_MACHINE\\SYSTEM]\n\n";
    testing::WriteBytes(regPath, testing::Bytes(text));
    platform::Registry& reg = machine.Reopen().registry();
    RegKey key = kNoKey;
    ASSERT_EQ(reg.CreateKey(kLocalMachine, u"SYSTEM\\New", key_access::all_access, key), 0u);
    const auto bytes = testing::ReadBytes(regPath);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size()),
              text + "[HKEY_LOCAL_MACHINE\\SYSTEM\\New]\n\n");
}

// A registry whose saves fail on demand, over a file that a real save wrote first.
class FailingSaves : public ::testing::Test {
  protected:
    FailingSaves()
        : m_path(LocalMachineRegPath(m_machine.path())),
          m_registry(RegFile::Parse(testing::ReadBytes(m_path), m_path), m_path, false,
                     [this](const std::filesystem::path& path, std::span<const std::byte> bytes) {
                         return !m_fail && WriteFileAtomically(path, bytes);
                     }) {
        EXPECT_EQ(
            m_registry.CreateKey(kLocalMachine, u"SOFTWARE\\App", key_access::all_access, m_key),
            0u);
        EXPECT_EQ(m_registry.SetValue(m_key, u"Kept", RegValue::String(u"old")), 0u);
        m_saved = testing::ReadBytes(m_path);
        m_fail = true;
    }

    // The file is as the last good save left it, and a fresh read of it has the same tree.
    void ExpectMemoryMatchesDisk() {
        EXPECT_EQ(testing::ReadBytes(m_path), m_saved);
        const RegFile onDisk = RegFile::Parse(m_saved, m_path);
        EXPECT_TRUE(SameTree(onDisk.Root(), m_registry.Root()));
    }

    testing::TempMachine m_machine;
    std::filesystem::path m_path;
    bool m_fail = false;
    SimRegistry m_registry;
    RegKey m_key = kNoKey;
    RegKey m_created = kNoKey;
    std::vector<std::byte> m_saved;
};

// Memory must still match the file after each refused change; a handle stays usable after a
// refused delete of its key.
TEST_F(FailingSaves, UndoEveryChange) {
    const std::pair<const char*, std::function<uint32_t()>> changes[] = {
        {"set", [&] { return m_registry.SetValue(m_key, u"Kept", RegValue::String(u"new")); }},
        {"add", [&] { return m_registry.SetValue(m_key, u"Added", RegValue::Dword(1)); }},
        {"delete value", [&] { return m_registry.DeleteValue(m_key, u"Kept"); }},
        {"create",
         [&] { return m_registry.CreateKey(m_key, u"A\\B", key_access::all_access, m_created); }},
        {"delete key", [&] { return m_registry.DeleteKey(kLocalMachine, u"SOFTWARE\\App"); }},
    };
    m_created = RegKey{1};
    for (const auto& [what, change] : changes) {
        EXPECT_EQ(change(), qm::win32::write_fault) << what;
        ExpectMemoryMatchesDisk();
    }
    EXPECT_EQ(m_created, kNoKey);
    // Opening what exists needs no save.
    EXPECT_EQ(m_registry.CreateKey(m_key, u"", key_access::all_access, m_created), 0u);
    m_fail = false;
    // A name the file cannot hold is refused like a failed save.
    EXPECT_EQ(m_registry.SetValue(m_key, u"line\nbreak", RegValue::Dword(1)),
              qm::win32::write_fault);
    ExpectMemoryMatchesDisk();
    EXPECT_EQ(m_registry.SetValue(m_key, u"Later", RegValue::Dword(2)), 0u);
    const RegFile onDisk = RegFile::Parse(testing::ReadBytes(m_path), m_path);
    EXPECT_TRUE(SameTree(onDisk.Root(), m_registry.Root()));
}

}  // namespace
}  // namespace webrig::sim
