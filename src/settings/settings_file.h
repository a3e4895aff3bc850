#pragma once
// The settings file handed over by the installer engine, read into sections of named entries.
// Every name and value is a view into the decoded text that the SettingsFile owns.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "platform/code_page.h"
#include "support/wide_string.h"

namespace webrig::settings {

// Decodes a settings file: UTF-16LE (BOM U+FEFF dropped) when any of the first 1024 bytes is
// zero, otherwise ANSI through `ansi`.
qm::wstring DecodeSettingsText(std::span<const std::byte> bytes, platform::AnsiCodePage& ansi);

class SettingsFile {
  public:
    static SettingsFile Parse(std::span<const std::byte> bytes, platform::AnsiCodePage& ansi);
    // The line grammar on decoded text. Throws std::length_error for text of 4 Gi characters or
    // more, whose positions would not fit the index.
    static SettingsFile ParseText(qm::wstring text);

    // The value of entry `name` in `section`; nullopt when the section or the entry is absent.
    std::optional<qm::wstring_view> Find(qm::wstring_view section, qm::wstring_view name) const;
    bool HasSection(qm::wstring_view section) const;
    // The entries of a section ordered by name (exact UTF-16 code-unit order); empty if absent.
    std::vector<std::pair<qm::wstring_view, qm::wstring_view>> Entries(
        qm::wstring_view section) const;

  private:
    // A piece of the text. 32-bit positions halve the index of files with millions of entries.
    struct TextRange {
        uint32_t begin;
        uint32_t length;
    };
    struct Entry {
        TextRange name;
        TextRange value;
        // Entries are looked up by this hash first, so that a lookup reads the text only once.
        uint32_t nameHash;
    };
    struct Section {
        // Sections are ordered by this hash first, so that sorting and finding them rarely has
        // to read their names from all over the text.
        uint64_t nameHash;
        TextRange name;
        uint32_t firstEntry;
        uint32_t entryCount;
    };
    SettingsFile() = default;

    qm::wstring_view View(TextRange range) const {
        return qm::wstring_view(m_text->data() + range.begin, range.length);
    }
    const Section* FindSection(qm::wstring_view name) const;
    void AddLine(uint32_t begin, uint32_t end);
    void KeepLastHeaderOfEachSection();
    void KeepLastEntryOfEachName(Section& section);
    void IndexSections();

    // On the heap, so that the views handed out stay valid when the SettingsFile is moved (a
    // short text would otherwise live inside the string object itself).
    std::unique_ptr<const qm::wstring> m_text;
    // Each section's entries are one run of this array, sorted by name hash and name, one entry
    // per name.
    std::vector<Entry> m_entries;
    // Sorted by name hash, then name; one per name.
    std::vector<Section> m_sections;
    // Open addressing over m_sections by name hash: index + 1, or 0 for a free slot. A power of
    // two at least twice the number of sections, so that a lookup probes one or two slots.
    std::vector<uint32_t> m_sectionSlots;
    // The section found last: readers ask for many entries of one section in a row.
    mutable const Section* m_lastFound = nullptr;
};

}  // namespace webrig::settings
