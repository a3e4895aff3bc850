#pragma once
// HKEY_LOCAL_MACHINE kept as a .reg file ("Windows Registry Editor Version 5.00").
//
// The file is held as a list of blocks: the header, then one block per key line with the value
// lines, comments and blank lines that follow it. Writing the file back keeps the text of every
// block whose key did not change, so a diff shows only what changed; a changed key's block is
// written afresh as regedit would export it, and a new key goes after the blocks of its parent's
// sub-tree. A file that nobody changed is written back byte for byte.

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "platform/sim/registry/registry_key.h"
#include "platform/sim/text/text_encoding.h"

namespace webrig::sim {

// Key names longer than this cannot be created, and a registry tree is at most this deep.
inline constexpr size_t kMaxKeyNameLength = 255;
inline constexpr int kMaxKeyDepth = 512;

class RegFile {
  public:
    // One block of text and the key it describes (null for the header and for deletion lines).
    struct Block {
        std::shared_ptr<RegistryKey> key;
        qm::wstring text;
    };

    struct Rendering {
        std::vector<std::byte> bytes;
        std::vector<Block> blocks;
    };

    // Reads a .reg file. Throws MachineError naming `file` and the line for anything malformed:
    // another header (REGEDIT4 is refused as unsupported), a key outside HKEY_LOCAL_MACHINE, a
    // value before any key, bad escapes or hex, unknown value syntax, invalid encoding.
    // `[-key]` and `"name"=-` lines are applied as regedit applies them on import.
    static RegFile Parse(std::span<const std::byte> bytes, const std::filesystem::path& file);
    // An empty HKEY_LOCAL_MACHINE as regedit would export it: UTF-16LE with a byte-order mark,
    // CRLF line endings.
    static RegFile New();

    RegistryKey& Root() noexcept { return *m_root; }
    const std::shared_ptr<RegistryKey>& SharedRoot() const noexcept { return m_root; }
    const RegistryKey& Root() const noexcept { return *m_root; }
    TextEncoding encoding() const noexcept { return m_encoding; }
    const qm::wstring& lineEnding() const noexcept { return m_lineEnding; }

    // The file for the tree as it is now. nullopt when the tree holds something the file cannot
    // say: a name with a line break, or a lone surrogate in a UTF-8 file.
    std::optional<Rendering> Render() const;
    // Every key written afresh, in tree order, as an export of the whole tree would be.
    std::optional<std::vector<std::byte>> RenderAll() const;
    // The rendering has been stored as the file: it is the text later renderings keep.
    void Adopt(Rendering rendering);

  private:
    RegFile();

    std::shared_ptr<RegistryKey> m_root;
    std::vector<Block> m_blocks;
    std::vector<std::byte> m_bytes;
    TextEncoding m_encoding = TextEncoding::utf16le_bom;
    qm::wstring m_lineEnding = u"\r\n";
    uint64_t m_revision = 0;  // of the tree when m_bytes was read or written
};

}  // namespace webrig::sim
