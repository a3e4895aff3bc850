// A 32-bit process on a 64-bit machine sees HKLM\SOFTWARE through the WOW64 redirector.

#include <gtest/gtest.h>

#include "platform/sim/registry/sim_registry.h"
#include "testing/temp_machine.h"

namespace webrig::sim {
namespace {

using platform::kLocalMachine;
using platform::kNoKey;
using platform::RegKey;
namespace key_access = platform::key_access;

constexpr uint32_t k64 = key_access::wow64_64key;
constexpr uint32_t k32 = key_access::wow64_32key;

class Wow64 : public ::testing::Test {
  protected:
    Wow64() : reg(m_machine.machine().registry()) {}

    bool Exists(std::initializer_list<const char16_t*> path) {
        const RegistryKey* found = &m_machine.machine().simRegistry().Root();
        for (const char16_t* name : path) {
            found = found->FindSubKey(name);
            if (found == nullptr) {
                return false;
            }
        }
        return true;
    }

    uint32_t Create(qm::wstring_view path, uint32_t view, RegKey parent = kLocalMachine) {
        RegKey created = kNoKey;
        const uint32_t error = reg.CreateKey(parent, path, key_access::all_access | view, created);
        reg.CloseKey(created);
        return error;
    }

    uint32_t Open(qm::wstring_view path, uint32_t view, RegKey& result,
                  RegKey parent = kLocalMachine) {
        return reg.OpenKey(parent, path, key_access::all_access | view, result);
    }

