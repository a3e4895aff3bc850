#include "platform/sim/host_process/sim_automation.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

namespace webrig::sim {
namespace {

// [uint32 byte length][characters][NUL]: the pointer handed out points at the characters.
constexpr size_t kPrefixBytes = sizeof(uint32_t);

void* DefaultAllocate(size_t bytes) {
    return std::malloc(bytes);
}

}  // namespace

SimAutomation::SimAutomation(Allocate allocate) noexcept
    : m_allocate(allocate != nullptr ? allocate : &DefaultAllocate) {}

platform::Bstr SimAutomation::SysAllocStringLen(qm::wstring_view text) {
    // The byte length must fit the 32-bit prefix.
    if (text.size() > (std::numeric_limits<uint32_t>::max() - kPrefixBytes) / 2 - 1) {
        return nullptr;
    }
    const auto byteLength = static_cast<uint32_t>(text.size() * sizeof(char16_t));
    void* block = m_allocate(kPrefixBytes + byteLength + sizeof(char16_t));
    if (block == nullptr) {
        return nullptr;
    }
    std::memcpy(block, &byteLength, kPrefixBytes);
    auto* chars = reinterpret_cast<char16_t*>(static_cast<std::byte*>(block) + kPrefixBytes);
    if (!text.empty()) {
        std::memcpy(chars, text.data(), byteLength);
    }
    chars[text.size()] = u'\0';
    return chars;
}

void SimAutomation::SysFreeString(platform::Bstr text) {
    if (text != nullptr) {
        std::free(reinterpret_cast<std::byte*>(text) - kPrefixBytes);
    }
}

uint32_t SimAutomation::SysStringLen(platform::Bstr text) {
    if (text == nullptr) {
        return 0;
    }
    uint32_t byteLength = 0;
    std::memcpy(&byteLength, reinterpret_cast<const std::byte*>(text) - kPrefixBytes, kPrefixBytes);
    return byteLength / sizeof(char16_t);
}

qm::hresult SimAutomation::ChangeTypeToText(const platform::Variant& value, qm::wstring& text) {
    text = std::visit(
        [](const auto& held) -> qm::wstring {
            using Held = std::decay_t<decltype(held)>;
            if constexpr (std::is_same_v<Held, std::monostate>) {
                return {};
            } else if constexpr (std::is_same_v<Held, qm::wstring>) {
                return held;
            } else if constexpr (std::is_same_v<Held, bool>) {
                // Without VARIANT_ALPHABOOL a VARIANT_BOOL converts as the 16-bit integer it is.
                return held ? u"-1" : u"0";
            } else {
                return qm::from_utf8(std::to_string(held));
            }
        },
        value);
    return qm::hr::ok;
}

}  // namespace webrig::sim
