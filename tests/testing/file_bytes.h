#pragma once
// Whole files as bytes, and text turned into the bytes of a file in a given encoding.

#include <cstddef>
#include <filesystem>
#include <string_view>
#include <vector>

namespace webrig::testing {

std::vector<std::byte> ReadBytes(const std::filesystem::path& path);
void WriteBytes(const std::filesystem::path& path, const std::vector<std::byte>& bytes);

// UTF-16LE with a byte-order mark, as regedit writes .reg files.
std::vector<std::byte> Utf16LeWithBom(std::u16string_view text);
// The bytes of `text` unchanged (UTF-8 or anything else).
std::vector<std::byte> Bytes(std::string_view text);

}  // namespace webrig::testing
