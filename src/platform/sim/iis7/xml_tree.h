#pragma once
// The XML of a configuration file as a tree that remembers how every part was written, so that
// writing the file back reproduces each untouched byte and a change alters only its own lines.
//
// Elements are immutable once a document holds them and are shared between documents: a change
// copies only the elements on the way from the root to the changed one (MakeMutable), so a
// configuration manager starts from the cached document without copying it.

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace webrig::sim::iis7 {

struct XmlAttribute {
    std::string name;
    std::string value;  // decoded
    // The attribute as the file has it, with the white space before it; empty once it changed.
    std::string_view written;
    // The white space before the name, kept when the value changes.
    std::string_view lead;
    char quote = '"';
};

struct XmlElement;
using XmlElementPtr = std::shared_ptr<const XmlElement>;

// The schema an element was last found valid for (section_validation.h), 0 for none. Shared
// elements are read by several managers at once, so it is atomic; a copy starts unmarked.
struct XmlCheckMark {
    XmlCheckMark() = default;
    XmlCheckMark(const XmlCheckMark&) noexcept {}
    XmlCheckMark& operator=(const XmlCheckMark&) noexcept { return *this; }
    mutable std::atomic<uint64_t> schema{0};
};

// A child of an element: another element, or markup kept exactly as written (white space, text,
// comments, CDATA sections, processing instructions).
struct XmlChild {
    XmlElementPtr element;
    std::string markup;
};

struct XmlElement {
    // Identifies the element across the copies that changes make of it.
    uint64_t id = 0;
    std::string name;
    std::vector<XmlAttribute> attributes;
    std::vector<XmlChild> children;
    // Written as "<name ... />" (or was, before children were added).
    bool selfClosing = true;
    // The white space between the last attribute and ">" or "/>".
    std::string_view tagTail;
    // The end tag as written ("</name>"); empty for new elements.
    std::string_view endTag;
    // The whole element as written, for elements nothing in which has changed.
    std::string_view written;
    // The white space that starts the element's line; new children are indented from it.
    std::string indent;
    int line = 0;
    XmlCheckMark checked;

    const XmlAttribute* FindAttribute(std::string_view attribute) const;
    // Sets (or adds, at the end) an attribute; the element is no longer as written.
    void SetAttribute(std::string_view attribute, std::string_view value);
    bool RemoveAttribute(std::string_view attribute);
    size_t ElementCount() const;
};

// A new element with a fresh id.
std::shared_ptr<XmlElement> NewXmlElement(std::string name);
uint64_t NewXmlElementId();

// The element `slot` points to, made safe to change: copied first when someone else shares it.
// Its text as written and its check mark are dropped, since they no longer describe it.
XmlElement& MakeMutable(XmlElementPtr& slot);

// A deep copy with fresh ids, for moving an entry between levels.
std::shared_ptr<XmlElement> CloneAsNew(const XmlElement& element);

// How new lines are written in a document.
struct XmlLayout {
    std::string newline = "\r\n";
    std::string indentUnit = "    ";
};

// Inserts `child` into `parent` before its child number `before` (an index into `children`
// that holds an element) or, for `before` == npos, after its last element child; the new line
// is indented like its siblings.
void InsertChildElement(XmlElement& parent, size_t before, XmlElementPtr child,
                        const XmlLayout& layout);

// Removes child number `index` (an element) with the white space that puts it on its own line.
void RemoveChildElement(XmlElement& parent, size_t index);

// A whole file: the children of `root` are what stands outside and around the root element.
struct XmlDocument {
    // Keeps the text that unchanged elements point into.
    std::shared_ptr<const std::string> text;
    XmlElementPtr root;  // name empty; its children are the file's top-level parts
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
