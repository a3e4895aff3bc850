#pragma once
// IAppHostElementCollection over the merged entries of a collection.

#include <memory>

#include "platform/iis_config.h"
#include "platform/sim/iis7/collection_entries.h"
#include "platform/sim/iis7/config_objects.h"

namespace webrig::sim::iis7 {

class ConfigCollectionImpl final : public platform::ElementCollection {
  public:
    ConfigCollectionImpl(std::shared_ptr<ConfigElementImpl> owner,
                         const CollectionSchema& collection);

    qm::hresult Count(uint32_t& count) override;
    qm::hresult Item(uint32_t index, std::shared_ptr<platform::ConfigElement>& element) override;
    qm::hresult AddElement(const std::shared_ptr<platform::ConfigElement>& element,
                           int32_t position) override;
    qm::hresult DeleteElement(uint32_t index) override;
    qm::hresult CreateNewElement(qm::wstring_view name,
                                 std::shared_ptr<platform::ConfigElement>& element) override;

  private:
    // The merged entries, computed again only after a change.
    const MergedCollection& Entries();
    void Add(ConfigElementImpl& element, int32_t position);
    void Delete(uint32_t index);

    std::shared_ptr<ConfigElementImpl> m_owner;
    const CollectionSchema& m_collection;
    std::shared_ptr<const MergedCollection> m_entries;
    uint64_t m_version = UINT64_MAX;
};

}  // namespace webrig::sim::iis7
