#include "platform/sim/registry/sim_registry.h"

#include <gtest/gtest.h>

#include <functional>

#include "testing/temp_machine.h"

namespace webrig::sim {
namespace {

using platform::kLocalMachine;
using platform::kNoKey;
using platform::RegKey;
using platform::RegValue;
namespace key_access = platform::key_access;
namespace win32 = qm::win32;

MachineConfig X86() {
    MachineConfig config;
    config.architecture = platform::ProcessorArchitecture::intel;
    return config;
}

// A 32-bit machine (no WOW64) with HKLM\SOFTWARE\Test holding the value Name and the key Child.
class RegistryScene {
  public:
    RegistryScene() : m_machine(X86()), reg(m_machine.machine().registry()) {
        EXPECT_EQ(
            reg.CreateKey(kLocalMachine, u"SOFTWARE\\Test\\Child", key_access::all_access, scratch),
            0u);
        reg.CloseKey(scratch);
        test = Open(u"SOFTWARE\\Test", key_access::all_access);
        EXPECT_EQ(reg.SetValue(test, u"Name", RegValue::String(u"x")), 0u);
    }

    RegKey Open(qm::wstring_view path, uint32_t access) {
        RegKey key = kNoKey;
        EXPECT_EQ(reg.OpenKey(kLocalMachine, path, access, key), 0u) << qm::to_utf8(path);
        return key;
    }

    // A handle to SOFTWARE\Test\Child whose key has been deleted.
    RegKey DeletedKey() {
        const RegKey child = Open(u"SOFTWARE\\Test\\Child", key_access::all_access);
        EXPECT_EQ(reg.DeleteKey(test, u"Child"), 0u);
        return child;
    }

