// The JSON reader must never crash or recurse without bound, and what the writer makes of a
// document must read back as the same document; the same holds for machine.json and
// services.json.

#include <cstdlib>
#include <string_view>

#include "platform/sim/machine/json.h"
#include "platform/sim/machine/machine_config.h"
#include "platform/sim/machine/machine_error.h"
#include "platform/sim/services/service_script.h"

namespace {

void Check(bool condition) {
    if (!condition) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    try {
        const webrig::sim::JsonValue value = webrig::sim::ParseJson(text);
        Check(webrig::sim::ParseJson(webrig::sim::WriteJson(value)) == value);
    } catch (const webrig::sim::JsonError&) {
    }
    try {
        const auto config = webrig::sim::ParseMachineConfig(text, "machine.json");
        const auto again = webrig::sim::ParseMachineConfig(webrig::sim::FormatMachineConfig(config),
                                                           "machine.json");
        Check(again.osVersion.major == config.osVersion.major &&
              again.osVersion.minor == config.osVersion.minor &&
              again.osVersion.build == config.osVersion.build &&
              again.architecture == config.architecture &&
              again.ansiCodePage == config.ansiCodePage &&
              again.windowsDirectory == config.windowsDirectory &&
              again.iisVersion == config.iisVersion && again.iisFeatures == config.iisFeatures);
    } catch (const webrig::sim::MachineError&) {
    }
    try {
        const auto services = webrig::sim::ParseServicesFile(text, "services.json");
        Check(webrig::sim::ParseServicesFile(webrig::sim::FormatServicesFile(services),
                                             "services.json") == services);
    } catch (const webrig::sim::MachineError&) {
    }
    return 0;
}
