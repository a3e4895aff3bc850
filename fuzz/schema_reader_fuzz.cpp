// Schema files come from the machine's schema folder, where a user may copy any file. The reader
// must never crash: any bytes are refused with a SchemaError or read, and a schema read holds
// defaults its own value rules accept.

#include <cstdlib>
#include <string>

#include "platform/sim/iis7/schema.h"
#include "platform/sim/iis7/section_validation.h"

namespace {

using namespace webrig::sim::iis7;

void Check(bool condition) {
    if (!condition) {
        std::abort();
    }
}

void CheckDefaults(const ElementSchema& element) {
    for (const AttributeSchema& attribute : element.attributes) {
        if (!attribute.defaultValue.empty() && attribute.timeSpanFormat == TimeSpanFormat::string &&
            !attribute.allowInfinite && !attribute.excludedRange) {
            Check(!ValueRefusal(attribute, attribute.utf8Default).has_value());
        }
    }
    for (const ElementSchema& child : element.children) {
        CheckDefaults(child);
    }
    for (const ElementSchema& entry : element.entries) {
        CheckDefaults(entry);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        const Schema schema = Schema::FromFiles({{"fuzz.xml", text}});
        for (const SectionSchema& section : schema.sections()) {
            Check(schema.FindSection(section.name) == &section);
            CheckDefaults(section.root);
        }
    } catch (const SchemaError&) {
    }
    return 0;
}