    testing::TempMachine m_machine;
    platform::Registry& reg;
    RegKey test = kNoKey;
    RegKey scratch = kNoKey;
    RegValue value;
    qm::wstring name;
};

class RegistryBehaviour : public ::testing::Test, public RegistryScene {};

struct CodeCase {
    const char* what;
    std::function<uint32_t(RegistryScene&)> call;
    uint32_t expected;
};

const qm::wstring kLongName(256, u'k');
const qm::wstring kLongValueName(16384, u'v');

const CodeCase kCodeCases[] = {
    {"open an existing key",
     [](RegistryScene& t) {
         return t.reg.OpenKey(kLocalMachine, u"software\\TEST\\child", key_access::read, t.scratch);
     },
     win32::success},
    {"open a missing key",
     [](RegistryScene& t) {
         return t.reg.OpenKey(kLocalMachine, u"SOFTWARE\\Nope", key_access::read, t.scratch);
     },
     win32::file_not_found},
    {"open below a missing key",
     [](RegistryScene& t) {
         return t.reg.OpenKey(kLocalMachine, u"SOFTWARE\\Nope\\Deeper", key_access::read,
                              t.scratch);
     },
     win32::file_not_found},
    {"open an empty sub-key reopens the parent",
     [](RegistryScene& t) { return t.reg.OpenKey(t.test, u"", key_access::read, t.scratch); },
     win32::success},
    {"open with a trailing backslash",
     [](RegistryScene& t) {
         return t.reg.OpenKey(kLocalMachine, u"SOFTWARE\\Test\\", key_access::read, t.scratch);
     },
     win32::success},
    {"open with a leading backslash",
     [](RegistryScene& t) {
         return t.reg.OpenKey(kLocalMachine, u"\\SOFTWARE", key_access::read, t.scratch);
     },
     win32::bad_pathname},
    {"open with an empty name inside the path",
     [](RegistryScene& t) {
         return t.reg.OpenKey(kLocalMachine, u"SOFTWARE\\\\Test", key_access::read, t.scratch);
     },
     win32::bad_pathname},
    {"open a name longer than 255 characters",
     [](RegistryScene& t) { return t.reg.OpenKey(t.test, kLongName, key_access::read, t.scratch); },
     win32::invalid_parameter},
    {"open asking for both registry views",
     [](RegistryScene& t) {
         return t.reg.OpenKey(kLocalMachine, u"SOFTWARE",
                              key_access::read | key_access::wow64_32key | key_access::wow64_64key,
                              t.scratch);
     },
     win32::invalid_parameter},
    {"open through an unknown handle",
     [](RegistryScene& t) {
         return t.reg.OpenKey(RegKey{0x1234}, u"SOFTWARE", key_access::read, t.scratch);
     },
     win32::invalid_handle},
    {"open through no handle",
     [](RegistryScene& t) {
         return t.reg.OpenKey(kNoKey, u"SOFTWARE", key_access::read, t.scratch);
     },
     win32::invalid_handle},
    {"create directly under HKEY_LOCAL_MACHINE",
     [](RegistryScene& t) {
         return t.reg.CreateKey(kLocalMachine, u"NEWHIVE", key_access::all_access, t.scratch);
     },
     win32::access_denied},
    {"create under a handle without KEY_CREATE_SUB_KEY",
     [](RegistryScene& t) {
         return t.reg.CreateKey(t.Open(u"SOFTWARE\\Test", key_access::read), u"New",
                                key_access::all_access, t.scratch);
     },
     win32::access_denied},
    {"create opens an existing key without KEY_CREATE_SUB_KEY",
     [](RegistryScene& t) {
         return t.reg.CreateKey(t.Open(u"SOFTWARE\\Test", key_access::read), u"Child",
                                key_access::read, t.scratch);
     },
     win32::success},
    {"create with a leading backslash",
     [](RegistryScene& t) {
         return t.reg.CreateKey(t.test, u"\\New", key_access::all_access, t.scratch);
     },
     win32::bad_pathname},
    {"create a name longer than 255 characters",
     [](RegistryScene& t) {
         return t.reg.CreateKey(t.test, kLongName, key_access::all_access, t.scratch);
     },
     win32::invalid_parameter},
    {"query a value", [](RegistryScene& t) { return t.reg.QueryValue(t.test, u"NAME", t.value); },
     win32::success},
    {"query a missing value",
     [](RegistryScene& t) { return t.reg.QueryValue(t.test, u"Missing", t.value); },
     win32::file_not_found},
    {"query the unset default value",
     [](RegistryScene& t) { return t.reg.QueryValue(t.test, u"", t.value); },
     win32::file_not_found},
    {"query without KEY_QUERY_VALUE",
     [](RegistryScene& t) {
         return t.reg.QueryValue(t.Open(u"SOFTWARE\\Test", key_access::set_value), u"Name",
                                 t.value);
     },
     win32::access_denied},
    {"query through an unknown handle",
     [](RegistryScene& t) { return t.reg.QueryValue(RegKey{0x999}, u"Name", t.value); },
     win32::invalid_handle},
    {"set without KEY_SET_VALUE",
     [](RegistryScene& t) {
         return t.reg.SetValue(t.Open(u"SOFTWARE\\Test", key_access::read), u"v",
                               RegValue::Dword(1));
     },
     win32::access_denied},
    {"set a value name longer than 16383 characters",
     [](RegistryScene& t) { return t.reg.SetValue(t.test, kLongValueName, RegValue::Dword(1)); },
     win32::invalid_parameter},
    {"delete a missing value",
     [](RegistryScene& t) { return t.reg.DeleteValue(t.test, u"Missing"); }, win32::file_not_found},
    {"delete a value without KEY_SET_VALUE",
     [](RegistryScene& t) {
         return t.reg.DeleteValue(t.Open(u"SOFTWARE\\Test", key_access::read), u"Name");
     },
     win32::access_denied},
    {"enumerate sub-keys without KEY_ENUMERATE_SUB_KEYS",
     [](RegistryScene& t) {
         return t.reg.EnumKey(t.Open(u"SOFTWARE\\Test", key_access::query_value), 0, t.name);
     },
     win32::access_denied},
    {"enumerate sub-keys past the last",
     [](RegistryScene& t) { return t.reg.EnumKey(t.test, 1, t.name); }, win32::no_more_items},
    {"enumerate values without KEY_QUERY_VALUE",
     [](RegistryScene& t) {
         return t.reg.EnumValue(t.Open(u"SOFTWARE\\Test", key_access::enumerate_sub_keys), 0,
                                t.name, t.value);
     },
     win32::access_denied},
    {"enumerate values past the last",
     [](RegistryScene& t) { return t.reg.EnumValue(t.test, 1, t.name, t.value); },
     win32::no_more_items},
    {"delete a key that has sub-keys",
     [](RegistryScene& t) { return t.reg.DeleteKey(kLocalMachine, u"SOFTWARE\\Test"); },
     win32::access_denied},
    {"delete a missing key", [](RegistryScene& t) { return t.reg.DeleteKey(t.test, u"Missing"); },
     win32::file_not_found},
    {"delete a hive", [](RegistryScene& t) { return t.reg.DeleteKey(kLocalMachine, u"SYSTEM"); },
     win32::access_denied},
    {"delete a handle's own key without DELETE access",
     [](RegistryScene& t) {
         return t.reg.DeleteKey(t.Open(u"SOFTWARE\\Test\\Child", key_access::read), u"");
     },
     win32::access_denied},
    {"delete a handle's own key",
     [](RegistryScene& t) {
         return t.reg.DeleteKey(t.Open(u"SOFTWARE\\Test\\Child", key_access::all_access), u"");
     },
     win32::success},
    {"close HKEY_LOCAL_MACHINE", [](RegistryScene& t) { return t.reg.CloseKey(kLocalMachine); },
     win32::success},
    {"close an unknown handle", [](RegistryScene& t) { return t.reg.CloseKey(RegKey{0x4444}); },
     win32::invalid_handle},
    {"close a handle twice",
     [](RegistryScene& t) {
         const RegKey key = t.Open(u"SOFTWARE", key_access::read);
         t.reg.CloseKey(key);
         return t.reg.CloseKey(key);
     },
     win32::invalid_handle},
    {"query through a handle whose key was deleted",
     [](RegistryScene& t) { return t.reg.QueryValue(t.DeletedKey(), u"x", t.value); },
     win32::key_deleted},
    {"set through a handle whose key was deleted",
     [](RegistryScene& t) { return t.reg.SetValue(t.DeletedKey(), u"x", RegValue::Dword(1)); },
     win32::key_deleted},
    {"enumerate through a handle whose key was deleted",
     [](RegistryScene& t) { return t.reg.EnumKey(t.DeletedKey(), 0, t.name); }, win32::key_deleted},
    {"create below a key that was deleted",
     [](RegistryScene& t) {
         return t.reg.CreateKey(t.DeletedKey(), u"Sub", key_access::all_access, t.scratch);
     },
     win32::key_deleted},
    {"open below a key that was deleted",
     [](RegistryScene& t) {
         return t.reg.OpenKey(t.DeletedKey(), u"", key_access::read, t.scratch);
     },
     win32::key_deleted},
    {"close a handle whose key was deleted",
     [](RegistryScene& t) { return t.reg.CloseKey(t.DeletedKey()); }, win32::success},
};

TEST(RegistryCodes, AreThoseOfWin32) {
    for (const CodeCase& c : kCodeCases) {
        RegistryScene fresh;
        EXPECT_EQ(c.call(fresh), c.expected) << c.what;
    }
}

TEST_F(RegistryBehaviour, FailedOpensLeaveNoHandle) {
    scratch = RegKey{77};
    EXPECT_EQ(reg.OpenKey(kLocalMachine, u"SOFTWARE\\Nope", key_access::read, scratch),
              win32::file_not_found);
    EXPECT_EQ(scratch, kNoKey);
}

TEST_F(RegistryBehaviour, CreateTellsNewKeysFromExistingOnes) {
    bool created = false;
    EXPECT_EQ(reg.CreateKey(test, u"A\\B\\C", key_access::all_access, scratch, &created), 0u);
    EXPECT_TRUE(created);
    EXPECT_EQ(reg.CreateKey(test, u"a\\b\\c", key_access::all_access, scratch, &created), 0u);
    EXPECT_FALSE(created);
}

TEST_F(RegistryBehaviour, SubKeysEnumerateByNameValuesInCreationOrder) {
    for (const char16_t* sub : {u"beta", u"Alpha", u"gamma", u"Delta"}) {
        ASSERT_EQ(reg.CreateKey(test, sub, key_access::all_access, scratch), 0u);
    }
    std::vector<qm::wstring> keys;
    for (uint32_t i = 0; reg.EnumKey(test, i, name) == 0; ++i) {
        keys.push_back(name);
    }
    EXPECT_EQ(keys, (std::vector<qm::wstring>{u"Alpha", u"beta", u"Child", u"Delta", u"gamma"}));

    ASSERT_EQ(reg.SetValue(test, u"Zulu", RegValue::Dword(1)), 0u);
    ASSERT_EQ(reg.SetValue(test, u"alpha", RegValue::Dword(2)), 0u);
    ASSERT_EQ(reg.SetValue(test, u"NAME", RegValue::Dword(3)), 0u);  // replaces Name in place
    std::vector<qm::wstring> values;
    for (uint32_t i = 0; reg.EnumValue(test, i, name, value) == 0; ++i) {
        values.push_back(name);
    }
    EXPECT_EQ(values, (std::vector<qm::wstring>{u"Name", u"Zulu", u"alpha"}));
    ASSERT_EQ(reg.QueryValue(test, u"name", value), 0u);
    EXPECT_EQ(value, RegValue::Dword(3));
}

TEST_F(RegistryBehaviour, AHandleToADeletedKeyStaysDeletedWhenTheNameComesBack) {
    const RegKey old = DeletedKey();
    ASSERT_EQ(reg.CreateKey(test, u"Child", key_access::all_access, scratch), 0u);
    EXPECT_EQ(reg.SetValue(old, u"v", RegValue::Dword(1)), win32::key_deleted);
    EXPECT_EQ(reg.SetValue(scratch, u"v", RegValue::Dword(1)), 0u);
}

TEST_F(RegistryBehaviour, ChangesReachTheFileAtOnce) {
    ASSERT_EQ(reg.CreateKey(test, u"Saved", key_access::all_access, scratch), 0u);
    ASSERT_EQ(reg.SetValue(scratch, u"When", RegValue::String(u"now")), 0u);
    ASSERT_EQ(reg.DeleteValue(test, u"Name"), 0u);
    platform::Registry& reopened = m_machine.Reopen().registry();
    RegKey key = kNoKey;
    ASSERT_EQ(reopened.OpenKey(kLocalMachine, u"SOFTWARE\\Test\\Saved", key_access::read, key), 0u);
    ASSERT_EQ(reopened.QueryValue(key, u"When", value), 0u);
    EXPECT_EQ(value.AsString(), u"now");
    ASSERT_EQ(reopened.OpenKey(kLocalMachine, u"SOFTWARE\\Test", key_access::read, key), 0u);
    EXPECT_EQ(reopened.QueryValue(key, u"Name", value), win32::file_not_found);
}

}  // namespace
}  // namespace webrig::sim
