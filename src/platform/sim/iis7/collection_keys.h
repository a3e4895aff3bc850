#pragma once
// The keys of a collection's entries, to find an entry that repeats one. Each attribute the
// schema marks as a unique key is a key by itself; the combined-key attributes together are one
// more. Values compare as IIS compares them: exactly where the attribute is case-sensitive,
// ignoring letter case otherwise, with the schema's default for an attribute left out.
//
// A flat table of hashes: collections of ten thousand sites are merged for every setting the
// runtime commits, so adding an entry must not allocate.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/sim/iis7/schema.h"
#include "platform/sim/iis7/xml_tree.h"

namespace webrig::sim::iis7 {

// The value of a key attribute of `element`: as written, or the schema's default.
std::string_view KeyValue(const AttributeSchema& attribute, const XmlElement& element);

bool IsKeyAttribute(const AttributeSchema& attribute);

// Whether two entries share a key. Entries without key attributes never do.
bool SameKey(const ElementSchema& schema, const XmlElement& a, const XmlElement& b);

class CollectionKeys {
  public:
    // Which key of an entry: the index of a unique-key attribute, or kCombined.
    static constexpr uint32_t kCombined = UINT32_MAX;

    struct Clash {
        const XmlElement* element = nullptr;  // the entry that holds the key already
        uint32_t key = 0;
    };

    // Records the keys of `element` unless one of them is held already: then nothing is
    // recorded and the clash is returned.
    Clash Add(const ElementSchema& schema, const XmlElement& element);
    // Makes room for the keys of `entries` more entries of `schema`, so that adding them does
    // not grow the table step by step.
    void Reserve(const ElementSchema& schema, size_t entries);
    // Forgets the keys of an entry recorded before.
    void Remove(const ElementSchema& schema, const XmlElement& element);
    void Clear();

    // IIS's words for an entry whose key `key` another entry holds already.
    static std::string ClashText(const ElementSchema& schema, const XmlElement& element,
                                 uint32_t key);

  private:
    struct Slot {
        uint64_t hash = 0;
        const XmlElement* element = nullptr;  // null: free
        const ElementSchema* schema = nullptr;
        uint32_t key = 0;
        bool removed = false;
    };

    size_t Probe(uint64_t hash, const ElementSchema& schema, const XmlElement& element,
                 uint32_t key) const;
    void Insert(Slot slot);
    void Grow(size_t room = 0);

    std::vector<Slot> m_slots;
    size_t m_used = 0;  // live and removed slots
};

}  // namespace webrig::sim::iis7
