#include "platform/sim/certificates/sim_certificates.h"

#include <algorithm>
#include <cstring>

#include "platform/sim/certificates/certificate_der.h"
#include "platform/sim/certificates/certificate_file.h"
#include "platform/sim/certificates/key_provider_info.h"
#include "platform/sim/certificates/machine_keys.h"
#include "platform/sim/certificates/pfx_import.h"
#include "platform/sim/certificates/system_store.h"
#include "support/last_error.h"

namespace webrig::sim {
namespace {

using platform::CertContext;
using platform::CertStore;
using platform::kNoCertContext;
using platform::kNoCertStore;
namespace cert_add = platform::cert_add;
namespace cert_error = platform::cert_error;
namespace cert_property = platform::cert_property;

constexpr uint64_t kMaxFileBytes = 64u << 20;
constexpr auto kInvalidArg = static_cast<uint32_t>(qm::hr::invalid_arg);
constexpr auto kAccessDenied = static_cast<uint32_t>(0x80070005u);  // E_ACCESSDENIED

template <typename Result>
Result Fail(uint32_t error, Result result) {
    qm::set_last_error(error);
    return result;
}

bool Fail(uint32_t error) {
    return Fail(error, false);
}

uint32_t ErrorOf(qm::hresult hr) {
    return static_cast<uint32_t>(hr);
}

std::vector<std::byte> Bytes(const Thumbprint& hash) {
    return {hash.begin(), hash.end()};
}

// Properties of `from` that `into` lacks are added to it.
void Inherit(SerializedCertificate& into, const SerializedCertificate& from) {
    for (const auto& [id, value] : from.properties) {
        into.properties.emplace(id, value);
    }
}

const char16_t* kRsaProvider = u"Microsoft Enhanced RSA and AES Cryptographic Provider";
const char16_t* kKeyStorageProvider = u"Microsoft Software Key Storage Provider";
constexpr uint32_t kProvRsaAes = 24;
constexpr uint32_t kAtKeyExchange = 1;

}  // namespace

CertContext SimCertificates::AddContext(Context context) {
    const uintptr_t handle = NewHandle();
    m_contexts.emplace(handle, std::move(context));
    return CertContext{handle};
}

std::vector<SerializedCertificate> SimCertificates::Contents(const Store& store) {
    return store.systemName ? SystemStore(m_registry, *store.systemName).List() : store.memory;
}

bool SimCertificates::QueryFileObject(qm::wstring_view path, platform::CertQueryResult& result) {
    result = {};
    std::vector<std::byte> bytes;
    const uint32_t error = m_files.ReadWholeFile(path, kMaxFileBytes, bytes);
    if (error != 0) {
        return Fail(error);
    }
    std::optional<CertificateObject> object = DecodeCertificateObject(bytes);
    if (!object) {
        return Fail(ErrorOf(cert_error::no_match));
    }
    result.contentType = object->contentType;
    result.formatType = object->formatType;
    if (!object->certificate.der.empty()) {
        result.encodingType = object->certificate.encoding;
        const std::lock_guard lock(m_mutex);
        result.context = AddContext({std::move(object->certificate), 0, 0});
    } else if (object->contentType != platform::cert_content::pfx) {
        result.encodingType = platform::cert_encoding::x509_asn;
    }
    return true;
}

CertStore SimCertificates::ImportPfx(std::span<const std::byte> pfx, qm::wstring_view password,
                                     uint32_t flags) {
    PfxContents contents;
    const uint32_t error = ReadPfx(pfx, password, contents);
    if (error != 0) {
        return Fail(error, kNoCertStore);
    }
    if (!contents.keyPem.empty()) {
        SerializedCertificate& owner = contents.certificates.front();
        KeyProviderInfo info;
        info.containerName = HexUpper(Sha1Thumbprint(owner.der));
        info.providerName = contents.rsaKey ? kRsaProvider : kKeyStorageProvider;
        info.providerType = contents.rsaKey ? kProvRsaAes : 0;
        info.keySpec = contents.rsaKey ? kAtKeyExchange : 0;
        info.flags = flags & platform::pfx_flags::machine_keyset;
        if (!WriteMachineKey(m_files, info.containerName, contents.keyPem)) {
            return Fail(qm::win32::write_fault, kNoCertStore);
        }
        owner.properties[cert_property::key_provider_info] = WriteKeyProviderInfo(info);
    }
    const std::lock_guard lock(m_mutex);
    const uintptr_t handle = NewHandle();
    m_stores.emplace(handle, Store{std::nullopt, std::move(contents.certificates), false});
    return CertStore{handle};
}

CertStore SimCertificates::OpenLocalMachineStore(qm::wstring_view name, uint32_t, uint32_t flags) {
    if (name.empty() || name.find(u'\\') != qm::wstring_view::npos) {
        return Fail(kInvalidArg, kNoCertStore);
    }
    const bool create = (flags & platform::cert_store_flags::open_existing) == 0 &&
                        (flags & platform::cert_store_flags::read_only) == 0;
    const uint32_t error = SystemStore(m_registry, qm::wstring(name)).Open(create);
    if (error != 0) {
        return Fail(error, kNoCertStore);
    }
    const std::lock_guard lock(m_mutex);
    const uintptr_t handle = NewHandle();
    m_stores.emplace(
        handle, Store{qm::wstring(name), {}, (flags & platform::cert_store_flags::read_only) != 0});
    return CertStore{handle};
}

CertContext SimCertificates::EnumCertificates(CertStore storeHandle, CertContext previous) {
    const std::lock_guard lock(m_mutex);
    size_t position = 0;
    if (previous != kNoCertContext) {
        const auto found = m_contexts.find(static_cast<uintptr_t>(previous));
        if (found == m_contexts.end()) {
            return Fail(kInvalidArg, kNoCertContext);
        }
        position = found->second.position + 1;
        m_contexts.erase(found);
    }
    const auto store = m_stores.find(static_cast<uintptr_t>(storeHandle));
    if (store == m_stores.end()) {
        return Fail(qm::win32::invalid_handle, kNoCertContext);
    }
    std::vector<SerializedCertificate> certificates = Contents(store->second);
    if (position >= certificates.size()) {
        return Fail(ErrorOf(cert_error::not_found), kNoCertContext);
    }
    return AddContext({std::move(certificates[position]), store->first, position});
}

bool SimCertificates::AddToStore(uintptr_t storeHandle, SerializedCertificate certificate,
                                 uint32_t disposition, CertContext* added) {
    if (added != nullptr) {
        *added = kNoCertContext;
    }
    const auto found = m_stores.find(storeHandle);
    if (found == m_stores.end()) {
        return Fail(qm::win32::invalid_handle);
    }
    Store& store = found->second;
    if (disposition < cert_add::add_new ||
        disposition > cert_add::replace_existing_inherit_properties) {
        return Fail(kInvalidArg);
    }
    if (store.readOnly) {
        return Fail(kAccessDenied);
    }
    const Thumbprint thumbprint = Sha1Thumbprint(certificate.der);
    std::vector<SerializedCertificate> existing = Contents(store);
    const auto same = std::find_if(existing.begin(), existing.end(), [&](const auto& c) {
        return Sha1Thumbprint(c.der) == thumbprint;
    });
    const bool exists = same != existing.end();
    if (exists && disposition == cert_add::add_new) {
        return Fail(ErrorOf(cert_error::exists));
    }
    if (exists && disposition == cert_add::use_existing) {
        SerializedCertificate kept = *same;
        Inherit(kept, certificate);
        certificate = std::move(kept);
    } else if (exists && disposition == cert_add::replace_existing_inherit_properties) {
        Inherit(certificate, *same);
    }
    if (store.systemName) {
        // Windows files the thumbprint with every certificate of a registry store.
        certificate.properties[cert_property::sha1_hash] = Bytes(thumbprint);
        const uint32_t error = SystemStore(m_registry, *store.systemName).Put(certificate);
        if (error != 0) {
            return Fail(error);
        }
    } else if (exists && disposition != cert_add::always) {
        store.memory[static_cast<size_t>(same - existing.begin())] = certificate;
    } else {
        store.memory.push_back(certificate);
    }
    if (added != nullptr) {
        *added = AddContext({std::move(certificate), storeHandle, 0});
    }
    return true;
}

bool SimCertificates::AddEncodedCertificate(CertStore store, uint32_t encoding,
                                            std::span<const std::byte> encoded,
                                            uint32_t disposition, CertContext* added) {
    if ((encoding & platform::cert_encoding::x509_asn) == 0) {
        return Fail(kInvalidArg);
    }
    if (!IsCertificateDer(encoded)) {
        return Fail(ErrorOf(cert_error::asn1_bad_tag));
    }
    SerializedCertificate certificate;
    certificate.der.assign(encoded.begin(), encoded.end());
    const std::lock_guard lock(m_mutex);
    return AddToStore(static_cast<uintptr_t>(store), std::move(certificate), disposition, added);
}

bool SimCertificates::AddCertificateContext(CertStore store, CertContext context,
                                            uint32_t disposition, CertContext* added) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_contexts.find(static_cast<uintptr_t>(context));
    if (found == m_contexts.end()) {
        return Fail(kInvalidArg);
    }
    return AddToStore(static_cast<uintptr_t>(store), found->second.certificate, disposition, added);
}

