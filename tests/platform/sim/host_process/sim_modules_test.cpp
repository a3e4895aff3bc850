#include "platform/sim/host_process/sim_modules.h"

#include <gtest/gtest.h>

namespace webrig::sim {
namespace {

void First() {}
void Second() {}

TEST(SimModules, WebrigsOwnModuleIsLoadedFromTheStart) {
    SimModules modules;
    EXPECT_NE(modules.OwnModule(), platform::kNoModule);
    EXPECT_EQ(modules.ModuleFileName(modules.OwnModule()), u"C:\\ProgramData\\webrig\\webrig.dll");
    EXPECT_EQ(modules.FindModule(u"WEBRIG.DLL"), modules.OwnModule());
    modules.SetOwnModulePath(u"C:\\Program Files\\Host\\webrig.dll");
    EXPECT_EQ(modules.ModuleFileName(modules.OwnModule()), u"C:\\Program Files\\Host\\webrig.dll");
    EXPECT_EQ(modules.FindModule(u"c:\\program files\\host\\WEBRIG.dll"), modules.OwnModule());
    EXPECT_EQ(modules.FindModule(u"C:\\ProgramData\\webrig\\webrig.dll"), platform::kNoModule);
}

TEST(SimModules, FindsByFileNameOrFullPathWithoutRegardToCase) {
    SimModules modules;
    const auto host = modules.LoadModule(u"C:\\Program Files\\Host\\HostEngine.dll",
                                         {{"First", &First}, {"Second", &Second}});
    const auto tool = modules.LoadModule(u"C:\\Tools\\helper.exe", {});
    EXPECT_NE(host, tool);
    const std::pair<const char16_t*, platform::ModuleHandle> cases[] = {
        {u"hostengine.DLL", host},
        {u"HostEngine", host},  // ".dll" is assumed without an extension
        {u"C:\\PROGRAM FILES\\host\\hostengine.dll", host},
        {u"helper.exe", tool},
        {u"helper", platform::kNoModule},
        {u"helper.", platform::kNoModule},  // a trailing dot means no extension
        {u"C:\\Elsewhere\\HostEngine.dll", platform::kNoModule},
        {u"Host", platform::kNoModule},
        {u"", platform::kNoModule},
    };
    for (const auto& [name, handle] : cases) {
        EXPECT_EQ(modules.FindModule(name), handle) << qm::to_utf8(name);
    }
}

TEST(SimModules, FindsFunctionsByExactName) {
    SimModules modules;
    const auto host = modules.LoadModule(u"C:\\Host\\engine.dll", {{"First", &First}});
    EXPECT_EQ(modules.FindFunction(host, "First"), &First);
    EXPECT_EQ(modules.FindFunction(host, "first"), nullptr);
    EXPECT_EQ(modules.FindFunction(host, "Missing"), nullptr);
    EXPECT_EQ(modules.FindFunction(platform::ModuleHandle{0x1234}, "First"), nullptr);
    EXPECT_EQ(modules.ModuleFileName(platform::ModuleHandle{0x1234}), u"");
}

TEST(SimModules, LoadsAreCountedUntilTheLastUnload) {
    SimModules modules;
    const auto once = modules.LoadModule(u"C:\\Host\\engine.dll", {});
    const auto twice = modules.LoadModule(u"c:\\host\\ENGINE.dll", {});
    EXPECT_EQ(once, twice);
    EXPECT_TRUE(modules.UnloadModule(once));
    EXPECT_EQ(modules.FindModule(u"engine.dll"), once);
    EXPECT_TRUE(modules.UnloadModule(once));
    EXPECT_EQ(modules.FindModule(u"engine.dll"), platform::kNoModule);
    EXPECT_FALSE(modules.UnloadModule(once));
}

}  // namespace
}  // namespace webrig::sim
