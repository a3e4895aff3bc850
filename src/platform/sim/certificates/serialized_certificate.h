#pragma once
// The serialized form of a certificate with its properties, as CertSerializeCertificateStoreElement
// writes it: a run of entries, each a little-endian property id, an encoding type (1, ASN.1) and a
// byte length followed by the value; the certificate's DER is the entry with id 32
// (CERT_CERT_PROP_ID), which ends the element. The same bytes are a "serialized certificate" file
// and the "Blob" value of a certificate in a registry store. A serialized store (.sst file) is a
// header (0, "CERT"), elements one after another and an end entry of twelve zero bytes.

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <vector>

namespace webrig::sim {

struct SerializedCertificate {
    uint32_t encoding = 1;  // X509_ASN_ENCODING: the certificate entry's encoding type
    std::vector<std::byte> der;
    // Property id → value. Written in increasing id order, before the certificate.
    std::map<uint32_t, std::vector<std::byte>> properties;

    bool operator==(const SerializedCertificate&) const = default;
};

// Exactly one element filling `bytes`: properties (ids 1 to 0xFFFF but 32), then the certificate.
// nullopt for anything else: a length past the end, an id of 0 or above 0xFFFF, no certificate
// entry, bytes after it. The certificate's DER itself is not checked here.
std::optional<SerializedCertificate> ParseSerializedCertificate(std::span<const std::byte> bytes);

std::vector<std::byte> WriteSerializedCertificate(const SerializedCertificate& certificate);

// The certificates of a serialized store, or nullopt when `bytes` is not one.
std::optional<std::vector<SerializedCertificate>> ParseSerializedStore(
    std::span<const std::byte> bytes);

}  // namespace webrig::sim
