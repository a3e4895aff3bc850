// The IIS 7+ value rules and the reader of encrypted attributes take text from configuration
// files. Neither may crash, a stored value must be accepted again unchanged, and reading it back
// must agree with its type.

#include <cstdlib>
#include <vector>

#include "platform/sim/iis7/attribute_value.h"
#include "platform/sim/iis7/config_encryption.h"
#include "platform/sim/iis7/schema.h"

namespace {

using namespace webrig::sim::iis7;

void Check(bool condition) {
    if (!condition) {
        std::abort();
    }
}

const std::vector<const AttributeSchema*>& EveryAttribute() {
    static const std::vector<const AttributeSchema*> attributes = [] {
        std::vector<const AttributeSchema*> all;
        std::vector<const ElementSchema*> pending;
        for (const SectionSchema& section : Schema::BuiltIn().sections()) {
            pending.push_back(&section.root);
        }
        while (!pending.empty()) {
            const ElementSchema* element = pending.back();
            pending.pop_back();
            for (const AttributeSchema& attribute : element->attributes) {
                all.push_back(&attribute);
            }
            for (const auto* list : {&element->children, &element->entries}) {
                for (const ElementSchema& next : *list) {
                    pending.push_back(&next);
                }
            }
        }
        return all;
    }();
    return attributes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) {
        return 0;
    }
    // The first two bytes choose the attribute, the rest is the value as UTF-8.
    const std::vector<const AttributeSchema*>& attributes = EveryAttribute();
    const AttributeSchema& attribute =
        *attributes[(size_t{data[0]} << 8 | data[1]) % attributes.size()];
    const qm::wstring text =
        qm::from_utf8(std::string_view(reinterpret_cast<const char*>(data + 2), size - 2));

    if (const std::optional<qm::wstring> stored = NormalizeAttributeText(attribute, text)) {
        Check(NormalizeAttributeText(attribute, *stored) == stored);
        const webrig::platform::Variant value = ReadAttributeValue(attribute, *stored);
        switch (attribute.type) {
            case AttributeType::string:
                Check(std::get<qm::wstring>(value) == *stored);
                break;
            case AttributeType::enumeration:
            case AttributeType::flags:
                Check(std::holds_alternative<int32_t>(value));
                break;
            default:
                // The typed value written back gives the same text.
                Check(!std::holds_alternative<qm::wstring>(value));
                Check(NormalizeAttributeValue(attribute, value) == stored);
                break;
        }
    }

    static const ConfigEncryption encryption(std::string(32, 'k'));
    if (const std::optional<qm::wstring> clear = encryption.Decrypt(text)) {
        Check(ConfigEncryption::IsEncrypted(text));
    }
    Check(encryption.Decrypt(encryption.Encrypt(text)) == text);
    return 0;
}
