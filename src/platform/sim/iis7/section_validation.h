#pragma once
// Reading is as strict as IIS: when a section is read, what the files hold for it must be what
// the schema describes. Every attribute and child element must be known, spelled as the schema
// spells it, and every value must pass its type and validator; otherwise reading the section
// fails with 0x8007000D and IIS's message, naming the file and line. Only the section read is
// checked, so the other sections of the same file stay readable, and only where the section
// applies (the levels on the way to the path read).

#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "platform/sim/iis7/config_objects.h"
#include "platform/sim/iis7/schema.h"
#include "platform/sim/iis7/xml_tree.h"

namespace webrig::sim::iis7 {

// Elements of configuration files already found valid, with each one's schema. Each entry keeps
// its element alive, and a shared element is copied before it changes, so an element found here
// is still the one that was checked.
class ValidElements {
  public:
    std::unique_lock<std::mutex> Lock() const { return std::unique_lock(m_mutex); }
    // Under the lock.
    bool Contains(const XmlElement* element, const ElementSchema* schema) const;
    void Add(const XmlElementPtr& element, const ElementSchema* schema);

  private:
    struct Key {
        const XmlElement* element;
        const ElementSchema* schema;
        bool operator==(const Key&) const = default;
    };
    struct KeyHash {
        size_t operator()(const Key& key) const noexcept;
    };
    mutable std::mutex m_mutex;
    std::unordered_map<Key, XmlElementPtr, KeyHash> m_valid;
};

// Why IIS refuses `text` as a value of `attribute` ("Enum must be one of Integrated, Classic"),
// or nullopt when the value is accepted.
std::optional<std::string> ValueRefusal(const AttributeSchema& attribute, std::string_view text);

// Checks every definition of the view's section on the way to its path, top level first;
// throws ConfigFailure (0x8007000D, "file(line): message") at the first thing IIS refuses.
void ValidateSection(const SectionView& view, ValidElements& valid);

}  // namespace webrig::sim::iis7
