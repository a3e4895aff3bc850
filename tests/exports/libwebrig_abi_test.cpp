// The eight exports as the host engine sees them: C functions of libwebrig.so taking UTF-16
// strings, on the machine named by WEBRIG_MACHINE.

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>

#include "platform/registry.h"
#include "testing/temp_machine.h"
#include "webrig/webrig.h"

namespace {

namespace fs = std::filesystem;

void WriteSettings(const fs::path& machine, const std::string& text) {
    fs::create_directories(machine / "drive_c" / "Temp");
    std::ofstream(machine / "drive_c" / "Temp" / "setup.ini", std::ios::binary) << text;
}

webrig::sim::MachineConfig WithoutIis() {
    webrig::sim::MachineConfig config;
    config.iisVersion = {0, 0};
    return config;
}

constexpr char kProject[] =
    "[Components]\r\nCount=1\r\nc1=Web\r\n"
    "[Web_VRoots]\r\nCount=1\r\nv1=VRoot_Shop\r\n"
    "[VRoot_Shop]\r\nQMIISCommon=Shop\r\nParentSite=Default Web Site\r\nDisplayName=Shop\r\n"
    "ItemType=1\r\nRootDir=C:\\inetpub\\shop\r\n";

// One test: the library keeps one instance per process, so the order of these calls matters.
TEST(LibwebrigAbiTest, TheExportsFollowTheirContract) {
    unsetenv("WEBRIG_MACHINE");
    EXPECT_EQ(QMIISUninitialize(), -1);
    EXPECT_EQ(QMIISComponentInstall(u"Web", nullptr), -1);
    EXPECT_EQ(QMIISCheckForContinue(u"Web", 1), -1);
    EXPECT_EQ(QMIISVRootUninstall(u"Shop"), -1);
    EXPECT_EQ(QMIISWebSiteUninstall(u"Site"), -1);
    EXPECT_EQ(QMIISAppPoolUninstall(u"Pool"), -1);
    EXPECT_EQ(QMIISWebServiceExtensionUninstall(u"Ext"), -1);

    // No machine: a clear line, and the answers of a machine where everything fails.
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(QMIISInitialize(u"C:\\Temp\\setup.ini", 0), 0);
    const std::string complaint = ::testing::internal::GetCapturedStderr();
    EXPECT_NE(complaint.find("WEBRIG_MACHINE"), std::string::npos) << complaint;
    EXPECT_EQ(QMIISCheckForContinue(u"Web", 0), 0);  // nothing was loaded: no IIS items

    // A machine with IIS 10.
    webrig::testing::TempMachine withIis;
    WriteSettings(withIis.path(), kProject);
    setenv("WEBRIG_MACHINE", withIis.path().c_str(), 1);
    EXPECT_EQ(QMIISInitialize(u"C:\\Temp\\setup.ini", 0), 0);
    EXPECT_EQ(QMIISCheckForContinue(u"Web", 0), 0);

    // A machine without IIS: the component with a virtual directory cannot go on.
    webrig::testing::TempMachine withoutIis(WithoutIis());
    WriteSettings(withoutIis.path(), kProject);
    setenv("WEBRIG_MACHINE", withoutIis.path().c_str(), 1);
    EXPECT_EQ(QMIISInitialize(u"C:\\Temp\\setup.ini", 0), 0);
    EXPECT_EQ(QMIISCheckForContinue(u"Web", 0), -1);
    EXPECT_EQ(QMIISCheckForContinue(u"Web", 1), 0);
    EXPECT_EQ(QMIISCheckForContinue(nullptr, 0), 0);
    EXPECT_EQ(QMIISComponentInstall(nullptr, nullptr), 0);
    EXPECT_EQ(QMIISUninitialize(), 0);
    EXPECT_EQ(QMIISVRootUninstall(nullptr), 0);

    EXPECT_EQ(QMIISInitialize(nullptr, 0), 0);
    unsetenv("WEBRIG_MACHINE");
}

}  // namespace
