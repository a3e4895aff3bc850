#pragma once
// A system certificate store of the local machine where Windows keeps it: the registry key
// HKLM\SOFTWARE\Microsoft\SystemCertificates\<store>\Certificates, one sub-key per certificate
// named by its upper-case hexadecimal SHA-1 thumbprint, holding the certificate and its
// properties in serialized form as the REG_BINARY value "Blob". SystemCertificates is one of the
// keys WOW64 shares between the 32-bit and the 64-bit registry views.

#include <optional>
#include <vector>

#include "platform/registry.h"
#include "platform/sim/certificates/certificate_der.h"
#include "platform/sim/certificates/serialized_certificate.h"

namespace webrig::sim {

inline constexpr char16_t kSystemCertificatesKey[] = u"SOFTWARE\\Microsoft\\SystemCertificates";

class SystemStore {
  public:
    SystemStore(platform::Registry& registry, qm::wstring name)
        : m_registry(registry), m_name(std::move(name)) {}

    // Makes sure the store's key exists: opens it, or creates it when `create`. Returns the
    // registry's error (ERROR_FILE_NOT_FOUND for a missing store not to be created).
    uint32_t Open(bool create);

    // Every certificate whose "Blob" can be read, in the order of the store's sub-keys.
    std::vector<SerializedCertificate> List();
    // The certificate with this thumbprint, when the store holds a readable one.
    std::optional<SerializedCertificate> Find(const Thumbprint& thumbprint);
    // Writes the certificate's sub-key and "Blob"; returns the registry's error.
    uint32_t Put(const SerializedCertificate& certificate);

  private:
    qm::wstring CertificatesPath() const;

    platform::Registry& m_registry;
    qm::wstring m_name;
};

}  // namespace webrig::sim
