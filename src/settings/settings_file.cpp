#include "settings/settings_file.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace webrig::settings {
namespace {

// Only this many leading bytes decide between UTF-16 and ANSI.
constexpr size_t kEncodingProbeBytes = 1024;

// Carriage returns are not trimmed: only the line split removes them.
bool IsTrimmed(char16_t c) {
    return c == u' ' || c == u'\t' || c == u'\n';
}

// FNV-1a over the code units. Not a defence against crafted collisions, and needs not be: equal
// hashes fall back to comparing names, which keeps sorting O(n log n) whatever the input.
uint64_t NameHash(qm::wstring_view name) {
    uint64_t hash = 0xCBF29CE484222325;
    for (const char16_t c : name) {
        hash = (hash ^ c) * 0x100000001B3;
    }
    return hash;
}

const char16_t* FindChar(const char16_t* first, const char16_t* last, char16_t wanted) {
    for (; first != last; ++first) {
        if (*first == wanted) {
            return first;
        }
    }
    return last;
}

}  // namespace

qm::wstring DecodeSettingsText(std::span<const std::byte> bytes, platform::AnsiCodePage& ansi) {
    const size_t probed = std::min(bytes.size(), kEncodingProbeBytes);
    if (probed == 0 || std::memchr(bytes.data(), 0, probed) == nullptr) {
        return ansi.ToWide(bytes);
    }
    // U+FEFF, little-endian, is a byte order mark and no part of the text.
    size_t offset = 0;
    if (bytes.size() >= 2 && bytes[0] == std::byte{0xFF} && bytes[1] == std::byte{0xFE}) {
        offset = 2;
    }
    // An odd final byte is half a character: it is dropped.
    const size_t count = (bytes.size() - offset) / 2;
    qm::wstring text(count, u'\0');
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(text.data(), bytes.data() + offset, count * 2);
    } else {
        for (size_t i = 0; i < count; ++i) {
            text[i] =
                static_cast<char16_t>(std::to_integer<unsigned>(bytes[offset + 2 * i]) |
                                      std::to_integer<unsigned>(bytes[offset + 2 * i + 1]) << 8);
        }
    }
    return text;
}

SettingsFile SettingsFile::Parse(std::span<const std::byte> bytes, platform::AnsiCodePage& ansi) {
    return ParseText(DecodeSettingsText(bytes, ansi));
}

SettingsFile SettingsFile::ParseText(qm::wstring text) {
    if (text.empty() || text.back() != u'\n') {
        text += u'\n';
    }
    if (text.size() > std::numeric_limits<uint32_t>::max()) {
        throw std::length_error("settings text too long");
    }
    SettingsFile file;
    file.m_text = std::make_unique<const qm::wstring>(std::move(text));
    const qm::wstring& all = *file.m_text;
    const char16_t* const base = all.data();
    const char16_t* const end = base + all.size();

    // Lines end at "\r\n" as long as one is left; after the last one, at every "\n". Finding the
    // last "\r\n" once keeps the split linear: searching for the next "\r\n" from every line
    // start would be quadratic in a file of "\n" lines.
    const size_t lastCrLf = all.rfind(u"\r\n");
    const char16_t* const crLfPartEnd = lastCrLf == qm::wstring::npos ? base : base + lastCrLf + 2;

    // Untouched capacity costs address space only; a generated project averages more than
    // 20 characters a line, so the index mostly grows without copying.
    file.m_entries.reserve(all.size() / 16);
    file.m_sections.reserve(all.size() / 256);

    const char16_t* lineStart = base;
    for (const char16_t* cursor = base; cursor != end;) {
        const char16_t* const lineFeed = FindChar(cursor, end, u'\n');
        if (lineFeed == end) {
            break;
        }
        cursor = lineFeed + 1;
        const char16_t* lineEnd = lineFeed;
        if (lineFeed < crLfPartEnd) {
            if (lineFeed == lineStart || lineFeed[-1] != u'\r') {
                continue;  // a lone "\n" inside a line that ends at a later "\r\n"
            }
            lineEnd = lineFeed - 1;
        }
        file.AddLine(static_cast<uint32_t>(lineStart - base),
                     static_cast<uint32_t>(lineEnd - base));
        lineStart = cursor;
    }
    file.KeepLastHeaderOfEachSection();
    for (Section& section : file.m_sections) {
        file.KeepLastEntryOfEachName(section);
    }
    file.IndexSections();
    return file;
}

void SettingsFile::AddLine(uint32_t begin, uint32_t end) {
    const char16_t* const text = m_text->data();
    while (begin != end && IsTrimmed(text[begin])) {
        ++begin;
    }
    while (end != begin && IsTrimmed(text[end - 1])) {
        --end;
    }
    if (begin == end || text[begin] == u';') {
        return;
    }
    if (text[begin] == u'[') {
        const char16_t* const close = FindChar(text + begin + 1, text + end, u']');
        if (close != text + end) {
            const auto nameBegin = begin + 1;
            const auto nameLength = static_cast<uint32_t>(close - text) - nameBegin;
            m_sections.push_back(Section{NameHash(qm::wstring_view(text + nameBegin, nameLength)),
                                         TextRange{nameBegin, nameLength},
                                         static_cast<uint32_t>(m_entries.size()), 0});
            return;
        }
    }
    const char16_t* const equals = FindChar(text + begin, text + end, u'=');
    if (equals == text + end || m_sections.empty()) {
        return;
    }
    const auto equalsAt = static_cast<uint32_t>(equals - text);
    uint32_t nameEnd = equalsAt;
    while (nameEnd != begin && IsTrimmed(text[nameEnd - 1])) {
        --nameEnd;
    }
    m_entries.push_back(
        Entry{TextRange{begin, nameEnd - begin}, TextRange{equalsAt + 1, end - equalsAt - 1},
              static_cast<uint32_t>(NameHash(qm::wstring_view(text + begin, nameEnd - begin)))});
    ++m_sections.back().entryCount;
}

