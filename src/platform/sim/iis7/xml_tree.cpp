#include "platform/sim/iis7/xml_tree.h"

#include <algorithm>
#include <atomic>

namespace webrig::sim::iis7 {
namespace {

bool IsWhiteSpace(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; });
}

bool IsLineBreak(const XmlChild& child) {
    return !child.element && IsWhiteSpace(child.markup) &&
           child.markup.find('\n') != std::string::npos;
}

// The indentation of the element children of `parent`, from the first one that starts a line.
std::string ChildIndent(const XmlElement& parent, const XmlLayout& layout) {
    for (size_t i = 1; i < parent.children.size(); ++i) {
        if (parent.children[i].element && IsLineBreak(parent.children[i - 1])) {
            const std::string& markup = parent.children[i - 1].markup;
            return markup.substr(markup.rfind('\n') + 1);
        }
    }
    return parent.indent + layout.indentUnit;
}

// Children of new elements were laid out before the element found its place; line them up
// under its indentation now.
void Reindent(XmlElement& element, const std::string& indent, const XmlLayout& layout) {
    element.indent = indent;
    for (size_t i = 0; i < element.children.size(); ++i) {
        XmlChild& child = element.children[i];
        if (child.element) {
            auto& nested = const_cast<XmlElement&>(*child.element);
            if (nested.endTag.empty()) {
                Reindent(nested, indent + layout.indentUnit, layout);
            }
        } else if (IsLineBreak(child)) {
            const bool beforeEnd = i + 1 == element.children.size();
            child.markup = layout.newline + (beforeEnd ? indent : indent + layout.indentUnit);
        }
    }
}

void AppendStartTag(const XmlElement& element, std::string& out) {
    out += '<';
    out += element.name;
    for (const XmlAttribute& attribute : element.attributes) {
        if (!attribute.written.empty()) {
            out += attribute.written;
            continue;
        }
        if (attribute.lead.empty()) {
            out += ' ';
        } else {
            out += attribute.lead;
        }
        out += attribute.name;
        out += '=';
        out += attribute.quote;
        AppendEscapedAttribute(attribute.value, attribute.quote, out);
        out += attribute.quote;
    }
}

}  // namespace

uint64_t NewXmlElementId() {
    static std::atomic<uint64_t> next{1};
    return next.fetch_add(1, std::memory_order_relaxed);
}

std::shared_ptr<XmlElement> NewXmlElement(std::string name) {
    auto element = std::make_shared<XmlElement>();
    element->id = NewXmlElementId();
    element->name = std::move(name);
    element->tagTail = " ";
    return element;
}

const XmlAttribute* XmlElement::FindAttribute(std::string_view attribute) const {
    for (const XmlAttribute& candidate : attributes) {
        if (candidate.name == attribute) {
            return &candidate;
        }
    }
    return nullptr;
}

void XmlElement::SetAttribute(std::string_view attribute, std::string_view value) {
    written = {};
    for (XmlAttribute& candidate : attributes) {
        if (candidate.name == attribute) {
            if (candidate.value != value) {
                candidate.value = std::string(value);
                candidate.written = {};
            }
            return;
        }
    }
    XmlAttribute added;
    added.name = std::string(attribute);
    added.value = std::string(value);
    attributes.push_back(std::move(added));
}

bool XmlElement::RemoveAttribute(std::string_view attribute) {
    const auto found = std::find_if(attributes.begin(), attributes.end(),
                                    [&](const XmlAttribute& a) { return a.name == attribute; });
    if (found == attributes.end()) {
        return false;
    }
    attributes.erase(found);
    written = {};
    return true;
}

size_t XmlElement::ElementCount() const {
    return static_cast<size_t>(std::count_if(
        children.begin(), children.end(), [](const XmlChild& c) { return c.element != nullptr; }));
}

XmlElement& MakeMutable(XmlElementPtr& slot) {
    if (slot.use_count() != 1) {
        slot = std::make_shared<XmlElement>(*slot);
    }
    auto& element = const_cast<XmlElement&>(*slot);
    element.written = {};
    element.checked.schema.store(0, std::memory_order_relaxed);
    return element;
}

