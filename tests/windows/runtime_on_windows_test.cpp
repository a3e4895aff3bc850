// The runtime over the Win32 layer under Wine, where neither IIS service exists and no IIS 7+
// administration objects are registered: the codes and log lines of initialization, and an
// IIS 7+ backend that finds no IIS without anything escaping.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "exports/iis_pro_runtime.h"
#include "platform/win32/win32_platform.h"
#include "settings/iis_app_pool_prop.h"
#include "settings/iis_pro_ini_loader.h"
#include "testing/generated_project.h"
#include "testing/recording_event_sink.h"
#include "testing/settings_file_builder.h"
#include "wine_test_support.h"

namespace webrig::windows_testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using testing::RecordingEventSink;
using testing::SettingsEncoding;
using testing::SettingsFileBuilder;

constexpr wchar_t kW3svcParameters[] = L"SYSTEM\\CurrentControlSet\\Services\\W3SVC\\Parameters";

class RuntimeOnWindowsTest : public ::testing::Test {
  protected:
    RuntimeOnWindowsTest() { RemoveKeyTree(kW3svcParameters); }
    ~RuntimeOnWindowsTest() override { RemoveKeyTree(kW3svcParameters); }

    // Loads `settings` into a fresh runtime and returns the initialization status.
    int32_t Initialize(const SettingsFileBuilder& settings) {
        const std::wstring path =
            folder.Write(L"setup.ini", settings.Bytes(SettingsEncoding::Utf16LeWithBom));
        CIISProIniLoader loader(*platform, Utf16(path), platform::kNoModule, 0);
        auto sink = std::make_unique<RecordingEventSink>();
        lines = sink.get();
        return runtime.Initialize(loader, std::move(sink), 0);
    }

    static SettingsFileBuilder Iis(const char* version, const char* restart = "0") {
        SettingsFileBuilder settings;
        settings.Section("GlobalOptions")
            .Entry("IISVERSION", version)
            .Entry("RESTARTW3SVC", restart);
        settings.Section("Components").Entry("Count", 0);
        return settings;
    }

    ScratchFolder folder;
    std::shared_ptr<platform::Platform> platform = std::make_shared<win32::Win32Platform>();
    CIISProRuntime runtime{platform};
    RecordingEventSink* lines = nullptr;
};

TEST_F(RuntimeOnWindowsTest, WithoutTheIisAdminServiceInitializationEndsWithMinus1102) {
    EXPECT_EQ(Initialize(Iis("6")), -1102);
    EXPECT_THAT(lines->logLines,
                ElementsAre(u"Unable to open the IIS Admin Service",
                            u"OpenService returned the following: ERROR_SERVICE_DOES_NOT_EXIST"));
    EXPECT_THAT(lines->errors, IsEmpty());
    EXPECT_EQ(runtime.propertyBag.ignoreIIS, 0);
}

TEST_F(RuntimeOnWindowsTest, ADisabledIisAdminServiceIsReportedWithMinus1108) {
    const TestService iisAdmin(L"IISADMIN", SERVICE_DISABLED, L"C:\\windows\\inetsrv\\none.exe");
    EXPECT_EQ(Initialize(Iis("6")), -1108);
    EXPECT_THAT(lines->logLines,
                ElementsAre(u"StartService returned the following: ERROR_SERVICE_DISABLED"));
    EXPECT_THAT(lines->errors,
                ElementsAre(std::make_pair(qm::wstring(u"IIS Admin Service is disabled"), -1108)));
}

TEST_F(RuntimeOnWindowsTest, AnIisAdminServiceThatCannotStartIsReportedWithMinus1104) {
    const TestService iisAdmin(L"IISADMIN", SERVICE_DEMAND_START,
                               L"C:\\windows\\inetsrv\\missing.exe");
    EXPECT_EQ(Initialize(Iis("6")), -1104);
    ASSERT_EQ(lines->logLines.size(), 1u);
    EXPECT_TRUE(lines->logLines[0].starts_with(u"StartService returned the following: "))
        << qm::to_utf8(lines->logLines[0]);
    EXPECT_THAT(lines->errors, ElementsAre(std::make_pair(
                                   qm::wstring(u"Unable to start IIS Admin Service"), -1104)));
}

TEST_F(RuntimeOnWindowsTest, FromIis7OnNoServiceIsAsked) {
    EXPECT_EQ(Initialize(Iis("10")), 0);
    EXPECT_THAT(lines->logLines, IsEmpty());
    EXPECT_EQ(runtime.RestartW3cService(), 0);
    EXPECT_THAT(lines->logLines, IsEmpty());
}

TEST_F(RuntimeOnWindowsTest, TheRestartWithoutW3svcStopsAtOpeningIt) {
    Initialize(Iis("6", "1"));
    lines->logLines.clear();
    EXPECT_EQ(runtime.RestartW3cService(), -1102);
    EXPECT_THAT(lines->logLines, ElementsAre(u"RestartProp value: 1"));
}

TEST_F(RuntimeOnWindowsTest, OnIis10WithoutIisTheBackendFailsInsideAndThrowsNothing) {
    ASSERT_EQ(Initialize(testing::GenerateProject(1)), 0);
    ASSERT_EQ(runtime.propertyBag.iisMajorVersion, 10);
    // No IIS 6 compatibility under Wine: the IIS 7+ backend is chosen.
    ASSERT_TRUE(runtime.UseIis7Objects());
    EXPECT_THAT(lines->logLines, ElementsAre(u"This machine does not support legacy objects"));
    lines->logLines.clear();

    ASSERT_NO_THROW({
        const auto controller = runtime.BuildController();
        runtime.ComponentInstall(*controller, u"Component1");
        CIISAppPoolProp pool;
        ASSERT_EQ(pool.SetName(u"ShopPool"), 0);
        EXPECT_NE(controller->CreateAppPoolFunction(pool), 0);
    });
    // The metabase probe and the administration manager both meet REGDB_E_CLASSNOTREG.
    EXPECT_THAT(lines->logLines, IsSupersetOf({
                                     u"CoGetClassObject(GETAdminBaseCLSID(TRUE) error: -2147221164",
                                     u"Legacy objects not supported",
                                     u"m_spAppHostAdminManager NULL, CoCreateInstance returned: "
                                     u"-2147221164",
                                 }));
}

TEST_F(RuntimeOnWindowsTest, TheIis7AdministrationManagerIsNotRegisteredUnderWine) {
    std::unique_ptr<platform::AdminManager> manager;
    EXPECT_EQ(platform->iisConfiguration().CreateAdminManager(manager),
              static_cast<qm::hresult>(0x80040154u));
    EXPECT_EQ(manager, nullptr);
    EXPECT_EQ(platform->comClasses().ProbeAdminBaseClassFactory(),
              static_cast<qm::hresult>(0x80040154u));
    std::unique_ptr<platform::AdminBaseClassFactory> factory;
    EXPECT_EQ(platform->comClasses().GetAdminBaseClassFactory(factory),
              static_cast<qm::hresult>(0x80040154u));
    EXPECT_EQ(factory, nullptr);
}

}  // namespace
}  // namespace webrig::windows_testing
