#pragma once
// X.509 certificates by their DER bytes, read with OpenSSL.

#include <array>
#include <cstddef>
#include <span>
#include <vector>

#include "support/wide_string.h"

namespace webrig::sim {

using Thumbprint = std::array<std::byte, 20>;

// Whether `der` is exactly one X.509 certificate.
bool IsCertificateDer(std::span<const std::byte> der);

// Whether `der` is exactly one PKCS #12 (PFX) packet, whatever its password.
bool IsPfxDer(std::span<const std::byte> der);

// The SHA-1 hash of the encoded certificate: its thumbprint (CERT_HASH_PROP_ID).
Thumbprint Sha1Thumbprint(std::span<const std::byte> der);

// Upper-case hexadecimal, two digits a byte: the name of a certificate's key in a registry store.
qm::wstring HexUpper(std::span<const std::byte> bytes);

}  // namespace webrig::sim
