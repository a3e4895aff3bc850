// Processes on a simulated machine: finding the program, netsh's SSL bindings in HTTP.sys's
// registry key, aspnet_regiis, and the journal of every process.

#include <gtest/gtest.h>

#include <fstream>

#include "platform/sim/certificates/certificate_der.h"
#include "platform/sim/machine/machine_layout.h"
#include "platform/sim/programs/netsh.h"
#include "support/last_error.h"
#include "testing/file_bytes.h"
#include "testing/temp_machine.h"
#include "testing/test_certificate.h"

namespace webrig::sim {
namespace {

using platform::RegValue;

const testing::TestCertificate& Certificate() {
    static const testing::TestCertificate made = testing::MakeTestCertificate("shop.example");
    return made;
}

constexpr char16_t kNetsh[] = u"\"C:\\Windows\\system32\\netsh.exe\"";
constexpr char16_t kAppId[] = u"{00112233-4455-6677-8899-AABBCCDDEEFF}";

MachineConfig WithArchitecture(platform::ProcessorArchitecture architecture) {
    MachineConfig config;
    config.architecture = architecture;
    return config;
}

class Processes : public ::testing::Test {
  protected:
    explicit Processes(
        platform::ProcessorArchitecture architecture = platform::ProcessorArchitecture::amd64)
        : m_machine(WithArchitecture(architecture)) {}

    platform::Platform& machine() { return m_machine.machine(); }

    // Starts the command line and waits for it as webrig does; nullopt when it does not start.
    std::optional<uint32_t> Run(const qm::wstring& commandLine) {
        platform::ProcessInformation info;
        if (!machine().processes().Start(commandLine, info)) {
            return std::nullopt;
        }
        EXPECT_EQ(machine().processes().Wait(info.process, platform::kInfinite),
                  platform::kWaitObject0);
        uint32_t exitCode = 0;
        EXPECT_TRUE(machine().processes().GetExitCode(info.process, exitCode));
        EXPECT_TRUE(machine().processes().Close(info.process));
        EXPECT_TRUE(machine().processes().Close(info.thread));
        return exitCode;
    }

    qm::wstring AddSslCert(const qm::wstring& ipPort, const std::string& hash) {
        return qm::wstring(kNetsh) + u" http add sslcert ipport=" + ipPort + u" certhash=\"" +
               qm::from_utf8(hash) + u"\" appid=" + kAppId;
    }

    // The certificate with its key in the machine's personal store, as a PFX import leaves it.
    void InstallCertificate() {
        platform::Certificates& certs = machine().certificates();
        const platform::CertStore pfx = certs.ImportPfx(Certificate().Pfx("pw"), u"pw", 0x20);
        const platform::CertContext context = certs.EnumCertificates(pfx, {});
        const platform::CertStore my = certs.OpenLocalMachineStore(u"MY", 1, 0);
        ASSERT_TRUE(certs.AddCertificateContext(my, context, 3, nullptr));
        certs.FreeContext(context);
        certs.CloseStore(pfx, 0);
        certs.CloseStore(my, 0);
    }

    const RegistryKey* Binding(const char16_t* ipPort) {
        const RegistryKey* key = &m_machine.machine().simRegistry().Root();
        for (const char16_t* name : {u"SYSTEM", u"CurrentControlSet", u"Services", u"HTTP",
                                     u"Parameters", u"SslBindingInfo", ipPort}) {
            key = key != nullptr ? key->FindSubKey(name) : nullptr;
        }
        return key;
    }

    std::vector<std::string> JournalLines() {
        std::ifstream file(ProcessJournalPath(m_machine.path()));
        std::vector<std::string> lines;
        for (std::string line; std::getline(file, line);) {
            lines.push_back(line);
        }
        return lines;
    }

