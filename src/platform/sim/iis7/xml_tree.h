#pragma once
// The XML of a configuration file as a tree that remembers how every part was written, so that
// writing the file back reproduces each untouched byte and a change alters only its own lines.
//
// Elements are immutable once a document holds them and are shared between documents: a change
// copies only the elements on the way from the root to the changed one (MakeMutable), so a
// configuration manager starts from the cached document without copying it.
//
// A document the reader makes keeps its text and every element, attribute list and child list
// in one store (XmlStore): names, values and markup are views into the text, and nothing is
// allocated per element. Elements in a store never change; those a change makes are separate
// heap objects that keep alive whatever store their views point into.

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>

namespace webrig::sim::iis7 {

// Text of a document: a view that becomes a std::string wherever one is expected.
class XmlText : public std::string_view {
  public:
    constexpr XmlText() noexcept = default;
    constexpr XmlText(std::string_view text) noexcept : std::string_view(text) {}
    constexpr XmlText(const char* text) : std::string_view(text) {}
    constexpr XmlText(const char* text, size_t size) noexcept : std::string_view(text, size) {}
    operator std::string() const { return std::string(data(), size()); }
};

std::string operator+(std::string left, XmlText right);
std::string operator+(const char* left, XmlText right);
std::string operator+(XmlText left, std::string_view right);
std::string operator+(XmlText left, const char* right);

// A list whose items either lie in a store (read-only, never freed by the list) or belong to the
// list. Copies always own their items, so a copied element can change its lists.
template <typename T>
class XmlList {
  public:
    XmlList() noexcept = default;
    XmlList(const XmlList& other) { Assign(other.begin(), other.size()); }
    XmlList(XmlList&& other) noexcept
        : m_data(std::exchange(other.m_data, nullptr)),
          m_size(std::exchange(other.m_size, 0)),
          m_capacity(std::exchange(other.m_capacity, 0)) {}
    XmlList& operator=(const XmlList& other) {
        if (this != &other) {
            XmlList copy(other);
            Swap(copy);
        }
        return *this;
    }
    XmlList& operator=(XmlList&& other) noexcept {
        XmlList moved(std::move(other));
        Swap(moved);
        return *this;
    }
    ~XmlList() { Release(); }

    // Items laid out in a store that outlives the list.
    static XmlList InStore(T* items, size_t count) noexcept {
        XmlList list;
        list.m_data = items;
        list.m_size = static_cast<uint32_t>(count);
        return list;
    }

    size_t size() const noexcept { return m_size; }
    bool empty() const noexcept { return m_size == 0; }
    const T* begin() const noexcept { return m_data; }
    const T* end() const noexcept { return m_data + m_size; }
    const T& operator[](size_t index) const noexcept { return m_data[index]; }
    const T& front() const noexcept { return m_data[0]; }
    const T& back() const noexcept { return m_data[m_size - 1]; }

    // Changing access: items in a store are copied into the list first.
    T* begin() {
        Own(m_size);
        return m_data;
    }
    T* end() {
        Own(m_size);
        return m_data + m_size;
    }
    T& operator[](size_t index) {
        Own(m_size);
        return m_data[index];
    }
    T& back() { return (*this)[m_size - 1]; }

    void push_back(T item) { insert(m_size, std::move(item)); }
    // Inserts before item number `at`.
    void insert(size_t at, T item) { insert(at, {std::move(item)}); }
    void insert(size_t at, std::initializer_list<T> items) {
        Own(m_size + items.size());
        T* position = m_data + at;
        const size_t moved = m_size - at;
        // Opens a gap: items move up from the end.
        for (size_t i = moved; i > 0; --i) {
            T* from = position + i - 1;
            new (from + items.size()) T(std::move(*from));
            from->~T();
        }
        for (const T& item : items) {
            new (position++) T(item);
        }
        m_size += static_cast<uint32_t>(items.size());
    }
    // Removes items [first, last).
    void erase(size_t first, size_t last) {
        Own(m_size);
        const size_t count = last - first;
        for (size_t i = first; i < last; ++i) {
            m_data[i].~T();
        }
        for (size_t i = last; i < m_size; ++i) {
            new (m_data + i - count) T(std::move(m_data[i]));
            m_data[i].~T();
        }
        m_size -= static_cast<uint32_t>(count);
    }
    void clear() { erase(0, m_size); }

