#pragma once
// Certificate files and the local machine's certificate stores, as CryptoAPI shows them. Each
// call stands for one crypt32 function and keeps its shape: it returns a handle (null on failure)
// or success, and leaves the reason of a failure in the thread's last error (qm::get_last_error),
// a Win32 code or an HRESULT exactly as GetLastError gives it after the Windows call.
//
// Handles are PCCERT_CONTEXT and HCERTSTORE. A context is a reference: it stays valid after its
// store is closed and is released with FreeContext.

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "support/result_codes.h"
#include "support/wide_string.h"

namespace webrig::platform {

// PCCERT_CONTEXT.
enum class CertContext : uintptr_t {};
inline constexpr CertContext kNoCertContext{0};
// HCERTSTORE.
enum class CertStore : uintptr_t {};
inline constexpr CertStore kNoCertStore{0};

// Encoding types (X509_ASN_ENCODING, PKCS_7_ASN_ENCODING).
namespace cert_encoding {
constexpr uint32_t x509_asn = 0x00000001;
constexpr uint32_t pkcs7_asn = 0x00010000;
}  // namespace cert_encoding

// What CryptQueryObject found (CERT_QUERY_CONTENT_xxx).
namespace cert_content {
constexpr uint32_t certificate = 1;
constexpr uint32_t serialized_store = 4;
constexpr uint32_t serialized_certificate = 5;
constexpr uint32_t pfx = 12;
}  // namespace cert_content

// How it was written (CERT_QUERY_FORMAT_xxx).
namespace cert_format {
constexpr uint32_t binary = 1;
constexpr uint32_t base64 = 2;
}  // namespace cert_format

// Add dispositions of CertAddXxxToStore (CERT_STORE_ADD_xxx).
namespace cert_add {
constexpr uint32_t add_new = 1;
constexpr uint32_t use_existing = 2;
constexpr uint32_t replace_existing = 3;
constexpr uint32_t always = 4;
constexpr uint32_t replace_existing_inherit_properties = 5;
}  // namespace cert_add

// Flags of CertOpenStore (CERT_STORE_xxx_FLAG) and CertCloseStore.
namespace cert_store_flags {
constexpr uint32_t open_existing = 0x00004000;
constexpr uint32_t read_only = 0x00008000;
constexpr uint32_t close_check = 0x00000002;  // CERT_CLOSE_STORE_CHECK_FLAG
}  // namespace cert_store_flags

// Flags of PFXImportCertStore.
namespace pfx_flags {
constexpr uint32_t exportable = 0x00000001;      // CRYPT_EXPORTABLE
constexpr uint32_t machine_keyset = 0x00000020;  // CRYPT_MACHINE_KEYSET
}  // namespace pfx_flags

// Property identifiers (CERT_xxx_PROP_ID).
namespace cert_property {
constexpr uint32_t key_provider_info = 2;  // CERT_KEY_PROV_INFO_PROP_ID
constexpr uint32_t sha1_hash = 3;          // CERT_HASH_PROP_ID: the thumbprint
constexpr uint32_t friendly_name = 11;     // CERT_FRIENDLY_NAME_PROP_ID
constexpr uint32_t certificate = 32;       // CERT_CERT_PROP_ID: the encoded certificate
}  // namespace cert_property

// The errors these calls leave behind, besides Win32 codes.
namespace cert_error {
constexpr qm::hresult not_found = static_cast<qm::hresult>(0x80092004u);  // CRYPT_E_NOT_FOUND
constexpr qm::hresult exists = static_cast<qm::hresult>(0x80092005u);     // CRYPT_E_EXISTS
constexpr qm::hresult no_match = static_cast<qm::hresult>(0x80092009u);   // CRYPT_E_NO_MATCH
constexpr qm::hresult pending_close =
    static_cast<qm::hresult>(0x8009200Fu);  // CRYPT_E_PENDING_CLOSE
constexpr qm::hresult asn1_bad_tag = static_cast<qm::hresult>(0x8009310Bu);  // CRYPT_E_ASN1_BADTAG
constexpr uint32_t invalid_password = 86;  // ERROR_INVALID_PASSWORD
}  // namespace cert_error

// What CryptQueryObject reports through its out parameters.
struct CertQueryResult {
    uint32_t encodingType = 0;             // pdwMsgAndCertEncodingType
    uint32_t contentType = 0;              // pdwContentType
    uint32_t formatType = 0;               // pdwFormatType
    CertContext context = kNoCertContext;  // ppvContext: certificates only; free it
};

class Certificates {
  public:
    virtual ~Certificates() = default;

