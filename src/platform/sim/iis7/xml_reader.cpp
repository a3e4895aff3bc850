#include "platform/sim/iis7/xml_reader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace webrig::sim::iis7 {
namespace {

bool IsSpace(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// Name characters as configuration files use them: ASCII letters, digits, "_", ":", "-", ".",
// and every byte of a multi-byte character.
constexpr std::array<bool, 256> kNameStarts = [] {
    std::array<bool, 256> starts{};
    for (int c = 0; c < 256; ++c) {
        starts[c] =
            (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c == ':' || c >= 0x80;
    }
    return starts;
}();

constexpr std::array<bool, 256> kNameChars = [] {
    std::array<bool, 256> chars = kNameStarts;
    for (const char c : {'0', '1', '2', '3', '4', '5', '6', '7', '8', '9', '-', '.'}) {
        chars[static_cast<unsigned char>(c)] = true;
    }
    return chars;
}();

bool IsNameStart(char c) {
    return kNameStarts[static_cast<unsigned char>(c)];
}

bool IsNameChar(char c) {
    return kNameChars[static_cast<unsigned char>(c)];
}

// Characters that end the plain part of an attribute value.
constexpr std::array<bool, 256> kValueStops = [] {
    std::array<bool, 256> stops{};
    for (const char c : {'"', '\'', '&', '<', '\t', '\n', '\r'}) {
        stops[static_cast<unsigned char>(c)] = true;
    }
    return stops;
}();

void AppendUtf8(uint32_t code, std::string& out) {
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | (code >> 6));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        out += static_cast<char>(0xE0 | (code >> 12));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (code >> 18));
        out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

// Characters XML allows in a document.
bool IsXmlChar(uint32_t code) {
    return code == 0x9 || code == 0xA || code == 0xD || (code >= 0x20 && code <= 0xD7FF) ||
           (code >= 0xE000 && code <= 0xFFFD) || (code >= 0x10000 && code <= 0x10FFFF);
}

// Reads the whole text into the store in one pass, keeping the elements that are still open on
// a stack of its own (nesting depth costs no call stack). Every name, value and piece of markup
// is a view into the text; only values whose written form differs from their meaning (references,
// line breaks) are decoded into the store.
class Reader {
  public:
    explicit Reader(XmlStore& store)
        : m_store(store),
          m_begin(store.text().data()),
          m_end(m_begin + store.text().size()),
          m_lineAt(m_begin) {}

    XmlDocument Read(const std::shared_ptr<XmlStore>& owner) {
        XmlDocument document;
        const char* start = m_begin;
        if (Starts(start, "\xEF\xBB\xBF")) {
            document.byteOrderMark = true;
            start += 3;
        } else if (m_end - m_begin >= 2 && ((m_begin[0] == '\xFF' && m_begin[1] == '\xFE') ||
                                            (m_begin[0] == '\xFE' && m_begin[1] == '\xFF'))) {
            Fail(1, "the file is UTF-16; configuration files are read as UTF-8");
        }
        CheckEncoding(start);
        XmlElement* root = NewElement(m_begin);
        root->sourceLength = static_cast<uint32_t>(m_end - m_begin);
        root->selfClosing = false;
        root->topLevel = true;
        const char* p = start;
        const char* markup = start;
        XmlElement* top = nullptr;
        XmlText topMarkup;
        while (p < m_end) {
            if (*p != '<') {
                while (p < m_end && *p != '<') {
                    if (!IsSpace(*p)) {
                        Fail(LineAt(p), "text outside the root element");
                    }
                    ++p;
                }
                continue;
            }
            if (Starts(p, "<?")) {
                const bool declaration = Starts(p, "<?xml") && p + 5 < m_end && IsSpace(p[5]);
                if (declaration && (p != start || top)) {
                    Fail(LineAt(p), "the XML declaration must come first");
                }
                SkipProcessingInstruction(p);
            } else if (Starts(p, "<!--")) {
                SkipComment(p);
            } else if (Starts(p, "<!DOCTYPE")) {
                if (top) {
                    Fail(LineAt(p), "a document type declaration after the root element");
                }
                SkipDoctype(p);
            } else {
                if (top) {
                    Fail(LineAt(p), "a second root element");
                }
                topMarkup = Span(markup, p);
                top = ReadTree(p);
                markup = p;
            }
        }
        if (!top) {
            Fail(LineAt(p), "the file holds no root element");
        }
        SetTrailing(*root, markup, m_end);
        auto* children = m_store.Allocate<XmlChild>(1);
        new (children) XmlChild{XmlStore::Pointer(top), topMarkup};
        root->children = XmlList<XmlChild>::InStore(children, 1);
        document.root = XmlElementPtr(owner, root);
        const std::string_view text(m_begin, static_cast<size_t>(m_end - m_begin));
        if (text.find("\r\n") == std::string_view::npos &&
            text.find('\n') != std::string_view::npos) {
            document.layout.newline = "\n";
        }
        if (!m_firstChildIndent.empty()) {
            document.layout.indentUnit = std::string(m_firstChildIndent);
        }
        return document;
    }

  private:
    // An element whose end tag is still to come.
    struct Open {
        XmlElement* element;
        size_t firstChild;  // in m_children
        XmlText markup;     // before it, in its parent
    };

    [[noreturn]] void Fail(int line, const std::string& message) const {
        throw XmlSyntaxError(line, message);
    }

    // Lines are counted forward from the last position asked about.
    int LineAt(const char* at) {
        at = std::min(at, m_end);
        if (at < m_lineAt) {
            m_lineAt = m_begin;
            m_line = 1;
        }
        m_line += static_cast<int>(CountLineBreaks(m_lineAt, at));
        m_lineAt = at;
        return m_line;
    }

    // "\n" in [begin, end), eight bytes at a time.
    static size_t CountLineBreaks(const char* begin, const char* end) {
        size_t count = 0;
        uint64_t word = 0;
        for (; end - begin >= 8; begin += 8) {
            std::memcpy(&word, begin, 8);
            count += LineBreaksIn(word);
        }
        // The last bytes in a word whose other bytes are zero, which is no line break.
        word = 0;
        std::memcpy(&word, begin, static_cast<size_t>(end - begin));
        return count + LineBreaksIn(word);
    }

    static size_t LineBreaksIn(uint64_t word) {
        constexpr uint64_t kOnes = 0x0101010101010101ull;
        constexpr uint64_t kLow7 = 0x7F7F7F7F7F7F7F7Full;
        word ^= kOnes * '\n';
        // One in each byte that was a line break, none in the others; the multiplication adds
        // the bytes up in the top one.
        const uint64_t found = ~(((word & kLow7) + kLow7) | word | kLow7) >> 7;
        return static_cast<size_t>((found * kOnes) >> 56);
    }

    static XmlText Span(const char* begin, const char* end) {
        return XmlText(begin, static_cast<size_t>(end - begin));
    }

    bool Starts(const char* at, std::string_view what) const {
        return static_cast<size_t>(m_end - at) >= what.size() &&
               std::memcmp(at, what.data(), what.size()) == 0;
    }

    XmlElement* NewElement(const char* source) {
        if (m_nextId == m_idsEnd) {
            constexpr uint64_t kBlock = 4096;
            m_nextId = NewXmlElementIds(kBlock);
            m_idsEnd = m_nextId + kBlock;
        }
        auto* element = new (m_store.Allocate<XmlElement>(1)) XmlElement();
        element->id = m_nextId++;
        element->source = source;
        return element;
    }

    void Expect(const char*& p, char c, const char* what) {
        if (p >= m_end) {
            Fail(LineAt(p), std::string("the file ends where ") + what + " should be");
        }
        if (*p != c) {
            Fail(LineAt(p), std::string("expected ") + what);
        }
        ++p;
    }

    void SkipTo(const char*& p, std::string_view terminator, const char* what) {
        const std::string_view rest(p, static_cast<size_t>(m_end - p));
        const size_t end = rest.find(terminator);
        if (end == std::string_view::npos) {
            Fail(LineAt(m_end), std::string("the file ends inside ") + what);
        }
        p += end + terminator.size();
    }

    void SkipComment(const char*& p) {
        const char* begin = p;
        p += 4;
        SkipTo(p, "--", "a comment");
        if (p >= m_end || *p != '>') {
            Fail(LineAt(begin), "\"--\" inside a comment");
        }
        ++p;
    }

    void SkipProcessingInstruction(const char*& p) {
        p += 2;
        if (p >= m_end || !IsNameStart(*p)) {
            Fail(LineAt(p), "a processing instruction without a target");
        }
        SkipTo(p, "?>", "a processing instruction");
    }

    void SkipDoctype(const char*& p) {
        const char* begin = p;
        p += 9;
        while (p < m_end && *p != '>') {
            if (*p == '[') {
                Fail(LineAt(begin), "a document type declaration with an internal subset");
            }
            ++p;
        }
        Expect(p, '>', "the end of the document type declaration");
    }

    XmlText ReadName(const char*& p) {
        const char* begin = p;
        if (p >= m_end || !IsNameStart(*p)) {
            Fail(LineAt(p),
                 p >= m_end ? "the file ends where a name should be" : "expected a name");
        }
        ++p;
        while (p < m_end && IsNameChar(*p)) {
            ++p;
        }
        return Span(begin, p);
    }

    void SkipSpace(const char*& p) const {
        while (p < m_end && IsSpace(*p)) {
            ++p;
        }
    }

    // "&amp;" and the other references, at p.
    void ReadReference(const char*& p, std::string& out) {
        const char* begin = p;
        const auto* end = static_cast<const char*>(
            std::memchr(p, ';', static_cast<size_t>(std::min<ptrdiff_t>(m_end - p, 13))));
        if (!end) {
            Fail(LineAt(begin), "a bad character or entity reference");
        }
        const std::string_view name(p + 1, static_cast<size_t>(end - p - 1));
        p = end + 1;
        if (name == "lt") {
            out += '<';
        } else if (name == "gt") {
            out += '>';
        } else if (name == "amp") {
            out += '&';
        } else if (name == "quot") {
            out += '"';
        } else if (name == "apos") {
            out += '\'';
        } else if (name.size() >= 2 && name[0] == '#') {
            const bool hex = name[1] == 'x';
            const std::string_view digits = name.substr(hex ? 2 : 1);
            uint32_t code = 0;
            bool valid = !digits.empty();
            for (const char c : digits) {
                uint32_t digit = 0;
                if (c >= '0' && c <= '9') {
                    digit = static_cast<uint32_t>(c - '0');
                } else if (hex && c >= 'a' && c <= 'f') {
                    digit = static_cast<uint32_t>(c - 'a' + 10);
                } else if (hex && c >= 'A' && c <= 'F') {
                    digit = static_cast<uint32_t>(c - 'A' + 10);
                } else {
                    valid = false;
                    break;
                }
                code = code * (hex ? 16 : 10) + digit;
                if (code > 0x10FFFF) {
                    valid = false;
                    break;
                }
            }
            if (!valid || !IsXmlChar(code)) {
                Fail(LineAt(begin), "a bad character reference");
            }
            AppendUtf8(code, out);
        } else {
            Fail(LineAt(begin), "an unknown entity \"&" + std::string(name) + ";\"");
        }
    }

    XmlAttribute ReadAttribute(const char*& p) {
        XmlAttribute attribute;
        attribute.inText = true;
        attribute.asWritten = true;
        attribute.SetName(ReadName(p));
        SkipSpace(p);
        Expect(p, '=', "\"=\" after an attribute name");
        SkipSpace(p);
        if (p >= m_end || (*p != '"' && *p != '\'')) {
            Fail(LineAt(p), "an attribute value without quotes");
        }
        const char quote = *p++;
        attribute.quote = quote;
        const char* valueBegin = p;
        while (p < m_end && !kValueStops[static_cast<unsigned char>(*p)]) {
            ++p;
        }
        if (p < m_end && *p == quote) {
            // Read as written: the value is the text itself.
            attribute.value = Span(valueBegin, p++);
            return attribute;
        }
        std::string& value = m_decoded;
        value.assign(valueBegin, p);
        while (true) {
            if (p >= m_end) {
                Fail(LineAt(valueBegin), "the file ends inside an attribute value");
            }
            const char c = *p;
            if (c == quote) {
                ++p;
                break;
            }
            if (c == '<') {
                Fail(LineAt(p), "\"<\" inside an attribute value");
            }
            if (c == '&') {
                ReadReference(p, value);
            } else if (c == '\t' || c == '\n' || c == '\r') {
                // Line breaks and tabs written as such read as spaces; "\r\n" is one break.
                if (c == '\r' && p + 1 < m_end && p[1] == '\n') {
                    ++p;
                }
                value += ' ';
                ++p;
            } else {
                value += c;
                ++p;
            }
        }
        char* copy = m_store.Allocate<char>(value.size());
        std::memcpy(copy, value.data(), value.size());
        attribute.value = XmlText(copy, value.size());
        return attribute;
    }

    // A start tag at p; p ends after its ">" or "/>".
    XmlElement* ReadStartTag(const char*& p) {
        const char* begin = p;
        XmlElement* element = NewElement(begin);
        element->line = LineAt(begin);
        ++p;
        element->name = ReadName(p);
        m_attributes.clear();
        while (true) {
            const char* space = p;
            SkipSpace(p);
            if (p >= m_end) {
                Fail(LineAt(p), "the file ends inside the start tag of <" + element->name + ">");
            }
            if (*p == '>' || *p == '/') {
                break;
            }
            if (p == space) {
                Fail(LineAt(p), "attributes must be separated by white space");
            }
            XmlAttribute attribute = ReadAttribute(p);
            for (const XmlAttribute& earlier : m_attributes) {
                if (earlier.Name() == attribute.Name()) {
                    Fail(LineAt(p),
                         "the attribute \"" + attribute.Name() + "\" appears twice in one element");
                }
            }
            m_attributes.push_back(attribute);
        }
        if (!m_attributes.empty()) {
            auto* attributes = m_store.Allocate<XmlAttribute>(m_attributes.size());
            std::uninitialized_copy(m_attributes.begin(), m_attributes.end(), attributes);
            element->attributes = XmlList<XmlAttribute>::InStore(attributes, m_attributes.size());
        }
        if (*p == '/') {
            ++p;
            Expect(p, '>', "\">\" after \"/\"");
            Finish(*element, p);
            return element;
        }
        ++p;
        element->selfClosing = false;
        return element;
    }

    static void SetTrailing(XmlElement& element, const char* begin, const char* end) {
        element.trailingOffset = static_cast<uint32_t>(begin - element.source);
        element.trailingLength = static_cast<uint32_t>(end - begin);
    }

    void Finish(XmlElement& element, const char* end) {
        element.sourceLength = static_cast<uint32_t>(end - element.source);
        element.asWritten = true;
    }

    // The white space before `at` that follows a line break.
    static std::string_view IndentBefore(const char* at) {
        const char* start = at;
        while (start[-1] == ' ' || start[-1] == '\t') {
            --start;
        }
        return start[-1] == '\n' ? std::string_view(start, static_cast<size_t>(at - start))
                                 : std::string_view();
    }

    // The indentation the file uses: that of the first child of an element that is not
    // indented itself.
    void NoteIndent(const XmlElement& parent, const char* child) {
        if (!m_firstChildIndent.empty()) {
            return;
        }
        const bool parentIndented = !parent.topLevel && !IndentBefore(parent.source).empty();
        if (!parentIndented) {
            m_firstChildIndent = IndentBefore(child);
        }
    }

    // The document element and everything in it, from its "<" at p.
    XmlElement* ReadTree(const char*& p) {
        XmlElement* top = ReadStartTag(p);
        top->topLevel = true;
        if (top->selfClosing) {
            return top;
        }
        m_open.clear();
        m_children.clear();
        m_open.push_back({top, 0, {}});
        const char* markup = p;
        while (true) {
            Open& open = m_open.back();
            const char* text = p;
            p = static_cast<const char*>(std::memchr(p, '<', static_cast<size_t>(m_end - p)));
            if (!p) {
                p = m_end;
            }
            if (p != text) {
                CheckText(text, p);
            }
            if (p >= m_end) {
                Fail(LineAt(p), "the file ends before </" + open.element->name + ">");
            }
            if (Starts(p, "</")) {
                const char* begin = p;
                p += 2;
                const XmlText name = ReadName(p);
                XmlElement& element = *open.element;
                if (name != element.name) {
                    Fail(LineAt(begin), "</" + name + "> closes <" + element.name + ">");
                }
                SkipSpace(p);
                Expect(p, '>', "\">\" to end the end tag");
                SetTrailing(element, markup, begin);
                const size_t count = m_children.size() - open.firstChild;
                if (count != 0) {
                    auto* children = m_store.Allocate<XmlChild>(count);
                    std::uninitialized_copy(
                        m_children.begin() + static_cast<ptrdiff_t>(open.firstChild),
                        m_children.end(), children);
                    element.children = XmlList<XmlChild>::InStore(children, count);
                    m_children.resize(open.firstChild);
                }
                Finish(element, p);
                const XmlText before = open.markup;
                m_open.pop_back();
                if (m_open.empty()) {
                    return &element;
                }
                m_children.push_back({XmlStore::Pointer(&element), before});
                markup = p;
                continue;
            }
            if (Starts(p, "<!--")) {
                SkipComment(p);
            } else if (Starts(p, "<![CDATA[")) {
                SkipTo(p, "]]>", "a CDATA section");
            } else if (Starts(p, "<?")) {
                SkipProcessingInstruction(p);
            } else if (Starts(p, "<!")) {
                Fail(LineAt(p), "a declaration inside an element");
            } else {
                NoteIndent(*open.element, p);
                const XmlText before = Span(markup, p);
                XmlElement* child = ReadStartTag(p);
                if (child->selfClosing) {
                    m_children.push_back({XmlStore::Pointer(child), before});
                } else {
                    m_open.push_back({child, m_children.size(), before});
                }
                markup = p;
            }
        }
    }

    // Character data: references must be well-formed, "]]>" may not appear.
    void CheckText(const char* begin, const char* end) {
        for (const char* at = begin; at < end; ++at) {
            if (*at == '&') {
                const char* reference = at;
                m_decoded.clear();
                ReadReference(reference, m_decoded);
                at = reference - 1;
            } else if (*at == '>' && at >= begin + 2 && at[-1] == ']' && at[-2] == ']') {
                Fail(LineAt(at), "\"]]>\" in text");
            }
        }
    }

    // Valid UTF-8 holding only characters XML allows.
    void CheckEncoding(const char* start) {
        const auto* bytes = reinterpret_cast<const unsigned char*>(start);
        const size_t size = static_cast<size_t>(m_end - start);
        constexpr size_t kBlock = 64;
        size_t i = 0;
        while (i < size) {
            // A block of plain ASCII text (no byte with the high bit set, none below 0x20 but tabs
            // and line breaks) is passed at once; the test has no branches, so it runs as vector
            // code. Other blocks are read character by character.
            const size_t blockEnd = std::min(i + kBlock, size);
            if (blockEnd - i == kBlock) {
                unsigned char unusual = 0;
                for (size_t k = i; k < blockEnd; ++k) {
                    const unsigned char c = bytes[k];
                    unusual |= static_cast<unsigned char>(
                        (c & 0x80) | ((c < 0x20) & (c != '\t') & (c != '\n') & (c != '\r')));
                }
                if (unusual == 0) {
                    i = blockEnd;
                    continue;
                }
            }
            while (i < blockEnd) {
                i += CharacterLength(start, i);
            }
        }
    }

    // The length of the valid character at `start` + `i`.
    size_t CharacterLength(const char* start, size_t i) {
        const auto* bytes = reinterpret_cast<const unsigned char*>(start);
        const size_t size = static_cast<size_t>(m_end - start);
        const unsigned char lead = bytes[i];
        if (lead >= 0x20 && lead < 0x80) {
            return 1;
        }
        uint32_t code = 0;
        size_t length = 1;
        if (lead < 0x80) {
            code = lead;
        } else if (lead >= 0xC2 && lead <= 0xDF) {
            length = 2;
            code = lead & 0x1Fu;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            length = 3;
            code = lead & 0x0Fu;
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            length = 4;
            code = lead & 0x07u;
        } else {
            Fail(LineAt(start + i), "the file is not valid UTF-8");
        }
        if (i + length > size) {
            Fail(LineAt(start + i), "the file is not valid UTF-8");
        }
        for (size_t k = 1; k < length; ++k) {
            if ((bytes[i + k] & 0xC0) != 0x80) {
                Fail(LineAt(start + i), "the file is not valid UTF-8");
            }
            code = (code << 6) | (bytes[i + k] & 0x3Fu);
        }
        const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
        if (overlong || !IsXmlChar(code)) {
            Fail(LineAt(start + i), "a character XML does not allow");
        }
        return length;
    }

    XmlStore& m_store;
    const char* m_begin;
    const char* m_end;
    const char* m_lineAt;
    int m_line = 1;
    uint64_t m_nextId = 0;
    uint64_t m_idsEnd = 0;
    std::string_view m_firstChildIndent;
    std::vector<Open> m_open;
    std::vector<XmlChild> m_children;
    std::vector<XmlAttribute> m_attributes;
    std::string m_decoded;
};

}  // namespace

XmlDocument ReadXml(std::shared_ptr<const std::string> text) {
    // Positions in a document are kept in 32 bits.
    if (text->size() > UINT32_MAX) {
        throw XmlSyntaxError(1, "the file is larger than 4 GB");
    }
    auto store = std::make_shared<XmlStore>(std::move(text));
    return Reader(*store).Read(store);
}

}  // namespace webrig::sim::iis7
