// CryptoAPI under Wine through the Win32 layer: certificate files made by OpenSSL at build time
// (certificates/make_test_certificates.cpp) read as DER, PEM and PKCS #12, put into the local
// machine's "MY" store and found there again by their SHA-1 thumbprint.

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <string>

#include "platform/win32/win32_platform.h"
#include "support/last_error.h"
#include "wine_test_support.h"

namespace webrig::windows_testing {
namespace {

using platform::CertContext;
using platform::CertStore;
using platform::kNoCertContext;
using platform::kNoCertStore;
namespace cert_add = platform::cert_add;
namespace cert_error = platform::cert_error;
namespace cert_property = platform::cert_property;

constexpr uint32_t kEncoding =
    platform::cert_encoding::x509_asn | platform::cert_encoding::pkcs7_asn;
constexpr wchar_t kMyCertificates[] =
    L"SOFTWARE\\Microsoft\\SystemCertificates\\MY\\Certificates\\";

std::wstring CertificateFolder() {
    return ProgramFolder() + L"\\certificates\\";
}

// "der", "pem" and "pfx" with the thumbprint OpenSSL computed for each.
std::map<std::string, std::string> ExpectedThumbprints() {
    std::map<std::string, std::string> thumbprints;
    std::ifstream file((CertificateFolder() + L"thumbprints.txt").c_str());
    std::string kind;
    std::string hex;
    while (file >> kind >> hex) {
        thumbprints[kind] = hex;
    }
    return thumbprints;
}

class Win32CertificatesTest : public ::testing::Test {
  protected:
    // The context's CERT_HASH_PROP_ID in upper-case hexadecimal; empty when it cannot be read.
    std::string Thumbprint(CertContext context) {
        uint32_t size = 0;
        if (!certificates.GetContextProperty(context, cert_property::sha1_hash, nullptr, size)) {
            return {};
        }
        std::vector<std::byte> hash(size);
        if (!certificates.GetContextProperty(context, cert_property::sha1_hash, hash.data(),
                                             size)) {
            return {};
        }
        std::string hex;
        for (const std::byte value : hash) {
            hex += "0123456789ABCDEF"[static_cast<int>(value) >> 4];
            hex += "0123456789ABCDEF"[static_cast<int>(value) & 15];
        }
        return hex;
    }

    // The certificate of `store` with that thumbprint, as webrig looks for one; the caller
    // frees it.
    CertContext Find(CertStore store, const std::string& thumbprint) {
        CertContext context = certificates.EnumCertificates(store, kNoCertContext);
        while (context != kNoCertContext && Thumbprint(context) != thumbprint) {
            context = certificates.EnumCertificates(store, context);
        }
        return context;
    }

    // Whether the certificate has a private key: the size of its key provider information.
    bool HasKey(CertContext context) {
        uint32_t size = 0;
        return certificates.GetContextProperty(context, cert_property::key_provider_info, nullptr,
                                               size) &&
               size > 0;
    }

