#pragma once
// Reading a PFX (PKCS #12) packet with its password, as PFXImportCertStore does, with OpenSSL.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/sim/certificates/serialized_certificate.h"
#include "support/wide_string.h"

namespace webrig::sim {

struct PfxContents {
    // The certificate that goes with the private key first, then the others in packet order.
    // Each carries its friendly name (CERT_FRIENDLY_NAME_PROP_ID) when the packet gives one.
    std::vector<SerializedCertificate> certificates;
    // The private key of the first certificate as unencrypted PKCS #8 PEM; empty when the packet
    // holds no key or no certificate that goes with it.
    std::string keyPem;
    bool rsaKey = false;
};

// 0, or the error PFXImportCertStore leaves: ERROR_INVALID_PASSWORD when the password does not
// open the packet, CRYPT_E_ASN1_BADTAG when the bytes are not a PFX packet it can read. An empty
// password also tries the absent one, as Windows does.
uint32_t ReadPfx(std::span<const std::byte> pfx, qm::wstring_view password, PfxContents& contents);

}  // namespace webrig::sim
