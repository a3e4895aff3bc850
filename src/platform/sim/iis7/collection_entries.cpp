#include "platform/sim/iis7/collection_entries.h"

#include <algorithm>

#include "platform/sim/iis7/config_failure.h"
#include "platform/sim/iis7/config_path.h"

namespace webrig::sim::iis7 {
namespace {

std::vector<std::string> AddNames(const CollectionSchema& collection) {
    std::vector<std::string> names;
    for (const std::u16string& add : collection.addElements) {
        names.push_back(qm::to_utf8(add));
    }
    return names;
}

bool IsIn(const std::vector<std::string>& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

// Applies one level's <add>, <remove> and <clear> entries to what came from above.
void ApplyLevel(MergedCollection& merged, CollectionKeys* keys, const FoundElement& holder,
                size_t level, const std::string& fileName, const CollectionSchema& collection,
                const ElementSchema& ownerSchema) {
    const std::string clearName = qm::to_utf8(collection.clearElement);
    const std::string removeName = qm::to_utf8(collection.removeElement);
    const std::vector<std::string> addNames = AddNames(collection);
    // Entries of one collection nearly always share one name: look its schema up once.
    std::string_view lastName;
    const ElementSchema* lastSchema = nullptr;
    bool reserved = false;
    const size_t base = merged.bases.size();
    merged.bases.push_back(holder.path);
    std::vector<MergedEntry> local;
    local.reserve(holder.element->children.size());
    const auto drop = [&](std::vector<MergedEntry>& entries, const XmlElement& remove) {
        std::erase_if(entries, [&](const MergedEntry& entry) {
            if (!SameKey(*entry.schema, *entry.element, remove)) {
                return false;
            }
            if (keys) {
                keys->Remove(*entry.schema, *entry.element);
            }
            return true;
        });
    };
    const XmlList<XmlChild>& children = holder.element->children;
    for (size_t i = 0; i < children.size(); ++i) {
        const XmlElement* element = children[i].element.get();
        if (!element) {
            continue;
        }
        if (!clearName.empty() && element->name == clearName) {
            merged.entries.clear();
            local.clear();
            if (keys) {
                keys->Clear();
            }
        } else if (!removeName.empty() && element->name == removeName) {
            drop(merged.entries, *element);
            drop(local, *element);
        } else if (IsIn(addNames, element->name)) {
            if (element->name != lastName) {
                lastName = element->name;
                lastSchema = ownerSchema.FindEntry(qm::from_utf8(element->name));
                if (keys && lastSchema && !reserved) {
                    keys->Reserve(*lastSchema, children.size() - i);
                    reserved = true;
                }
            }
            if (const ElementSchema* schema = lastSchema) {
                if (keys) {
                    if (const CollectionKeys::Clash clash = keys->Add(*schema, *element);
                        clash.element) {
                        Fail(qm::hr::already_exists,
                             fileName + "(" + std::to_string(element->line) +
                                 "): " + CollectionKeys::ClashText(*schema, *element, clash.key));
                    }
                }
                local.push_back({element, schema, static_cast<uint32_t>(level),
                                 static_cast<uint32_t>(base), static_cast<uint32_t>(i)});
            }
        }
    }
    if (merged.entries.empty()) {
        merged.entries = std::move(local);
        return;
    }
    const auto at = collection.mergeAppend ? merged.entries.end() : merged.entries.begin();
    merged.entries.insert(at, local.begin(), local.end());
}

}  // namespace

MergedCollection MergeEntries(const ConfigElementImpl& owner, const CollectionSchema& collection) {
    MergedCollection merged;
    // Where the schema allows duplicate entries, keys are not checked.
    CollectionKeys checked;
    CollectionKeys* keys = collection.allowDuplicates ? nullptr : &checked;
    const SectionView& view = *owner.view();
    if (!owner.anchor()) {
        for (size_t level = 0; level < view.levels.size(); ++level) {
            for (const FoundElement& section :
                 view.session->SectionsAt(view.levels[level], view.sectionNames())) {
                const FoundElement holder = DescendByNames(section, owner.names());
                if (holder.element) {
                    ApplyLevel(merged, keys, holder, level, view.levels[level].file->displayName,
                               collection, *owner.schema());
                }
            }
        }
        return merged;
    }
    const XmlElement* anchored = ResolveAnchor(view, *owner.anchor());
    if (!anchored) {
        return merged;
    }
    const FoundElement holder = DescendByNames({anchored, {}}, owner.names());
    if (holder.element) {
        const size_t level = AnchorLevel(view, *owner.anchor());
        ApplyLevel(merged, keys, holder, level, view.levels[level].file->displayName, collection,
                   *owner.schema());
    }
    return merged;
}

std::shared_ptr<const MergedCollection> CachedEntries(const ConfigElementImpl& owner,
                                                      const CollectionSchema& collection) {
    const SectionView& view = *owner.view();
    std::shared_ptr<MergedViews> views;
    std::vector<XmlElementPtr> roots;
    // Entries of an entry's collection are few and merged from one element: not worth keeping.
    if (!owner.anchor()) {
        const WorkingFile& appHost = *view.levels.front().file;
        if (!appHost.Changed()) {
            views =
                view.session->machine().cache->MergedViewsOf(appHost.hostPath, appHost.readRoot);
        }
        for (const ConfigLevel& level : view.levels) {
            if (!views || level.file->Changed()) {
                views = nullptr;
                break;
            }
            // A file that does not exist adds nothing, whatever stands in for it here.
            roots.push_back(level.file->loaded.document ? level.file->readRoot : nullptr);
        }
    }
    if (!views) {
        return std::make_shared<const MergedCollection>(MergeEntries(owner, collection));
    }
    // The collection, where it lies in the section, and the levels it is merged from.
    std::string key = std::to_string(reinterpret_cast<uintptr_t>(&collection));
    for (const std::string& name : owner.names()) {
        key.append("/").append(name);
    }
    for (const ConfigLevel& level : view.levels) {
        key.append("|").append(level.file->hostPath);
        for (const qm::wstring& segment : level.location) {
            key.append("/").append(qm::to_utf8(segment));
        }
    }
    if (std::shared_ptr<const MergedCollection> found = views->Find(key, roots)) {
        return found;
    }
    auto merged = std::make_shared<const MergedCollection>(MergeEntries(owner, collection));
    views->Store(key, std::move(roots), merged);
    return merged;
}

std::shared_ptr<Anchor> AnchorFor(const ConfigElementImpl& owner,
                                  const CollectionSchema& collection,
                                  const MergedCollection& merged, size_t index) {
    const MergedEntry& entry = merged.entries[index];
    auto anchor = std::make_shared<Anchor>();
    anchor->path = merged.bases[entry.base];
    anchor->path.push_back(entry.Step());
    anchor->level = entry.level;
    anchor->collection = &collection;
    anchor->ownerSchema = owner.schema();
    if (owner.anchor()) {
        anchor->parent = owner.anchor();
    } else {
        anchor->ownerNames = owner.names();
    }
    return anchor;
}

void InsertEntry(XmlElement& owner, const CollectionSchema& collection, XmlElementPtr entry,
                 size_t ordinal, const XmlLayout& layout) {
    const std::string clearName = qm::to_utf8(collection.clearElement);
    const std::string removeName = qm::to_utf8(collection.removeElement);
    const std::vector<std::string> addNames = AddNames(collection);
    std::vector<size_t> adds;
    size_t lastEntry = std::string::npos;
    size_t firstElement = std::string::npos;
    for (size_t i = 0; i < owner.children.size(); ++i) {
        const XmlElement* element = owner.children[i].element.get();
        if (!element) {
            continue;
        }
        if (firstElement == std::string::npos) {
            firstElement = i;
        }
        const bool isAdd = IsIn(addNames, element->name);
        if (isAdd) {
            adds.push_back(i);
        }
        if (isAdd || (!clearName.empty() && element->name == clearName) ||
            (!removeName.empty() && element->name == removeName)) {
            lastEntry = i;
        }
    }
    size_t before = std::string::npos;
    if (ordinal < adds.size()) {
        before = adds[ordinal];
    } else if (lastEntry != std::string::npos) {
        for (size_t i = lastEntry + 1; i < owner.children.size(); ++i) {
            if (owner.children[i].element) {
                before = i;
                break;
            }
        }
    } else {
        before = firstElement;
    }
    InsertChildElement(owner, before, std::move(entry), layout);
}

std::shared_ptr<XmlElement> RemoveEntryFor(const CollectionSchema& collection,
                                           const ElementSchema& schema, const XmlElement& entry) {
    auto remove = NewXmlElement(qm::to_utf8(collection.removeElement));
    for (const AttributeSchema& attribute : schema.attributes) {
        if (!IsKeyAttribute(attribute)) {
            continue;
        }
        const std::string_view value = KeyValue(attribute, entry);
        if (entry.FindAttribute(attribute.utf8Name) || !value.empty()) {
            remove->SetAttribute(attribute.utf8Name, value);
        }
    }
    return remove;
}

}  // namespace webrig::sim::iis7
