// A website's certificate file imported into the simulated machine's "MY" store and its
// thumbprint handed to the backend.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <span>

#include "controller/bound_controllers.h"
#include "testing/file_bytes.h"
#include "testing/recording_event_sink.h"
#include "testing/test_certificate.h"

namespace webrig::testing {
namespace {

using ::testing::_;
using ::testing::Contains;
using ::testing::Return;

constexpr platform::MetadataHandle kSiteKey{5};

const TestCertificate& Certificate() {
    static const TestCertificate certificate = MakeTestCertificate("shop.example");
    return certificate;
}

class SslCertificateTest : public ::testing::Test {
  protected:
    SslCertificateTest() { bound.slots().SetEventSink(&sink); }

    // Puts a file on the machine's C: drive as the website's certificate.
    void GiveCertificate(const std::vector<std::byte>& bytes, const char16_t* password = u"") {
        std::filesystem::create_directories(bound.temp.path() / "drive_c" / "Certs");
        WriteBytes(bound.temp.path() / "drive_c" / "Certs" / "site.cer", bytes);
        bound.website.SSLCertPath = u"C:\\Certs\\site.cer";
        bound.website.SslPassword = password;
    }
    bool InStore() {
        platform::Registry& registry = bound.temp.machine().registry();
        platform::ScopedRegKey key(registry);
        return registry.OpenKey(platform::kLocalMachine,
                                u"SOFTWARE\\Microsoft\\SystemCertificates\\MY\\Certificates\\" +
                                    qm::from_utf8(Certificate().fingerprint),
                                platform::key_access::read, key.receive()) == 0;
    }
    bool KeyFileExists() {
        return std::filesystem::exists(bound.temp.path() / "drive_c" / "ProgramData" / "Microsoft" /
                                       "Crypto" / "RSA" / "MachineKeys" /
                                       (Certificate().fingerprint + ".pem"));
    }

    LegacyBound bound;
    RecordingEventSink sink;
};

enum class Format { der, pem, pfx };

class CertificateFileTest : public SslCertificateTest,
                            public ::testing::WithParamInterface<Format> {};

TEST_P(CertificateFileTest, IsStoredAndItsThumbprintWritten) {
    const Format format = GetParam();
    GiveCertificate(format == Format::der   ? Certificate().der
                    : format == Format::pem ? Bytes(Certificate().pem)
                                            : Certificate().Pfx("s3cret"),
                    u"s3cret");
    std::string thumbprint;
    EXPECT_CALL(bound.backend(), SetVRtBinProperty(kSiteKey, 5506u, 1u, _, 20u))
        .WillOnce([&thumbprint](auto, auto, auto, const std::byte* hash, uint32_t size) {
            for (const std::byte b : std::span(hash, size)) {
                char hex[3];
                std::snprintf(hex, sizeof hex, "%02X", static_cast<unsigned>(b));
                thumbprint += hex;
            }
            return 0;
        });
    EXPECT_CALL(bound.backend(),
                SetVRtStrProperty(kSiteKey, 5511u, 1u, 1u, qm::wstring(u"MY"), qm::wstring(u"/")))
        .WillOnce(Return(0));
    EXPECT_EQ(bound.slots().InstallSSLCert(kSiteKey, bound.website), 0);
    EXPECT_EQ(thumbprint, Certificate().fingerprint);
    EXPECT_TRUE(InStore());
    EXPECT_EQ(KeyFileExists(), format == Format::pfx);
    EXPECT_EQ(sink.logLines.back(), u"SSL certificate appeared to install successfully.");
}

INSTANTIATE_TEST_SUITE_P(Files, CertificateFileTest,
                         ::testing::Values(Format::der, Format::pem, Format::pfx));

TEST_F(SslCertificateTest, AWrongPfxPasswordWritesNothing) {
    GiveCertificate(Certificate().Pfx("right"), u"wrong");
    EXPECT_EQ(bound.slots().InstallSSLCert(kSiteKey, bound.website), -2165);
    EXPECT_EQ(sink.logLines.back(), u"PFXImportCertStore failed. Perhaps the password is wrong.");
    EXPECT_FALSE(InStore());
    EXPECT_FALSE(KeyFileExists());
}

TEST_F(SslCertificateTest, WithoutACertificateNothingIsDone) {
    EXPECT_EQ(bound.slots().InstallSSLCert(kSiteKey, bound.website), 0);
    EXPECT_EQ(sink.logLines, std::vector<qm::wstring>{u"No SSL certificate found."});
}

TEST_F(SslCertificateTest, AMissingFileIsNamedAndCannotBeRead) {
    bound.website.SSLCertPath = u"C:\\Certs\\none.cer";
    EXPECT_EQ(bound.slots().InstallSSLCert(kSiteKey, bound.website), -2162);
    EXPECT_THAT(sink.logLines, Contains(qm::wstring(u"C:\\Certs\\none.cer not found.")));
    EXPECT_EQ(sink.logLines.back(), u"Problem with CryptQueryObject");
}

// On IIS 7+ a missing netsh.exe fails the hash's write (SetSsl's -2165).
TEST_F(SslCertificateTest, RefusedSiteWritesHaveTheirOwnCodes) {
    GiveCertificate(Certificate().der);
    EXPECT_CALL(bound.backend(), SetVRtBinProperty(kSiteKey, 5506u, 1u, _, 20u))
        .WillOnce(Return(-2165))
        .WillOnce(Return(0));
    EXPECT_CALL(bound.backend(), SetVRtStrProperty(kSiteKey, 5511u, _, _, _, _))
        .WillOnce(Return(5));
    EXPECT_EQ(bound.slots().InstallSSLCert(kSiteKey, bound.website), -2170);
    EXPECT_EQ(bound.slots().InstallSSLCert(kSiteKey, bound.website), -2171);
}

TEST_F(SslCertificateTest, APfxBlobIsTheWholeFile) {
    GiveCertificate({});
    std::vector<std::byte> blob;
    EXPECT_EQ(bound.slots().GetCertContextFromPfxBlob(u"C:\\Certs\\none.pfx", blob), -2165);
    EXPECT_EQ(sink.logLines.back(), u"CreateFile failed.");
    EXPECT_EQ(bound.slots().GetCertContextFromPfxBlob(bound.website.SSLCertPath, blob), -2165);
    EXPECT_EQ(sink.logLines.back(), u"CreateFileMapping failed");
    GiveCertificate(Certificate().Pfx("pw"));
    EXPECT_EQ(bound.slots().GetCertContextFromPfxBlob(bound.website.SSLCertPath, blob), 0);
    EXPECT_EQ(blob.size(), ReadBytes(bound.temp.path() / "drive_c" / "Certs" / "site.cer").size());
}

}  // namespace
}  // namespace webrig::testing
