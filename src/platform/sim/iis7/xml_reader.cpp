#include "platform/sim/iis7/xml_reader.h"

#include <algorithm>
#include <cstring>

namespace webrig::sim::iis7 {
namespace {

bool IsSpace(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool IsNameStart(unsigned char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c == ':' || c >= 0x80;
}

bool IsNameChar(unsigned char c) {
    return IsNameStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

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

class Reader {
  public:
    explicit Reader(const std::string& text) : m_text(text) {}

    XmlDocument Read() {
        XmlDocument document;
        size_t start = 0;
        if (m_text.compare(0, 3, "\xEF\xBB\xBF") == 0) {
            document.byteOrderMark = true;
            start = 3;
        } else if (m_text.size() >= 2 && ((m_text[0] == '\xFF' && m_text[1] == '\xFE') ||
                                          (m_text[0] == '\xFE' && m_text[1] == '\xFF'))) {
            Fail(1, "the file is UTF-16; configuration files are read as UTF-8");
        }
        CheckEncoding(start);
        m_pos = start;
        auto root = NewXmlElement({});
        root->selfClosing = false;
        bool seenElement = false;
        while (m_pos < m_text.size()) {
            const size_t begin = m_pos;
            if (m_text[m_pos] != '<') {
                while (m_pos < m_text.size() && m_text[m_pos] != '<') {
                    if (!IsSpace(m_text[m_pos])) {
                        Fail(LineAt(m_pos), "text outside the root element");
                    }
                    ++m_pos;
                }
                root->children.push_back({nullptr, m_text.substr(begin, m_pos - begin)});
                continue;
            }
            if (Peek("<?")) {
                const bool declaration =
                    Peek("<?xml") && m_pos + 5 < m_text.size() && IsSpace(m_text[m_pos + 5]);
                if (declaration && (begin != start || seenElement)) {
                    Fail(LineAt(m_pos), "the XML declaration must come first");
                }
                SkipProcessingInstruction();
            } else if (Peek("<!--")) {
                SkipComment();
            } else if (Peek("<!DOCTYPE")) {
                if (seenElement) {
                    Fail(LineAt(m_pos), "a document type declaration after the root element");
                }
                SkipDoctype();
            } else {
                if (seenElement) {
                    Fail(LineAt(m_pos), "a second root element");
                }
                seenElement = true;
                std::string indent;
                root->children.push_back({ReadElement(indent), {}});
                continue;
            }
            root->children.push_back({nullptr, m_text.substr(begin, m_pos - begin)});
        }
        if (!seenElement) {
            Fail(LineAt(m_pos), "the file holds no root element");
        }
        document.root = std::move(root);
        if (m_text.find("\r\n") == std::string::npos && m_text.find('\n') != std::string::npos) {
            document.layout.newline = "\n";
        }
        if (!m_firstChildIndent.empty()) {
            document.layout.indentUnit = m_firstChildIndent;
        }
        return document;
    }

  private:
    [[noreturn]] void Fail(int line, const std::string& message) const {
        throw XmlSyntaxError(line, message);
    }

    // Lines are counted forward from the last position asked about.
    int LineAt(size_t offset) {
        if (offset < m_lineOffset) {
            m_lineOffset = 0;
            m_line = 1;
        }
        offset = std::min(offset, m_text.size());
        m_line += static_cast<int>(
            std::count(m_text.begin() + static_cast<std::ptrdiff_t>(m_lineOffset),
                       m_text.begin() + static_cast<std::ptrdiff_t>(offset), '\n'));
        m_lineOffset = offset;
        return m_line;
    }

    bool Peek(std::string_view what) const { return m_text.compare(m_pos, what.size(), what) == 0; }

    void Expect(char c, const char* what) {
        if (m_pos >= m_text.size()) {
            Fail(LineAt(m_pos), std::string("the file ends where ") + what + " should be");
        }
        if (m_text[m_pos] != c) {
            Fail(LineAt(m_pos), std::string("expected ") + what);
        }
        ++m_pos;
    }

    void SkipTo(std::string_view terminator, const char* what) {
        const size_t end = m_text.find(terminator, m_pos);
        if (end == std::string::npos) {
            Fail(LineAt(m_text.size()), std::string("the file ends inside ") + what);
        }
        m_pos = end + terminator.size();
    }

    void SkipComment() {
        const size_t begin = m_pos;
        m_pos += 4;
        SkipTo("--", "a comment");
        if (m_pos >= m_text.size() || m_text[m_pos] != '>') {
            Fail(LineAt(begin), "\"--\" inside a comment");
        }
        ++m_pos;
    }

    void SkipProcessingInstruction() {
        m_pos += 2;
        if (m_pos >= m_text.size() || !IsNameStart(static_cast<unsigned char>(m_text[m_pos]))) {
            Fail(LineAt(m_pos), "a processing instruction without a target");
        }
        SkipTo("?>", "a processing instruction");
    }

    void SkipDoctype() {
        const size_t begin = m_pos;
        m_pos += 9;
        while (m_pos < m_text.size() && m_text[m_pos] != '>') {
            if (m_text[m_pos] == '[') {
                Fail(LineAt(begin), "a document type declaration with an internal subset");
            }
            ++m_pos;
        }
        Expect('>', "the end of the document type declaration");
    }

    std::string_view ReadName() {
        const size_t begin = m_pos;
        if (m_pos >= m_text.size() || !IsNameStart(static_cast<unsigned char>(m_text[m_pos]))) {
            Fail(LineAt(m_pos), m_pos >= m_text.size() ? "the file ends where a name should be"
                                                       : "expected a name");
        }
        while (m_pos < m_text.size() && IsNameChar(static_cast<unsigned char>(m_text[m_pos]))) {
            ++m_pos;
        }
        return std::string_view(m_text).substr(begin, m_pos - begin);
    }

    void SkipSpace() {
        while (m_pos < m_text.size() && IsSpace(m_text[m_pos])) {
            ++m_pos;
        }
    }

    // "&amp;" and the other references, at m_pos.
    void ReadReference(std::string& out) {
        const size_t begin = m_pos;
        const size_t end = m_text.find(';', m_pos);
        if (end == std::string::npos || end - m_pos > 12) {
            Fail(LineAt(begin), "a bad character or entity reference");
        }
        const std::string_view name = std::string_view(m_text).substr(m_pos + 1, end - m_pos - 1);
        m_pos = end + 1;
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

    XmlAttribute ReadAttribute(size_t leadBegin) {
        XmlAttribute attribute;
        attribute.lead = std::string_view(m_text).substr(leadBegin, m_pos - leadBegin);
        attribute.name = std::string(ReadName());
        SkipSpace();
        Expect('=', "\"=\" after an attribute name");
        SkipSpace();
        if (m_pos >= m_text.size() || (m_text[m_pos] != '"' && m_text[m_pos] != '\'')) {
            Fail(LineAt(m_pos), "an attribute value without quotes");
        }
        attribute.quote = m_text[m_pos++];
        const size_t valueBegin = m_pos;
        while (true) {
            const size_t stop = m_text.find_first_of(
                std::string{attribute.quote, '&', '<', '\t', '\n', '\r'}, m_pos);
            if (stop == std::string::npos) {
                Fail(LineAt(valueBegin), "the file ends inside an attribute value");
            }
            attribute.value.append(m_text, m_pos, stop - m_pos);
            m_pos = stop;
            const char c = m_text[m_pos];
            if (c == attribute.quote) {
                ++m_pos;
                break;
            }
            if (c == '<') {
                Fail(LineAt(m_pos), "\"<\" inside an attribute value");
            }
            if (c == '&') {
                ReadReference(attribute.value);
                continue;
            }
            // Line breaks and tabs written as such read as spaces; "\r\n" is one break.
            if (c == '\r' && m_pos + 1 < m_text.size() && m_text[m_pos + 1] == '\n') {
                ++m_pos;
            }
            attribute.value += ' ';
            ++m_pos;
        }
        attribute.written = std::string_view(m_text).substr(leadBegin, m_pos - leadBegin);
        return attribute;
    }

    XmlElementPtr ReadElement(const std::string& indent) {
        const size_t begin = m_pos;
        ++m_pos;
        auto element = std::make_shared<XmlElement>();
        element->id = NewXmlElementId();
        element->line = LineAt(begin);
        element->indent = indent;
        element->name = std::string(ReadName());
        while (true) {
            const size_t spaceBegin = m_pos;
            SkipSpace();
            if (m_pos >= m_text.size()) {
                Fail(LineAt(m_pos),
                     "the file ends inside the start tag of <" + element->name + ">");
            }
            const char c = m_text[m_pos];
            if (c == '>' || c == '/') {
                element->tagTail = std::string_view(m_text).substr(spaceBegin, m_pos - spaceBegin);
                break;
            }
            if (m_pos == spaceBegin) {
                Fail(LineAt(m_pos), "attributes must be separated by white space");
            }
            XmlAttribute attribute = ReadAttribute(spaceBegin);
            if (element->FindAttribute(attribute.name)) {
                Fail(LineAt(m_pos),
                     "the attribute \"" + attribute.name + "\" appears twice in one element");
            }
            element->attributes.push_back(std::move(attribute));
        }
        if (m_text[m_pos] == '/') {
            ++m_pos;
            Expect('>', "\">\" after \"/\"");
            element->written = std::string_view(m_text).substr(begin, m_pos - begin);
            return element;
        }
        ++m_pos;
        element->selfClosing = false;
        ReadContent(*element);
        element->written = std::string_view(m_text).substr(begin, m_pos - begin);
        return element;
    }

    // Children up to and including the end tag.
    void ReadContent(XmlElement& element) {
        while (true) {
            const size_t begin = m_pos;
            if (m_pos >= m_text.size()) {
                Fail(LineAt(m_pos), "the file ends before </" + element.name + ">");
            }
            if (m_text[m_pos] != '<') {
                const size_t stop = m_text.find('<', m_pos);
                m_pos = stop == std::string::npos ? m_text.size() : stop;
                CheckText(begin, m_pos);
                element.children.push_back({nullptr, m_text.substr(begin, m_pos - begin)});
                continue;
            }
            if (Peek("</")) {
                m_pos += 2;
                const std::string_view name = ReadName();
                if (name != element.name) {
                    Fail(LineAt(begin),
                         "</" + std::string(name) + "> closes <" + element.name + ">");
                }
                SkipSpace();
                Expect('>', "\">\" to end the end tag");
                element.endTag = std::string_view(m_text).substr(begin, m_pos - begin);
                return;
            }
            if (Peek("<!--")) {
                SkipComment();
            } else if (Peek("<![CDATA[")) {
                SkipTo("]]>", "a CDATA section");
            } else if (Peek("<?")) {
                SkipProcessingInstruction();
            } else if (Peek("<!")) {
                Fail(LineAt(m_pos), "a declaration inside an element");
            } else {
                std::string indent;
                if (!element.children.empty() && !element.children.back().element) {
                    const std::string& markup = element.children.back().markup;
                    const size_t newline = markup.rfind('\n');
                    if (newline != std::string::npos &&
                        markup.find_first_not_of(" \t", newline + 1) == std::string::npos) {
                        indent = markup.substr(newline + 1);
                    }
                }
                if (m_firstChildIndent.empty() && element.indent.empty() && !indent.empty()) {
                    m_firstChildIndent = indent;
                }
                element.children.push_back({ReadElement(indent), {}});
                continue;
            }
            element.children.push_back({nullptr, m_text.substr(begin, m_pos - begin)});
        }
    }

    // Character data: references must be well-formed, "]]>" may not appear.
    void CheckText(size_t begin, size_t end) {
        for (size_t i = begin; i < end; ++i) {
            if (m_text[i] == '&') {
                const size_t saved = m_pos;
                m_pos = i;
                std::string ignored;
                ReadReference(ignored);
                i = m_pos - 1;
                m_pos = saved;
            } else if (m_text[i] == '>' && i >= begin + 2 && m_text[i - 1] == ']' &&
                       m_text[i - 2] == ']') {
                Fail(LineAt(i), "\"]]>\" in text");
            }
        }
    }

    // Valid UTF-8 holding only characters XML allows.
    void CheckEncoding(size_t start) {
        const auto* bytes = reinterpret_cast<const unsigned char*>(m_text.data());
        const size_t size = m_text.size();
        size_t i = start;
        while (i < size) {
            const unsigned char lead = bytes[i];
            if (lead >= 0x20 && lead < 0x80) {
                ++i;
                continue;
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
                Fail(LineAt(i), "the file is not valid UTF-8");
            }
            if (i + length > size) {
                Fail(LineAt(i), "the file is not valid UTF-8");
            }
            for (size_t k = 1; k < length; ++k) {
                if ((bytes[i + k] & 0xC0) != 0x80) {
                    Fail(LineAt(i), "the file is not valid UTF-8");
                }
                code = (code << 6) | (bytes[i + k] & 0x3Fu);
            }
            const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
            if (overlong || !IsXmlChar(code)) {
                Fail(LineAt(i), "a character XML does not allow");
            }
            i += length;
        }
    }

    const std::string& m_text;
    size_t m_pos = 0;
    size_t m_lineOffset = 0;
    int m_line = 1;
    std::string m_firstChildIndent;
};

}  // namespace

XmlDocument ReadXml(std::shared_ptr<const std::string> text) {
    XmlDocument document = Reader(*text).Read();
    document.text = std::move(text);
    return document;
}

}  // namespace webrig::sim::iis7
