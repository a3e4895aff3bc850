#pragma once
// The elements, collections and properties that GetAdminSection hands out. Reads show the
// effective configuration at the section's path (inherited values, merged collections, schema
// defaults); writes record the local change at the level the commit path selects.

#include <memory>
#include <string>
#include <vector>

#include "platform/iis_config.h"
#include "platform/sim/iis7/config_failure.h"
#include "platform/sim/iis7/config_session.h"
#include "platform/sim/iis7/schema.h"
#include "platform/sim/iis7/section_declarations.h"

namespace webrig::sim::iis7 {

// One section as GetAdminSection opened it.
struct SectionView {
    std::shared_ptr<ConfigSession> session;
    const SectionSchema* schema = nullptr;
    // "system.webServer", "handlers"
    const std::vector<std::string>& sectionNames() const noexcept { return schema->elementNames; }
    std::vector<ConfigLevel> levels;  // top down
    size_t target = 0;                // the level that receives changes
    // lock_violation when the section may not be written at the target level.
    qm::hresult writeRefusal = qm::hr::ok;
    std::string refusalText;
};

// Where a collection entry lives; shared by the handles of the entry and of what it holds, so
// that they follow it when it is added, or copied down to the level being written.
struct Anchor {
    // Entries of a collection held by another entry live below that entry.
    std::shared_ptr<Anchor> parent;
    // From the parent entry's element, or from the document root.
    NodePath path;
    size_t level = 0;  // entries without a parent: the level of view.levels
    // A new entry before AddElement.
    std::shared_ptr<XmlElement> detached;
    // Entries of a collection merged across levels: the collection's element below the section.
    std::vector<std::string> ownerNames;
    const CollectionSchema* collection = nullptr;
    const ElementSchema* ownerSchema = nullptr;
};

class ConfigElementImpl final : public platform::ConfigElement,
                                public std::enable_shared_from_this<ConfigElementImpl> {
  public:
    ConfigElementImpl(std::shared_ptr<SectionView> view, const ElementSchema* schema,
                      std::shared_ptr<Anchor> anchor, std::vector<std::string> names);

    qm::hresult GetName(qm::wstring& name) override;
    qm::hresult GetCollection(std::shared_ptr<platform::ElementCollection>& collection) override;
    qm::hresult GetElementByName(qm::wstring_view name,
                                 std::shared_ptr<platform::ConfigElement>& element) override;
    qm::hresult GetPropertyByName(qm::wstring_view name,
                                  std::shared_ptr<platform::ConfigProperty>& property) override;

    const std::shared_ptr<SectionView>& view() const noexcept { return m_view; }
    const ElementSchema* schema() const noexcept { return m_schema; }
    const std::shared_ptr<Anchor>& anchor() const noexcept { return m_anchor; }
    const std::vector<std::string>& names() const noexcept { return m_names; }

    // The elements this one is made of, top level first: one per level for the section's own
    // elements, at most one for a collection entry.
    std::vector<FoundElement> ReadElements() const;
    // The attribute's text as the configuration holds it at the section's path (local,
    // inherited, from a defaults element, or the schema default), decrypted.
    std::string EffectiveText(const AttributeSchema& attribute) const;
    // The element at the target level, created (or copied down) when needed; throws
    // ConfigFailure when the section may not be written there.
    XmlElement& Writable();
    void CheckWritable() const;

  private:
    std::optional<std::string> DefaultsText(const std::string& attribute) const;

    std::shared_ptr<SectionView> m_view;
    const ElementSchema* m_schema;
    std::shared_ptr<Anchor> m_anchor;  // null: the section's own element tree
    std::vector<std::string> m_names;  // below the section element or the anchor's element
};

// Anchors.
const XmlElement* ResolveAnchor(const SectionView& view, const Anchor& anchor);
XmlElement& MutableAnchor(SectionView& view, Anchor& anchor);
// The anchor a nested entry hangs from, at the top.
const Anchor& RootAnchor(const Anchor& anchor);
// The level an anchored entry lives at (the target level for new entries).
size_t AnchorLevel(const SectionView& view, const Anchor& anchor);
// Copies an inherited entry down to the target level (with a <remove> of the inherited one),
// and moves the anchor there.
void CopyEntryDown(SectionView& view, Anchor& anchor, const ElementSchema& entry);

// Runs an operation of the seam, turning a ConfigFailure into its HRESULT.
template <typename Operation>
qm::hresult Guarded(ConfigSession& session, Operation&& operation) {
    try {
        operation();
        return qm::hr::ok;
    } catch (const ConfigFailure& failure) {
        session.SetError(failure.text);
        return failure.hr;
    } catch (const std::bad_alloc&) {
        return qm::hr::out_of_memory;
    }
}

}  // namespace webrig::sim::iis7
