// The certificate stores of a simulated 64-bit machine, through the platform seam.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/sim/certificates/certificate_der.h"
#include "platform/sim/certificates/key_provider_info.h"
#include "platform/sim/certificates/machine_keys.h"
#include "platform/sim/machine/machine_layout.h"
#include "support/last_error.h"
#include "testing/file_bytes.h"
#include "testing/temp_machine.h"
#include "testing/test_certificate.h"

namespace webrig::sim {
namespace {

namespace cert_add = platform::cert_add;
namespace cert_property = platform::cert_property;
using platform::CertContext;
using platform::CertStore;
using platform::kNoCertContext;
using platform::kNoCertStore;

const testing::TestCertificate& Certificate() {
    static const testing::TestCertificate made = testing::MakeTestCertificate("www.example.com");
    return made;
}

class Certificates : public ::testing::Test {
  protected:
    platform::Certificates& certs() { return m_machine.machine().certificates(); }
    std::filesystem::path Drive() const { return DriveCPath(m_machine.path()); }

    const RegistryKey* StoredKey(const char16_t* root = u"SOFTWARE") {
        const RegistryKey* key = m_machine.machine().simRegistry().Root().FindSubKey(root);
        for (const char16_t* name : {u"Microsoft", u"SystemCertificates", u"MY", u"Certificates"}) {
            key = key != nullptr ? key->FindSubKey(name) : nullptr;
        }
        return key != nullptr ? key->FindSubKey(qm::from_utf8(Certificate().fingerprint)) : nullptr;
    }

    SerializedCertificate StoredBlob() {
        const RegistryKey* key = StoredKey();
        EXPECT_NE(key, nullptr);
        const platform::RegValue* blob = key != nullptr ? key->FindValue(u"Blob") : nullptr;
        EXPECT_TRUE(blob != nullptr && blob->type == platform::reg_type::binary);
        return blob != nullptr
                   ? ParseSerializedCertificate(blob->data).value_or(SerializedCertificate{})
                   : SerializedCertificate{};
    }

    std::vector<std::byte> Property(CertContext context, uint32_t id) {
        uint32_t size = 0;
        EXPECT_TRUE(certs().GetContextProperty(context, id, nullptr, size));
        std::vector<std::byte> value(size);
        EXPECT_TRUE(certs().GetContextProperty(context, id, value.data(), size));
        return value;
    }

    CertStore OpenMy() {
        return certs().OpenLocalMachineStore(u"MY", platform::cert_encoding::x509_asn,
                                             platform::cert_store_flags::open_existing);
    }

