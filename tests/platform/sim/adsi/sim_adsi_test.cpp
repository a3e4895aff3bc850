// ADSI's IIS web service object over applicationHost.config's restriction list.

#include "platform/sim/adsi/sim_adsi.h"

#include <gtest/gtest.h>

#include "platform/sim/machine/machine_layout.h"
#include "testing/file_bytes.h"
#include "testing/temp_machine.h"

namespace webrig::sim {
namespace {

constexpr char16_t kActiveDs[] = u"C:\\Windows\\system32\\activeds.dll";
constexpr char16_t kW3svc[] = u"IIS://localhost/w3svc";

MachineConfig WithCompatibility(bool compatibility) {
    MachineConfig config;
    if (compatibility) {
        config.iisFeatures.push_back(IisFeature::metabaseCompatibility);
    }
    return config;
}

class Adsi : public ::testing::Test {
  protected:
    explicit Adsi(bool compatibility = true) : m_machine(WithCompatibility(compatibility)) {}

    qm::hresult GetWebService(std::unique_ptr<platform::IisWebService>& service) {
        std::unique_ptr<platform::ActiveDs> library;
        EXPECT_EQ(m_machine.machine().adsi().LoadActiveDs(kActiveDs, library), 0u);
        return library ? library->GetWebService(kW3svc, service) : qm::hr::fail;
    }

    std::string ApplicationHostConfig() {
        const std::vector<std::byte> bytes =
            testing::ReadBytes(DriveCPath(m_machine.path()) /
                               "Windows/System32/inetsrv/config/applicationHost.config");
        return std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }

    testing::TempMachine m_machine;
};

TEST_F(Adsi, ExtensionsAreAddedAndRemovedInApplicationHostConfig) {
    const std::string stock = ApplicationHostConfig();
    const std::string entry =
        R"(<add path="C:\app\webrig_ext.dll" allowed="true" groupId="APP" description="App" />)";
    std::unique_ptr<platform::IisWebService> service;
    ASSERT_EQ(GetWebService(service), 0);
    EXPECT_EQ(service->AddExtensionFile(u"C:\\app\\webrig_ext.dll", true, u"APP", false, u"App"),
              0);
    EXPECT_EQ(service->AddExtensionFile(u"c:\\APP\\WEBRIG_EXT.DLL", false, u"", true, u""),
              platform::adsi_error::duplicate_name);
    EXPECT_EQ(ApplicationHostConfig(), stock) << "nothing is written before SetInfo";
    EXPECT_EQ(service->SetInfo(), 0);
    EXPECT_NE(ApplicationHostConfig().find(entry), std::string::npos) << ApplicationHostConfig();

    ASSERT_EQ(GetWebService(service), 0);
    EXPECT_EQ(service->DeleteExtensionFileRecord(u"C:\\App\\webrig_ext.dll"), 0);
    EXPECT_EQ(service->DeleteExtensionFileRecord(u"C:\\app\\webrig_ext.dll"),
              qm::hr::element_not_found);
    EXPECT_EQ(service->SetInfo(), 0);
    EXPECT_EQ(ApplicationHostConfig().find("webrig_ext.dll"), std::string::npos);
}

TEST_F(Adsi, TheLibraryLoadsOnlyFromAProgramFileNamedActiveDs) {
    std::unique_ptr<platform::ActiveDs> library;
    platform::Adsi& adsi = m_machine.machine().adsi();
    EXPECT_EQ(adsi.LoadActiveDs(u"C:\\Windows\\system32\\missing.dll", library),
              qm::win32::mod_not_found);
    EXPECT_EQ(adsi.LoadActiveDs(u"C:\\Windows\\system32\\netsh.exe", library),
              qm::win32::proc_not_found);
    const std::filesystem::path wow64 =
        DriveCPath(m_machine.path()) / "Windows" / "SysWOW64" / "activeds.dll";
    testing::WriteBytes(wow64, testing::Bytes("not a library"));
    EXPECT_EQ(adsi.LoadActiveDs(kActiveDs, library), platform::kErrorBadExeFormat)
        << "a 32-bit process loads SysWOW64's copy";
    EXPECT_EQ(library, nullptr);
    EXPECT_EQ(adsi.LoadActiveDs(u"C:\\Windows\\Sysnative\\activeds.dll", library), 0u);
    std::unique_ptr<platform::IisWebService> service;
    EXPECT_EQ(library->GetWebService(u"IIS://localhost/w3svc/1", service),
              platform::adsi_error::bad_pathname);
}

class AdsiWithoutCompatibility : public Adsi {
  protected:
    AdsiWithoutCompatibility() : Adsi(false) {}
};

TEST_F(AdsiWithoutCompatibility, HasNoIisWebServiceObject) {
    std::unique_ptr<platform::IisWebService> service;
    EXPECT_EQ(GetWebService(service), platform::adsi_error::bad_pathname);
    EXPECT_EQ(service, nullptr);
}

}  // namespace
}  // namespace webrig::sim