    win32::Win32Platform platform;
    platform::Certificates& certificates = platform.certificates();
    const std::map<std::string, std::string> thumbprints = ExpectedThumbprints();
};

// The DER certificate goes in by its bytes, the PEM one as the context the file gave.
TEST_F(Win32CertificatesTest, DerAndPemFilesAreReadWithTheirFormatAndAddedToTheMachinesStore) {
    ASSERT_EQ(thumbprints.size(), 3u) << "thumbprints.txt from the certificate maker";
    const CertStore my = certificates.OpenLocalMachineStore(u"MY", kEncoding, 0);
    ASSERT_NE(my, kNoCertStore) << qm::get_last_error();
    const struct {
        const char* kind;
        const wchar_t* file;
        uint32_t format;
        bool byBytes;
    } files[] = {{"der", L"certificate.der", platform::cert_format::binary, true},
                 {"pem", L"certificate.pem", platform::cert_format::base64, false}};
    for (const auto& [kind, file, format, byBytes] : files) {
        SCOPED_TRACE(kind);
        platform::CertQueryResult query;
        ASSERT_TRUE(certificates.QueryFileObject(Utf16(CertificateFolder() + file), query))
            << std::hex << qm::get_last_error();
        EXPECT_EQ(query.contentType, platform::cert_content::certificate);
        EXPECT_EQ(query.formatType, format);
        ASSERT_NE(query.context, kNoCertContext);
        EXPECT_EQ(Thumbprint(query.context), thumbprints.at(kind)) << "computed when asked";
        uint32_t encoding = 0;
        std::vector<std::byte> encoded;
        ASSERT_TRUE(certificates.ContextEncoded(query.context, encoding, encoded));
        EXPECT_EQ(encoding, platform::cert_encoding::x509_asn);
        CertContext added = kNoCertContext;
        ASSERT_TRUE(byBytes ? certificates.AddEncodedCertificate(my, encoding, encoded,
                                                                 cert_add::replace_existing, &added)
                            : certificates.AddCertificateContext(
                                  my, query.context, cert_add::replace_existing, &added));
        EXPECT_EQ(Thumbprint(added), thumbprints.at(kind));
        EXPECT_TRUE(certificates.FreeContext(added));
        EXPECT_TRUE(certificates.FreeContext(query.context));
    }
    EXPECT_FALSE(certificates.AddEncodedCertificate(my, platform::cert_encoding::x509_asn,
                                                    std::vector<std::byte>(8), cert_add::always,
                                                    nullptr));
    ASSERT_TRUE(certificates.CloseStore(my, 0));

    // A second opening sees what the first one stored, where Windows and the simulated machine
    // keep the machine's "MY" store. (Wine writes a registry store when it is closed.)
    const CertStore again = certificates.OpenLocalMachineStore(
        u"MY", kEncoding, platform::cert_store_flags::open_existing);
    ASSERT_NE(again, kNoCertStore);
    for (const char* kind : {"der", "pem"}) {
        SCOPED_TRACE(kind);
        const std::string& thumbprint = thumbprints.at(kind);
        EXPECT_TRUE(KeyExists(kMyCertificates + std::wstring(thumbprint.begin(), thumbprint.end()),
                              KEY_WOW64_64KEY));
        const CertContext found = Find(again, thumbprint);
        ASSERT_NE(found, kNoCertContext);
        // Asked in an opening that did not add it: a refused CERT_STORE_ADD_NEW makes Wine 8
        // drop a certificate added in the same opening when the store is written.
        EXPECT_FALSE(certificates.AddCertificateContext(again, found, cert_add::add_new, nullptr));
        EXPECT_EQ(qm::get_last_error(), static_cast<uint32_t>(cert_error::exists));
        certificates.FreeContext(found);
    }
    EXPECT_TRUE(certificates.CloseStore(again, 0));
}

TEST_F(Win32CertificatesTest, APfxIsImportedWithItsKeyAndItsCertificateStoredWithTheKey) {
    const std::wstring path = CertificateFolder() + L"certificate.pfx";
    platform::CertQueryResult query;
    ASSERT_TRUE(certificates.QueryFileObject(Utf16(path), query));
    EXPECT_EQ(query.contentType, platform::cert_content::pfx);
    EXPECT_EQ(query.context, kNoCertContext) << "a PFX is only named";

    std::vector<std::byte> pfx;
    ASSERT_EQ(platform.files().ReadWholeFile(Utf16(path), 1 << 20, pfx), 0u);
    const std::string ascii = WEBRIG_TEST_PFX_PASSWORD;
    const qm::wstring password(ascii.begin(), ascii.end());
    constexpr uint32_t flags =
        platform::pfx_flags::machine_keyset | platform::pfx_flags::exportable;

    // Windows leaves ERROR_INVALID_PASSWORD; Wine 8 fails without a reason (0).
    EXPECT_EQ(certificates.ImportPfx(pfx, password + u"x", flags), kNoCertStore);

    const CertStore imported = certificates.ImportPfx(pfx, password, flags);
    ASSERT_NE(imported, kNoCertStore) << std::hex << qm::get_last_error();
    const CertContext certificate = certificates.EnumCertificates(imported, kNoCertContext);
    ASSERT_NE(certificate, kNoCertContext);
    EXPECT_EQ(Thumbprint(certificate), thumbprints.at("pfx"));
    EXPECT_TRUE(HasKey(certificate));

    const CertStore my = certificates.OpenLocalMachineStore(u"MY", kEncoding, 0);
    ASSERT_TRUE(
        certificates.AddCertificateContext(my, certificate, cert_add::replace_existing, nullptr));
    // The context outlives its store; closing with the check says so.
    EXPECT_FALSE(certificates.CloseStore(imported, platform::cert_store_flags::close_check));
    EXPECT_EQ(qm::get_last_error(), static_cast<uint32_t>(cert_error::pending_close));
    EXPECT_EQ(Thumbprint(certificate), thumbprints.at("pfx"));
    EXPECT_TRUE(certificates.FreeContext(certificate));

    const CertContext stored = Find(my, thumbprints.at("pfx"));
    ASSERT_NE(stored, kNoCertContext);
    EXPECT_TRUE(HasKey(stored)) << "stored with its key, as an SSL binding needs it";
    EXPECT_TRUE(certificates.FreeContext(stored));
    EXPECT_TRUE(certificates.CloseStore(my, 0));
}

TEST_F(Win32CertificatesTest, FailuresCarryCryptoApisCodes) {
    const ScratchFolder folder;
    platform::CertQueryResult query;
    EXPECT_FALSE(certificates.QueryFileObject(
        Utf16(folder.Write(L"notes.txt", std::vector<std::byte>(40, std::byte{'x'}))), query));
    EXPECT_EQ(qm::get_last_error(), static_cast<uint32_t>(cert_error::no_match));
    // Windows gives CreateFileW's ERROR_FILE_NOT_FOUND, Wine 8 CRYPT_E_NO_MATCH.
    EXPECT_FALSE(certificates.QueryFileObject(Utf16(folder.path() + L"\\missing.cer"), query));

    EXPECT_EQ(certificates.OpenLocalMachineStore(u"webrig missing store", kEncoding,
                                                 platform::cert_store_flags::open_existing),
              kNoCertStore);
    EXPECT_EQ(qm::get_last_error(), 2u);
}

}  // namespace
}  // namespace webrig::windows_testing
