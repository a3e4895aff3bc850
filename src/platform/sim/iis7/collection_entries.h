#pragma once
// How a collection's entries come together across levels: <add> entries append (or, where the
// schema says mergeAppend="false", go before the inherited ones), <remove> drops an inherited
// entry by its key, <clear> drops all inherited entries.

#include <memory>
#include <string>
#include <vector>

#include "platform/sim/iis7/collection_keys.h"
#include "platform/sim/iis7/config_objects.h"
#include "platform/sim/iis7/schema.h"

namespace webrig::sim::iis7 {

struct MergedEntry {
    const XmlElement* element = nullptr;
    const ElementSchema* schema = nullptr;
    uint32_t level = 0;
    uint32_t base = 0;   // the way to the collection's element, in MergedCollection::bases
    uint32_t index = 0;  // of the entry among that element's children, when merged

    // The step from the collection's element to the entry.
    PathStep Step() const { return {element->id, index}; }
};

struct MergedCollection {
    std::vector<MergedEntry> entries;
    std::vector<NodePath> bases;
};

// The entries of the collection `owner` holds, as they apply at the owner's path.
MergedCollection MergeEntries(const ConfigElementImpl& owner, const CollectionSchema& collection);

// The same, taken from the file cache when no file it comes from has changed since another
// manager merged it (and kept there for the next one).
std::shared_ptr<const MergedCollection> CachedEntries(const ConfigElementImpl& owner,
                                                      const CollectionSchema& collection);

// An anchor for entry `index`, for handing the entry out.
std::shared_ptr<Anchor> AnchorFor(const ConfigElementImpl& owner,
                                  const CollectionSchema& collection,
                                  const MergedCollection& merged, size_t index);

// Inserts an entry into the element that holds the collection: before the `ordinal`-th local
// <add> entry, or after the last entry for npos (entries come before other child elements).
void InsertEntry(XmlElement& owner, const CollectionSchema& collection, XmlElementPtr entry,
                 size_t ordinal, const XmlLayout& layout);

// A <remove> entry naming the key of `entry`.
std::shared_ptr<XmlElement> RemoveEntryFor(const CollectionSchema& collection,
                                           const ElementSchema& schema, const XmlElement& entry);

}  // namespace webrig::sim::iis7
