#include "platform/sim/certificates/serialized_certificate.h"

#include "platform/sim/certificates/little_endian.h"

namespace webrig::sim {
namespace {

constexpr uint32_t kCertificateEntry = 32;  // CERT_CERT_PROP_ID
constexpr uint32_t kEndEntry = 0;
constexpr uint32_t kMaxPropertyId = 0xFFFF;
constexpr uint32_t kStoreMagic = 0x54524543;  // "CERT"
constexpr size_t kEntryHeader = 12;

struct Entry {
    uint32_t id = 0;
    uint32_t encoding = 0;
    std::span<const std::byte> value;
};

// The entry at `offset`, which then points past it; false when it does not fit.
bool ReadEntry(std::span<const std::byte> bytes, size_t& offset, Entry& entry) {
    if (bytes.size() - offset < kEntryHeader) {
        return false;
    }
    entry.id = ReadUint32(bytes, offset);
    entry.encoding = ReadUint32(bytes, offset + 4);
    const uint32_t length = ReadUint32(bytes, offset + 8);
    offset += kEntryHeader;
    if (bytes.size() - offset < length) {
        return false;
    }
    entry.value = bytes.subspan(offset, length);
    offset += length;
    return true;
}

// One element starting at `offset`; `offset` then points past its certificate entry.
std::optional<SerializedCertificate> ReadElement(std::span<const std::byte> bytes, size_t& offset) {
    SerializedCertificate certificate;
    Entry entry;
    while (ReadEntry(bytes, offset, entry)) {
        if (entry.id == kCertificateEntry) {
            certificate.encoding = entry.encoding;
            certificate.der.assign(entry.value.begin(), entry.value.end());
            return certificate;
        }
        if (entry.id == kEndEntry || entry.id > kMaxPropertyId) {
            return std::nullopt;
        }
        certificate.properties[entry.id].assign(entry.value.begin(), entry.value.end());
    }
    return std::nullopt;
}

void AppendEntry(std::vector<std::byte>& out, uint32_t id, uint32_t encoding,
                 std::span<const std::byte> value) {
    AppendUint32(out, id);
    AppendUint32(out, encoding);
    AppendUint32(out, static_cast<uint32_t>(value.size()));
    out.insert(out.end(), value.begin(), value.end());
}

}  // namespace

std::optional<SerializedCertificate> ParseSerializedCertificate(std::span<const std::byte> bytes) {
    size_t offset = 0;
    std::optional<SerializedCertificate> certificate = ReadElement(bytes, offset);
    if (!certificate || offset != bytes.size()) {
        return std::nullopt;
    }
    return certificate;
}

std::vector<std::byte> WriteSerializedCertificate(const SerializedCertificate& certificate) {
    std::vector<std::byte> out;
    for (const auto& [id, value] : certificate.properties) {
        AppendEntry(out, id, 1, value);
    }
    AppendEntry(out, kCertificateEntry, certificate.encoding, certificate.der);
    return out;
}

std::optional<std::vector<SerializedCertificate>> ParseSerializedStore(
    std::span<const std::byte> bytes) {
    if (bytes.size() < 8 || ReadUint32(bytes, 0) != 0 || ReadUint32(bytes, 4) != kStoreMagic) {
        return std::nullopt;
    }
    std::vector<SerializedCertificate> certificates;
    size_t offset = 8;
    while (true) {
        if (bytes.size() - offset >= kEntryHeader && ReadUint32(bytes, offset) == kEndEntry) {
            const bool end = ReadUint32(bytes, offset + 4) == 0 &&
                             ReadUint32(bytes, offset + 8) == 0 &&
                             offset + kEntryHeader == bytes.size();
            return end ? std::optional(std::move(certificates)) : std::nullopt;
        }
        std::optional<SerializedCertificate> certificate = ReadElement(bytes, offset);
        if (!certificate) {
            return std::nullopt;
        }
        certificates.push_back(std::move(*certificate));
    }
}

}  // namespace webrig::sim
