#include "platform/sim/iis7/config_collection.h"

#include <algorithm>

#include "platform/sim/iis7/config_failure.h"

namespace webrig::sim::iis7 {
namespace {

bool Allows(const CollectionSchema& collection, qm::wstring_view name) {
    return std::find(collection.addElements.begin(), collection.addElements.end(), name) !=
           collection.addElements.end();
}

size_t ChildIndexOf(const XmlElement& parent, uint64_t id) {
    for (size_t i = 0; i < parent.children.size(); ++i) {
        if (parent.children[i].element && parent.children[i].element->id == id) {
            return i;
        }
    }
    Fail(qm::hr::element_not_found, "the element is no longer in the configuration");
}

}  // namespace

ConfigCollectionImpl::ConfigCollectionImpl(std::shared_ptr<ConfigElementImpl> owner,
                                           const CollectionSchema& collection)
    : m_owner(std::move(owner)), m_collection(collection) {}

const MergedCollection& ConfigCollectionImpl::Entries() {
    const uint64_t version = m_owner->view()->session->version();
    if (version != m_version) {
        m_entries = CachedEntries(*m_owner, m_collection);
        m_version = version;
    }
    return *m_entries;
}

qm::hresult ConfigCollectionImpl::Count(uint32_t& count) {
    count = 0;
    return Guarded(*m_owner->view()->session,
                   [&] { count = static_cast<uint32_t>(Entries().entries.size()); });
}

qm::hresult ConfigCollectionImpl::Item(uint32_t index,
                                       std::shared_ptr<platform::ConfigElement>& element) {
    element.reset();
    return Guarded(*m_owner->view()->session, [&] {
        const MergedCollection& merged = Entries();
        if (index >= merged.entries.size()) {
            Fail(qm::hr::invalid_index, "the collection has " +
                                            std::to_string(merged.entries.size()) +
                                            " entries; there is no entry " + std::to_string(index));
        }
        element = std::make_shared<ConfigElementImpl>(
            m_owner->view(), merged.entries[index].schema,
            AnchorFor(*m_owner, m_collection, merged, index), std::vector<std::string>{});
    });
}

qm::hresult ConfigCollectionImpl::CreateNewElement(
    qm::wstring_view name, std::shared_ptr<platform::ConfigElement>& element) {
    element.reset();
    return Guarded(*m_owner->view()->session, [&] {
        const ElementSchema* schema = m_owner->schema()->FindEntry(name);
        if (!schema || !Allows(m_collection, name)) {
            Fail(qm::hr::invalid_index,
                 "the collection does not take elements named " + qm::to_utf8(name));
        }
        m_owner->CheckWritable();
        auto anchor = std::make_shared<Anchor>();
        anchor->detached = NewXmlElement(qm::to_utf8(name));
        anchor->collection = &m_collection;
        anchor->ownerSchema = m_owner->schema();
        anchor->ownerNames = m_owner->names();
        element = std::make_shared<ConfigElementImpl>(m_owner->view(), schema, std::move(anchor),
                                                      std::vector<std::string>{});
    });
}

qm::hresult ConfigCollectionImpl::AddElement(
    const std::shared_ptr<platform::ConfigElement>& element, int32_t position) {
    auto* added = dynamic_cast<ConfigElementImpl*>(element.get());
    if (!added) {
        return qm::hr::invalid_arg;
    }
    return Guarded(*m_owner->view()->session, [&] { Add(*added, position); });
}

void ConfigCollectionImpl::Add(ConfigElementImpl& element, int32_t position) {
    const std::shared_ptr<Anchor>& anchor = element.anchor();
    if (!anchor || !anchor->detached || anchor->collection != &m_collection ||
        element.view()->session != m_owner->view()->session) {
        Fail(qm::hr::invalid_arg, "the element was not made by this collection's CreateNewElement");
    }
    m_owner->CheckWritable();
    const XmlElement& entry = *anchor->detached;
    const ElementSchema& schema = *element.schema();
    for (const AttributeSchema& attribute : schema.attributes) {
        if (attribute.required && !entry.FindAttribute(qm::to_utf8(attribute.name))) {
            Fail(qm::hr::file_not_found, "the required attribute " + qm::to_utf8(attribute.name) +
                                             " of <" + entry.name + "> is missing");
        }
    }
    const MergedCollection& merged = Entries();
    for (const MergedEntry& existing : merged.entries) {
        if (existing.schema == &schema && SameKey(schema, *existing.element, entry)) {
            Fail(qm::hr::already_exists,
                 "the collection already holds an entry <" + entry.name + "> with that key");
        }
    }
    if (position < -1 || (position >= 0 && static_cast<size_t>(position) > merged.entries.size())) {
        Fail(qm::hr::invalid_index,
             "position " + std::to_string(position) + " is outside the collection");
    }
    // A position counts merged entries; in the file it falls among this level's own entries.
    size_t ordinal = std::string::npos;
    if (position >= 0) {
        const size_t target = m_owner->anchor() ? AnchorLevel(*m_owner->view(), *m_owner->anchor())
                                                : m_owner->view()->target;
        ordinal = static_cast<size_t>(
            std::count_if(merged.entries.begin(), merged.entries.begin() + position,
                          [&](const MergedEntry& e) { return e.level == target; }));
    }
    SectionView& view = *m_owner->view();
    const XmlLayout& layout = view.levels[view.target].file->document.layout;
    std::shared_ptr<XmlElement> node = std::move(anchor->detached);
    const uint64_t id = node->id;
    if (!m_owner->anchor()) {
        ConfigSession::Writable holder = view.session->EnsureSection(
            view.levels[view.target], view.sectionNames(), m_owner->names());
        InsertEntry(*holder.element, m_collection, node, ordinal, layout);
        anchor->level = view.target;
        anchor->path = holder.path;
        anchor->path.push_back({id, ChildIndexOf(*holder.element, id)});
    } else {
        XmlElement& holder = m_owner->Writable();
        InsertEntry(holder, m_collection, node, ordinal, layout);
        // The way from the owner's entry down to the new one.
        const XmlElement* owner = ResolveAnchor(view, *m_owner->anchor());
        FoundElement found = DescendByNames({owner, {}}, m_owner->names());
        anchor->parent = m_owner->anchor();
        anchor->path = found.path;
        anchor->path.push_back({id, ChildIndexOf(holder, id)});
        anchor->ownerNames.clear();
    }
    view.session->MarkChanged();
}

qm::hresult ConfigCollectionImpl::DeleteElement(uint32_t index) {
    return Guarded(*m_owner->view()->session, [&] { Delete(index); });
}

void ConfigCollectionImpl::Delete(uint32_t index) {
    m_owner->CheckWritable();
    const MergedCollection& merged = Entries();
    if (index >= merged.entries.size()) {
        Fail(qm::hr::invalid_index, "the collection has " + std::to_string(merged.entries.size()) +
                                        " entries; there is no entry " + std::to_string(index));
    }
    SectionView& view = *m_owner->view();
    const MergedEntry entry = merged.entries[index];
    const uint64_t id = entry.element->id;
    std::shared_ptr<Anchor> anchor = AnchorFor(*m_owner, m_collection, merged, index);
    if (AnchorLevel(view, *anchor) == view.target) {
        // The holder of the entry: its anchor without the last step.
        Anchor holderAnchor = *anchor;
        holderAnchor.path.pop_back();
        XmlElement& holder = MutableAnchor(view, holderAnchor);
        RemoveChildElement(holder, ChildIndexOf(holder, id));
    } else {
        if (m_owner->anchor() || m_collection.removeElement.empty()) {
            Fail(qm::hr::lock_violation,
                 "an inherited entry of this collection cannot be removed here");
        }
        std::shared_ptr<XmlElement> remove =
            RemoveEntryFor(m_collection, *entry.schema, *entry.element);
        ConfigSession::Writable holder = view.session->EnsureSection(
            view.levels[view.target], view.sectionNames(), m_owner->names());
        InsertEntry(*holder.element, m_collection, std::move(remove), std::string::npos,
                    view.levels[view.target].file->document.layout);
    }
    view.session->MarkChanged();
}

}  // namespace webrig::sim::iis7
