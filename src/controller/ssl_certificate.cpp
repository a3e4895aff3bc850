// A website's SSL certificate: its file imported into the local machine's "MY" store (a plain
// certificate as it is, a PFX with its password and private key), and its SHA-1 thumbprint
// handed to the backend as the site's certificate hash (5506) with the store's name (5511). The
// metabase backend keeps both in the site's key; the IIS 7+ backend binds the hash with netsh.

#include <utility>

#include "controller/iis_vroot_controller.h"
#include "support/format.h"
#include "support/last_error.h"

namespace {

namespace status = qm::status;
using webrig::platform::CertContext;
using webrig::platform::Certificates;
using webrig::platform::CertStore;
using webrig::platform::kNoCertContext;
using webrig::platform::kNoCertStore;

constexpr char16_t kMyStore[] = u"MY";
constexpr uint32_t kServerUserType = 1;
constexpr uint32_t kInheritAttribute = 1;
constexpr uint32_t kSslCertHash = 5506;
constexpr uint32_t kSslStoreName = 5511;
constexpr uint32_t kStoreEncoding =
    webrig::platform::cert_encoding::x509_asn | webrig::platform::cert_encoding::pkcs7_asn;
// The most a 32-bit process could map of a file.
constexpr uint64_t kMaxPfxBytes = uint64_t{256} << 20;

// A certificate context freed on every way out, unless handed on.
class HeldContext {
  public:
    HeldContext(Certificates& certificates, CertContext context)
        : m_certificates(certificates), m_context(context) {}
    HeldContext(const HeldContext&) = delete;
    HeldContext& operator=(const HeldContext&) = delete;
    ~HeldContext() { m_certificates.FreeContext(m_context); }

    CertContext& get() noexcept { return m_context; }
    CertContext release() noexcept { return std::exchange(m_context, kNoCertContext); }

  private:
    Certificates& m_certificates;
    CertContext m_context;
};

// A store closed on every way out, unless closed by its user.
class HeldStore {
  public:
    HeldStore(Certificates& certificates, CertStore store)
        : m_certificates(certificates), m_store(store) {}
    HeldStore(const HeldStore&) = delete;
    HeldStore& operator=(const HeldStore&) = delete;
    ~HeldStore() {
        if (m_store != kNoCertStore) {
            m_certificates.CloseStore(m_store, 0);
        }
    }

    CertStore get() const noexcept { return m_store; }
    bool Close() { return m_certificates.CloseStore(std::exchange(m_store, kNoCertStore), 0); }

  private:
    Certificates& m_certificates;
    CertStore m_store;
};

}  // namespace

int32_t CIISVRootController::InstallSSLCert(MetadataHandle handle, const CIISWebsiteProp& website) {
    try {
        const qm::wstring& path = website.SSLCertPath;
        if (path.empty()) {
            LogMessage(u"No SSL certificate found.");
            return 0;
        }
        LogMessage(u"InstallSSLCert for " + path);
        if (!platform().files().PathExists(path)) {
            LogMessage(path + u" not found.");
        }
        Certificates& certificates = platform().certificates();
        webrig::platform::CertQueryResult query;
        if (!certificates.QueryFileObject(path, query)) {
            LogMessage(u"Problem with CryptQueryObject");
            return status::certificate_unreadable;
        }
        HeldContext context(certificates, query.context);
        const bool plainCertificate =
            query.context != kNoCertContext &&
            (query.contentType == webrig::platform::cert_content::certificate ||
             query.contentType == webrig::platform::cert_content::serialized_certificate);
        if (plainCertificate) {
            // The hash is written even when the store refuses the certificate.
            AddToStoreLegacy(context.get(), query.encodingType);
        } else {
            LogMessage(u"Content type unknown, checking to see if this is a pfx blob.");
            std::vector<std::byte> blob;
            if (const int32_t result = GetCertContextFromPfxBlob(path, blob); result != 0) {
                return result;
            }
            if (const int32_t result = AddToStorePfxBlob(blob, context.get(), website.SslPassword);
                result != 0) {
                return result;
            }
        }

        uint32_t size = 0;
        if (!certificates.GetContextProperty(
                context.get(), webrig::platform::cert_property::sha1_hash, nullptr, size) ||
            size == 0) {
            return status::certificate_hash_missing;
        }
        std::vector<std::byte> hash(size);
        if (!certificates.GetContextProperty(
                context.get(), webrig::platform::cert_property::sha1_hash, hash.data(), size)) {
            return status::certificate_hash_unreadable;
        }
        if (SetVRtBinProperty(handle, kSslCertHash, kServerUserType, hash.data(), size) != 0) {
            return status::ssl_cert_hash_not_written;
        }
        if (SetVRtStrProperty(handle, kSslStoreName, kServerUserType, kInheritAttribute, kMyStore,
                              u"/") != 0) {
            return status::ssl_store_name_not_written;
        }
        if (!certificates.FreeContext(context.release())) {
            return status::certificate_not_freed;
        }
        LogMessage(u"SSL certificate appeared to install successfully.");
        return 0;
    } catch (...) {
        LogMessage(u"Exception caught in InstallSSLCert");
        return status::certificate_import_failed;
    }
}

