#include "platform/win32/win32_certificates.h"

#include <limits>
#include <string>

#include "platform/win32/windows_api.h"
// After <windows.h>, which it needs.
#include <wincrypt.h>

namespace webrig::win32 {
namespace {

using platform::CertContext;
using platform::CertStore;

PCCERT_CONTEXT ToContext(CertContext context) noexcept {
    return reinterpret_cast<PCCERT_CONTEXT>(static_cast<uintptr_t>(context));
}

CertContext FromContext(PCCERT_CONTEXT context) noexcept {
    return CertContext{reinterpret_cast<uintptr_t>(context)};
}

HCERTSTORE ToStore(CertStore store) noexcept {
    return reinterpret_cast<HCERTSTORE>(static_cast<uintptr_t>(store));
}

CertStore FromStore(HCERTSTORE store) noexcept {
    return CertStore{reinterpret_cast<uintptr_t>(store)};
}

std::wstring Terminated(qm::wstring_view text) {
    return std::wstring(reinterpret_cast<const wchar_t*>(text.data()), text.size());
}

// The caller's out parameter for an added context, when it wants one.
PCCERT_CONTEXT* AddedOut(CertContext* added, PCCERT_CONTEXT& context) noexcept {
    context = nullptr;
    return added == nullptr ? nullptr : &context;
}

bool Added(BOOL done, CertContext* added, PCCERT_CONTEXT context) noexcept {
    if (added != nullptr) {
        *added = FromContext(context);
    }
    return done != FALSE;
}

bool TooLarge(size_t size) noexcept {
    if (size <= std::numeric_limits<DWORD>::max()) {
        return false;
    }
    ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return true;
}

}  // namespace

bool Win32Certificates::QueryFileObject(qm::wstring_view path, platform::CertQueryResult& result) {
    result = {};
    const std::wstring file = Terminated(path);
    // The kinds the seam knows; any other content fails with CRYPT_E_NO_MATCH as Windows fails on
    // a file that is none of the kinds asked for, and no CRL or CTL context comes back.
    constexpr DWORD kinds = CERT_QUERY_CONTENT_FLAG_CERT |
                            CERT_QUERY_CONTENT_FLAG_SERIALIZED_STORE |
                            CERT_QUERY_CONTENT_FLAG_SERIALIZED_CERT | CERT_QUERY_CONTENT_FLAG_PFX;
    DWORD encoding = 0;
    DWORD content = 0;
    DWORD format = 0;
    const void* context = nullptr;
    if (::CryptQueryObject(CERT_QUERY_OBJECT_FILE, file.c_str(), kinds, CERT_QUERY_FORMAT_FLAG_ALL,
                           0, &encoding, &content, &format, nullptr, nullptr, &context) == FALSE) {
        return false;
    }
    result.encodingType = encoding;
    result.contentType = content;
    result.formatType = format;
    result.context = FromContext(static_cast<PCCERT_CONTEXT>(context));
    return true;
}

CertStore Win32Certificates::ImportPfx(std::span<const std::byte> pfx, qm::wstring_view password,
                                       uint32_t flags) {
    if (TooLarge(pfx.size())) {
        return platform::kNoCertStore;
    }
    CRYPT_DATA_BLOB blob{static_cast<DWORD>(pfx.size()),
                         reinterpret_cast<BYTE*>(const_cast<std::byte*>(pfx.data()))};
    std::wstring secret = Terminated(password);
    HCERTSTORE store = ::PFXImportCertStore(&blob, secret.c_str(), flags);
    // The password's copy is not left in freed memory.
    ::SecureZeroMemory(secret.data(), secret.size() * sizeof(wchar_t));
    return FromStore(store);
}

CertStore Win32Certificates::OpenLocalMachineStore(qm::wstring_view name, uint32_t encoding,
                                                   uint32_t flags) {
    const std::wstring storeName = Terminated(name);
    return FromStore(::CertOpenStore(CERT_STORE_PROV_SYSTEM_W, encoding, 0,
                                     CERT_SYSTEM_STORE_LOCAL_MACHINE | flags, storeName.c_str()));
}

CertContext Win32Certificates::EnumCertificates(CertStore store, CertContext previous) {
    return FromContext(::CertEnumCertificatesInStore(ToStore(store), ToContext(previous)));
}

bool Win32Certificates::AddEncodedCertificate(CertStore store, uint32_t encoding,
                                              std::span<const std::byte> encoded,
                                              uint32_t disposition, CertContext* added) {
    if (TooLarge(encoded.size())) {
        return false;
    }
    PCCERT_CONTEXT context;
    const BOOL done = ::CertAddEncodedCertificateToStore(
        ToStore(store), encoding, reinterpret_cast<const BYTE*>(encoded.data()),
        static_cast<DWORD>(encoded.size()), disposition, AddedOut(added, context));
    return Added(done, added, context);
}

bool Win32Certificates::AddCertificateContext(CertStore store, CertContext certificate,
                                              uint32_t disposition, CertContext* added) {
    PCCERT_CONTEXT context;
    const BOOL done = ::CertAddCertificateContextToStore(ToStore(store), ToContext(certificate),
                                                         disposition, AddedOut(added, context));
    return Added(done, added, context);
}

bool Win32Certificates::GetContextProperty(CertContext context, uint32_t propertyId,
                                           std::byte* data, uint32_t& size) {
    DWORD length = size;
    const BOOL done =
        ::CertGetCertificateContextProperty(ToContext(context), propertyId, data, &length);
    size = length;
    return done != FALSE;
}

bool Win32Certificates::ContextEncoded(CertContext context, uint32_t& encoding,
                                       std::vector<std::byte>& encoded) {
    const PCCERT_CONTEXT certificate = ToContext(context);
    if (certificate == nullptr) {
        ::SetLastError(static_cast<DWORD>(E_INVALIDARG));
        return false;
    }
    encoding = certificate->dwCertEncodingType;
    const auto* bytes = reinterpret_cast<const std::byte*>(certificate->pbCertEncoded);
    encoded.assign(bytes, bytes + certificate->cbCertEncoded);
    return true;
}

bool Win32Certificates::FreeContext(CertContext context) {
    return ::CertFreeCertificateContext(ToContext(context)) != FALSE;
}

bool Win32Certificates::CloseStore(CertStore store, uint32_t flags) {
    return ::CertCloseStore(ToStore(store), flags) != FALSE;
}

}  // namespace webrig::win32
