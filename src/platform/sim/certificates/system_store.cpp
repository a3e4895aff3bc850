#include "platform/sim/certificates/system_store.h"

namespace webrig::sim {
namespace {

namespace key_access = platform::key_access;
using platform::kLocalMachine;
using platform::ScopedRegKey;

std::optional<SerializedCertificate> ReadBlob(platform::Registry& registry, platform::RegKey key) {
    platform::RegValue blob;
    if (registry.QueryValue(key, u"Blob", blob) != 0 || blob.type != platform::reg_type::binary) {
        return std::nullopt;
    }
    std::optional<SerializedCertificate> certificate = ParseSerializedCertificate(blob.data);
    if (!certificate || !IsCertificateDer(certificate->der)) {
        return std::nullopt;
    }
    return certificate;
}

}  // namespace

qm::wstring SystemStore::CertificatesPath() const {
    return qm::wstring(kSystemCertificatesKey) + u"\\" + m_name + u"\\Certificates";
}

uint32_t SystemStore::Open(bool create) {
    ScopedRegKey key(m_registry);
    return create ? m_registry.CreateKey(kLocalMachine, CertificatesPath(), key_access::all_access,
                                         key.receive())
                  : m_registry.OpenKey(kLocalMachine, CertificatesPath(), key_access::read,
                                       key.receive());
}

std::vector<SerializedCertificate> SystemStore::List() {
    std::vector<SerializedCertificate> certificates;
    ScopedRegKey store(m_registry);
    if (m_registry.OpenKey(kLocalMachine, CertificatesPath(), key_access::read, store.receive()) !=
        0) {
        return certificates;
    }
    qm::wstring name;
    for (uint32_t index = 0; m_registry.EnumKey(store.get(), index, name) == 0; ++index) {
        ScopedRegKey entry(m_registry);
        if (m_registry.OpenKey(store.get(), name, key_access::read, entry.receive()) == 0) {
            if (std::optional<SerializedCertificate> certificate =
                    ReadBlob(m_registry, entry.get())) {
                certificates.push_back(std::move(*certificate));
            }
        }
    }
    return certificates;
}

std::optional<SerializedCertificate> SystemStore::Find(const Thumbprint& thumbprint) {
    ScopedRegKey entry(m_registry);
    if (m_registry.OpenKey(kLocalMachine, CertificatesPath() + u"\\" + HexUpper(thumbprint),
                           key_access::read, entry.receive()) != 0) {
        return std::nullopt;
    }
    std::optional<SerializedCertificate> certificate = ReadBlob(m_registry, entry.get());
    // A blob filed under another certificate's name is not this certificate.
    if (certificate && Sha1Thumbprint(certificate->der) != thumbprint) {
        return std::nullopt;
    }
    return certificate;
}

uint32_t SystemStore::Put(const SerializedCertificate& certificate) {
    ScopedRegKey entry(m_registry);
    const qm::wstring path = CertificatesPath() + u"\\" + HexUpper(Sha1Thumbprint(certificate.der));
    uint32_t error =
        m_registry.CreateKey(kLocalMachine, path, key_access::all_access, entry.receive());
    if (error == 0) {
        platform::RegValue blob;
        blob.type = platform::reg_type::binary;
        blob.data = WriteSerializedCertificate(certificate);
        error = m_registry.SetValue(entry.get(), u"Blob", blob);
    }
    return error;
}

}  // namespace webrig::sim
