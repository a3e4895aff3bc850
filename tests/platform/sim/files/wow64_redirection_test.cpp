#include "platform/sim/files/wow64_redirection.h"

#include <gtest/gtest.h>

#include "testing/temp_machine.h"

namespace webrig::sim {
namespace {

TEST(Wow64Redirection, SystemFoldersAsAThirtyTwoBitProcessReachesThem) {
    const Wow64FileRedirection win7(u"C:\\Windows", true);
    const Wow64FileRedirection vista(u"c:\\WINDOWS\\", false);
    struct Case {
        const char16_t* path;
        const char16_t* reached;
        const Wow64FileRedirection* by = nullptr;
    };
    const Case cases[] = {
        {u"C:\\Windows\\system32\\inetsrv\\config\\", u"C:\\Windows\\SysWOW64\\inetsrv\\config\\"},
        {u"c:/windows/System32", u"C:\\windows\\SysWOW64"},
        {u"C:\\Windows\\System32\\..\\System32\\netsh.exe", u"C:\\Windows\\SysWOW64\\netsh.exe"},
        {u"C:\\Windows\\Sysnative\\netsh.exe", u"C:\\Windows\\System32\\netsh.exe"},
        {u"C:\\Windows\\lastgood\\system32\\x.dll", u"C:\\Windows\\lastgood\\SysWOW64\\x.dll"},
        {u"C:\\Windows\\regedit.exe", u"C:\\Windows\\SysWOW64\\regedit.exe"},
        {u"C:\\Windows\\system32\\drivers\\etc\\hosts",
         u"C:\\Windows\\system32\\drivers\\etc\\hosts"},
        {u"C:\\Windows\\system32\\drivers\\x.sys", u"C:\\Windows\\SysWOW64\\drivers\\x.sys"},
        {u"C:\\Windows\\system32\\catroot\\a", u"C:\\Windows\\system32\\catroot\\a"},
        {u"C:\\Windows\\system32\\CatRoot2", u"C:\\Windows\\system32\\CatRoot2"},
        {u"C:\\Windows\\system32\\LogFiles\\HTTPERR", u"C:\\Windows\\system32\\LogFiles\\HTTPERR"},
        {u"C:\\Windows\\system32\\spool\\drivers", u"C:\\Windows\\system32\\spool\\drivers"},
        {u"C:\\Windows\\system32\\DriverStore\\x", u"C:\\Windows\\system32\\DriverStore\\x"},
        {u"C:\\Windows\\system32\\DriverStore\\x", u"C:\\Windows\\SysWOW64\\DriverStore\\x",
         &vista},
        {u"C:\\Windows\\SysWOW64\\netsh.exe", u"C:\\Windows\\SysWOW64\\netsh.exe"},
        {u"C:\\Windows\\Microsoft.NET\\Framework64", u"C:\\Windows\\Microsoft.NET\\Framework64"},
        {u"C:\\Other\\system32\\x", u"C:\\Other\\system32\\x"},
        {u"relative\\system32", u"relative\\system32"},
    };
    for (const Case& c : cases) {
        const Wow64FileRedirection& redirection = c.by != nullptr ? *c.by : win7;
        EXPECT_EQ(redirection.Redirect(c.path), c.reached) << qm::to_utf8(c.path);
    }
    EXPECT_EQ(Wow64FileRedirection().Redirect(u"C:\\Windows\\system32"), u"C:\\Windows\\system32");
}

TEST(Wow64Redirection, TheIisConfigurationFolderIsCheckedInSysWow64OnA64BitMachine) {
    for (const auto architecture :
         {platform::ProcessorArchitecture::amd64, platform::ProcessorArchitecture::intel}) {
        MachineConfig config;
        config.architecture = architecture;
        testing::TempMachine temp(config);
        platform::Platform& machine = temp.machine();
        const qm::wstring folder = machine.system().SystemDirectory() + u"\\inetsrv\\config\\";
        EXPECT_EQ(folder, u"C:\\Windows\\system32\\inetsrv\\config\\");
        // IIS puts its configuration only in the real System32, which a 32-bit process on 64-bit
        // Windows does not see there.
        EXPECT_EQ(machine.files().PathExists(folder), !config.Is64Bit());
        EXPECT_EQ(machine.files().PathExists(u"C:\\Windows\\Sysnative\\inetsrv\\config"),
                  config.Is64Bit());
    }
}

}  // namespace
}  // namespace webrig::sim
