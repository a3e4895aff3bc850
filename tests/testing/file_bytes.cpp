#include "testing/file_bytes.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace webrig::testing {

std::vector<std::byte> ReadBytes(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        throw std::runtime_error("cannot read " + path.string());
    }
    const std::string text((std::istreambuf_iterator<char>(stream)),
                           std::istreambuf_iterator<char>());
    return Bytes(text);
}

void WriteBytes(const std::filesystem::path& path, const std::vector<std::byte>& bytes) {
    std::ofstream stream(path, std::ios::binary | std::ios::trunc);
    stream.write(reinterpret_cast<const char*>(bytes.data()),
                 static_cast<std::streamsize>(bytes.size()));
    if (!stream) {
        throw std::runtime_error("cannot write " + path.string());
    }
}

std::vector<std::byte> Utf16LeWithBom(std::u16string_view text) {
    std::vector<std::byte> bytes{std::byte{0xFF}, std::byte{0xFE}};
    for (const char16_t c : text) {
        bytes.push_back(static_cast<std::byte>(c & 0xFF));
        bytes.push_back(static_cast<std::byte>(c >> 8));
    }
    return bytes;
}

std::vector<std::byte> Bytes(std::string_view text) {
    const auto* first = reinterpret_cast<const std::byte*>(text.data());
    return {first, first + text.size()};
}

}  // namespace webrig::testing
