#include "platform/sim/certificates/certificate_file.h"

#include <gtest/gtest.h>

#include "platform/certificates.h"
#include "testing/file_bytes.h"
#include "testing/test_certificate.h"

namespace webrig::sim {
namespace {

namespace cert_content = platform::cert_content;
namespace cert_format = platform::cert_format;
using testing::Bytes;

const testing::TestCertificate& Certificate() {
    static const testing::TestCertificate made = testing::MakeTestCertificate("files.example");
    return made;
}

std::vector<std::byte> Serialized(std::vector<std::byte> der) {
    SerializedCertificate certificate;
    certificate.der = std::move(der);
    certificate.properties[11] = Bytes(std::string("n\0\0\0", 4));
    return WriteSerializedCertificate(certificate);
}

std::vector<std::byte> BareBase64(const std::string& pem) {
    const size_t start = pem.find('\n') + 1;
    return Bytes(pem.substr(start, pem.find("-----END") - start));
}

TEST(CertificateFile, RecognizesWhatCryptQueryObjectRecognizes) {
    const std::vector<std::byte> serialized = Serialized(Certificate().der);
    std::vector<std::byte> store = Bytes(std::string("\0\0\0\0CERT", 8));
    store.insert(store.end(), serialized.begin(), serialized.end());
    store.resize(store.size() + 12);
    struct Case {
        const char* name;
        std::vector<std::byte> bytes;
        uint32_t content;
        uint32_t format;
    };
    const Case cases[] = {
        {"DER", Certificate().der, cert_content::certificate, cert_format::binary},
        {"PEM", Bytes(Certificate().pem), cert_content::certificate, cert_format::base64},
        {"bare Base64", BareBase64(Certificate().pem), cert_content::certificate,
         cert_format::base64},
        {"serialized", serialized, cert_content::serialized_certificate, cert_format::binary},
        {"serialized store", store, cert_content::serialized_store, cert_format::binary},
        {"PFX", Certificate().Pfx("secret"), cert_content::pfx, cert_format::binary},
    };
    for (const Case& c : cases) {
        const std::optional<CertificateObject> object = DecodeCertificateObject(c.bytes);
        ASSERT_TRUE(object) << c.name;
        EXPECT_EQ(object->contentType, c.content) << c.name;
        EXPECT_EQ(object->formatType, c.format) << c.name;
        const bool hasCertificate = c.content == cert_content::certificate ||
                                    c.content == cert_content::serialized_certificate;
        EXPECT_EQ(object->certificate.der,
                  hasCertificate ? Certificate().der : std::vector<std::byte>())
            << c.name;
    }
    EXPECT_EQ(DecodeCertificateObject(serialized)->certificate.properties.count(11), 1u);
}

TEST(CertificateFile, AnythingElseMatchesNothing) {
    std::vector<std::byte> truncated = Certificate().der;
    truncated.pop_back();
    std::vector<std::byte> trailing = Certificate().der;
    trailing.push_back(std::byte{0});
    const std::vector<std::byte> cases[] = {
        {},
        truncated,
        trailing,
        Bytes("hello, world"),
        Bytes("-----BEGIN CERTIFICATE-----\nAAAA\n-----END CERTIFICATE-----\n"),
        Serialized(Bytes("not a certificate")),
    };
    for (const std::vector<std::byte>& bytes : cases) {
        EXPECT_FALSE(DecodeCertificateObject(bytes));
    }
}

TEST(CertificateFile, Base64TextIsReadAsCryptStringToBinaryReadsIt) {
    EXPECT_EQ(DecodeBase64Text(Bytes(" TWFu\r\nTQ== ")), Bytes("ManM"));
    EXPECT_EQ(DecodeBase64Text(Bytes("-----BEGIN X-----\nTWE=\n-----END X-----")), Bytes("Ma"));
    for (const char* bad : {"TWF", "TW=u", "TWF*", "", "TQ===", "-----BEGIN X-----\nTWFu"}) {
        EXPECT_FALSE(DecodeBase64Text(Bytes(bad))) << bad;
    }
}

}  // namespace
}  // namespace webrig::sim
