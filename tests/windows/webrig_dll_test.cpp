// webrig.dll driven as the installer engine drives it: the engine's module (the test QMRT.dll)
// is loaded first, then webrig.dll, whose eight exports are found by name and called with a
// settings file, a host context and the engine's operation object.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "testing/generated_project.h"
#include "testing/settings_file_builder.h"
#include "wine_test_support.h"

namespace webrig::windows_testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::SettingsEncoding;
using testing::SettingsFileBuilder;

using Initialize = int32_t(__stdcall*)(const wchar_t*, uint32_t);
using NoArguments = int32_t(__stdcall*)();
using ComponentInstall = int32_t(__stdcall*)(const wchar_t*, void*);
using CheckForContinue = int32_t(__stdcall*)(const wchar_t*, int32_t);
using ByName = int32_t(__stdcall*)(const wchar_t*);

constexpr wchar_t kW3svcParameters[] = L"SYSTEM\\CurrentControlSet\\Services\\W3SVC\\Parameters";

template <class Function>
Function Export(HMODULE module, const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(module, name)));
}

// Each test gets a freshly loaded webrig.dll, so none sees another's runtime instance.
class WebrigDllTest : public ::testing::Test {
  protected:
    WebrigDllTest() : webrig(::LoadLibraryW((ProgramFolder() + L"\\webrig.dll").c_str())) {
        RemoveKeyTree(kW3svcParameters);
    }
    ~WebrigDllTest() override {
        ::FreeLibrary(webrig);
        RemoveKeyTree(kW3svcParameters);
    }

    std::wstring Settings(const SettingsFileBuilder& settings) {
        return folder.Write(L"setup.ini", settings.Bytes(SettingsEncoding::Utf16LeWithBom));
    }

    static void SetMajorVersion(DWORD version) {
        HKEY key = nullptr;
        ASSERT_EQ(::RegCreateKeyExW(HKEY_LOCAL_MACHINE, kW3svcParameters, 0, nullptr, 0,
                                    KEY_ALL_ACCESS, nullptr, &key, nullptr),
                  ERROR_SUCCESS);
        ::RegSetValueExW(key, L"MajorVersion", 0, REG_DWORD,
                         reinterpret_cast<const BYTE*>(&version), sizeof(version));
        ::RegCloseKey(key);
    }

    bool Journalled(const std::wstring& prefix) const {
        const std::vector<std::wstring> lines = host.Journal();
        return std::any_of(lines.begin(), lines.end(),
                           [&](const std::wstring& line) { return line.starts_with(prefix); });
    }

    const TestHost host;  // loaded before webrig.dll, as the engine is
    const HMODULE webrig;
    const ScratchFolder folder;
    const Initialize initialize = Export<Initialize>(webrig, "QMIISInitialize");
    const NoArguments uninitialize = Export<NoArguments>(webrig, "QMIISUninitialize");
    const ComponentInstall install = Export<ComponentInstall>(webrig, "QMIISComponentInstall");
    const CheckForContinue checkForContinue =
        Export<CheckForContinue>(webrig, "QMIISCheckForContinue");
    const std::vector<ByName> uninstalls{
        Export<ByName>(webrig, "QMIISVRootUninstall"),
        Export<ByName>(webrig, "QMIISWebSiteUninstall"),
        Export<ByName>(webrig, "QMIISAppPoolUninstall"),
        Export<ByName>(webrig, "QMIISWebServiceExtensionUninstall"),
    };
};

TEST_F(WebrigDllTest, BeforeInitializeEveryOtherExportAnswersMinus1) {
    // Found by their plain names, or the calls below crash.
    ASSERT_TRUE(initialize && uninitialize && install && checkForContinue);
    for (const ByName uninstall : uninstalls) {
        ASSERT_NE(uninstall, nullptr);
    }
    EXPECT_EQ(uninitialize(), -1);
    EXPECT_EQ(install(L"Component1", nullptr), -1);
    EXPECT_EQ(checkForContinue(L"Component1", 1), -1);
    for (const ByName uninstall : uninstalls) {
        EXPECT_EQ(uninstall(L"Shop"), -1);
    }
    EXPECT_THAT(host.Journal(), IsEmpty());
}