  private:
    bool Owned() const noexcept { return m_capacity != 0; }

    void Swap(XmlList& other) noexcept {
        std::swap(m_data, other.m_data);
        std::swap(m_size, other.m_size);
        std::swap(m_capacity, other.m_capacity);
    }

    void Assign(const T* items, size_t count) {
        if (count == 0) {
            return;
        }
        m_data = static_cast<T*>(::operator new(count * sizeof(T)));
        m_capacity = static_cast<uint32_t>(count);
        for (size_t i = 0; i < count; ++i) {
            new (m_data + i) T(items[i]);
            ++m_size;
        }
    }

    // Makes the items the list's own, with room for `needed`.
    void Own(size_t needed) {
        if (Owned() && needed <= m_capacity) {
            return;
        }
        if (!Owned() && m_size == 0 && needed == 0) {
            return;
        }
        size_t capacity = Owned() ? m_capacity : 0;
        capacity = std::max<size_t>({needed, capacity * 2, 4});
        T* items = static_cast<T*>(::operator new(capacity * sizeof(T)));
        for (size_t i = 0; i < m_size; ++i) {
            if (Owned()) {
                new (items + i) T(std::move(m_data[i]));
                m_data[i].~T();
            } else {
                new (items + i) T(m_data[i]);
            }
        }
        if (Owned()) {
            ::operator delete(m_data);
        }
        m_data = items;
        m_capacity = static_cast<uint32_t>(capacity);
    }

    void Release() noexcept {
        if (Owned()) {
            for (size_t i = 0; i < m_size; ++i) {
                m_data[i].~T();
            }
            ::operator delete(m_data);
        }
        m_data = nullptr;
        m_size = 0;
        m_capacity = 0;
    }

    T* m_data = nullptr;
    uint32_t m_size = 0;
    uint32_t m_capacity = 0;  // 0: the items lie in a store (or there are none)
};

class XmlAttribute {
    // Laid out to take 32 bytes: a file holds many attributes.
    const char* m_name = nullptr;
    uint32_t m_nameLength = 0;

  public:
    char quote = '"';
    // The name lies in the document's text, after the white space that led it there; new
    // attributes are led by one space.
    bool inText = false;
    // The attribute is exactly as the file has it.
    bool asWritten : 1 = false;
    XmlText value;  // decoded

    XmlText Name() const { return {m_name, m_nameLength}; }
    void SetName(std::string_view name) {
        m_name = name.data();
        m_nameLength = static_cast<uint32_t>(name.size());
    }
    // The white space before the name, kept when the value changes.
    std::string_view Lead() const;
    // The attribute as the file has it, with the white space before it.
    std::string_view Written() const;
};
static_assert(sizeof(XmlAttribute) <= 32);

class XmlStore;
struct XmlElement;
using XmlElementPtr = std::shared_ptr<const XmlElement>;

// The schema an element was last found valid for (section_validation.h), 0 for none. Shared
// elements are read by several managers at once, so it is atomic; a copy starts unmarked.
// 32 bits keep elements small: schema ids count the schemas one process loads.
struct XmlCheckMark {
    XmlCheckMark() = default;
    XmlCheckMark(const XmlCheckMark&) noexcept {}
    XmlCheckMark& operator=(const XmlCheckMark&) noexcept { return *this; }
    mutable std::atomic<uint32_t> schema{0};
};

// A child element with the markup kept exactly as written between it and what comes before it
// (white space, text, comments, CDATA sections, processing instructions).
struct XmlChild {
    XmlElementPtr element;
    XmlText markup;
};

struct XmlElement {
    // Identifies the element across the copies that changes make of it.
    uint64_t id = 0;
    XmlText name;
    XmlList<XmlAttribute> attributes;
    XmlList<XmlChild> children;
    // The element as written, from "<" over its end tag; null for new elements. (A document's
    // root points to the whole text.)
    const char* source = nullptr;
    uint32_t sourceLength = 0;
    int line = 0;
    // Where the markup after the last child (for an element without children, its content) lies
    // in `source`, until a change sets it.
    uint32_t trailingOffset = 0;
    uint32_t trailingLength = 0;
    // Written as "<name ... />" (or was, before children were added).
    bool selfClosing : 1 = true;
    // Nothing in the element has changed since it was read.
    bool asWritten : 1 = false;
    // The start tag loses the white space before its ">" (a "<name ... />" that took children).
    bool trimTagTail : 1 = false;
    // Made by a change: an XmlElement that owns the strings of its changes.
    bool changed : 1 = false;
    // A document's root or its document element, which are never indented.
    bool topLevel : 1 = false;
    XmlCheckMark checked;

