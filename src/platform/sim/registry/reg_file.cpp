#include "platform/sim/registry/reg_file.h"

#include <algorithm>
#include <unordered_set>

#include "platform/sim/machine/machine_error.h"
#include "platform/sim/registry/reg_value_syntax.h"
#include "support/case_insensitive.h"

namespace webrig::sim {
namespace {

constexpr qm::wstring_view kHeader = u"Windows Registry Editor Version 5.00";
constexpr qm::wstring_view kOldHeader = u"REGEDIT4";
constexpr qm::wstring_view kRootName = u"HKEY_LOCAL_MACHINE";
constexpr size_t kMaxValueNameLength = 16383;

bool IsBlank(char16_t c) {
    return c == u' ' || c == u'\t';
}

qm::wstring_view TrimLeft(qm::wstring_view text) {
    while (!text.empty() && IsBlank(text.front())) {
        text.remove_prefix(1);
    }
    return text;
}

qm::wstring_view TrimRight(qm::wstring_view text) {
    while (!text.empty() && (IsBlank(text.back()) || text.back() == u'\r')) {
        text.remove_suffix(1);
    }
    return text;
}

struct PhysicalLine {
    size_t start;  // first character
    size_t end;    // the line break (or the end of the text)
    size_t next;   // first character of the next line
};

std::vector<PhysicalLine> SplitLines(qm::wstring_view text) {
    std::vector<PhysicalLine> lines;
    size_t start = 0;
    while (start < text.size()) {
        const size_t newline = text.find(u'\n', start);
        if (newline == qm::wstring_view::npos) {
            lines.push_back({start, text.size(), text.size()});
            break;
        }
        lines.push_back({start, newline, newline + 1});
        start = newline + 1;
    }
    return lines;
}

bool HasLineBreak(qm::wstring_view text) {
    return text.find_first_of(u"\r\n") != qm::wstring_view::npos;
}

class Reader {
  public:
    Reader(qm::wstring_view text, const std::filesystem::path& file,
           const std::shared_ptr<RegistryKey>& root, std::vector<RegFile::Block>& blocks)
        : m_text(text), m_file(file), m_root(root), m_blocks(blocks), m_lines(SplitLines(text)) {}

    void Read() {
        ReadHeader();
        size_t blockStart = 0;
        std::shared_ptr<RegistryKey> blockKey;
        for (m_index = 1; m_index < m_lines.size(); ++m_index) {
            const qm::wstring_view content = TrimLeft(Content(m_index));
            if (TrimRight(content).empty() || content.front() == u';') {
                continue;
            }
            if (content.find(u'\r') != qm::wstring_view::npos) {
                Fail(LineNumber(), "a carriage return inside a line");
            }
            if (content.front() == u'[') {
                const size_t start = m_lines[m_index].start;
                m_blocks.push_back({std::move(blockKey),
                                    qm::wstring(m_text.substr(blockStart, start - blockStart))});
                blockStart = start;
                blockKey = ReadKeyLine(TrimRight(content));
                continue;
            }
            if (content.front() == u'"' || content.front() == u'@') {
                ReadValue(content);
                continue;
            }
            Fail(LineNumber(), "unexpected text; expected a [key] line, a value line or a comment");
        }
        m_blocks.push_back({std::move(blockKey), qm::wstring(m_text.substr(blockStart))});
    }

  private:
    [[noreturn]] void Fail(int line, const std::string& message) const {
        throw MachineError(m_file, line, message);
    }

    int LineNumber() const { return static_cast<int>(m_index) + 1; }

    qm::wstring_view Content(size_t index) const {
        const PhysicalLine& line = m_lines[index];
        qm::wstring_view content = m_text.substr(line.start, line.end - line.start);
        if (!content.empty() && content.back() == u'\r') {
            content.remove_suffix(1);
        }
        return content;
    }

    void ReadHeader() {
        if (m_lines.empty()) {
            Fail(1,
                 "the file is empty; a .reg file starts with \"Windows Registry Editor "
                 "Version 5.00\"");
        }
        const qm::wstring_view header = TrimRight(Content(0));
        if (header == kHeader) {
            return;
        }
        if (qm::iequals(header, kOldHeader)) {
            Fail(1,
                 "REGEDIT4 files are not supported; export the registry as \"Windows "
                 "Registry Editor Version 5.00\"");
        }
        Fail(1, "not a .reg file: the first line must be \"Windows Registry Editor Version 5.00\"");
    }

