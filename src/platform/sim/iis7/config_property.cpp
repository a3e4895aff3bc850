#include "platform/sim/iis7/config_property.h"

#include "platform/sim/iis7/attribute_value.h"
#include "platform/sim/iis7/config_failure.h"

namespace webrig::sim::iis7 {
namespace {

PropertyValue FromVariant(const platform::Variant& value) {
    return std::visit(
        [](const auto& held) -> PropertyValue {
            using Held = std::decay_t<decltype(held)>;
            if constexpr (std::is_integral_v<Held> && !std::is_same_v<Held, bool>) {
                return static_cast<int64_t>(held);
            } else {
                return held;
            }
        },
        value);
}

platform::Variant ToVariant(const PropertyValue& value) {
    return std::visit(
        [](const auto& held) -> platform::Variant {
            using Held = std::decay_t<decltype(held)>;
            if constexpr (std::is_same_v<Held, int64_t>) {
                // Unsigned attributes travel as their 32 bits, as in a VT_UI4 read as VT_I4.
                return static_cast<int32_t>(static_cast<uint32_t>(held));
            } else {
                return held;
            }
        },
        value);
}

std::string Describe(const platform::Variant& value) {
    if (const auto* text = std::get_if<qm::wstring>(&value)) {
        return "\"" + qm::to_utf8(*text) + "\"";
    }
    if (const auto* number = std::get_if<int32_t>(&value)) {
        return std::to_string(*number);
    }
    if (const auto* flag = std::get_if<bool>(&value)) {
        return *flag ? "true" : "false";
    }
    return "an empty value";
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
        value = ToVariant(ReadAttributeValue(m_attribute, qm::from_utf8(text)));
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
        std::optional<qm::wstring> text = NormalizeAttributeValue(m_attribute, FromVariant(value));
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
