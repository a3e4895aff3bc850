#pragma once
// IAppHostProperty: one attribute of an element, typed by the schema.

#include <memory>

#include "platform/iis_config.h"
#include "platform/sim/iis7/config_objects.h"

namespace webrig::sim::iis7 {

class ConfigPropertyImpl final : public platform::ConfigProperty {
  public:
    ConfigPropertyImpl(std::shared_ptr<ConfigElementImpl> element,
                       const AttributeSchema& attribute);

    qm::hresult GetName(qm::wstring& name) override;
    qm::hresult GetValue(platform::Variant& value) override;
    qm::hresult PutValue(const platform::Variant& value) override;
    qm::hresult GetStringValue(qm::wstring& value) override;

  private:
    std::shared_ptr<ConfigElementImpl> m_element;
    const AttributeSchema& m_attribute;
};

}  // namespace webrig::sim::iis7
