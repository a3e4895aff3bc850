#pragma once
// Certificate files and the local machine's system stores through crypt32. Every call is the one
// CryptoAPI function it stands for; the reason of a failure stays in the thread's last error.

#include "platform/certificates.h"

namespace webrig::win32 {

class Win32Certificates final : public platform::Certificates {
  public:
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
};

}  // namespace webrig::win32
