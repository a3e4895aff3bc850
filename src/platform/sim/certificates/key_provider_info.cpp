#include "platform/sim/certificates/key_provider_info.h"

#include "platform/sim/certificates/little_endian.h"

namespace webrig::sim {
namespace {

constexpr size_t kFixedSize = 7 * 4;

void AppendString(std::vector<std::byte>& out, qm::wstring_view text) {
    for (const char16_t c : text) {
        out.push_back(static_cast<std::byte>(c & 0xFF));
        out.push_back(static_cast<std::byte>(c >> 8));
    }
    out.push_back(std::byte{0});
    out.push_back(std::byte{0});
}

std::optional<qm::wstring> ReadString(std::span<const std::byte> bytes, uint32_t offset) {
    if (offset == 0) {
        return qm::wstring();  // a null pointer
    }
    qm::wstring text;
    for (size_t i = offset; i + 1 < bytes.size(); i += 2) {
        const auto c = static_cast<char16_t>(std::to_integer<unsigned>(bytes[i]) |
                                             (std::to_integer<unsigned>(bytes[i + 1]) << 8));
        if (c == 0) {
            return text;
        }
        text += c;
    }
    return std::nullopt;
}

}  // namespace

std::vector<std::byte> WriteKeyProviderInfo(const KeyProviderInfo& info) {
    const auto containerOffset = static_cast<uint32_t>(kFixedSize);
    const auto providerOffset =
        static_cast<uint32_t>(containerOffset + (info.containerName.size() + 1) * 2);
    std::vector<std::byte> out;
    AppendUint32(out, containerOffset);
    AppendUint32(out, providerOffset);
    AppendUint32(out, info.providerType);
    AppendUint32(out, info.flags);
    AppendUint32(out, 0);  // no provider parameters
    AppendUint32(out, 0);
    AppendUint32(out, info.keySpec);
    AppendString(out, info.containerName);
    AppendString(out, info.providerName);
    return out;
}

std::optional<KeyProviderInfo> ParseKeyProviderInfo(std::span<const std::byte> bytes) {
    if (bytes.size() < kFixedSize) {
        return std::nullopt;
    }
    std::optional<qm::wstring> container = ReadString(bytes, ReadUint32(bytes, 0));
    std::optional<qm::wstring> provider = ReadString(bytes, ReadUint32(bytes, 4));
    if (!container || !provider) {
        return std::nullopt;
    }
    KeyProviderInfo info;
    info.containerName = std::move(*container);
    info.providerName = std::move(*provider);
    info.providerType = ReadUint32(bytes, 8);
    info.flags = ReadUint32(bytes, 12);
    info.keySpec = ReadUint32(bytes, 24);
    return info;
}

}  // namespace webrig::sim
