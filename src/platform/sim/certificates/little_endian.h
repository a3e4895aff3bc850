#pragma once
// Little-endian numbers in byte buffers, as CryptoAPI's serialized structures hold them.

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace webrig::sim {

inline void AppendUint32(std::vector<std::byte>& out, uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) {
        out.push_back(static_cast<std::byte>((value >> shift) & 0xFFu));
    }
}

// The number at `offset`; the caller has checked that four bytes are there.
inline uint32_t ReadUint32(std::span<const std::byte> bytes, size_t offset) {
    uint32_t value = 0;
    for (int i = 3; i >= 0; --i) {
        value = (value << 8) | std::to_integer<uint32_t>(bytes[offset + static_cast<size_t>(i)]);
    }
    return value;
}

}  // namespace webrig::sim
