#include "platform/sim/certificates/pfx_import.h"

#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/pkcs12.h>
#include <openssl/provider.h>
#include <openssl/x509.h>

#include <climits>
#include <memory>

#include "platform/certificates.h"

namespace webrig::sim {
namespace {

template <typename T, void (*Free)(T*)>
struct Deleter {
    void operator()(T* object) const noexcept { Free(object); }
};
using Pkcs12Ptr = std::unique_ptr<PKCS12, Deleter<PKCS12, PKCS12_free>>;
using KeyPtr = std::unique_ptr<EVP_PKEY, Deleter<EVP_PKEY, EVP_PKEY_free>>;
using X509Ptr = std::unique_ptr<X509, Deleter<X509, X509_free>>;
using BioPtr = std::unique_ptr<BIO, Deleter<BIO, BIO_free_all>>;

void FreeCertificates(STACK_OF(X509) * certificates) {
    sk_X509_pop_free(certificates, X509_free);
}
using StackPtr = std::unique_ptr<STACK_OF(X509), Deleter<STACK_OF(X509), FreeCertificates>>;

// Packets written by older tools use ciphers that OpenSSL 3 keeps in its legacy provider; the
// default provider stays loaded beside it. Loaded once, and unloaded at exit before OpenSSL's own
// clean-up, which frees only providers nobody holds.
void LoadLegacyCiphers() {
    struct Unload {
        void operator()(OSSL_PROVIDER* provider) const { OSSL_PROVIDER_unload(provider); }
    };
    static const std::unique_ptr<OSSL_PROVIDER, Unload> legacy(
        OSSL_PROVIDER_try_load(nullptr, "legacy", 1));
}

bool EncodeCertificate(X509* certificate, SerializedCertificate& out) {
    const int length = i2d_X509(certificate, nullptr);
    if (length <= 0) {
        return false;
    }
    out.der.resize(static_cast<size_t>(length));
    auto* next = reinterpret_cast<unsigned char*>(out.der.data());
    i2d_X509(certificate, &next);
    int aliasLength = 0;
    const unsigned char* alias = X509_alias_get0(certificate, &aliasLength);
    if (alias != nullptr && aliasLength > 0) {
        const qm::wstring name = qm::from_utf8(std::string_view(
            reinterpret_cast<const char*>(alias), static_cast<size_t>(aliasLength)));
        std::vector<std::byte>& value = out.properties[platform::cert_property::friendly_name];
        for (const char16_t c : name + u'\0') {
            value.push_back(static_cast<std::byte>(c & 0xFF));
            value.push_back(static_cast<std::byte>(c >> 8));
        }
    }
    return true;
}

std::string PemOf(EVP_PKEY* key) {
    BioPtr bio(BIO_new(BIO_s_mem()));
    if (!bio ||
        PEM_write_bio_PrivateKey(bio.get(), key, nullptr, nullptr, 0, nullptr, nullptr) != 1) {
        return {};
    }
    char* data = nullptr;
    const long length = BIO_get_mem_data(bio.get(), &data);
    return length > 0 ? std::string(data, static_cast<size_t>(length)) : std::string();
}

}  // namespace

uint32_t ReadPfx(std::span<const std::byte> pfx, qm::wstring_view password, PfxContents& contents) {
    contents = {};
    const auto badData = static_cast<uint32_t>(platform::cert_error::asn1_bad_tag);
    if (pfx.empty() || pfx.size() > static_cast<size_t>(LONG_MAX)) {
        return badData;
    }
    const auto* next = reinterpret_cast<const unsigned char*>(pfx.data());
    Pkcs12Ptr packet(d2i_PKCS12(nullptr, &next, static_cast<long>(pfx.size())));
    if (!packet) {
        return badData;
    }
    LoadLegacyCiphers();
    const std::string utf8 = qm::to_utf8(password);
    const char* pass = utf8.c_str();
    if (PKCS12_mac_present(packet.get()) &&
        PKCS12_verify_mac(packet.get(), pass, static_cast<int>(utf8.size())) != 1) {
        if (!utf8.empty() || PKCS12_verify_mac(packet.get(), nullptr, 0) != 1) {
            return platform::cert_error::invalid_password;
        }
        pass = nullptr;
    }
    EVP_PKEY* rawKey = nullptr;
    X509* rawCertificate = nullptr;
    STACK_OF(X509)* rawOthers = nullptr;
    if (PKCS12_parse(packet.get(), pass, &rawKey, &rawCertificate, &rawOthers) != 1) {
        return platform::cert_error::invalid_password;
    }
    const KeyPtr key(rawKey);
    const X509Ptr certificate(rawCertificate);
    const StackPtr others(rawOthers);
    PfxContents read;
    if (certificate) {
        read.certificates.emplace_back();
        if (!EncodeCertificate(certificate.get(), read.certificates.back())) {
            return badData;
        }
    }
    for (int i = 0; others && i < sk_X509_num(others.get()); ++i) {
        read.certificates.emplace_back();
        if (!EncodeCertificate(sk_X509_value(others.get(), i), read.certificates.back())) {
            return badData;
        }
    }
    if (key && certificate) {
        read.keyPem = PemOf(key.get());
        read.rsaKey = EVP_PKEY_get_base_id(key.get()) == EVP_PKEY_RSA;
        if (read.keyPem.empty()) {
            return badData;
        }
    }
    contents = std::move(read);
    return 0;
}

}  // namespace webrig::sim