    testing::TempMachine m_machine;
};

TEST_F(Processes, NetshBindsTheCertificateWhereHttpSysKeepsIt) {
    InstallCertificate();
    EXPECT_EQ(Run(AddSslCert(u"0.0.0.0:443", Certificate().fingerprint)), 0u);
    EXPECT_EQ(Run(AddSslCert(u"10.0.0.5:443", Certificate().fingerprint)), 0u);
    m_machine.Reopen();  // what HKLM.reg holds
    ASSERT_NE(Binding(u"10.0.0.5:443"), nullptr);
    const RegistryKey* binding = Binding(u"0.0.0.0:443");
    ASSERT_NE(binding, nullptr);
    const RegValue appId{platform::reg_type::binary,
                         testing::Bytes(std::string("\x33\x22\x11\x00\x55\x44\x77\x66\x88\x99"
                                                    "\xAA\xBB\xCC\xDD\xEE\xFF",
                                                    16))};
    const Thumbprint thumbprint = Sha1Thumbprint(Certificate().der);
    const RegValue hash{platform::reg_type::binary, {thumbprint.begin(), thumbprint.end()}};
    const std::pair<const char16_t*, RegValue> expected[] = {
        {u"AppId", appId},
        {u"DefaultCertCheckMode", RegValue::Dword(0)},
        {u"DefaultFlags", RegValue::Dword(0)},
        {u"DefaultRevocationFreshnessTime", RegValue::Dword(0)},
        {u"DefaultRevocationUrlRetrievalTimeout", RegValue::Dword(0)},
        {u"SslCertHash", hash},
        {u"SslCertStoreName", RegValue::String(u"MY")},
    };
    for (const auto& [name, value] : expected) {
        const RegValue* found = binding->FindValue(name);
        ASSERT_NE(found, nullptr) << qm::to_utf8(name);
        EXPECT_EQ(*found, value) << qm::to_utf8(name);
    }
}

TEST_F(Processes, NetshRefusesAsWindowsDoes) {
    InstallCertificate();
    const std::string fingerprint = Certificate().fingerprint;
    ASSERT_EQ(Run(AddSslCert(u"0.0.0.0:443", fingerprint)), 0u);
    struct Case {
        qm::wstring commandLine;
        const char* output;
    };
    const Case cases[] = {
        {AddSslCert(u"0.0.0.0:443", fingerprint),
         "SSL Certificate add failed, Error: 183\\nCannot create a file when that file already "
         "exists."},
        {AddSslCert(u"0.0.0.0:8443", std::string(40, 'A')),
         "SSL Certificate add failed, Error: 1312\\nA specified logon session does not exist. It "
         "may "
         "already have been terminated."},
        {AddSslCert(u"0.0.0.0:99999", fingerprint), "The parameter is incorrect."},
        {AddSslCert(u"0.0.0.0:8443", "XYZ"), "The parameter is incorrect."},
        {qm::wstring(kNetsh) + u" http add sslcert ipport=0.0.0.0:8443",
         "One or more essential parameters were not entered.\\nVerify the required parameters, "
         "and reenter them."},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Run(c.commandLine), 1u) << c.output;
        EXPECT_NE(JournalLines().back().find(std::string("\"output\":\"") + c.output + "\""),
                  std::string::npos)
            << JournalLines().back();
    }
    EXPECT_EQ(Binding(u"0.0.0.0:8443"), nullptr);
}

TEST_F(Processes, ACertificateWithoutItsKeyCannotBeBound) {
    platform::Certificates& certs = machine().certificates();
    const platform::CertStore my = certs.OpenLocalMachineStore(u"MY", 1, 0);
    ASSERT_TRUE(certs.AddEncodedCertificate(my, 1, Certificate().der, 3, nullptr));
    certs.CloseStore(my, 0);
    EXPECT_EQ(Run(AddSslCert(u"0.0.0.0:443", Certificate().fingerprint)), 1u);
    EXPECT_EQ(Binding(u"0.0.0.0:443"), nullptr);
}

TEST_F(Processes, EveryStartedProcessIsJournaledWithTheProgramThatRan) {
    EXPECT_EQ(Run(u"C:\\Windows\\Microsoft.NET\\Framework64\\v4.0.30319\\aspnet_regiis.exe -ir"),
              0u);
    EXPECT_EQ(Run(u"C:\\Windows\\Microsoft.NET\\Framework\\v2.0.50727\\aspnet_regiis.exe -sn "
                  u"W3SVC/1/Root/shop"),
              0u);
    EXPECT_EQ(Run(u"C:\\Windows\\Microsoft.NET\\Framework\\v2.0.50727\\aspnet_regiis.exe -x"), 1u);
    EXPECT_EQ(Run(u"netsh interface show"), 0u);
    EXPECT_EQ(Run(u"C:\\Windows\\Sysnative\\netsh.exe"), 0u);
    const std::vector<std::string> expected = {
        R"({"commandLine":"C:\\Windows\\Microsoft.NET\\Framework64\\v4.0.30319\\aspnet_regiis.exe -ir","executable":"C:\\Windows\\Microsoft.NET\\Framework64\\v4.0.30319\\aspnet_regiis.exe","exitCode":0})",
        R"({"commandLine":"C:\\Windows\\Microsoft.NET\\Framework\\v2.0.50727\\aspnet_regiis.exe -sn W3SVC/1/Root/shop","executable":"C:\\Windows\\Microsoft.NET\\Framework\\v2.0.50727\\aspnet_regiis.exe","exitCode":0})",
        R"({"commandLine":"C:\\Windows\\Microsoft.NET\\Framework\\v2.0.50727\\aspnet_regiis.exe -x","executable":"C:\\Windows\\Microsoft.NET\\Framework\\v2.0.50727\\aspnet_regiis.exe","exitCode":1,"output":"The command line is not one the simulated aspnet_regiis.exe knows: -x"})",
        R"({"commandLine":"netsh interface show","executable":"C:\\Windows\\SysWOW64\\netsh.exe","exitCode":0})",
        R"({"commandLine":"C:\\Windows\\Sysnative\\netsh.exe","executable":"C:\\Windows\\System32\\netsh.exe","exitCode":0})",
    };
    EXPECT_EQ(JournalLines(), expected);
}

TEST_F(Processes, AProgramMustBeOnTheDriveAndBeAProgram) {
    const std::filesystem::path wow64 = DriveCPath(m_machine.path()) / "Windows" / "SysWOW64";
    std::filesystem::remove(wow64 / "netsh.exe");
    testing::WriteBytes(wow64 / "notes.exe", testing::Bytes("plain text"));
    struct Case {
        const char16_t* commandLine;
        uint32_t error;
    };
    const Case cases[] = {
        {u"\"C:\\Windows\\system32\\netsh.exe\" http add sslcert", qm::win32::file_not_found},
        {u"netsh http", qm::win32::file_not_found},
        {u"C:\\Nowhere\\tool.exe -x", qm::win32::path_not_found},
        {u"\"C:\\Windows\\system32\\notes.exe\"", platform::kErrorBadExeFormat},
        {u"\"C:\\Windows\\Microsoft.NET\"", qm::win32::access_denied},
        {u"", qm::win32::file_not_found},
    };
    for (const Case& c : cases) {
        qm::set_last_error(0);
        EXPECT_EQ(Run(c.commandLine), std::nullopt) << qm::to_utf8(c.commandLine);
        EXPECT_EQ(qm::get_last_error(), c.error) << qm::to_utf8(c.commandLine);
    }
    EXPECT_TRUE(JournalLines().empty());
    EXPECT_EQ(Run(u"C:\\Windows\\Sysnative\\netsh.exe http"), 0u) << "the 64-bit netsh is there";
}

class Processes32 : public Processes {
  protected:
    Processes32() : Processes(platform::ProcessorArchitecture::intel) {}
};

TEST_F(Processes32, AThirtyTwoBitMachineRunsSystem32AndHasNoSysnative) {
    EXPECT_EQ(Run(u"netsh http"), 0u);
    EXPECT_NE(JournalLines().back().find(R"("executable":"C:\\Windows\\system32\\netsh.exe")"),
              std::string::npos)
        << JournalLines().back();
    EXPECT_EQ(Run(u"C:\\Windows\\Sysnative\\netsh.exe"), std::nullopt);
    EXPECT_EQ(Run(u"C:\\Windows\\Microsoft.NET\\Framework64\\v4.0.30319\\aspnet_regiis.exe -i"),
              std::nullopt);
}

}  // namespace
}  // namespace webrig::sim
