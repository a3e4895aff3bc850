// Parses arbitrary bytes as a settings file and checks it against a plain, slow reading of the
// same line rules, and checks what every reader of the file relies on: each listed entry is found
// again with its value, names come sorted and unique, passwords descramble without trouble.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <span>
#include <vector>

#include "settings/password_scrambling.h"
#include "settings/settings_file.h"

namespace {

// Bytes 0x80 and up become U+0400 onwards, so non-ASCII ANSI text takes a path of its own.
class FuzzCodePage final : public webrig::platform::AnsiCodePage {
  public:
    uint32_t Number() override { return 1251; }
    qm::wstring ToWide(std::span<const std::byte> bytes) override {
        qm::wstring text(bytes.size(), u'\0');
        for (size_t i = 0; i < bytes.size(); ++i) {
            const auto value = std::to_integer<unsigned>(bytes[i]);
            text[i] = static_cast<char16_t>(value < 0x80 ? value : 0x0400 + value - 0x80);
        }
        return text;
    }
    std::string FromWide(qm::wstring_view text) override {
        std::string bytes;
        for (const char16_t c : text) {
            bytes += c < 0x80 ? static_cast<char>(c) : '?';
        }
        return bytes;
    }
};

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

using Sections = std::map<qm::wstring, std::map<qm::wstring, qm::wstring>>;

qm::wstring Trim(qm::wstring_view text) {
    const auto first = text.find_first_not_of(u" \t\n");
    if (first == qm::wstring_view::npos) {
        return {};
    }
    return qm::wstring(text.substr(first, text.find_last_not_of(u" \t\n") - first + 1));
}

// The line rules read as literally as possible, with std::map and copied strings.
Sections ReadLiterally(qm::wstring text) {
    if (text.empty() || text.back() != u'\n') {
        text += u'\n';
    }
    Sections sections;
    Sections::mapped_type* current = nullptr;
    size_t start = 0;
    // The next "\r\n" at or after `start`, searched again only once a line has passed it.
    size_t crLf = text.find(u"\r\n");
    while (start < text.size()) {
        if (crLf != qm::wstring::npos && crLf < start) {
            crLf = text.find(u"\r\n", start);
        }
        size_t end = crLf;
        size_t next = end + 2;
        if (end == qm::wstring::npos) {
            end = text.find(u'\n', start);
            next = end + 1;
        }
        const qm::wstring line = Trim(qm::wstring_view(text).substr(start, end - start));
        start = next;
        if (line.empty() || line[0] == u';') {
            continue;
        }
        const size_t close = line[0] == u'[' ? line.find(u']', 1) : qm::wstring::npos;
        if (close != qm::wstring::npos) {
            current = &sections[line.substr(1, close - 1)];
            current->clear();
            continue;
        }
        const size_t equals = line.find(u'=');
        if (equals != qm::wstring::npos && current != nullptr) {
            (*current)[Trim(qm::wstring_view(line).substr(0, equals))] = line.substr(equals + 1);
        }
    }
    return sections;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzCodePage ansi;
    const std::span<const std::byte> bytes(reinterpret_cast<const std::byte*>(data), size);
    const qm::wstring decoded = webrig::settings::DecodeSettingsText(bytes, ansi);
    // The file owns its own copy of the text, moved here to exercise the move.
    auto parsed = webrig::settings::SettingsFile::Parse(bytes, ansi);
    const webrig::settings::SettingsFile file = std::move(parsed);

    const Sections expected = ReadLiterally(decoded);
    for (const auto& [section, expectedEntries] : expected) {
        Require(file.HasSection(section));
        const auto entries = file.Entries(section);
        Require(entries.size() == expectedEntries.size());
        auto expectedEntry = expectedEntries.begin();
        for (size_t i = 0; i < entries.size(); ++i, ++expectedEntry) {
            const auto& [name, value] = entries[i];
            Require(name == expectedEntry->first && value == expectedEntry->second);
            Require(i == 0 || entries[i - 1].first < name);
            const auto found = file.Find(section, name);
            Require(found.has_value() && found->data() == value.data() &&
                    found->size() == value.size());
            Require(name.find(u'=') == qm::wstring_view::npos);
            Require(name.empty() || (name.front() != u' ' && name.back() != u'\t' &&
                                     name.back() != u' ' && name.back() != u'\n'));
            Require(value.empty() ||
                    (value.back() != u' ' && value.back() != u'\t' && value.back() != u'\n'));
            const qm::wstring password = webrig::settings::DescramblePassword(value, ansi);
            Require(password.size() <=
                    (value.size() + 1) / 2);  // an odd last byte is a character too
            Require(password.find(u'\0') == qm::wstring::npos);
            const qm::wstring rescrambled = webrig::settings::ScramblePassword(value, ansi);
            Require(webrig::settings::DescramblePassword(rescrambled, ansi) ==
                    value.substr(0, value.find(u'\0')));
        }
    }
    // A section the literal reading does not have is not there either. Header-like text is the
    // likeliest place for a wrong one.
    int looked = 0;
    for (size_t open = decoded.find(u'['); open != qm::wstring::npos && ++looked <= 256;
         open = decoded.find(u'[', open + 1)) {
        const size_t close = decoded.find(u']', open + 1);
        if (close == qm::wstring::npos) {
            break;
        }
        const qm::wstring name = decoded.substr(open + 1, close - open - 1);
        Require(file.HasSection(name) == expected.contains(name));
    }
    return 0;
}