    std::vector<qm::wstring_view> SplitKeyPath(qm::wstring_view path) const {
        const size_t slash = path.find(u'\\');
        const qm::wstring_view rootName = path.substr(0, slash);
        if (!qm::iequals(rootName, kRootName)) {
            Fail(LineNumber(), "only keys of HKEY_LOCAL_MACHINE belong in this file, not \"" +
                                   qm::to_utf8(rootName) + "\"");
        }
        std::vector<qm::wstring_view> names;
        if (slash == qm::wstring_view::npos) {
            return names;
        }
        qm::wstring_view rest = path.substr(slash + 1);
        while (true) {
            const size_t next = rest.find(u'\\');
            const qm::wstring_view name = rest.substr(0, next);
            if (name.empty()) {
                Fail(LineNumber(), "a key path holds an empty key name");
            }
            if (name.size() > kMaxKeyNameLength) {
                Fail(LineNumber(), "a key name is longer than 255 characters");
            }
            names.push_back(name);
            if (names.size() > static_cast<size_t>(kMaxKeyDepth)) {
                Fail(LineNumber(), "the key is nested deeper than 512 levels");
            }
            if (next == qm::wstring_view::npos) {
                return names;
            }
            rest.remove_prefix(next + 1);
        }
    }

    std::shared_ptr<RegistryKey> ReadKeyLine(qm::wstring_view line) {
        if (line.back() != u']') {
            Fail(LineNumber(), "a key line must end with ']'");
        }
        qm::wstring_view path = line.substr(1, line.size() - 2);
        const bool remove = !path.empty() && path.front() == u'-';
        if (remove) {
            path.remove_prefix(1);
        }
        const std::vector<qm::wstring_view> names = SplitKeyPath(path);
        m_currentKey = nullptr;
        m_underDeletedKey = remove;
        if (remove) {
            if (names.empty()) {
                Fail(LineNumber(), "HKEY_LOCAL_MACHINE itself cannot be deleted");
            }
            RegistryKey* parent = m_root.get();
            for (size_t i = 0; parent != nullptr && i + 1 < names.size(); ++i) {
                parent = parent->FindSubKey(names[i]);
            }
            if (parent != nullptr) {
                parent->RemoveSubKey(names.back());
            }
            return nullptr;
        }
        std::shared_ptr<RegistryKey> key = m_root;
        for (const qm::wstring_view name : names) {
            if (key->FindSubKey(name) == nullptr) {
                key->AddSubKey(qm::wstring(name));
            }
            key = key->SubKeys().find(name)->second;
        }
        m_currentKey = key.get();
        // A key described in several blocks is written back as one.
        if (!m_keysWithBlock.insert(key.get()).second) {
            key->SetEdited(true);
        }
        return key;
    }

    void ReadValue(qm::wstring_view content) {
        const int firstLine = LineNumber();
        if (m_currentKey == nullptr) {
            Fail(firstLine, m_underDeletedKey ? "a value under a [-key] deletion line"
                                              : "a value before any [key] line");
        }
        JoinedLine joined(TrimRight(content), firstLine);
        if (IsHexValueLine(joined.text())) {
            while (joined.RemoveContinuation()) {
                if (m_index + 1 >= m_lines.size()) {
                    Fail(LineNumber(), "the value continues past the end of the file");
                }
                ++m_index;
                if (Content(m_index).find(u'\r') != qm::wstring_view::npos) {
                    Fail(LineNumber(), "a carriage return inside a line");
                }
                joined.Append(TrimRight(TrimLeft(Content(m_index))), LineNumber());
            }
        }
        RegValueLine value;
        try {
            value = ParseValueLine(joined);
        } catch (const RegSyntaxError& error) {
            Fail(error.line(), error.what());
        }
        if (value.name.size() > kMaxValueNameLength) {
            Fail(firstLine, "a value name is longer than 16383 characters");
        }
        if (value.remove) {
            m_currentKey->DeleteValue(value.name);
        } else {
            m_currentKey->SetValue(value.name, std::move(value.value));
        }
    }

