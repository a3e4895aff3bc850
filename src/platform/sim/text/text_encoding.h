#pragma once
// The encodings a .reg file comes in: UTF-16LE with a byte-order mark (what regedit writes) and
// UTF-8 with or without one. A file is written back in the encoding it was read in.

#include <cstddef>
#include <filesystem>
#include <optional>
#include <span>
#include <vector>

#include "support/wide_string.h"

namespace webrig::sim {

enum class TextEncoding { utf16le_bom, utf8_bom, utf8 };

struct DecodedText {
    qm::wstring text;
    TextEncoding encoding = TextEncoding::utf16le_bom;
};

// Throws MachineError naming `file` and the line of invalid UTF-8 or of a UTF-16 file cut off in
// the middle of a character.
DecodedText DecodeText(std::span<const std::byte> bytes, const std::filesystem::path& file);

// nullopt when `text` holds a lone surrogate, which UTF-8 cannot carry.
std::optional<std::vector<std::byte>> EncodeText(qm::wstring_view text, TextEncoding encoding);

// The line ending `text` uses first; `fallback` when it has none.
qm::wstring DetectLineEnding(qm::wstring_view text, qm::wstring_view fallback);

}  // namespace webrig::sim