bool SimCertificates::GetContextProperty(CertContext context, uint32_t propertyId, std::byte* data,
                                         uint32_t& size) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_contexts.find(static_cast<uintptr_t>(context));
    if (found == m_contexts.end()) {
        return Fail(kInvalidArg);
    }
    auto& properties = found->second.certificate.properties;
    if (propertyId == cert_property::sha1_hash && properties.count(propertyId) == 0) {
        properties[propertyId] = Bytes(Sha1Thumbprint(found->second.certificate.der));
    }
    const auto property = properties.find(propertyId);
    if (property == properties.end()) {
        return Fail(ErrorOf(cert_error::not_found));
    }
    const auto needed = static_cast<uint32_t>(property->second.size());
    const uint32_t offered = size;
    size = needed;
    if (data == nullptr) {
        return true;
    }
    if (offered < needed) {
        return Fail(qm::win32::more_data);
    }
    if (needed != 0) {
        std::memcpy(data, property->second.data(), needed);
    }
    return true;
}

bool SimCertificates::ContextEncoded(CertContext context, uint32_t& encoding,
                                     std::vector<std::byte>& encoded) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_contexts.find(static_cast<uintptr_t>(context));
    if (found == m_contexts.end()) {
        return Fail(kInvalidArg);
    }
    encoding = found->second.certificate.encoding;
    encoded = found->second.certificate.der;
    return true;
}

bool SimCertificates::FreeContext(CertContext context) {
    if (context == kNoCertContext) {
        return true;
    }
    const std::lock_guard lock(m_mutex);
    // Windows would take an unknown pointer apart; here it is refused.
    return m_contexts.erase(static_cast<uintptr_t>(context)) == 1 ||
           Fail(qm::win32::invalid_handle);
}

bool SimCertificates::CloseStore(CertStore store, uint32_t flags) {
    if (store == kNoCertStore) {
        return true;
    }
    const std::lock_guard lock(m_mutex);
    const auto handle = static_cast<uintptr_t>(store);
    if (m_stores.erase(handle) != 1) {
        return Fail(qm::win32::invalid_handle);
    }
    const bool pending = std::any_of(m_contexts.begin(), m_contexts.end(), [&](const auto& entry) {
        return entry.second.store == handle;
    });
    if (pending && (flags & platform::cert_store_flags::close_check) != 0) {
        return Fail(ErrorOf(cert_error::pending_close));
    }
    return true;
}

}  // namespace webrig::sim