    // CryptQueryObject(CERT_QUERY_OBJECT_FILE, path, CERT_QUERY_CONTENT_FLAG_ALL,
    // CERT_QUERY_FORMAT_FLAG_ALL, 0, &encoding, &content, &format, NULL, NULL, &context).
    // A certificate or serialized certificate comes with its context; a PFX file or a serialized
    // store is only named. Content that is none of them fails with CRYPT_E_NO_MATCH, a file that
    // cannot be read with the error of CreateFileW.
    virtual bool QueryFileObject(qm::wstring_view path, CertQueryResult& result) = 0;

    // PFXImportCertStore: a temporary in-memory store holding the PFX's certificates, each with
    // its private key persisted (CRYPT_MACHINE_KEYSET: in the machine key folder). A wrong
    // password fails with ERROR_INVALID_PASSWORD and persists nothing.
    virtual CertStore ImportPfx(std::span<const std::byte> pfx, qm::wstring_view password,
                                uint32_t flags) = 0;

    // CertOpenStore(CERT_STORE_PROV_SYSTEM_W, encoding, 0,
    // CERT_SYSTEM_STORE_LOCAL_MACHINE | flags, name): a system store of the local machine ("MY").
    // Without cert_store_flags::open_existing a missing store is created.
    virtual CertStore OpenLocalMachineStore(qm::wstring_view name, uint32_t encoding,
                                            uint32_t flags) = 0;

    // CertEnumCertificatesInStore: the certificate after `previous` (the first for none), which
    // is freed; kNoCertContext with CRYPT_E_NOT_FOUND past the last.
    virtual CertContext EnumCertificates(CertStore store, CertContext previous) = 0;

    // CertAddEncodedCertificateToStore. `added` (optional) receives the stored context.
    virtual bool AddEncodedCertificate(CertStore store, uint32_t encoding,
                                       std::span<const std::byte> encoded, uint32_t disposition,
                                       CertContext* added) = 0;

    // CertAddCertificateContextToStore: the certificate with its properties.
    virtual bool AddCertificateContext(CertStore store, CertContext context, uint32_t disposition,
                                       CertContext* added) = 0;

    // CertGetCertificateContextProperty for a property whose value is bytes (the SHA-1 hash, the
    // friendly name); structures such as the key provider information are not read through the
    // seam. With `data` null, `size` receives the size the property needs; with a buffer smaller
    // than that, ERROR_MORE_DATA. A property the certificate lacks fails with CRYPT_E_NOT_FOUND;
    // the SHA-1 hash is computed when asked.
    virtual bool GetContextProperty(CertContext context, uint32_t propertyId, std::byte* data,
                                    uint32_t& size) = 0;

    // The context's dwCertEncodingType and pbCertEncoded/cbCertEncoded.
    virtual bool ContextEncoded(CertContext context, uint32_t& encoding,
                                std::vector<std::byte>& encoded) = 0;

    // CertFreeCertificateContext (true for kNoCertContext).
    virtual bool FreeContext(CertContext context) = 0;

    // CertCloseStore. With cert_store_flags::close_check, false with CRYPT_E_PENDING_CLOSE when
    // contexts of the store are still held (the store is closed all the same).
    virtual bool CloseStore(CertStore store, uint32_t flags) = 0;
};

}  // namespace webrig::platform
