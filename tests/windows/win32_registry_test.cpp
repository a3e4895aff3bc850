// The registry layer against Wine's registry: values land where a 32-bit webrig.dll puts them on
// a 64-bit Windows, and read back as they were written.

#include "platform/win32/win32_registry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "wine_test_support.h"

namespace webrig::windows_testing {
namespace {

using platform::kLocalMachine;
using platform::RegKey;
using platform::RegValue;
using platform::ScopedRegKey;
namespace key_access = platform::key_access;

constexpr wchar_t kTestKey[] = L"SOFTWARE\\WebrigWineTest";

class Win32RegistryTest : public ::testing::Test {
  protected:
    Win32RegistryTest() { RemoveKeyTree(kTestKey); }
    ~Win32RegistryTest() override { RemoveKeyTree(kTestKey); }

    win32::Win32Registry registry;
};

TEST_F(Win32RegistryTest, SoftwareKeysLandInThe32BitViewAsForA32BitModule) {
    ScopedRegKey key(registry);
    bool created = false;
    ASSERT_EQ(registry.CreateKey(kLocalMachine, u"SOFTWARE\\WebrigWineTest\\Product",
                                 key_access::all_access, key.receive(), &created),
              0u);
    EXPECT_TRUE(created);
    key.reset();

    EXPECT_TRUE(KeyExists(L"SOFTWARE\\WOW6432Node\\WebrigWineTest\\Product", KEY_WOW64_64KEY));
    EXPECT_FALSE(KeyExists(L"SOFTWARE\\WebrigWineTest\\Product", KEY_WOW64_64KEY));
    // Asking for the 64-bit view explicitly is honoured.
    RegKey opened = platform::kNoKey;
    EXPECT_EQ(registry.OpenKey(kLocalMachine, u"SOFTWARE\\WebrigWineTest\\Product",
                               key_access::read | key_access::wow64_64key, opened),
              2u);
    EXPECT_EQ(registry.OpenKey(kLocalMachine, u"SOFTWARE\\WebrigWineTest\\Product",
                               key_access::read, key.receive()),
              0u);
    key.reset();
    EXPECT_EQ(registry.DeleteKey(kLocalMachine, u"SOFTWARE\\WebrigWineTest\\Product"), 0u);
    EXPECT_FALSE(KeyExists(L"SOFTWARE\\WOW6432Node\\WebrigWineTest\\Product", KEY_WOW64_64KEY));
}

TEST_F(Win32RegistryTest, ValuesReadBackAsWritten) {
    ScopedRegKey key(registry);
    ASSERT_EQ(registry.CreateKey(kLocalMachine, u"SOFTWARE\\WebrigWineTest", key_access::all_access,
                                 key.receive()),
              0u);
    const std::vector<qm::wstring> lines{u"first", u"zweite Zeile", u""};
    const std::vector<std::pair<qm::wstring, RegValue>> values{
        {u"Text", RegValue::String(u"C:\\inetpub\\Shop \u00e9\u4e00")},
        {u"Expand", RegValue::String(u"%SystemRoot%\\x", platform::reg_type::expand_sz)},
        {u"Number", RegValue::Dword(0xFFFFFFFEu)},
        {u"Lines", RegValue::MultiString(lines)},
        {u"Bytes", RegValue{platform::reg_type::binary, {std::byte{0}, std::byte{0xFF}}}},
        {u"", RegValue::String(u"default")},
    };
    for (const auto& [name, value] : values) {
        ASSERT_EQ(registry.SetValue(key.get(), name, value), 0u);
    }
    for (const auto& [name, value] : values) {
        RegValue read;
        EXPECT_EQ(registry.QueryValue(key.get(), name, read), 0u);
        EXPECT_EQ(read, value);
    }
    std::vector<qm::wstring> names;
    qm::wstring name;
    RegValue value;
    for (uint32_t i = 0; registry.EnumValue(key.get(), i, name, value) == 0; ++i) {
        names.push_back(name);
    }
    EXPECT_THAT(names, ::testing::UnorderedElementsAre(u"Text", u"Expand", u"Number", u"Lines",
                                                       u"Bytes", u""));

    EXPECT_EQ(registry.DeleteValue(key.get(), u"Number"), 0u);
    EXPECT_EQ(registry.QueryValue(key.get(), u"Number", value), 2u);
    EXPECT_EQ(registry.DeleteValue(key.get(), u"Number"), 2u);
}

}  // namespace
}  // namespace webrig::windows_testing