int32_t CIISVRootController::AddToStoreLegacy(CertContext context, uint32_t encoding) {
    Certificates& certificates = platform().certificates();
    HeldStore store(certificates, certificates.OpenLocalMachineStore(kMyStore, encoding, 0));
    if (store.get() == kNoCertStore) {
        return status::certificate_store_unavailable;
    }
    uint32_t contextEncoding = 0;
    std::vector<std::byte> encoded;
    if (!certificates.ContextEncoded(context, contextEncoding, encoded) ||
        !certificates.AddEncodedCertificate(store.get(), encoding, encoded,
                                            webrig::platform::cert_add::replace_existing,
                                            nullptr)) {
        return status::certificate_import_failed;
    }
    if (!store.Close()) {
        return status::certificate_store_not_closed;
    }
    LogMessage(u"AddToStoreLegacy Import succeeded.\n");
    return 0;
}

int32_t CIISVRootController::GetCertContextFromPfxBlob(const qm::wstring& path,
                                                       std::vector<std::byte>& blob) {
    try {
        // The whole file is read instead of mapped; its failures are told apart as the steps of
        // a mapping would fail: the open, an empty file (nothing to map), a view too large.
        std::vector<std::byte> contents;
        const uint32_t read = platform().files().ReadWholeFile(path, kMaxPfxBytes, contents);
        if (read != qm::win32::success && read != qm::win32::not_enough_memory &&
            read != qm::win32::read_fault) {
            LogMessage(u"CreateFile failed.");
            return status::certificate_import_failed;
        }
        LogMessage(u"valid handle value");
        if (read == qm::win32::success && contents.empty()) {
            LogMessage(u"CreateFileMapping failed");
            return status::certificate_import_failed;
        }
        LogMessage(u"CreateFileMapping succeeded");
        if (read != qm::win32::success) {
            LogMessage(u"MapViewOfFile returned a NULL pfx");
            return status::certificate_import_failed;
        }
        LogMessage(u"MapViewOfFile");
        blob = std::move(contents);
        LogMessage(u"Appears to be a pfx blob.");
        return 0;
    } catch (...) {
        LogMessage(u"Exception caught in GetCertContextFromPfxBlob");
        return status::certificate_import_failed;
    }
}

int32_t CIISVRootController::AddToStorePfxBlob(const std::vector<std::byte>& blob,
                                               CertContext& context, const qm::wstring& password) {
    try {
        LogMessage(u"it is a blob.");
        Certificates& certificates = platform().certificates();
        HeldStore imported(
            certificates,
            certificates.ImportPfx(blob, password, webrig::platform::pfx_flags::machine_keyset));
        if (imported.get() == kNoCertStore) {
            LogMessage(u"PFXImportCertStore failed. Perhaps the password is wrong.");
            return status::certificate_import_failed;
        }
        HeldStore machineStore(
            certificates,
            certificates.OpenLocalMachineStore(kMyStore, kStoreEncoding,
                                               webrig::platform::cert_store_flags::open_existing));
        if (machineStore.get() == kNoCertStore) {
            LogMessage(u"CertOpenSystemStore Root failed.");
            return status::certificate_import_failed;
        }
        context = certificates.EnumCertificates(imported.get(), context);
        LogMessage(u"Attempting to import certificate into machine store.");
        if (!certificates.AddCertificateContext(machineStore.get(), context,
                                                webrig::platform::cert_add::replace_existing,
                                                nullptr)) {
            const uint32_t error = qm::get_last_error();
            LogMessage(qm::format(
                u"CertAddCertificateContextToStore failed with the following error: '%d'.",
                static_cast<int32_t>(error)));
            return status::certificate_import_failed;
        }
        LogMessage(u"AddToStorePfxBlob Import succeeded.\n");
        return 0;
    } catch (...) {
        LogMessage(u"Exception caught in AddToStorePfxBlob");
        return status::certificate_import_failed;
    }
}
