#include "platform/sim/iis7/collection_keys.h"

#include <algorithm>

#include "platform/sim/iis7/config_path.h"
#include "support/case_insensitive.h"
#include "support/wide_string.h"

namespace webrig::sim::iis7 {
namespace {

constexpr uint64_t kFnvOffset = 14695981039346656037ull;
constexpr uint64_t kFnvPrime = 1099511628211ull;

void Mix(uint64_t& hash, uint64_t value) {
    hash = (hash ^ value) * kFnvPrime;
}

// Hashes what letter case does not change: the upper-case UTF-16 units, as the comparison that
// ignores case sees them.
void MixFolded(uint64_t& hash, std::string_view value) {
    const bool ascii = std::all_of(value.begin(), value.end(),
                                   [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    if (ascii) {
        for (const char c : value) {
            Mix(hash, static_cast<uint64_t>((c >= 'a' && c <= 'z') ? c - 'a' + 'A' : c));
        }
        return;
    }
    for (const char16_t unit : qm::to_upper(qm::from_utf8(value))) {
        Mix(hash, unit);
    }
}

template <typename Visit>
void ForEachKeyAttribute(const ElementSchema& schema, uint32_t key, Visit visit) {
    if (key != CollectionKeys::kCombined) {
        visit(schema.attributes[key]);
        return;
    }
    for (const AttributeSchema& attribute : schema.attributes) {
        if (attribute.isCombinedKey) {
            visit(attribute);
        }
    }
}

uint64_t HashKey(const ElementSchema& schema, const XmlElement& element, uint32_t key) {
    uint64_t hash = kFnvOffset;
    Mix(hash, reinterpret_cast<uintptr_t>(&schema));
    Mix(hash, key);
    ForEachKeyAttribute(schema, key, [&](const AttributeSchema& attribute) {
        const std::string_view value = KeyValue(attribute, element);
        if (attribute.caseSensitive) {
            for (const char c : value) {
                Mix(hash, static_cast<unsigned char>(c));
            }
        } else {
            MixFolded(hash, value);
        }
        Mix(hash, 0x10000);  // ends the value: no unit has this number
    });
    return hash;
}

bool SameKeyValues(const ElementSchema& schema, uint32_t key, const XmlElement& a,
                   const XmlElement& b) {
    bool same = true;
    ForEachKeyAttribute(schema, key, [&](const AttributeSchema& attribute) {
        const std::string_view x = KeyValue(attribute, a);
        const std::string_view y = KeyValue(attribute, b);
        same = same && (attribute.caseSensitive ? x == y : EqualsIgnoringCase(x, y));
    });
    return same;
}

// The keys an entry of `schema` has.
template <typename Visit>
void ForEachKey(const ElementSchema& schema, Visit visit) {
    bool combined = false;
    for (uint32_t i = 0; i < schema.attributes.size(); ++i) {
        if (schema.attributes[i].isUniqueKey) {
            visit(i);
        }
        combined = combined || schema.attributes[i].isCombinedKey;
    }
    if (combined) {
        visit(CollectionKeys::kCombined);
    }
}

}  // namespace

std::string_view KeyValue(const AttributeSchema& attribute, const XmlElement& element) {
    const XmlAttribute* found = element.FindAttribute(attribute.utf8Name);
    return found ? std::string_view(found->value) : std::string_view(attribute.utf8Default);
}

bool IsKeyAttribute(const AttributeSchema& attribute) {
    return attribute.isUniqueKey || attribute.isCombinedKey;
}

bool SameKey(const ElementSchema& schema, const XmlElement& a, const XmlElement& b) {
    bool same = false;
    ForEachKey(schema, [&](uint32_t key) { same = same || SameKeyValues(schema, key, a, b); });
    return same;
}

std::string CollectionKeys::ClashText(const ElementSchema& schema, const XmlElement& element,
                                      uint32_t key) {
    std::string names;
    std::string values;
    bool first = true;
    ForEachKeyAttribute(schema, key, [&](const AttributeSchema& attribute) {
        const std::string_view separator = first ? "" : ", ";
        names.append(separator).append(attribute.utf8Name);
        values.append(separator).append(KeyValue(attribute, element));
        first = false;
    });
    const std::string what = "Cannot add duplicate collection entry of type '" + element.name;
    if (key != kCombined) {
        return what + "' with unique key attribute '" + names + "' set to '" + values + "'";
    }
    return what + "' with combined key attributes '" + names + "' respectively set to '" + values +
           "'";
}

size_t CollectionKeys::Probe(uint64_t hash, const ElementSchema& schema, const XmlElement& element,
                             uint32_t key) const {
    if (m_slots.empty()) {
        return SIZE_MAX;
    }
    const size_t mask = m_slots.size() - 1;
    for (size_t i = hash & mask;; i = (i + 1) & mask) {
        const Slot& slot = m_slots[i];
        if (!slot.element) {
            return SIZE_MAX;
        }
        if (!slot.removed && slot.hash == hash && slot.schema == &schema && slot.key == key &&
            SameKeyValues(schema, key, *slot.element, element)) {
            return i;
        }
    }
}

CollectionKeys::Clash CollectionKeys::Add(const ElementSchema& schema, const XmlElement& element) {
    Clash clash;
    ForEachKey(schema, [&](uint32_t key) {
        if (clash.element) {
            return;
        }
        const uint64_t hash = HashKey(schema, element, key);
        if (const size_t at = Probe(hash, schema, element, key); at != SIZE_MAX) {
            clash = {m_slots[at].element, key};
        } else {
            Insert({hash, &element, &schema, key, false});
        }
    });
    if (clash.element) {
        Remove(schema, element);  // the keys recorded before the clash
    }
    return clash;
}

void CollectionKeys::Remove(const ElementSchema& schema, const XmlElement& element) {
    if (m_slots.empty()) {
        return;
    }
    const size_t mask = m_slots.size() - 1;
    ForEachKey(schema, [&](uint32_t key) {
        const uint64_t hash = HashKey(schema, element, key);
        for (size_t i = hash & mask; m_slots[i].element; i = (i + 1) & mask) {
            Slot& slot = m_slots[i];
            if (!slot.removed && slot.element == &element && slot.key == key) {
                slot.removed = true;
                return;
            }
        }
    });
}

void CollectionKeys::Clear() {
    std::fill(m_slots.begin(), m_slots.end(), Slot{});
    m_used = 0;
}

void CollectionKeys::Insert(Slot slot) {
    if ((m_used + 1) * 2 > m_slots.size()) {
        Grow();
    }
    const size_t mask = m_slots.size() - 1;
    size_t i = slot.hash & mask;
    while (m_slots[i].element) {
        i = (i + 1) & mask;
    }
    m_slots[i] = slot;
    ++m_used;
}

void CollectionKeys::Reserve(const ElementSchema& schema, size_t entries) {
    size_t keys = 0;
    ForEachKey(schema, [&](uint32_t) { ++keys; });
    if ((m_used + keys * entries + 1) * 2 > m_slots.size()) {
        Grow(keys * entries);
    }
}

void CollectionKeys::Grow(size_t room) {
    std::vector<Slot> old = std::move(m_slots);
    const size_t live = static_cast<size_t>(std::count_if(
        old.begin(), old.end(), [](const Slot& slot) { return slot.element && !slot.removed; }));
    // At most half full: probes stay short, and ten thousand sites' keys take 2 MB, not 4.
    size_t capacity = 16;
    while (capacity < (live + room + 1) * 2) {
        capacity *= 2;
    }
    m_slots.assign(capacity, Slot{});
    m_used = 0;
    const size_t mask = m_slots.size() - 1;
    for (const Slot& slot : old) {
        if (slot.element && !slot.removed) {
            size_t i = slot.hash & mask;
            while (m_slots[i].element) {
                i = (i + 1) & mask;
            }
            m_slots[i] = slot;
            ++m_used;
        }
    }
}

}  // namespace webrig::sim::iis7
