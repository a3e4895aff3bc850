#include "platform/sim/certificates/certificate_der.h"

#include <openssl/evp.h>
#include <openssl/pkcs12.h>
#include <openssl/x509.h>

#include <climits>

namespace webrig::sim {
namespace {

// Runs OpenSSL's d2i function over all of `der`; true when it reads one object and no more.
template <typename Object, typename Decode, typename Free>
bool DecodesExactly(std::span<const std::byte> der, Decode decode, Free release) {
    if (der.empty() || der.size() > static_cast<size_t>(LONG_MAX)) {
        return false;
    }
    const auto* start = reinterpret_cast<const unsigned char*>(der.data());
    const unsigned char* next = start;
    Object* object = decode(nullptr, &next, static_cast<long>(der.size()));
    if (object == nullptr) {
        return false;
    }
    release(object);
    return static_cast<size_t>(next - start) == der.size();
}

}  // namespace

bool IsCertificateDer(std::span<const std::byte> der) {
    return DecodesExactly<X509>(der, d2i_X509, X509_free);
}

bool IsPfxDer(std::span<const std::byte> der) {
    return DecodesExactly<PKCS12>(der, d2i_PKCS12, PKCS12_free);
}

Thumbprint Sha1Thumbprint(std::span<const std::byte> der) {
    Thumbprint hash{};
    unsigned int length = 0;
    EVP_Digest(der.data(), der.size(), reinterpret_cast<unsigned char*>(hash.data()), &length,
               EVP_sha1(), nullptr);
    return hash;
}

qm::wstring HexUpper(std::span<const std::byte> bytes) {
    static constexpr char16_t kDigits[] = u"0123456789ABCDEF";
    qm::wstring text;
    text.reserve(bytes.size() * 2);
    for (const std::byte b : bytes) {
        const auto value = std::to_integer<unsigned>(b);
        text += kDigits[value >> 4];
        text += kDigits[value & 0xF];
    }
    return text;
}

}  // namespace webrig::sim