    qm::wstring_view m_text;
    const std::filesystem::path& m_file;
    std::shared_ptr<RegistryKey> m_root;
    std::vector<RegFile::Block>& m_blocks;
    std::vector<PhysicalLine> m_lines;
    size_t m_index = 0;
    RegistryKey* m_currentKey = nullptr;
    bool m_underDeletedKey = false;
    std::unordered_set<const RegistryKey*> m_keysWithBlock;
};

}  // namespace

RegFile::RegFile() : m_root(std::make_shared<RegistryKey>(qm::wstring(kRootName))) {}

RegFile RegFile::Parse(std::span<const std::byte> bytes, const std::filesystem::path& file) {
    DecodedText decoded = DecodeText(bytes, file);
    RegFile result;
    result.m_encoding = decoded.encoding;
    result.m_lineEnding = DetectLineEnding(
        decoded.text, decoded.encoding == TextEncoding::utf16le_bom ? u"\r\n" : u"\n");
    Reader(decoded.text, file, result.m_root, result.m_blocks).Read();
    result.m_bytes.assign(bytes.begin(), bytes.end());
    result.m_revision = result.m_root->Revision();
    return result;
}

RegFile RegFile::New() {
    RegFile result;
    qm::wstring header(kHeader);
    header += result.m_lineEnding;
    header += result.m_lineEnding;
    result.m_bytes = *EncodeText(header, result.m_encoding);
    result.m_blocks.push_back({nullptr, std::move(header)});
    result.m_revision = result.m_root->Revision();
    return result;
}

namespace {

// The block regedit would export for `key`; nullopt when a name holds a line break.
std::optional<qm::wstring> RenderKeyBlock(const RegistryKey& key, qm::wstring_view eol, bool utf8) {
    const qm::wstring path = key.Path();
    if (HasLineBreak(path)) {
        return std::nullopt;
    }
    qm::wstring text = u"[" + qm::wstring(kRootName);
    if (!path.empty()) {
        text += u'\\';
        text += path;
    }
    text += u']';
    text += eol;
    for (const NamedValue& value : key.Values()) {
        if (HasLineBreak(value.name)) {
            return std::nullopt;
        }
        text += FormatValueLine(value, eol, utf8);
    }
    text += eol;
    return text;
}

// Keys in tree order: each before its sub-keys, sub-keys by name.
std::vector<std::shared_ptr<RegistryKey>> TreeOrder(const std::shared_ptr<RegistryKey>& root) {
    std::vector<std::shared_ptr<RegistryKey>> order;
    std::vector<std::shared_ptr<RegistryKey>> pending{root};
    while (!pending.empty()) {
        std::shared_ptr<RegistryKey> key = std::move(pending.back());
        pending.pop_back();
        for (auto it = key->SubKeys().rbegin(); it != key->SubKeys().rend(); ++it) {
            pending.push_back(it->second);
        }
        order.push_back(std::move(key));
    }
    return order;
}

// Where a new block for `key` goes among `blocks` (the header first): after the last block of its
// parent's sub-tree, or of the nearest ancestor's that has one.
size_t NewBlockPosition(const std::vector<RegFile::Block>& blocks, const RegistryKey& key) {
    if (key.Parent() == nullptr) {
        return 1;  // the root's own block comes right after the header
    }
    for (const RegistryKey* ancestor = key.Parent(); ancestor != nullptr;
         ancestor = ancestor->Parent()) {
        for (size_t i = blocks.size(); i-- > 1;) {
            if (blocks[i].key && blocks[i].key->IsWithin(*ancestor)) {
                return i + 1;
            }
        }
    }
    return blocks.size();
}

// The names a block's key line spells below HKEY_LOCAL_MACHINE.
std::vector<qm::wstring_view> SpelledNames(qm::wstring_view blockText) {
    qm::wstring_view line = TrimLeft(blockText.substr(0, blockText.find(u'\n')));
    line = TrimRight(line);
    std::vector<qm::wstring_view> names;
    if (line.size() < 2 || line.front() != u'[' || line.back() != u']') {
        return names;
    }
    qm::wstring_view path = line.substr(1, line.size() - 2);
    for (size_t slash = path.find(u'\\'); slash != qm::wstring_view::npos;
         slash = path.find(u'\\')) {
        path.remove_prefix(slash + 1);
        names.push_back(path.substr(0, path.find(u'\\')));
    }
    return names;
}

// Marks the keys `block` mentions first; false when it spells one of them otherwise than the
// tree names it.
bool SpellsFirstMentionsAsTree(const RegFile::Block& block,
                               std::unordered_set<const RegistryKey*>& spelled) {
    std::vector<const RegistryKey*> chain;
    for (const RegistryKey* key = block.key.get(); key->Parent() != nullptr; key = key->Parent()) {
        chain.push_back(key);
    }
    const std::vector<qm::wstring_view> names = SpelledNames(block.text);
    bool same = names.size() == chain.size();
    for (size_t i = 0; i < chain.size(); ++i) {
        const RegistryKey* key = chain[chain.size() - 1 - i];
        if (spelled.insert(key).second && same && names[i] != key->Name()) {
            same = false;
        }
    }
    return same;
}

}  // namespace

std::optional<RegFile::Rendering> RegFile::Render() const {
    if (m_root->Revision() == m_revision) {
        return Rendering{m_bytes, m_blocks};
    }
    const bool utf8 = m_encoding != TextEncoding::utf16le_bom;
    Rendering rendering;
    std::vector<Block>& out = rendering.blocks;
    std::unordered_set<const RegistryKey*> placed;
    for (size_t i = 0; i < m_blocks.size(); ++i) {
        const Block& block = m_blocks[i];
        if (!block.key) {
            if (i == 0) {
                out.push_back(block);  // the header; [-key] lines have done their work
            }
            continue;
        }
        if (block.key->IsDeleted() || !placed.insert(block.key.get()).second) {
            continue;
        }
        if (!block.key->Edited()) {
            out.push_back(block);
            continue;
        }
        std::optional<qm::wstring> text = RenderKeyBlock(*block.key, m_lineEnding, utf8);
        if (!text) {
            return std::nullopt;
        }
        out.push_back({block.key, std::move(*text)});
    }

    // Keys without a block need one when nothing below them implies them, or to hold values.
    const std::vector<std::shared_ptr<RegistryKey>> order = TreeOrder(m_root);
    std::unordered_set<const RegistryKey*> implied;  // a block exists in their sub-tree
    std::unordered_set<const RegistryKey*> needBlock;
    for (auto it = order.rbegin(); it != order.rend(); ++it) {
        const RegistryKey* key = it->get();
        const bool isRoot = key == m_root.get();
        if (placed.contains(key)) {
            implied.insert(key);
        } else if (!key->Values().empty() ||
                   (!isRoot && (key->Edited() || !implied.contains(key)))) {
            needBlock.insert(key);
            implied.insert(key);
        }
        if (implied.contains(key) && !isRoot) {
            implied.insert(key->Parent());
        }
    }
    for (const std::shared_ptr<RegistryKey>& key : order) {
        if (!needBlock.contains(key.get())) {
            continue;
        }
        std::optional<qm::wstring> text = RenderKeyBlock(*key, m_lineEnding, utf8);
        if (!text) {
            return std::nullopt;
        }
        const size_t position = NewBlockPosition(out, *key);
        qm::wstring& before = out[position - 1].text;
        if (!before.empty() && before.back() == u'\r') {
            before += u'\n';  // the file ended between CR and LF
        } else if (!before.empty() && before.back() != u'\n') {
            before += m_lineEnding;
        }
        out.insert(out.begin() + static_cast<long>(position), Block{key, std::move(*text)});
    }
    // Reading the file back names each key as the first block that mentions it spells it. A
    // kept block whose spelling differs from the tree's (its first mention was dropped) is
    // written afresh.
    std::unordered_set<const RegistryKey*> spelled;
    for (Block& block : out) {
        if (!block.key || SpellsFirstMentionsAsTree(block, spelled)) {
            continue;
        }
        std::optional<qm::wstring> fresh = RenderKeyBlock(*block.key, m_lineEnding, utf8);
        if (!fresh) {
            return std::nullopt;
        }
        block.text = std::move(*fresh);
    }
    qm::wstring text;
    for (const Block& block : out) {
        text += block.text;
    }
    std::optional<std::vector<std::byte>> bytes = EncodeText(text, m_encoding);
    if (!bytes) {
        return std::nullopt;
    }
    rendering.bytes = std::move(*bytes);
    return rendering;
}

std::optional<std::vector<std::byte>> RegFile::RenderAll() const {
    const bool utf8 = m_encoding != TextEncoding::utf16le_bom;
    qm::wstring text(kHeader);
    text += m_lineEnding;
    text += m_lineEnding;
    for (const std::shared_ptr<RegistryKey>& key : TreeOrder(m_root)) {
        if (key == m_root && key->Values().empty()) {
            continue;
        }
        std::optional<qm::wstring> block = RenderKeyBlock(*key, m_lineEnding, utf8);
        if (!block) {
            return std::nullopt;
        }
        text += *block;
    }
    return EncodeText(text, m_encoding);
}

void RegFile::Adopt(Rendering rendering) {
    m_bytes = std::move(rendering.bytes);
    m_blocks = std::move(rendering.blocks);
    for (const std::shared_ptr<RegistryKey>& key : TreeOrder(m_root)) {
        key->SetEdited(false);
    }
    m_revision = m_root->Revision();
}

}  // namespace webrig::sim
