#include "testing/test_certificate.h"

#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/pkcs12.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <memory>
#include <stdexcept>

namespace webrig::testing {
namespace {

template <typename T, void (*Free)(T*)>
struct Deleter {
    void operator()(T* object) const noexcept { Free(object); }
};
using KeyPtr = std::unique_ptr<EVP_PKEY, Deleter<EVP_PKEY, EVP_PKEY_free>>;
using X509Ptr = std::unique_ptr<X509, Deleter<X509, X509_free>>;
using BioPtr = std::unique_ptr<BIO, Deleter<BIO, BIO_free_all>>;
using Pkcs12Ptr = std::unique_ptr<PKCS12, Deleter<PKCS12, PKCS12_free>>;

void Require(bool condition, const char* what) {
    if (!condition) {
        throw std::runtime_error(std::string("OpenSSL failed: ") + what);
    }
}

std::string Drain(BIO* bio) {
    char* data = nullptr;
    const long length = BIO_get_mem_data(bio, &data);
    return std::string(data, static_cast<size_t>(length));
}

template <typename Object, typename Encode>
std::vector<std::byte> Der(Object* object, Encode encode) {
    const int length = encode(object, nullptr);
    Require(length > 0, "encode");
    std::vector<std::byte> der(static_cast<size_t>(length));
    auto* next = reinterpret_cast<unsigned char*>(der.data());
    encode(object, &next);
    return der;
}

}  // namespace

TestCertificate MakeTestCertificate(std::string_view commonName) {
    KeyPtr key(EVP_RSA_gen(2048));
    Require(key != nullptr, "RSA key");
    X509Ptr certificate(X509_new());
    X509_set_version(certificate.get(), 2);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), 0x5EB1);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), 0);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), 365L * 24 * 3600);
    X509_set_pubkey(certificate.get(), key.get());
    X509_NAME* name = X509_get_subject_name(certificate.get());
    const std::string cn(commonName);
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char*>(cn.c_str()), -1, -1, 0);
    X509_set_issuer_name(certificate.get(), name);
    Require(X509_sign(certificate.get(), key.get(), EVP_sha256()) > 0, "sign");

    TestCertificate made;
    made.der = Der(certificate.get(), i2d_X509);
    BioPtr pem(BIO_new(BIO_s_mem()));
    PEM_write_bio_X509(pem.get(), certificate.get());
    made.pem = Drain(pem.get());
    BioPtr keyPem(BIO_new(BIO_s_mem()));
    PEM_write_bio_PrivateKey(keyPem.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr);
    made.keyPem = Drain(keyPem.get());
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    Require(X509_digest(certificate.get(), EVP_sha1(), digest, &length) == 1, "digest");
    static constexpr char kHex[] = "0123456789ABCDEF";
    for (unsigned int i = 0; i < length; ++i) {
        made.fingerprint += kHex[digest[i] >> 4];
        made.fingerprint += kHex[digest[i] & 0xF];
    }
    return made;
}

std::vector<std::byte> TestCertificate::Pfx(std::string_view password) const {
    const auto* next = reinterpret_cast<const unsigned char*>(der.data());
    X509Ptr certificate(d2i_X509(nullptr, &next, static_cast<long>(der.size())));
    BioPtr keyBio(BIO_new_mem_buf(keyPem.data(), static_cast<int>(keyPem.size())));
    KeyPtr key(PEM_read_bio_PrivateKey(keyBio.get(), nullptr, nullptr, nullptr));
    Require(certificate && key, "read back");
    const std::string pass(password);
    Pkcs12Ptr pfx(PKCS12_create(pass.c_str(), "webrig test", key.get(), certificate.get(), nullptr,
                                0, 0, 0, 0, 0));
    Require(pfx != nullptr, "PKCS12_create");
    return Der(pfx.get(), i2d_PKCS12);
}

}  // namespace webrig::testing