TEST_F(WebrigDllTest, AMissingSettingsFileStillInitializes) {
    EXPECT_EQ(initialize((folder.path() + L"\\missing.ini").c_str(), 7), 0);
    EXPECT_EQ(initialize(nullptr, 7), 0);
    EXPECT_EQ(uninitialize(), 0);
}

TEST_F(WebrigDllTest, SettingsAreResolvedThroughTheHostsExports) {
    ASSERT_EQ(initialize(Settings(testing::GenerateProject(1)).c_str(), 7), 0);
    EXPECT_TRUE(Journalled(L"__LoadString 7 ")) << "string-table lookups with the host context";
    EXPECT_TRUE(Journalled(L"TextSubSubstitute 7 [INSTALLDIR]wwwroot\\Component1\\"))
        << "the physical paths substituted";
    // Without a host context the host is not asked.
    host.Reset();
    ASSERT_EQ(initialize(Settings(testing::GenerateProject(1)).c_str(), 0), 0);
    EXPECT_THAT(host.Journal(), IsEmpty());
}

TEST_F(WebrigDllTest, CheckForContinueReadsMajorVersionFromTheRegistry) {
    ASSERT_EQ(initialize(Settings(testing::GenerateProject(1)).c_str(), 7), 0);
    EXPECT_EQ(checkForContinue(L"Component1", 0), -1) << "no IIS and a virtual directory";
    EXPECT_EQ(checkForContinue(L"Component1", 1), 0);
    EXPECT_EQ(checkForContinue(L"NoSuchComponent", 0), 0);
    SetMajorVersion(10);
    EXPECT_EQ(checkForContinue(L"Component1", 0), 0);
}

TEST_F(WebrigDllTest, AnInstallWithoutIisAsksTheHostAndReturns0) {
    ASSERT_EQ(initialize(Settings(testing::GenerateProject(1)).c_str(), 7), 0);
    SetMajorVersion(10);
    ASSERT_EQ(checkForContinue(L"Component1", 0), 0);
    host.Reset();

    VARIANT operations;
    host.CreateOperations(operations);
    EXPECT_EQ(install(L"Component1", &operations), 0);
    EXPECT_THAT(host.Journal(),
                ElementsAre(L"GetRecorder OPTYPE_GENERAL",
                            L"_ComponentFileInfo 7 DATA WebFeature1 Component1 14 0 0"));
    // Once per component and instance.
    host.Reset();
    EXPECT_EQ(install(L"Component1", &operations), 0);
    EXPECT_THAT(host.Journal(), IsEmpty());
    ::VariantClear(&operations);
}

TEST_F(WebrigDllTest, AnInstallWithoutTheHostsObjectStillRuns) {
    ASSERT_EQ(initialize(Settings(testing::GenerateProject(1)).c_str(), 7), 0);
    SetMajorVersion(10);
    ASSERT_EQ(checkForContinue(L"Component1", 0), 0);
    host.Reset();
    EXPECT_EQ(install(L"Component1", nullptr), 0);
    VARIANT empty;
    ::VariantInit(&empty);
    EXPECT_EQ(install(L"Other", &empty), 0);
    EXPECT_THAT(host.Journal(),
                Contains(L"_ComponentFileInfo 7 DATA WebFeature1 Component1 14 0 0"));
}

TEST_F(WebrigDllTest, WithoutIisServicesInitializeAndUninitializeReturn0) {
    SettingsFileBuilder settings;
    settings.Section("GlobalOptions").Entry("IISVERSION", 6).Entry("RESTARTW3SVC", 1);
    settings.Section("Components").Entry("Count", 0);
    EXPECT_EQ(initialize(Settings(settings).c_str(), 7), 0);
    EXPECT_EQ(uninitialize(), 0);
    for (const ByName uninstall : uninstalls) {
        EXPECT_EQ(uninstall(L"Shop"), 0);
    }
    // The instance outlives QMIISUninitialize.
    EXPECT_EQ(checkForContinue(L"Component1", 0), 0);
}

}  // namespace
}  // namespace webrig::windows_testing
