// Every registry change is on disk when the call returns, and a change that cannot be saved is
// not made at all.

#include <gtest/gtest.h>

#include "platform/sim/machine/atomic_file.h"
#include "platform/sim/machine/machine_layout.h"
#include "platform/sim/registry/sim_registry.h"
#include "testing/file_bytes.h"
#include "testing/temp_folder.h"
#include "testing/temp_machine.h"

namespace webrig::sim {
namespace {

using platform::kLocalMachine;
using platform::kNoKey;
using platform::RegKey;
using platform::RegValue;
namespace key_access = platform::key_access;

std::vector<std::filesystem::path> FilesIn(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        files.push_back(entry.path().filename());
    }
    return files;
}

TEST(AtomicFile, ReplacesTheFileAndLeavesNoTemporaryFile) {
    const testing::TempFolder folder;
    const auto path = folder.path() / "file.reg";
    ASSERT_TRUE(WriteFileAtomically(path, testing::Bytes("one")));
    ASSERT_TRUE(WriteFileAtomically(path, testing::Bytes("two")));
    EXPECT_EQ(testing::ReadBytes(path), testing::Bytes("two"));
    EXPECT_EQ(FilesIn(folder.path()), std::vector<std::filesystem::path>{"file.reg"});
}

TEST(AtomicFile, AFailedRenameLeavesTheTargetAndNoTemporaryFile) {
    const testing::TempFolder folder;
    // A non-empty folder where the file should go: the rename over it fails.
    const auto target = folder.path() / "busy";
    std::filesystem::create_directories(target / "inside");
    EXPECT_FALSE(WriteFileAtomically(target, testing::Bytes("data")));
    EXPECT_TRUE(std::filesystem::is_directory(target / "inside"));
    EXPECT_EQ(FilesIn(folder.path()), std::vector<std::filesystem::path>{"busy"});
}

TEST(AtomicFile, AMissingFolderIsAFailure) {
    const testing::TempFolder folder;
    EXPECT_FALSE(WriteFileAtomically(folder.path() / "no" / "file", testing::Bytes("x")));
}

TEST(RegistrySave, LeavesOnlyTheRegistryFileInItsFolder) {
    testing::TempMachine machine;
    platform::Registry& reg = machine.machine().registry();
    RegKey key = kNoKey;
    ASSERT_EQ(reg.CreateKey(kLocalMachine, u"SOFTWARE\\A", key_access::all_access, key), 0u);
    ASSERT_EQ(reg.SetValue(key, u"v", RegValue::Dword(1)), 0u);
    ASSERT_EQ(reg.DeleteValue(key, u"v"), 0u);
    ASSERT_EQ(reg.DeleteKey(kLocalMachine, u"SOFTWARE\\A"), 0u);
    EXPECT_EQ(FilesIn(RegistryFolder(machine.path())),
              std::vector<std::filesystem::path>{"HKLM.reg"});
}

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
    std::vector<std::byte> m_saved;
};

TEST_F(FailingSaves, SetValueIsUndone) {
    EXPECT_EQ(m_registry.SetValue(m_key, u"Kept", RegValue::String(u"new")),
              qm::win32::write_fault);
    EXPECT_EQ(m_registry.SetValue(m_key, u"Added", RegValue::Dword(1)), qm::win32::write_fault);
    RegValue value;
    ASSERT_EQ(m_registry.QueryValue(m_key, u"Kept", value), 0u);
    EXPECT_EQ(value.AsString(), u"old");
    EXPECT_EQ(m_registry.QueryValue(m_key, u"Added", value), qm::win32::file_not_found);
    ExpectMemoryMatchesDisk();
}

TEST_F(FailingSaves, DeleteValueIsUndone) {
    EXPECT_EQ(m_registry.DeleteValue(m_key, u"Kept"), qm::win32::write_fault);
    RegValue value;
    EXPECT_EQ(m_registry.QueryValue(m_key, u"Kept", value), 0u);
    ExpectMemoryMatchesDisk();
}

TEST_F(FailingSaves, CreateKeyIsUndone) {
    RegKey key = RegKey{1};
    EXPECT_EQ(m_registry.CreateKey(m_key, u"A\\B", key_access::all_access, key),
              qm::win32::write_fault);
    EXPECT_EQ(key, kNoKey);
    EXPECT_EQ(m_registry.OpenKey(m_key, u"A", key_access::read, key), qm::win32::file_not_found);
    // Opening what exists needs no save.
    EXPECT_EQ(m_registry.CreateKey(kLocalMachine, u"SOFTWARE\\App", key_access::all_access, key),
              0u);
    ExpectMemoryMatchesDisk();
}

TEST_F(FailingSaves, DeleteKeyIsUndoneAndItsHandlesStillWork) {
    EXPECT_EQ(m_registry.DeleteKey(kLocalMachine, u"SOFTWARE\\App"), qm::win32::write_fault);
    RegValue value;
    EXPECT_EQ(m_registry.QueryValue(m_key, u"Kept", value), 0u);
    ExpectMemoryMatchesDisk();
    m_fail = false;
    EXPECT_EQ(m_registry.SetValue(m_key, u"Later", RegValue::Dword(2)), 0u);
    const RegFile onDisk = RegFile::Parse(testing::ReadBytes(m_path), m_path);
    EXPECT_TRUE(SameTree(onDisk.Root(), m_registry.Root()));
}

TEST_F(FailingSaves, ANameTheFileCannotHoldIsRefusedLikeAFailedSave) {
    m_fail = false;
    EXPECT_EQ(m_registry.SetValue(m_key, u"line\nbreak", RegValue::Dword(1)),
              qm::win32::write_fault);
    ExpectMemoryMatchesDisk();
}

}  // namespace
}  // namespace webrig::sim