// A header given again empties its section: only the entries after its last header count.
void SettingsFile::KeepLastHeaderOfEachSection() {
    // Equal names end up in file order, the last header last.
    std::sort(m_sections.begin(), m_sections.end(), [this](const Section& a, const Section& b) {
        if (a.nameHash != b.nameHash) {
            return a.nameHash < b.nameHash;
        }
        const int order = View(a.name).compare(View(b.name));
        return order != 0 ? order < 0 : a.name.begin < b.name.begin;
    });
    auto kept = m_sections.begin();
    for (auto it = m_sections.begin(); it != m_sections.end(); ++it) {
        const auto next = it + 1;
        if (next == m_sections.end() || next->nameHash != it->nameHash ||
            View(next->name) != View(it->name)) {
            *kept++ = *it;
        }
    }
    m_sections.erase(kept, m_sections.end());
}

// A name given twice in a section keeps the later value.
void SettingsFile::KeepLastEntryOfEachName(Section& section) {
    const auto first = m_entries.begin() + section.firstEntry;
    const auto last = first + section.entryCount;
    std::sort(first, last, [this](const Entry& a, const Entry& b) {
        if (a.nameHash != b.nameHash) {
            return a.nameHash < b.nameHash;
        }
        const int order = View(a.name).compare(View(b.name));
        return order != 0 ? order < 0 : a.name.begin < b.name.begin;
    });
    auto kept = first;
    for (auto it = first; it != last; ++it) {
        const auto next = it + 1;
        if (next == last || next->nameHash != it->nameHash || View(next->name) != View(it->name)) {
            *kept++ = *it;
        }
    }
    section.entryCount = static_cast<uint32_t>(kept - first);
}

void SettingsFile::IndexSections() {
    const size_t slots = std::bit_ceil(std::max<size_t>(2 * m_sections.size(), 16));
    m_sectionSlots.assign(slots, 0);
    for (uint32_t i = 0; i < m_sections.size(); ++i) {
        size_t slot = static_cast<size_t>(m_sections[i].nameHash) & (slots - 1);
        while (m_sectionSlots[slot] != 0) {
            slot = (slot + 1) & (slots - 1);
        }
        m_sectionSlots[slot] = i + 1;
    }
}

const SettingsFile::Section* SettingsFile::FindSection(qm::wstring_view name) const {
    if (m_lastFound != nullptr && View(m_lastFound->name) == name) {
        return m_lastFound;
    }
    if (m_sectionSlots.empty()) {
        return nullptr;
    }
    const uint64_t hash = NameHash(name);
    const size_t mask = m_sectionSlots.size() - 1;
    for (size_t slot = static_cast<size_t>(hash) & mask; m_sectionSlots[slot] != 0;
         slot = (slot + 1) & mask) {
        const Section& section = m_sections[m_sectionSlots[slot] - 1];
        if (section.nameHash == hash && View(section.name) == name) {
            m_lastFound = &section;
            return &section;
        }
    }
    return nullptr;
}

bool SettingsFile::HasSection(qm::wstring_view section) const {
    return FindSection(section) != nullptr;
}

std::optional<qm::wstring_view> SettingsFile::Find(qm::wstring_view section,
                                                   qm::wstring_view name) const {
    const Section* const found = FindSection(section);
    if (found == nullptr) {
        return std::nullopt;
    }
    const auto hash = static_cast<uint32_t>(NameHash(name));
    const auto first = m_entries.begin() + found->firstEntry;
    const auto last = first + found->entryCount;
    auto it = std::lower_bound(first, last, hash, [](const Entry& entry, uint32_t wanted) {
        return entry.nameHash < wanted;
    });
    for (; it != last && it->nameHash == hash; ++it) {
        if (View(it->name) == name) {
            return View(it->value);
        }
    }
    return std::nullopt;
}

std::vector<std::pair<qm::wstring_view, qm::wstring_view>> SettingsFile::Entries(
    qm::wstring_view section) const {
    std::vector<std::pair<qm::wstring_view, qm::wstring_view>> entries;
    const Section* const found = FindSection(section);
    if (found == nullptr) {
        return entries;
    }
    entries.reserve(found->entryCount);
    for (uint32_t i = 0; i < found->entryCount; ++i) {
        const Entry& entry = m_entries[found->firstEntry + i];
        entries.emplace_back(View(entry.name), View(entry.value));
    }
    // Kept by hash for lookups; readers of a whole section get it by name. Names are unique.
    std::sort(entries.begin(), entries.end());
    return entries;
}

}  // namespace webrig::settings
