#include "host/component_file_info.h"

#include <gtest/gtest.h>

#include "testing/temp_machine.h"
#include "testing/test_host.h"

namespace webrig::host {
namespace {

struct DirectoryCase {
    const char16_t* path;
    const char16_t* directory;
};

class ModuleDirectoryTest : public ::testing::TestWithParam<DirectoryCase> {};

TEST_P(ModuleDirectoryTest, KeepsDriveAndShare) {
    EXPECT_EQ(ModuleDirectory(GetParam().path), GetParam().directory);
}

INSTANTIATE_TEST_SUITE_P(
    Paths, ModuleDirectoryTest,
    ::testing::Values(DirectoryCase{u"C:\\Temp\\Setup\\webrig.dll", u"C:\\Temp\\Setup"},
                      DirectoryCase{u"C:\\webrig.dll", u"C:"},
                      DirectoryCase{u"\\\\server\\share\\webrig.dll", u"\\\\server\\share"},
                      DirectoryCase{u"\\\\server\\share\\dir\\webrig.dll",
                                    u"\\\\server\\share\\dir"},
                      DirectoryCase{u"\\\\server\\share", u"\\\\server\\share"},
                      DirectoryCase{u"webrig.dll", u""}));

class ComponentFileInfoTest : public ::testing::Test {
  protected:
    testing::TempMachine temp;
    sim::Machine& machine = temp.machine();
};

TEST_F(ComponentFileInfoTest, BitFortyHexSuppressesTheRecords) {
    testing::TestHost host(machine);
    host.componentFlags[u"Web"] = 0x41;
    host.componentFlags[u"Docs"] = 0x3F;
    EXPECT_TRUE(ComponentSuppressesEvents(machine, host.context(), u"Main", u"Web"));
    EXPECT_FALSE(ComponentSuppressesEvents(machine, host.context(), u"Main", u"Docs"));
    EXPECT_FALSE(ComponentSuppressesEvents(machine, host.context(), u"Main", u"Other"));
    ASSERT_EQ(host.fileInfoCalls.size(), 3u);
    const auto& call = host.fileInfoCalls[0];
    EXPECT_EQ(call.context, host.context());
    EXPECT_EQ(call.media, u"DATA");
    EXPECT_EQ(call.feature, u"Main");
    EXPECT_EQ(call.component, u"Web");
    EXPECT_EQ(call.selector, 14u);
    EXPECT_EQ(call.reserved, 0u);
}

TEST_F(ComponentFileInfoTest, AFailedCallSuppressesNothing) {
    testing::TestHost host(machine);
    host.componentFlags[u"Web"] = 0x40;
    host.fileInfoResult = 5;
    EXPECT_FALSE(ComponentSuppressesEvents(machine, host.context(), u"Main", u"Web"));
}

TEST_F(ComponentFileInfoTest, TheHostMustSitInWebrigsOwnFolder) {
    testing::TestHost host(machine, {}, u"C:\\Temp\\Setup", u"C:\\Program Files\\webrig");
    host.componentFlags[u"Web"] = 0x40;
    EXPECT_FALSE(ComponentSuppressesEvents(machine, host.context(), u"Main", u"Web"));
    EXPECT_TRUE(host.fileInfoCalls.empty());
}

TEST_F(ComponentFileInfoTest, AHostWithoutTheFunctionSuppressesNothing) {
    testing::TestHost host(machine, {.componentFileInfo = false});
    EXPECT_FALSE(ComponentSuppressesEvents(machine, host.context(), u"Main", u"Web"));
}

TEST_F(ComponentFileInfoTest, WebrigInADriveRootFindsTheHostThere) {
    testing::TestHost host(machine, {}, u"C:");
    host.componentFlags[u"Web"] = 0x40;
    EXPECT_TRUE(ComponentSuppressesEvents(machine, host.context(), u"", u"Web"));
}

}  // namespace
}  // namespace webrig::host
