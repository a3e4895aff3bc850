#include "platform/sim/iis7/xml_tree.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <map>
#include <mutex>
#include <stdexcept>
#include <vector>

namespace webrig::sim::iis7 {
namespace {

bool IsSpace(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool IsWhiteSpace(std::string_view text) {
    return std::all_of(text.begin(), text.end(), IsSpace);
}

bool IsLineBreak(std::string_view markup) {
    return IsWhiteSpace(markup) && markup.find('\n') != std::string_view::npos;
}

// Where the last run of character data in `markup` starts: after the last comment, CDATA
// section, processing instruction or declaration (text holds no "<"). `markup` is as the reader
// accepted it, so every one of these is complete.
size_t LastTextRunStart(std::string_view markup) {
    size_t run = 0;
    for (size_t at = markup.find('<'); at != std::string_view::npos; at = markup.find('<', run)) {
        const std::string_view rest = markup.substr(at);
        size_t end = std::string_view::npos;
        if (rest.starts_with("<!--")) {
            end = markup.find("-->", at + 4) + 3;
        } else if (rest.starts_with("<![CDATA[")) {
            end = markup.find("]]>", at + 9) + 3;
        } else if (rest.starts_with("<?")) {
            end = markup.find("?>", at + 2) + 2;
        } else {
            end = markup.find('>', at) + 1;
        }
        run = std::min(end, markup.size());
    }
    return run;
}

// The white space before an element that puts it on its own line, in `markup` before it.
bool EndsWithLineBreak(std::string_view markup) {
    return IsLineBreak(markup.substr(LastTextRunStart(markup)));
}

// An element made by a change. It owns the strings its changes brought, and keeps alive the
// store its other views (and its children, when they lie in a store) point into.
struct ChangedElement final : XmlElement {
    std::shared_ptr<const XmlStore> keep;
    std::vector<std::shared_ptr<const std::string>> strings;
    XmlText indent;
    bool hasIndent = false;
    XmlText trailing;
    bool hasTrailing = false;

    void SetTrailing(std::string_view text) {
        trailing = Own(text);
        hasTrailing = true;
    }

    XmlText Own(std::string_view text) {
        if (text.empty()) {
            return {};
        }
        auto owned = std::make_shared<const std::string>(text);
        strings.push_back(owned);
        return XmlText(*owned);
    }
};

ChangedElement& Changing(XmlElement& element) {
    if (!element.changed) {
        throw std::logic_error("an element that a document holds cannot change");
    }
    return static_cast<ChangedElement&>(element);
}

std::shared_ptr<ChangedElement> CopyOf(const XmlElement& element) {
    auto copy = std::make_shared<ChangedElement>();
    static_cast<XmlElement&>(*copy) = element;
    copy->changed = true;
    copy->asWritten = false;
    if (element.changed) {
        const auto& from = static_cast<const ChangedElement&>(element);
        copy->keep = from.keep;
        copy->strings = from.strings;
        copy->indent = from.indent;
        copy->hasIndent = from.hasIndent;
        copy->trailing = from.trailing;
        copy->hasTrailing = from.hasTrailing;
    } else {
        copy->keep = XmlStore::Holding(element);
        if (!copy->keep) {
            throw std::logic_error("an element of a store nobody holds cannot be copied");
        }
    }
    return copy;
}

// The start tag's white space before ">" or "/>" as the file has it.
std::string_view WrittenTagTail(const XmlElement& element) {
    const char* at = element.source + 1 + element.name.size();
    while (true) {
        const char* space = at;
        while (IsSpace(*at)) {
            ++at;
        }
        if (*at == '>' || *at == '/') {
            return {space, static_cast<size_t>(at - space)};
        }
        // An attribute: its name, "=", white space and a quoted value without its quote inside.
        while (*at != '=') {
            ++at;
        }
        ++at;
        while (IsSpace(*at)) {
            ++at;
        }
        const char quote = *at++;
        while (*at != quote) {
            ++at;
        }
        ++at;
    }
}

bool WrittenSelfClosing(const XmlElement& element) {
    return element.sourceLength >= 2 && element.source[element.sourceLength - 2] == '/';
}

// The end tag as the file has it (an end tag holds no "<").
std::string_view WrittenEndTag(const XmlElement& element) {
    const std::string_view written = element.Written();
    return written.substr(written.rfind('<'));
}

// The indentation of the children of `parent`, from the first one that starts a line.
std::string ChildIndent(const XmlElement& parent, const XmlLayout& layout) {
    for (const XmlChild& child : parent.children) {
        if (EndsWithLineBreak(child.markup)) {
            return std::string(child.markup.substr(child.markup.rfind('\n') + 1));
        }
    }
    return std::string(parent.Indent()) + layout.indentUnit;
}

// Children of new elements were laid out before the element found its place; line them up
// under its indentation now.
void Reindent(ChangedElement& element, const std::string& indent, const XmlLayout& layout) {
    element.indent = element.Own(indent);
    element.hasIndent = true;
    for (XmlChild& child : element.children) {
        // New elements and copies (CloneAsNew) are laid out afresh; nothing else holds them.
        if (child.element->changed) {
            Reindent(Changing(const_cast<XmlElement&>(*child.element)), indent + layout.indentUnit,
                     layout);
        }
        if (IsLineBreak(child.markup)) {
            child.markup = element.Own(layout.newline + indent + layout.indentUnit);
        }
    }
    if (IsLineBreak(element.Trailing())) {
        element.SetTrailing(layout.newline + indent);
    }
}

void AppendStartTag(const XmlElement& element, std::string& out) {
    out += '<';
    out += element.name;
    for (const XmlAttribute& attribute : element.attributes) {
        if (attribute.asWritten) {
            out += attribute.Written();
            continue;
        }
        const std::string_view lead = attribute.Lead();
        if (lead.empty()) {
            out += ' ';
        } else {
            out += lead;
        }
        out += attribute.Name();
        out += '=';
        out += attribute.quote;
        AppendEscapedAttribute(attribute.value, attribute.quote, out);
        out += attribute.quote;
    }
    std::string_view tail = element.source ? WrittenTagTail(element) : " ";
    if (element.trimTagTail) {
        while (!tail.empty() && (tail.back() == ' ' || tail.back() == '\t')) {
            tail.remove_suffix(1);
        }
    }
    out += tail;
}

}  // namespace

std::string operator+(std::string left, XmlText right) {
    left.append(right);
    return left;
}

std::string operator+(const char* left, XmlText right) {
    std::string out(left);
    out.append(right);
    return out;
}

std::string operator+(XmlText left, std::string_view right) {
    std::string out(left);
    out.append(right);
    return out;
}

std::string operator+(XmlText left, const char* right) {
    return left + std::string_view(right);
}

std::string_view XmlAttribute::Lead() const {
    if (!inText) {
        return {};
    }
    // The character before the white space is the element's name or a quote.
    const char* start = m_name;
    while (IsSpace(start[-1])) {
        --start;
    }
    return {start, static_cast<size_t>(m_name - start)};
}

std::string_view XmlAttribute::Written() const {
    if (!asWritten) {
        return {};
    }
    const std::string_view lead = Lead();
    const char* at = m_name + m_nameLength;
    while (*at != quote) {
        ++at;
    }
    ++at;
    while (*at != quote) {
        ++at;
    }
    ++at;
    return {lead.data(), static_cast<size_t>(at - lead.data())};
}

namespace {

// The blocks of the stores whose elements a change may copy: where each starts, where it ends
// and whose it is.
struct StoreRegistry {
    struct Entry {
        const char* end;
        std::weak_ptr<const XmlStore> store;
    };
    std::mutex mutex;
    std::map<const char*, Entry, std::greater<>> blocks;
};

StoreRegistry& Registry() {
    // Never destroyed: stores held by static caches go after every static object.
    static auto* registry = new StoreRegistry;
    return *registry;
}

}  // namespace

std::shared_ptr<const XmlStore> XmlStore::Holding(const XmlElement& element) {
    const auto* at = reinterpret_cast<const char*>(&element);
    StoreRegistry& registry = Registry();
    std::lock_guard lock(registry.mutex);
    // The block that starts last at or before the element.
    const auto found = registry.blocks.lower_bound(at);
    if (found == registry.blocks.end() || at >= found->second.end) {
        return nullptr;
    }
    return found->second.store.lock();
}

struct XmlStore::Block {
    Block* next;
    const char* end;
};

XmlStore::XmlStore(std::shared_ptr<const std::string> text) : m_text(std::move(text)) {
    // Blocks grow with the file, up to a size whose unused end costs little.
    m_blockSize = std::clamp<size_t>(m_text->size() / 8, 4096, 256 * 1024);
}

XmlStore::~XmlStore() {
    if (m_blocks) {
        StoreRegistry& registry = Registry();
        std::lock_guard lock(registry.mutex);
        for (const Block* block = m_blocks; block; block = block->next) {
            registry.blocks.erase(reinterpret_cast<const char*>(block));
        }
    }
    while (m_blocks) {
        Block* next = m_blocks->next;
        ::operator delete(m_blocks);
        m_blocks = next;
    }
}

void* XmlStore::AllocateBytes(size_t size, size_t alignment) {
    auto* at = reinterpret_cast<char*>((reinterpret_cast<uintptr_t>(m_next) + alignment - 1) &
                                       ~(uintptr_t{alignment} - 1));
    if (m_next && at + size <= m_end) {
        m_next = at + size;
        return at;
    }
    const size_t header =
        (sizeof(Block) + alignof(std::max_align_t) - 1) & ~(alignof(std::max_align_t) - 1);
    const size_t room = std::max(m_blockSize, size);
    auto* block = static_cast<Block*>(::operator new(header + room));
    block->next = m_blocks;
    block->end = reinterpret_cast<char*>(block) + header + room;
    m_blocks = block;
    {
        // Changes copy elements of the store only while someone holds it in a shared_ptr.
        StoreRegistry& registry = Registry();
        std::lock_guard lock(registry.mutex);
        registry.blocks[reinterpret_cast<const char*>(block)] = {block->end, weak_from_this()};
    }
    char* data = reinterpret_cast<char*>(block) + header;
    if (room == size && m_next) {
        // A large list gets a block of its own; the current block stays in use.
        return data;
    }
    m_next = data + size;
    m_end = data + room;
    m_blockSize = std::min<size_t>(m_blockSize * 2, 256 * 1024);
    return data;
}

uint64_t NewXmlElementIds(uint64_t count) {
    static std::atomic<uint64_t> next{1};
    return next.fetch_add(count, std::memory_order_relaxed);
}

uint64_t NewXmlElementId() {
    return NewXmlElementIds(1);
}

std::shared_ptr<XmlElement> NewXmlElement(std::string_view name) {
    auto element = std::make_shared<ChangedElement>();
    element->id = NewXmlElementId();
    element->changed = true;
    element->name = element->Own(name);
    return element;
}

XmlText XmlElement::Trailing() const {
    if (changed) {
        const auto& self = static_cast<const ChangedElement&>(*this);
        if (self.hasTrailing) {
            return self.trailing;
        }
    }
    return source ? XmlText(source + trailingOffset, trailingLength) : XmlText();
}

std::string_view XmlElement::Indent() const {
    if (changed) {
        const auto& self = static_cast<const ChangedElement&>(*this);
        if (self.hasIndent) {
            return self.indent;
        }
    }
    if (!source || topLevel) {
        return {};
    }
    // The white space between the line break before the element and the element.
    const char* start = source;
    while (start[-1] == ' ' || start[-1] == '\t') {
        --start;
    }
    if (start[-1] != '\n') {
        return {};
    }
    return {start, static_cast<size_t>(source - start)};
}

const XmlAttribute* XmlElement::FindAttribute(std::string_view attribute) const {
    for (const XmlAttribute& candidate : attributes) {
        if (candidate.Name() == attribute) {
            return &candidate;
        }
    }
    return nullptr;
}

void XmlElement::SetAttribute(std::string_view attribute, std::string_view value) {
    ChangedElement& self = Changing(*this);
    asWritten = false;
    for (XmlAttribute& candidate : attributes) {
        if (candidate.Name() == attribute) {
            if (candidate.value != value) {
                candidate.value = self.Own(value);
                candidate.asWritten = false;
            }
            return;
        }
    }
    XmlAttribute added;
    added.SetName(self.Own(attribute));
    added.value = self.Own(value);
    attributes.push_back(added);
}

bool XmlElement::RemoveAttribute(std::string_view attribute) {
    for (size_t i = 0; i < attributes.size(); ++i) {
        if (std::as_const(attributes)[i].Name() == attribute) {
            attributes.erase(i, i + 1);
            asWritten = false;
            return true;
        }
    }
    return false;
}

XmlElement& MakeMutable(XmlElementPtr& slot) {
    if (!slot->changed || slot.use_count() != 1) {
        slot = CopyOf(*slot);
    }
    auto& element = const_cast<XmlElement&>(*slot);
    element.asWritten = false;
    element.checked.schema.store(0, std::memory_order_relaxed);
    return element;
}

std::shared_ptr<XmlElement> CloneAsNew(const XmlElement& element) {
    std::shared_ptr<ChangedElement> copy = CopyOf(element);
    copy->id = NewXmlElementId();
    for (XmlChild& child : copy->children) {
        child.element = CloneAsNew(*child.element);
    }
    return copy;
}

void InsertChildElement(XmlElement& parent, size_t before, XmlElementPtr child,
                        const XmlLayout& layout) {
    ChangedElement& self = Changing(parent);
    self.asWritten = false;
    const std::string indent = ChildIndent(self, layout);
    Reindent(Changing(const_cast<XmlElement&>(*child)), indent, layout);
    const XmlText lineBreak = self.Own(layout.newline + indent);
    if (self.children.empty()) {
        // Only white space (or nothing) inside: the element now spans lines.
        if (IsWhiteSpace(self.Trailing())) {
            self.SetTrailing(layout.newline + std::string(self.Indent()));
        }
        self.children.push_back(XmlChild{std::move(child), lineBreak});
        if (self.selfClosing) {
            // "<name ... />" becomes "<name ...>": the space before "/>" goes.
            self.trimTagTail = true;
            self.selfClosing = false;
        }
        return;
    }
    if (before == std::string::npos || before >= self.children.size()) {
        self.children.push_back(XmlChild{std::move(child), lineBreak});
        return;
    }
    // The new element takes the place of the one it goes before, which moves to a new line.
    const XmlText markup = std::as_const(self.children)[before].markup;
    self.children[before].markup = lineBreak;
    self.children.insert(before, XmlChild{std::move(child), markup});
}

void RemoveChildElement(XmlElement& parent, size_t index) {
    ChangedElement& self = Changing(parent);
    self.asWritten = false;
    // What stood before the element stays, except the line break that led to it.
    std::string_view kept = std::as_const(self.children)[index].markup;
    if (EndsWithLineBreak(kept)) {
        kept = kept.substr(0, LastTextRunStart(kept));
    }
    self.children.erase(index, index + 1);
    if (kept.empty()) {
        return;
    }
    if (index < self.children.size()) {
        XmlText& next = self.children[index].markup;
        next = self.Own(std::string(kept) + std::string(next));
    } else {
        self.SetTrailing(std::string(kept) + std::string(self.Trailing()));
    }
}

const XmlElement* XmlDocument::DocumentElement() const {
    const size_t index = DocumentElementIndex();
    return index == std::string::npos ? nullptr : root->children[index].element.get();
}

size_t XmlDocument::DocumentElementIndex() const {
    return root && !root->children.empty() ? 0 : std::string::npos;
}

void AppendEscapedAttribute(std::string_view value, char quote, std::string& out) {
    for (const char c : value) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += quote == '"' ? "&quot;" : "\"";
                break;
            case '\'':
                out += quote == '\'' ? "&apos;" : "'";
                break;
            // Kept as references: a literal one would read back as a space.
            case '\r':
                out += "&#xD;";
                break;
            case '\n':
                out += "&#xA;";
                break;
            case '\t':
                out += "&#x9;";
                break;
            default:
                out += c;
        }
    }
}

void RenderXmlElement(const XmlElement& element, std::string& out) {
    if (element.asWritten) {
        out += element.Written();
        return;
    }
    AppendStartTag(element, out);
    if (element.selfClosing) {
        out += "/>";
        return;
    }
    out += '>';
    for (const XmlChild& child : element.children) {
        out += child.markup;
        RenderXmlElement(*child.element, out);
    }
    out += element.Trailing();
    if (element.source && !WrittenSelfClosing(element)) {
        out += WrittenEndTag(element);
    } else {
        out += "</";
        out += element.name;
        out += '>';
    }
}

std::string RenderXml(const XmlDocument& document) {
    std::string out;
    const XmlElement* top = document.DocumentElement();
    out.reserve((top ? top->sourceLength : 0) + 4096);
    if (document.byteOrderMark) {
        out += "\xEF\xBB\xBF";
    }
    for (const XmlChild& child : document.root->children) {
        out += child.markup;
        RenderXmlElement(*child.element, out);
    }
    out += document.root->Trailing();
    return out;
}

}  // namespace webrig::sim::iis7
