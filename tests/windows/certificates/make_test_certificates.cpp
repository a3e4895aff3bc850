// Built and run on the build machine (Linux, OpenSSL 3): writes the certificate files the Windows
// tests import, each certificate with its own key pair, and the SHA-1 thumbprint of each.
//
//   make_test_certificates <folder> <pfx password>
//
// certificate.der (DER), certificate.pem (PEM), certificate.pfx (with its private key, PKCS #12
// with 3DES and a SHA-1 MAC, which every Windows reads), and thumbprints.txt: "der <HEX>",
// "pem <HEX>" and "pfx <HEX>", one a line.

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/pkcs12.h>
#include <openssl/x509.h>

#include <cstdio>
#include <fstream>
#include <string>

namespace {

bool Write(const std::string& kind, const std::string& path, EVP_PKEY* key, X509* certificate,
           const char* password) {
    BIO* file = BIO_new_file(path.c_str(), "wb");
    bool written = false;
    if (kind == "der") {
        written = file != nullptr && i2d_X509_bio(file, certificate) == 1;
    } else if (kind == "pem") {
        written = file != nullptr && PEM_write_bio_X509(file, certificate) == 1;
    } else {
        constexpr int kTripleDes = NID_pbe_WithSHA1And3_Key_TripleDES_CBC;
        PKCS12* packet = PKCS12_create(password, "webrig PFX test", key, certificate, nullptr,
                                       kTripleDes, kTripleDes, PKCS12_DEFAULT_ITER, -1, 0);
        written = packet != nullptr && file != nullptr &&
                  PKCS12_set_mac(packet, password, -1, nullptr, 0, PKCS12_DEFAULT_ITER,
                                 EVP_sha1()) == 1 &&
                  i2d_PKCS12_bio(file, packet) == 1;
        PKCS12_free(packet);
    }
    BIO_free_all(file);
    return written;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s <folder> <pfx password>\n", argv[0]);
        return 2;
    }
    const std::string folder = argv[1];
    std::ofstream thumbprints(folder + "/thumbprints.txt", std::ios::binary);
    long serial = 0;
    for (const std::string kind : {"der", "pem", "pfx"}) {
        EVP_PKEY* key = EVP_RSA_gen(2048);
        X509* certificate = X509_new();
        const std::string name = "webrig " + kind + " test";
        X509_NAME* subject = X509_get_subject_name(certificate);
        unsigned char digest[EVP_MAX_MD_SIZE];
        unsigned int length = 0;
        const bool made =
            key != nullptr && certificate != nullptr && X509_set_version(certificate, 2) == 1 &&
            ASN1_INTEGER_set(X509_get_serialNumber(certificate), ++serial) == 1 &&
            X509_gmtime_adj(X509_getm_notBefore(certificate), -3600) != nullptr &&
            X509_gmtime_adj(X509_getm_notAfter(certificate), 10L * 365 * 86400) != nullptr &&
            X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_ASC,
                                       reinterpret_cast<const unsigned char*>(name.c_str()), -1, -1,
                                       0) == 1 &&
            X509_set_issuer_name(certificate, subject) == 1 &&
            X509_set_pubkey(certificate, key) == 1 &&
            X509_sign(certificate, key, EVP_sha256()) > 0 &&
            X509_digest(certificate, EVP_sha1(), digest, &length) == 1 &&
            Write(kind, folder + "/certificate." + kind, key, certificate, argv[2]);
        X509_free(certificate);
        EVP_PKEY_free(key);
        if (!made) {
            std::fprintf(stderr, "make_test_certificates: the %s certificate failed\n",
                         kind.c_str());
            return 1;
        }
        thumbprints << kind << ' ';
        for (unsigned int i = 0; i < length; ++i) {
            thumbprints << "0123456789ABCDEF"[digest[i] >> 4] << "0123456789ABCDEF"[digest[i] & 15];
        }
        thumbprints << '\n';
    }
    return thumbprints.good() ? 0 : 1;
}
