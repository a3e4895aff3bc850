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

constexpr uint32_t kRead = key_access::read;
constexpr uint32_t kAll = key_access::all_access;

MachineConfig X86() {
    MachineConfig config;
    config.architecture = platform::ProcessorArchitecture::intel;
    return config;
}

// A 32-bit machine (no WOW64) with HKLM\SOFTWARE\Test holding the value Name and the key Child.
class RegistryScene {
  public:
    RegistryScene() : m_machine(X86()), reg(m_machine.machine().registry()) {
        EXPECT_EQ(Open(u"SOFTWARE\\Test\\Child", kAll, kLocalMachine, true), 0u);
        test = Handle(u"SOFTWARE\\Test", kAll);
        EXPECT_EQ(reg.SetValue(test, u"Name", RegValue::String(u"x")), 0u);
    }

    // OpenKey (CreateKey with `create`) into `scratch`.
    uint32_t Open(qm::wstring_view path, uint32_t access = kRead, RegKey parent = kLocalMachine,
                  bool create = false) {
        return create ? reg.CreateKey(parent, path, access, scratch)
                      : reg.OpenKey(parent, path, access, scratch);
    }

    RegKey Handle(qm::wstring_view path, uint32_t access) {
        RegKey key = kNoKey;
        EXPECT_EQ(reg.OpenKey(kLocalMachine, path, access, key), 0u) << qm::to_utf8(path);
        return key;
    }