    testing::TempMachine m_machine;
    platform::Registry& reg;
    RegKey opened = kNoKey;
};

TEST_F(Wow64, SoftwareIsRedirectedUnlessThe64BitViewIsAskedFor) {
    ASSERT_EQ(Create(u"SOFTWARE\\Contoso32", 0), 0u);
    ASSERT_EQ(Create(u"Software\\Contoso32b", k32), 0u);
    ASSERT_EQ(Create(u"SOFTWARE\\Contoso64", k64), 0u);
    EXPECT_TRUE(Exists({u"SOFTWARE", u"WOW6432Node", u"Contoso32"}));
    EXPECT_TRUE(Exists({u"SOFTWARE", u"WOW6432Node", u"Contoso32b"}));
    EXPECT_FALSE(Exists({u"SOFTWARE", u"Contoso32"}));
    EXPECT_TRUE(Exists({u"SOFTWARE", u"Contoso64"}));
    EXPECT_FALSE(Exists({u"SOFTWARE", u"WOW6432Node", u"Contoso64"}));
    EXPECT_EQ(Open(u"SOFTWARE\\Contoso64", 0, opened), qm::win32::file_not_found);
    EXPECT_EQ(Open(u"SOFTWARE\\Contoso32", k64, opened), qm::win32::file_not_found);
    // Other hives are shared.
    ASSERT_EQ(Create(u"SYSTEM\\Shared", 0), 0u);
    EXPECT_TRUE(Exists({u"SYSTEM", u"Shared"}));
    EXPECT_EQ(Open(u"SYSTEM\\Shared", k64, opened), 0u);
}

TEST_F(Wow64, TheViewComesFromEachCallNotFromTheParentHandle) {
    ASSERT_EQ(Create(u"SOFTWARE\\Both", 0), 0u);
    ASSERT_EQ(Create(u"SOFTWARE\\Both\\Only32", 0), 0u);
    ASSERT_EQ(Create(u"SOFTWARE\\Both", k64), 0u);
    RegKey software64 = kNoKey;
    ASSERT_EQ(Open(u"SOFTWARE", k64, software64), 0u);
    // Without the flag the sub-key is looked for in the 32-bit view again.
    EXPECT_EQ(Open(u"Both\\Only32", 0, opened, software64), 0u);
    EXPECT_EQ(Open(u"Both\\Only32", k64, opened, software64), qm::win32::file_not_found);
}

// A path that names WOW6432Node itself is not redirected a second time.
TEST_F(Wow64, SoftwareOpenedFromA32BitProcessIsWow6432Node) {
    ASSERT_EQ(Create(u"SOFTWARE\\Visible32", 0), 0u);
    ASSERT_EQ(Create(u"SOFTWARE\\WOW6432Node\\Direct", 0), 0u);
    RegKey software = kNoKey;
    ASSERT_EQ(Open(u"SOFTWARE", 0, software), 0u);
    std::vector<qm::wstring> names(3);
    for (uint32_t i = 0; i < 3; ++i) {
        EXPECT_EQ(reg.EnumKey(software, i, names[i]), i < 2 ? 0u : qm::win32::no_more_items);
    }
    EXPECT_EQ(names, (std::vector<qm::wstring>{u"Direct", u"Visible32", u""}));
}

TEST_F(Wow64, DeleteKeyUsesTheViewOfItsAccessMask) {
    ASSERT_EQ(Create(u"SOFTWARE\\Twin", 0), 0u);
    ASSERT_EQ(Create(u"SOFTWARE\\Twin", k64), 0u);
    ASSERT_EQ(reg.DeleteKey(kLocalMachine, u"SOFTWARE\\Twin", k64), 0u);
    EXPECT_FALSE(Exists({u"SOFTWARE", u"Twin"}));
    EXPECT_TRUE(Exists({u"SOFTWARE", u"WOW6432Node", u"Twin"}));
    ASSERT_EQ(reg.DeleteKey(kLocalMachine, u"SOFTWARE\\Twin"), 0u);
    EXPECT_FALSE(Exists({u"SOFTWARE", u"WOW6432Node", u"Twin"}));
}

TEST_F(Wow64, SharedKeysAreNotRedirected) {
    struct Case {
        const char16_t* path;
        std::initializer_list<const char16_t*> physical;
    };
    const Case cases[] = {
        {u"SOFTWARE\\Microsoft\\SystemCertificates\\MY\\Certificates\\AB",
         {u"SOFTWARE", u"Microsoft", u"SystemCertificates", u"MY", u"Certificates", u"AB"}},
        {u"SOFTWARE\\Classes\\.webrig", {u"SOFTWARE", u"Classes", u".webrig"}},
        {u"SOFTWARE\\Classes\\CLSID\\{1}",
         {u"SOFTWARE", u"WOW6432Node", u"Classes", u"CLSID", u"{1}"}},
        {u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\P",
         {u"SOFTWARE", u"WOW6432Node", u"Microsoft", u"Windows", u"CurrentVersion", u"Uninstall",
          u"P"}},
        {u"SOFTWARE\\Microsoft\\SystemCertificatesX",
         {u"SOFTWARE", u"WOW6432Node", u"Microsoft", u"SystemCertificatesX"}},
    };
    for (const Case& c : cases) {
        ASSERT_EQ(Create(c.path, k32), 0u) << qm::to_utf8(c.path);
        EXPECT_TRUE(Exists(c.physical)) << qm::to_utf8(c.path);
    }
}

// arm64 runs 32-bit code under WOW64 too; x86 has no second view.
TEST(Wow64Machines, RedirectOnEvery64BitArchitectureOnly) {
    using platform::ProcessorArchitecture;
    for (const auto architecture : {ProcessorArchitecture::arm64, ProcessorArchitecture::intel}) {
        MachineConfig config;
        config.architecture = architecture;
        testing::TempMachine machine(config);
        RegKey key = kNoKey;
        ASSERT_EQ(machine.machine().registry().CreateKey(kLocalMachine, u"SOFTWARE\\Plain",
                                                         key_access::all_access, key),
                  0u);
        const RegistryKey* software =
            machine.machine().simRegistry().Root().FindSubKey(u"SOFTWARE");
        const bool redirected = architecture == ProcessorArchitecture::arm64;
        EXPECT_EQ(software->FindSubKey(u"Plain") == nullptr, redirected);
        EXPECT_EQ(software->FindSubKey(u"WOW6432Node") != nullptr, redirected);
    }
}

}  // namespace
}  // namespace webrig::sim
