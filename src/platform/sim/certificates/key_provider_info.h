#pragma once
// The key provider information property (CERT_KEY_PROV_INFO_PROP_ID) in its serialized form: the
// CRYPT_KEY_PROV_INFO structure with 32-bit fields, its two string pointers replaced by offsets
// from the structure's start, and the NUL-terminated UTF-16 strings after it. It ties a
// certificate in a store to its private key container.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "support/wide_string.h"

namespace webrig::sim {

struct KeyProviderInfo {
    qm::wstring containerName;
    qm::wstring providerName;
    uint32_t providerType = 0;  // PROV_RSA_AES (24); 0 for a key storage provider
    uint32_t flags = 0;         // CRYPT_MACHINE_KEYSET (0x20) for machine keys
    uint32_t keySpec = 0;       // AT_KEYEXCHANGE (1) for RSA keys

    bool operator==(const KeyProviderInfo&) const = default;
};

std::vector<std::byte> WriteKeyProviderInfo(const KeyProviderInfo& info);
// nullopt when the offsets or strings do not fit the bytes.
std::optional<KeyProviderInfo> ParseKeyProviderInfo(std::span<const std::byte> bytes);

}  // namespace webrig::sim
