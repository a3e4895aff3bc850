// Built and run on the build machine (Linux, OpenSSL 3): writes the certificate files the Windows
// tests import, each with its own key pair, and the SHA-1 thumbprint of each certificate.
//
//   make_test_certificates <folder> <pfx password>
//
// <folder>/certificate.der   a DER certificate
// <folder>/certificate.pem   another certificate between PEM lines
// <folder>/certificate.pfx   a third with its private key, PKCS #12 protected by the password
//                            (3DES and a SHA-1 MAC: what every Windows since XP reads)
// <folder>/thumbprints.txt   "der <HEX>", "pem <HEX>" and "pfx <HEX>", one a line

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/pkcs12.h>
#include <openssl/x509.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>

namespace {

template <class T, void (*Free)(T*)>
struct Deleter {
    void operator()(T* pointer) const { Free(pointer); }
};
using Key = std::unique_ptr<EVP_PKEY, Deleter<EVP_PKEY, EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Deleter<X509, X509_free>>;
using Pkcs12 = std::unique_ptr<PKCS12, Deleter<PKCS12, PKCS12_free>>;

void Check(bool done, const char* what) {
    if (!done) {
        throw std::runtime_error(what);
    }
}

Certificate SelfSigned(EVP_PKEY* key, const char* commonName, long serial) {
    Certificate certificate(X509_new());
    Check(certificate != nullptr, "X509_new");
    X509* x = certificate.get();
    Check(X509_set_version(x, 2) == 1, "version");
    Check(ASN1_INTEGER_set(X509_get_serialNumber(x), serial) == 1, "serial");
    Check(X509_gmtime_adj(X509_getm_notBefore(x), -3600) != nullptr, "notBefore");
    Check(X509_gmtime_adj(X509_getm_notAfter(x), 60L * 60 * 24 * 365 * 10) != nullptr, "notAfter");
    X509_NAME* name = X509_get_subject_name(x);
    Check(X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC,
                                     reinterpret_cast<const unsigned char*>(commonName), -1, -1,
                                     0) == 1,
          "subject");
    Check(X509_set_issuer_name(x, name) == 1, "issuer");
    Check(X509_set_pubkey(x, key) == 1, "public key");
    Check(X509_sign(x, key, EVP_sha256()) > 0, "signature");
    return certificate;
}

Key NewKey() {
    Key key(EVP_RSA_gen(2048));
    Check(key != nullptr, "RSA key");
    return key;
}

std::string Thumbprint(X509* certificate) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    Check(X509_digest(certificate, EVP_sha1(), digest, &length) == 1, "SHA-1");
    std::string hex;
    for (unsigned int i = 0; i < length; ++i) {
        char pair[3];
        std::snprintf(pair, sizeof pair, "%02X", digest[i]);
        hex += pair;
    }
    return hex;
}

void WriteWith(const std::string& path, int (*write)(BIO*, void*), void* object) {
    std::unique_ptr<BIO, Deleter<BIO, BIO_free_all>> file(BIO_new_file(path.c_str(), "wb"));
    Check(file != nullptr && write(file.get(), object) == 1, path.c_str());
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s <folder> <pfx password>\n", argv[0]);
        return 2;
    }
    const std::string folder = argv[1];
    const char* password = argv[2];
    std::ofstream thumbprints(folder + "/thumbprints.txt", std::ios::binary);

    const Key derKey = NewKey();
    const Certificate der = SelfSigned(derKey.get(), "webrig DER test", 1);
    WriteWith(
        folder + "/certificate.der",
        [](BIO* out, void* x) { return i2d_X509_bio(out, static_cast<X509*>(x)); }, der.get());
    thumbprints << "der " << Thumbprint(der.get()) << "\n";

    const Key pemKey = NewKey();
    const Certificate pem = SelfSigned(pemKey.get(), "webrig PEM test", 2);
    WriteWith(
        folder + "/certificate.pem",
        [](BIO* out, void* x) { return PEM_write_bio_X509(out, static_cast<X509*>(x)); },
        pem.get());
    thumbprints << "pem " << Thumbprint(pem.get()) << "\n";

    const Key pfxKey = NewKey();
    const Certificate pfx = SelfSigned(pfxKey.get(), "webrig PFX test", 3);
    constexpr int kTripleDes = NID_pbe_WithSHA1And3_Key_TripleDES_CBC;
    Pkcs12 packet(PKCS12_create(password, "webrig PFX test", pfxKey.get(), pfx.get(), nullptr,
                                kTripleDes, kTripleDes, PKCS12_DEFAULT_ITER, -1, 0));
    Check(packet != nullptr, "PKCS12_create");
    Check(PKCS12_set_mac(packet.get(), password, -1, nullptr, 0, PKCS12_DEFAULT_ITER, EVP_sha1()) ==
              1,
          "PKCS12_set_mac");
    WriteWith(
        folder + "/certificate.pfx",
        [](BIO* out, void* p) { return i2d_PKCS12_bio(out, static_cast<PKCS12*>(p)); },
        packet.get());
    thumbprints << "pfx " << Thumbprint(pfx.get()) << "\n";
    return thumbprints.good() ? 0 : 1;
} catch (const std::exception& failure) {
    std::fprintf(stderr, "make_test_certificates: %s failed\n", failure.what());
    return 1;
}