    testing::TempMachine m_machine;
};

TEST_F(Certificates, ADerFileGoesIntoTheRegistryStoreWindowsUses) {
    testing::WriteBytes(Drive() / "cert.pem", testing::Bytes(Certificate().pem));
    platform::CertQueryResult query;
    ASSERT_TRUE(certs().QueryFileObject(u"C:\\CERT.pem", query));
    EXPECT_EQ(query.contentType, platform::cert_content::certificate);
    EXPECT_EQ(query.encodingType, platform::cert_encoding::x509_asn);
    uint32_t encoding = 0;
    std::vector<std::byte> encoded;
    ASSERT_TRUE(certs().ContextEncoded(query.context, encoding, encoded));
    const CertStore my = OpenMy();
    ASSERT_NE(my, kNoCertStore);
    ASSERT_TRUE(
        certs().AddEncodedCertificate(my, encoding, encoded, cert_add::replace_existing, nullptr));
    EXPECT_TRUE(certs().CloseStore(my, 0));
    // The hash property, its size asked first.
    EXPECT_EQ(qm::to_utf8(HexUpper(Property(query.context, cert_property::sha1_hash))),
              Certificate().fingerprint);
    uint32_t size = 19;
    std::byte small[19];
    EXPECT_FALSE(certs().GetContextProperty(query.context, cert_property::sha1_hash, small, size));
    EXPECT_EQ(qm::get_last_error(), qm::win32::more_data);
    EXPECT_EQ(size, 20u);
    EXPECT_TRUE(certs().FreeContext(query.context));

    // Read back from HKLM.reg. Shared under WOW64: the 64-bit key, not WOW6432Node's.
    m_machine.Reopen();
    EXPECT_EQ(StoredKey(u"WOW6432Node"), nullptr);
    const SerializedCertificate blob = StoredBlob();
    EXPECT_EQ(blob.der, Certificate().der);
    const Thumbprint hash = Sha1Thumbprint(Certificate().der);
    EXPECT_EQ(blob.properties.at(cert_property::sha1_hash),
              std::vector<std::byte>(hash.begin(), hash.end()));
    EXPECT_EQ(blob.properties.size(), 1u);
}

TEST_F(Certificates, APfxKeyGoesToTheMachineKeyFolderForTheOwnerOnly) {
    const std::vector<std::byte> pfx = Certificate().Pfx("p@ss");
    const CertStore imported = certs().ImportPfx(pfx, u"p@ss", platform::pfx_flags::machine_keyset);
    ASSERT_NE(imported, kNoCertStore);
    const CertContext first = certs().EnumCertificates(imported, kNoCertContext);
    ASSERT_NE(first, kNoCertContext);
    const CertStore my = OpenMy();
    ASSERT_TRUE(certs().AddCertificateContext(my, first, cert_add::replace_existing, nullptr));
    EXPECT_EQ(certs().EnumCertificates(imported, first), kNoCertContext);  // frees `first`
    EXPECT_TRUE(certs().CloseStore(imported, platform::cert_store_flags::close_check));
    EXPECT_TRUE(certs().CloseStore(my, 0));

    const SerializedCertificate blob = StoredBlob();
    const std::optional<KeyProviderInfo> info =
        ParseKeyProviderInfo(blob.properties.at(cert_property::key_provider_info));
    ASSERT_TRUE(info);
    EXPECT_EQ(qm::to_utf8(info->containerName), Certificate().fingerprint);
    EXPECT_EQ(info->flags, platform::pfx_flags::machine_keyset);
    EXPECT_TRUE(HasMachineKey(m_machine.machine().simFiles(), blob));
    const std::filesystem::path key = Drive() / "ProgramData" / "Microsoft" / "Crypto" / "RSA" /
                                      "MachineKeys" / (Certificate().fingerprint + ".pem");
    struct stat status {};
    ASSERT_EQ(::stat(key.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
    EXPECT_EQ(testing::ReadBytes(key), testing::Bytes(Certificate().keyPem));
}

TEST_F(Certificates, AWrongPfxPasswordFailsAndWritesNothing) {
    const std::vector<std::byte> before = testing::ReadBytes(LocalMachineRegPath(m_machine.path()));
    EXPECT_EQ(certs().ImportPfx(Certificate().Pfx("right"), u"wrong",
                                platform::pfx_flags::machine_keyset),
              kNoCertStore);
    EXPECT_EQ(qm::get_last_error(), platform::cert_error::invalid_password);
    EXPECT_TRUE(std::filesystem::is_empty(Drive() / "ProgramData" / "Microsoft" / "Crypto" / "RSA" /
                                          "MachineKeys"));
    EXPECT_EQ(testing::ReadBytes(LocalMachineRegPath(m_machine.path())), before);
    EXPECT_EQ(certs().ImportPfx(testing::Bytes("not a pfx"), u"", 0), kNoCertStore);
    EXPECT_EQ(qm::get_last_error(), static_cast<uint32_t>(platform::cert_error::asn1_bad_tag));
}

TEST_F(Certificates, FailuresLeaveWindowsErrors) {
    platform::CertQueryResult query;
    EXPECT_FALSE(certs().QueryFileObject(u"C:\\missing.cer", query));
    EXPECT_EQ(qm::get_last_error(), qm::win32::file_not_found);
    testing::WriteBytes(Drive() / "text.txt", testing::Bytes("just text"));
    EXPECT_FALSE(certs().QueryFileObject(u"C:\\text.txt", query));
    EXPECT_EQ(qm::get_last_error(), static_cast<uint32_t>(platform::cert_error::no_match));
    EXPECT_EQ(
        certs().OpenLocalMachineStore(u"Nowhere", 1, platform::cert_store_flags::open_existing),
        kNoCertStore);
    EXPECT_EQ(qm::get_last_error(), qm::win32::file_not_found);

    const CertStore my = OpenMy();
    ASSERT_TRUE(
        certs().AddEncodedCertificate(my, 1, Certificate().der, cert_add::add_new, nullptr));
    EXPECT_FALSE(
        certs().AddEncodedCertificate(my, 1, Certificate().der, cert_add::add_new, nullptr));
    EXPECT_EQ(qm::get_last_error(), static_cast<uint32_t>(platform::cert_error::exists));
    CertContext added = kNoCertContext;
    ASSERT_TRUE(
        certs().AddEncodedCertificate(my, 1, Certificate().der, cert_add::use_existing, &added));
    EXPECT_FALSE(certs().CloseStore(my, platform::cert_store_flags::close_check));
    EXPECT_EQ(qm::get_last_error(), static_cast<uint32_t>(platform::cert_error::pending_close));
    uint32_t size = 0;
    EXPECT_FALSE(
        certs().GetContextProperty(added, cert_property::key_provider_info, nullptr, size));
    EXPECT_EQ(qm::get_last_error(), static_cast<uint32_t>(platform::cert_error::not_found));
    EXPECT_TRUE(certs().FreeContext(added));
    EXPECT_FALSE(certs().FreeContext(added));
}

}  // namespace
}  // namespace webrig::sim
