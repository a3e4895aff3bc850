#pragma once
// platform::Certificates on the simulated machine: certificate files decoded with OpenSSL, the
// local machine's system stores in the registry (SystemStore), PFX private keys in the machine
// key folder (machine_keys.h). Contexts are copies of a certificate with its properties, taken
// when they are handed out.

#include <map>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/certificates.h"
#include "platform/registry.h"
#include "platform/sim/certificates/serialized_certificate.h"
#include "platform/sim/files/sim_file_system.h"

namespace webrig::sim {

class SimCertificates final : public platform::Certificates {
  public:
    SimCertificates(platform::Registry& registry, SimFileSystem& files)
        : m_registry(registry), m_files(files) {}

    bool QueryFileObject(qm::wstring_view path, platform::CertQueryResult& result) override;
    platform::CertStore ImportPfx(std::span<const std::byte> pfx, qm::wstring_view password,
                                  uint32_t flags) override;
    platform::CertStore OpenLocalMachineStore(qm::wstring_view name, uint32_t encoding,
                                              uint32_t flags) override;
    platform::CertContext EnumCertificates(platform::CertStore store,
                                           platform::CertContext previous) override;
    bool AddEncodedCertificate(platform::CertStore store, uint32_t encoding,
                               std::span<const std::byte> encoded, uint32_t disposition,
                               platform::CertContext* added) override;
    bool AddCertificateContext(platform::CertStore store, platform::CertContext context,
                               uint32_t disposition, platform::CertContext* added) override;
    bool GetContextProperty(platform::CertContext context, uint32_t propertyId, std::byte* data,
                            uint32_t& size) override;
    bool ContextEncoded(platform::CertContext context, uint32_t& encoding,
                        std::vector<std::byte>& encoded) override;
    bool FreeContext(platform::CertContext context) override;
    bool CloseStore(platform::CertStore store, uint32_t flags) override;

  private:
    struct Context {
        SerializedCertificate certificate;
        uintptr_t store = 0;  // the store it was taken from; 0 for none
        size_t position = 0;  // its place in that store's enumeration
    };
    struct Store {
        std::optional<qm::wstring> systemName;      // a registry store, or
        std::vector<SerializedCertificate> memory;  // the certificates of a memory store
        bool readOnly = false;
    };

    uintptr_t NewHandle() { return m_nextHandle += 8; }
    platform::CertContext AddContext(Context context);
    std::vector<SerializedCertificate> Contents(const Store& store);
    bool AddToStore(uintptr_t storeHandle, SerializedCertificate certificate, uint32_t disposition,
                    platform::CertContext* added);

    std::mutex m_mutex;
    platform::Registry& m_registry;
    SimFileSystem& m_files;
    std::map<uintptr_t, Context> m_contexts;
    std::map<uintptr_t, Store> m_stores;
    uintptr_t m_nextHandle = 0x5000;
};

}  // namespace webrig::sim