    const XmlAttribute* FindAttribute(std::string_view attribute) const;
    // Sets (or adds, at the end) an attribute; the element is no longer as written.
    void SetAttribute(std::string_view attribute, std::string_view value);
    bool RemoveAttribute(std::string_view attribute);
    size_t ElementCount() const { return children.size(); }

    // The element as written.
    std::string_view Written() const { return {source, sourceLength}; }
    // The markup after the last child element.
    XmlText Trailing() const;
    // The white space that starts the element's line; new children are indented from it.
    std::string_view Indent() const;
};
static_assert(sizeof(XmlElement) <= 88);

// Where a read document's text and elements live. Elements in a store are reached through
// pointers that do not count references (XmlDocument::root and elements made by changes keep
// the store alive), so reading a file allocates a few large blocks and counts no references.
// Elements do not point to their store, to stay small: a change finds it from their address.
class XmlStore : public std::enable_shared_from_this<XmlStore> {
  public:
    explicit XmlStore(std::shared_ptr<const std::string> text);
    ~XmlStore();
    XmlStore(const XmlStore&) = delete;
    XmlStore& operator=(const XmlStore&) = delete;

    const std::string& text() const noexcept { return *m_text; }
    // The store `element` lies in, if it lies in one that is held by a shared_ptr.
    static std::shared_ptr<const XmlStore> Holding(const XmlElement& element);

    // Room for `count` objects of T, which the store never destroys: T must need no destruction
    // beyond freeing its memory.
    template <typename T>
    T* Allocate(size_t count) {
        return static_cast<T*>(AllocateBytes(count * sizeof(T), alignof(T)));
    }
    // A pointer to an element of the store, as its parent's child list holds it: it counts no
    // references, the store being kept alive by whoever holds the parent.
    static XmlElementPtr Pointer(const XmlElement* element) {
        return XmlElementPtr(std::shared_ptr<const XmlElement>(), element);
    }

  private:
    void* AllocateBytes(size_t size, size_t alignment);

    std::shared_ptr<const std::string> m_text;
    struct Block;
    Block* m_blocks = nullptr;
    char* m_next = nullptr;
    char* m_end = nullptr;
    size_t m_blockSize = 0;
};

// A new element with a fresh id.
std::shared_ptr<XmlElement> NewXmlElement(std::string_view name);
uint64_t NewXmlElementId();
// `count` fresh ids in a row; returns the first.
uint64_t NewXmlElementIds(uint64_t count);

// The element `slot` points to, made safe to change: copied first when someone else shares it
// or it lies in a store. It is no longer as written, and its check mark is dropped.
XmlElement& MakeMutable(XmlElementPtr& slot);

// A deep copy with fresh ids, for moving an entry between levels.
std::shared_ptr<XmlElement> CloneAsNew(const XmlElement& element);

// How new lines are written in a document.
struct XmlLayout {
    std::string newline = "\r\n";
    std::string indentUnit = "    ";
};

// Inserts `child` into `parent` before its child number `before` or, for `before` == npos,
// after its last child; the new line is indented like its siblings.
void InsertChildElement(XmlElement& parent, size_t before, XmlElementPtr child,
                        const XmlLayout& layout);

// Removes child number `index` with the white space that puts it on its own line.
void RemoveChildElement(XmlElement& parent, size_t index);

// A whole file: the children of `root` are what stands outside and around the root element.
struct XmlDocument {
    XmlElementPtr root;  // name empty; its child is the document element
    bool byteOrderMark = false;
    XmlLayout layout;

    // The document element (for configuration files, <configuration>), or null.
    const XmlElement* DocumentElement() const;
    size_t DocumentElementIndex() const;
};

// The file's bytes.
std::string RenderXml(const XmlDocument& document);
void RenderXmlElement(const XmlElement& element, std::string& out);

// Attribute text as a file holds it between `quote` characters.
void AppendEscapedAttribute(std::string_view value, char quote, std::string& out);

}  // namespace webrig::sim::iis7