std::shared_ptr<XmlElement> CloneAsNew(const XmlElement& element) {
    auto copy = std::make_shared<XmlElement>(element);
    copy->id = NewXmlElementId();
    copy->written = {};
    for (XmlChild& child : copy->children) {
        if (child.element) {
            child.element = CloneAsNew(*child.element);
        }
    }
    return copy;
}

void InsertChildElement(XmlElement& parent, size_t before, XmlElementPtr child,
                        const XmlLayout& layout) {
    parent.written = {};
    const std::string indent = ChildIndent(parent, layout);
    Reindent(const_cast<XmlElement&>(*child), indent, layout);
    XmlChild lineBreak{nullptr, layout.newline + indent};
    XmlChild added{std::move(child), {}};
    if (parent.ElementCount() == 0) {
        // Only white space (or nothing) inside: the element now spans lines.
        if (std::all_of(parent.children.begin(), parent.children.end(),
                        [](const XmlChild& c) { return IsWhiteSpace(c.markup); })) {
            parent.children.clear();
        }
        parent.children.insert(parent.children.begin(), {lineBreak, added});
        if (parent.children.size() == 2) {
            parent.children.push_back({nullptr, layout.newline + parent.indent});
        }
        if (parent.selfClosing) {
            // "<name ... />" becomes "<name ...>": the space before "/>" goes.
            while (!parent.tagTail.empty() &&
                   (parent.tagTail.back() == ' ' || parent.tagTail.back() == '\t')) {
                parent.tagTail.remove_suffix(1);
            }
            parent.selfClosing = false;
        }
        return;
    }
    if (before == std::string::npos) {
        size_t last = parent.children.size();
        while (last > 0 && !parent.children[last - 1].element) {
            --last;
        }
        parent.children.insert(parent.children.begin() + static_cast<std::ptrdiff_t>(last),
                               {lineBreak, added});
        return;
    }
    parent.children.insert(parent.children.begin() + static_cast<std::ptrdiff_t>(before),
                           {added, lineBreak});
}

void RemoveChildElement(XmlElement& parent, size_t index) {
    parent.written = {};
    size_t first = index;
    if (index > 0 && IsLineBreak(parent.children[index - 1])) {
        first = index - 1;
    }
    parent.children.erase(parent.children.begin() + static_cast<std::ptrdiff_t>(first),
                          parent.children.begin() + static_cast<std::ptrdiff_t>(index) + 1);
}

const XmlElement* XmlDocument::DocumentElement() const {
    const size_t index = DocumentElementIndex();
    return index == std::string::npos ? nullptr : root->children[index].element.get();
}

size_t XmlDocument::DocumentElementIndex() const {
    if (!root) {
        return std::string::npos;
    }
    for (size_t i = 0; i < root->children.size(); ++i) {
        if (root->children[i].element) {
            return i;
        }
    }
    return std::string::npos;
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
    if (!element.written.empty()) {
        out += element.written;
        return;
    }
    AppendStartTag(element, out);
    out += element.tagTail;
    if (element.selfClosing) {
        out += "/>";
        return;
    }
    out += '>';
    for (const XmlChild& child : element.children) {
        if (child.element) {
            RenderXmlElement(*child.element, out);
        } else {
            out += child.markup;
        }
    }
    if (element.endTag.empty()) {
        out += "</";
        out += element.name;
        out += '>';
    } else {
        out += element.endTag;
    }
}

std::string RenderXml(const XmlDocument& document) {
    std::string out;
    out.reserve(document.text ? document.text->size() + 256 : 4096);
    if (document.byteOrderMark) {
        out += "\xEF\xBB\xBF";
    }
    for (const XmlChild& child : document.root->children) {
        if (child.element) {
            RenderXmlElement(*child.element, out);
        } else {
            out += child.markup;
        }
    }
    return out;
}

}  // namespace webrig::sim::iis7
