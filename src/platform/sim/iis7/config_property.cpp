#include "platform/sim/iis7/config_property.h"

#include "platform/sim/iis7/attribute_value.h"
#include "platform/sim/iis7/config_failure.h"

namespace webrig::sim::iis7 {
namespace {

std::string Describe(const platform::Variant& value) {
    return std::visit(
        [](const auto& held) -> std::string {
            using Held = std::decay_t<decltype(held)>;
            if constexpr (std::is_same_v<Held, std::monostate>) {
                return "an empty value";
            } else if constexpr (std::is_same_v<Held, qm::wstring>) {
                return "\"" + qm::to_utf8(held) + "\"";
            } else if constexpr (std::is_same_v<Held, bool>) {
                return held ? "true" : "false";
            } else {
                return std::to_string(held);
            }
        },
        value);
}

}  // namespace

ConfigPropertyImpl::ConfigPropertyImpl(std::shared_ptr<ConfigElementImpl> element,
                                       const AttributeSchema& attribute)
    : m_element(std::move(element)), m_attribute(attribute) {}

qm::hresult ConfigPropertyImpl::GetName(qm::wstring& name) {
    name = m_attribute.name;
    return qm::hr::ok;
}

qm::hresult ConfigPropertyImpl::GetValue(platform::Variant& value) {
    return Guarded(*m_element->view()->session, [&] {
        const std::string text = m_element->EffectiveText(m_attribute);
        value = ReadAttributeValue(m_attribute, qm::from_utf8(text));
    });
}

qm::hresult ConfigPropertyImpl::GetStringValue(qm::wstring& value) {
    return Guarded(*m_element->view()->session, [&] {
        const qm::wstring text = qm::from_utf8(m_element->EffectiveText(m_attribute));
        std::optional<qm::wstring> normalized = NormalizeAttributeText(m_attribute, text);
        value = normalized ? std::move(*normalized) : text;
    });
}

qm::hresult ConfigPropertyImpl::PutValue(const platform::Variant& value) {
    ConfigSession& session = *m_element->view()->session;
    return Guarded(session, [&] {
        m_element->CheckWritable();
        std::optional<qm::wstring> text = NormalizeAttributeValue(m_attribute, value);
        if (!text) {
            Fail(qm::hr::invalid_data,
                 Describe(value) + " is not a valid value for " + qm::to_utf8(m_attribute.name));
        }
        if (m_attribute.encrypted && !text->empty()) {
            text = session.machine().encryption().Encrypt(*text);
        }
        m_element->Writable().SetAttribute(qm::to_utf8(m_attribute.name), qm::to_utf8(*text));
        session.MarkChanged();
    });
}

}  // namespace webrig::sim::iis7