    // A handle to SOFTWARE\Test\Child whose key has been deleted.
    RegKey DeletedKey() {
        const RegKey child = Handle(u"SOFTWARE\\Test\\Child", kAll);
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

using S = RegistryScene;

struct CodeCase {
    const char* what;
    std::function<uint32_t(S&)> call;
    uint32_t expected;
};

const qm::wstring kLongName(256, u'k');

const CodeCase kCodeCases[] = {
    {"open without regard to case", [](S& t) { return t.Open(u"software\\TEST\\child"); }, 0},
    {"open a missing key", [](S& t) { return t.Open(u"SOFTWARE\\Nope"); }, win32::file_not_found},
    {"open below a missing key", [](S& t) { return t.Open(u"SOFTWARE\\Nope\\Deeper"); },
     win32::file_not_found},
    {"open an empty sub-key reopens the parent", [](S& t) { return t.Open(u"", kRead, t.test); },
     0},
    {"open with a trailing backslash", [](S& t) { return t.Open(u"SOFTWARE\\Test\\"); }, 0},
    {"open with a leading backslash", [](S& t) { return t.Open(u"\\SOFTWARE"); },
     win32::bad_pathname},
    {"open with an empty name inside the path", [](S& t) { return t.Open(u"SOFTWARE\\\\Test"); },
     win32::bad_pathname},
    {"open a name longer than 255 characters",
     [](S& t) { return t.Open(kLongName, kRead, t.test); }, win32::invalid_parameter},
    {"open asking for both registry views",
     [](S& t) {
         return t.Open(u"SOFTWARE", kRead | key_access::wow64_32key | key_access::wow64_64key);
     },
     win32::invalid_parameter},
    {"open through an unknown handle", [](S& t) { return t.Open(u"SOFTWARE", kRead, RegKey{9}); },
     win32::invalid_handle},
    {"create directly under HKEY_LOCAL_MACHINE",
     [](S& t) { return t.Open(u"NEWHIVE", kAll, kLocalMachine, true); }, win32::access_denied},
    {"create under a handle without KEY_CREATE_SUB_KEY",
     [](S& t) { return t.Open(u"New", kAll, t.Handle(u"SOFTWARE\\Test", kRead), true); },
     win32::access_denied},
    {"create opens an existing key without KEY_CREATE_SUB_KEY",
     [](S& t) { return t.Open(u"Child", kRead, t.Handle(u"SOFTWARE\\Test", kRead), true); }, 0},
    {"query a value without regard to case",
     [](S& t) { return t.reg.QueryValue(t.test, u"NAME", t.value); }, 0},
    {"query a missing value", [](S& t) { return t.reg.QueryValue(t.test, u"Missing", t.value); },
     win32::file_not_found},
    {"query the unset default value", [](S& t) { return t.reg.QueryValue(t.test, u"", t.value); },
     win32::file_not_found},
    {"query without KEY_QUERY_VALUE",
     [](S& t) {
         return t.reg.QueryValue(t.Handle(u"SOFTWARE\\Test", key_access::set_value), u"Name",
                                 t.value);
     },
     win32::access_denied},
    {"set without KEY_SET_VALUE",
     [](S& t) {
         return t.reg.SetValue(t.Handle(u"SOFTWARE\\Test", kRead), u"v", RegValue::Dword(1));
     },
     win32::access_denied},
    {"set a value name longer than 16383 characters",
     [](S& t) { return t.reg.SetValue(t.test, qm::wstring(16384, u'v'), RegValue::Dword(1)); },
     win32::invalid_parameter},
    {"delete a missing value", [](S& t) { return t.reg.DeleteValue(t.test, u"Missing"); },
     win32::file_not_found},
    {"delete a value without KEY_SET_VALUE",
     [](S& t) { return t.reg.DeleteValue(t.Handle(u"SOFTWARE\\Test", kRead), u"Name"); },
     win32::access_denied},
    {"enumerate sub-keys without KEY_ENUMERATE_SUB_KEYS",
     [](S& t) {
         return t.reg.EnumKey(t.Handle(u"SOFTWARE\\Test", key_access::query_value), 0, t.name);
     },
     win32::access_denied},
    {"enumerate sub-keys past the last", [](S& t) { return t.reg.EnumKey(t.test, 1, t.name); },
     win32::no_more_items},
    {"enumerate values without KEY_QUERY_VALUE",
     [](S& t) {
         return t.reg.EnumValue(t.Handle(u"SOFTWARE\\Test", key_access::enumerate_sub_keys), 0,
                                t.name, t.value);
     },
     win32::access_denied},
    {"enumerate values past the last",
     [](S& t) { return t.reg.EnumValue(t.test, 1, t.name, t.value); }, win32::no_more_items},
    {"delete a key that has sub-keys",
     [](S& t) { return t.reg.DeleteKey(kLocalMachine, u"SOFTWARE\\Test"); }, win32::access_denied},
    {"delete a missing key", [](S& t) { return t.reg.DeleteKey(t.test, u"Missing"); },
     win32::file_not_found},
    {"delete a hive", [](S& t) { return t.reg.DeleteKey(kLocalMachine, u"SYSTEM"); },
     win32::access_denied},
    {"delete a handle's own key without DELETE access",
     [](S& t) { return t.reg.DeleteKey(t.Handle(u"SOFTWARE\\Test\\Child", kRead), u""); },
     win32::access_denied},
    {"delete a handle's own key",
     [](S& t) { return t.reg.DeleteKey(t.Handle(u"SOFTWARE\\Test\\Child", kAll), u""); }, 0},
    {"close HKEY_LOCAL_MACHINE", [](S& t) { return t.reg.CloseKey(kLocalMachine); }, 0},
    {"close a handle twice",
     [](S& t) {
         const RegKey key = t.Handle(u"SOFTWARE", kRead);
         t.reg.CloseKey(key);
         return t.reg.CloseKey(key);
     },
     win32::invalid_handle},
    {"query through a handle whose key was deleted",
     [](S& t) { return t.reg.QueryValue(t.DeletedKey(), u"x", t.value); }, win32::key_deleted},
    {"create below a key that was deleted",
     [](S& t) { return t.Open(u"Sub", kAll, t.DeletedKey(), true); }, win32::key_deleted},
    {"close a handle whose key was deleted", [](S& t) { return t.reg.CloseKey(t.DeletedKey()); },
     0},
};

TEST(RegistryCodes, AreThoseOfWin32) {
    for (const CodeCase& c : kCodeCases) {
        RegistryScene fresh;
        EXPECT_EQ(c.call(fresh), c.expected) << c.what;
    }
}

class RegistryBehaviour : public ::testing::Test, public RegistryScene {};

TEST_F(RegistryBehaviour, CreateTellsNewKeysFromExistingOnesAndFailedOpensLeaveNoHandle) {
    bool created = false;
    EXPECT_EQ(reg.CreateKey(test, u"A\\B\\C", kAll, scratch, &created), 0u);
    EXPECT_TRUE(created);
    EXPECT_EQ(reg.CreateKey(test, u"a\\b\\c", kAll, scratch, &created), 0u);
    EXPECT_FALSE(created);
    EXPECT_EQ(Open(u"SOFTWARE\\Nope"), win32::file_not_found);
    EXPECT_EQ(scratch, kNoKey);
}

TEST_F(RegistryBehaviour, SubKeysEnumerateByNameValuesInCreationOrder) {
    for (const char16_t* sub : {u"beta", u"Alpha", u"gamma", u"Delta"}) {
        ASSERT_EQ(Open(sub, kAll, test, true), 0u);
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
    ASSERT_EQ(Open(u"Child", kAll, test, true), 0u);
    EXPECT_EQ(reg.SetValue(old, u"v", RegValue::Dword(1)), win32::key_deleted);
    EXPECT_EQ(reg.SetValue(scratch, u"v", RegValue::Dword(1)), 0u);
}

// Line breaks in REG_SZ data cannot be written as "text" in the file: they must come back.
TEST_F(RegistryBehaviour, ChangesReachTheFileAtOnceAndReadBackEqual) {
    const std::vector<RegValue> values = {RegValue::String(u"now"), RegValue::String(u"a\rb"),
                                          RegValue::String(u"a\nb"), RegValue::String(u"a\r\nb"),
                                          RegValue::String(u"\r")};
    ASSERT_EQ(Open(u"Saved", kAll, test, true), 0u);
    for (size_t i = 0; i < values.size(); ++i) {
        ASSERT_EQ(reg.SetValue(scratch, u"v" + qm::widen_ascii(std::to_string(i)), values[i]), 0u);
    }
    ASSERT_EQ(reg.DeleteValue(test, u"Name"), 0u);
    platform::Registry& reopened = m_machine.Reopen().registry();
    RegKey key = kNoKey;
    ASSERT_EQ(reopened.OpenKey(kLocalMachine, u"SOFTWARE\\Test\\Saved", kRead, key), 0u);
    for (size_t i = 0; i < values.size(); ++i) {
        ASSERT_EQ(reopened.QueryValue(key, u"v" + qm::widen_ascii(std::to_string(i)), value), 0u);
        EXPECT_EQ(value, values[i]) << i;
    }
    ASSERT_EQ(reopened.OpenKey(kLocalMachine, u"SOFTWARE\\Test", kRead, key), 0u);
    EXPECT_EQ(reopened.QueryValue(key, u"Name", value), win32::file_not_found);
}

}  // namespace
}  // namespace webrig::sim
