#include "platform/sim/iis7/config_objects.h"

#include "platform/sim/iis7/collection_entries.h"
#include "platform/sim/iis7/config_collection.h"
#include "platform/sim/iis7/config_failure.h"
#include "platform/sim/iis7/config_property.h"

namespace webrig::sim::iis7 {
namespace {

const XmlElement* FollowPath(const XmlElement* element, const NodePath& path) {
    for (const PathStep& step : path) {
        if (!element) {
            return nullptr;
        }
        const XmlElement* next = nullptr;
        const auto& children = element->children;
        if (step.hint < children.size() && children[step.hint].element &&
            children[step.hint].element->id == step.id) {
            next = children[step.hint].element.get();
        } else {
            for (size_t i = 0; i < children.size(); ++i) {
                if (children[i].element && children[i].element->id == step.id) {
                    step.hint = i;
                    next = children[i].element.get();
                    break;
                }
            }
        }
        element = next;
    }
    return element;
}

size_t ChildIndex(const XmlElement& parent, const PathStep& step) {
    for (size_t i = 0; i < parent.children.size(); ++i) {
        if (parent.children[i].element && parent.children[i].element->id == step.id) {
            return i;
        }
    }
    Fail(qm::hr::element_not_found, "the element is no longer in the configuration");
}

// Finds (or, when `create`, adds) the children named `names` below `element`.
XmlElement* EnsureNames(XmlElement* element, const std::vector<std::string>& names,
                        const XmlLayout& layout) {
    for (const std::string& name : names) {
        size_t index = std::string::npos;
        for (size_t i = 0; i < element->children.size(); ++i) {
            if (element->children[i].element && element->children[i].element->name == name) {
                index = i;
                break;
            }
        }
        if (index == std::string::npos) {
            auto created = NewXmlElement(name);
            const uint64_t id = created->id;
            InsertChildElement(*element, std::string::npos, std::move(created), layout);
            index = ChildIndex(*element, {id, 0});
        }
        element = &MakeMutable(element->children[index].element);
    }
    return element;
}

const XmlLayout& TargetLayout(const SectionView& view) {
    return view.levels[view.target].file->document.layout;
}

}  // namespace

const Anchor& RootAnchor(const Anchor& anchor) {
    const Anchor* root = &anchor;
    while (root->parent) {
        root = root->parent.get();
    }
    return *root;
}

size_t AnchorLevel(const SectionView& view, const Anchor& anchor) {
    const Anchor& root = RootAnchor(anchor);
    return root.detached ? view.target : root.level;
}

const XmlElement* ResolveAnchor(const SectionView& view, const Anchor& anchor) {
    if (anchor.detached) {
        return anchor.detached.get();
    }
    if (anchor.parent) {
        return FollowPath(ResolveAnchor(view, *anchor.parent), anchor.path);
    }
    return view.session->Resolve(*view.levels[anchor.level].file, anchor.path);
}

XmlElement& MutableAnchor(SectionView& view, Anchor& anchor) {
    if (anchor.detached) {
        return *anchor.detached;
    }
    if (!anchor.parent) {
        return view.session->MutableAt(*view.levels[anchor.level].file, anchor.path);
    }
    XmlElement* element = &MutableAnchor(view, *anchor.parent);
    for (const PathStep& step : anchor.path) {
        element = &MakeMutable(element->children[ChildIndex(*element, step)].element);
    }
    return *element;
}

void CopyEntryDown(SectionView& view, Anchor& anchor, const ElementSchema& entry) {
    const XmlElement* inherited = ResolveAnchor(view, anchor);
    if (!inherited) {
        Fail(qm::hr::element_not_found, "the element is no longer in the configuration");
    }
    std::shared_ptr<XmlElement> copy = CloneAsNew(*inherited);
    ConfigSession::Writable holder = view.session->EnsureSection(
        view.levels[view.target], view.sectionNames(), anchor.ownerNames);
    const XmlLayout& layout = TargetLayout(view);
    if (!anchor.collection->removeElement.empty()) {
        InsertEntry(*holder.element, *anchor.collection,
                    RemoveEntryFor(*anchor.collection, entry, *inherited), std::string::npos,
                    layout);
    }
    const uint64_t id = copy->id;
    InsertEntry(*holder.element, *anchor.collection, std::move(copy), std::string::npos, layout);
    anchor.level = view.target;
    anchor.path = holder.path;
    anchor.path.push_back({id, ChildIndex(*holder.element, {id, 0})});
}

ConfigElementImpl::ConfigElementImpl(std::shared_ptr<SectionView> view, const ElementSchema* schema,
                                     std::shared_ptr<Anchor> anchor, std::vector<std::string> names)
    : m_view(std::move(view)),
      m_schema(schema),
      m_anchor(std::move(anchor)),
      m_names(std::move(names)) {}

qm::hresult ConfigElementImpl::GetName(qm::wstring& name) {
    return Guarded(*m_view->session, [&] {
        if (!m_names.empty()) {
            name = qm::from_utf8(m_names.back());
        } else if (m_anchor) {
            const XmlElement* element = ResolveAnchor(*m_view, *m_anchor);
            if (!element) {
                Fail(qm::hr::element_not_found, "the element is no longer in the configuration");
            }
            name = qm::from_utf8(element->name);
        } else {
            name = qm::from_utf8(m_view->sectionNames().back());
        }
    });
}

qm::hresult ConfigElementImpl::GetCollection(
    std::shared_ptr<platform::ElementCollection>& collection) {
    collection.reset();
    if (!m_schema->collection) {
        m_view->session->SetError("the element holds no collection");
        return qm::hr::invalid_index;
    }
    collection = std::make_shared<ConfigCollectionImpl>(shared_from_this(), *m_schema->collection);
    return qm::hr::ok;
}

qm::hresult ConfigElementImpl::GetElementByName(qm::wstring_view name,
                                                std::shared_ptr<platform::ConfigElement>& element) {
    element.reset();
    const ElementSchema* child = m_schema->FindChild(name);
    if (!child) {
        m_view->session->SetError("the element has no child element " + qm::to_utf8(name));
        return qm::hr::invalid_index;
    }
    std::vector<std::string> names = m_names;
    names.push_back(qm::to_utf8(child->name));
    element = std::make_shared<ConfigElementImpl>(m_view, child, m_anchor, std::move(names));
    return qm::hr::ok;
}

qm::hresult ConfigElementImpl::GetPropertyByName(
    qm::wstring_view name, std::shared_ptr<platform::ConfigProperty>& property) {
    property.reset();
    const AttributeSchema* attribute = m_schema->FindAttribute(name);
    if (!attribute) {
        m_view->session->SetError("the element has no attribute " + qm::to_utf8(name));
        return qm::hr::invalid_index;
    }
    property = std::make_shared<ConfigPropertyImpl>(shared_from_this(), *attribute);
    return qm::hr::ok;
}

std::vector<FoundElement> ConfigElementImpl::ReadElements() const {
    std::vector<FoundElement> found;
    if (!m_anchor) {
        for (const ConfigLevel& level : m_view->levels) {
            for (const FoundElement& section :
                 m_view->session->SectionsAt(level, m_view->sectionNames())) {
                FoundElement element = DescendByNames(section, m_names);
                if (element.element) {
                    found.push_back(std::move(element));
                }
            }
        }
        return found;
    }
    const XmlElement* anchored = ResolveAnchor(*m_view, *m_anchor);
    if (!anchored) {
        Fail(qm::hr::element_not_found, "the element is no longer in the configuration");
    }
    FoundElement element = DescendByNames({anchored, {}}, m_names);
    if (element.element) {
        found.push_back(std::move(element));
    }
    return found;
}

// Collection entries take what they do not set from the defaults element next to their
// collection (siteDefaults, applicationPoolDefaults, ...), or one further up.
std::optional<std::string> ConfigElementImpl::DefaultsText(const std::string& attribute) const {
    if (!m_anchor || m_anchor->detached) {
        return std::nullopt;
    }
    const XmlElement* entry = ResolveAnchor(*m_view, *m_anchor);
    if (!entry) {
        return std::nullopt;
    }
    // The elements above the entry, nearest first.
    std::vector<const XmlElement*> above;
    const Anchor* anchor = m_anchor.get();
    while (anchor) {
        const XmlElement* start = anchor->parent
                                      ? ResolveAnchor(*m_view, *anchor->parent)
                                      : m_view->levels[anchor->level].file->document.root.get();
        std::vector<const XmlElement*> chain{start};
        const XmlElement* element = start;
        for (size_t i = 0; i + 1 < anchor->path.size() && element; ++i) {
            element = FollowPath(element, NodePath{anchor->path[i]});
            chain.push_back(element);
        }
        above.insert(above.end(), chain.rbegin(), chain.rend());
        anchor = anchor->parent.get();
    }
    // The schema names the defaults element next to the collection; further up (the sites
    // section's applicationDefaults for a site's applications) it is named after the entry.
    const std::string ownName = entry->name + "Defaults";
    const std::string schemaName =
        m_anchor->collection ? qm::to_utf8(m_anchor->collection->defaultElement) : std::string();
    for (size_t i = 0; i < above.size(); ++i) {
        if (!above[i]) {
            continue;
        }
        for (const XmlChild& child : above[i]->children) {
            const XmlElement* candidate = child.element.get();
            if (!candidate) {
                continue;
            }
            const std::string& name = candidate->name;
            if (name != ownName && (i != 0 || schemaName.empty() || name != schemaName)) {
                continue;
            }
            const FoundElement defaults = DescendByNames({candidate, {}}, m_names);
            if (defaults.element) {
                if (const XmlAttribute* found = defaults.element->FindAttribute(attribute)) {
                    return found->value;
                }
            }
        }
    }
    return std::nullopt;
}

std::string ConfigElementImpl::EffectiveText(const AttributeSchema& attribute) const {
    const std::string name = qm::to_utf8(attribute.name);
    std::optional<std::string> text;
    for (const FoundElement& element : ReadElements()) {
        if (const XmlAttribute* found = element.element->FindAttribute(name)) {
            text = found->value;
        }
    }
    if (!text) {
        text = DefaultsText(name);
    }
    if (!text) {
        return qm::to_utf8(attribute.defaultValue);
    }
    if (attribute.encrypted && ConfigEncryption::IsEncrypted(qm::from_utf8(*text))) {
        const std::optional<qm::wstring> clear =
            m_view->session->machine().encryption().Decrypt(qm::from_utf8(*text));
        if (!clear) {
            Fail(qm::hr::invalid_data,
                 "the encrypted value of " + name + " cannot be decrypted on this machine");
        }
        return qm::to_utf8(*clear);
    }
    return *text;
}

void ConfigElementImpl::CheckWritable() const {
    if (m_view->writeRefusal != qm::hr::ok) {
        Fail(m_view->writeRefusal, m_view->refusalText);
    }
}

XmlElement& ConfigElementImpl::Writable() {
    CheckWritable();
    const XmlLayout& layout = TargetLayout(*m_view);
    if (!m_anchor) {
        return *m_view->session
                    ->EnsureSection(m_view->levels[m_view->target], m_view->sectionNames(), m_names)
                    .element;
    }
    if (AnchorLevel(*m_view, *m_anchor) != m_view->target) {
        if (m_anchor->parent || !m_anchor->collection) {
            Fail(qm::hr::lock_violation,
                 "an entry held by an inherited entry can only be changed where it is defined");
        }
        const ElementSchema* entry = m_anchor->ownerSchema->FindEntry(
            qm::from_utf8(ResolveAnchor(*m_view, *m_anchor)->name));
        CopyEntryDown(*m_view, *m_anchor, *entry);
    }
    return *EnsureNames(&MutableAnchor(*m_view, *m_anchor), m_names, layout);
}

}  // namespace webrig::sim::iis7
