#pragma once
// What CryptQueryObject makes of a file's bytes: an X.509 certificate, a serialized certificate,
// a serialized store or a PFX packet, each in binary form or Base64 (bare, or between
// "-----BEGIN ...-----" and "-----END ...-----" lines).

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "platform/sim/certificates/serialized_certificate.h"

namespace webrig::sim {

struct CertificateObject {
    uint32_t contentType = 0;  // platform::cert_content
    uint32_t formatType = 0;   // platform::cert_format
    // For a certificate or a serialized certificate: its DER and properties.
    SerializedCertificate certificate;
};

// nullopt when the bytes are none of these (CRYPT_E_NO_MATCH).
std::optional<CertificateObject> DecodeCertificateObject(std::span<const std::byte> bytes);

// Base64 text decoded as CryptStringToBinary does with CRYPT_STRING_BASE64_ANY: a PEM-style
// header and footer are dropped when present; white space is ignored; nullopt for any other
// character or a wrong length.
std::optional<std::vector<std::byte>> DecodeBase64Text(std::span<const std::byte> text);

}  // namespace webrig::sim
