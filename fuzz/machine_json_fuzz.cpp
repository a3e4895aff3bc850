// The machine's JSON files: reading never crashes, a refused text is reported on one of its
// lines, and what the writer makes of a document reads back as the same document; the same holds
// for machine.json and services.json.

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "platform/sim/machine/json_file.h"
#include "platform/sim/machine/machine_config.h"
#include "platform/sim/machine/machine_error.h"
#include "platform/sim/services/service_script.h"

namespace {

void Check(bool condition) {
    if (!condition) {
        std::abort();
    }
}

void CheckLine(const webrig::sim::MachineError& error, std::string_view text) {
    Check(error.line() >= 1 && error.line() <= 1 + std::count(text.begin(), text.end(), '\n'));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace webrig::sim;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    try {
        const JsonFile file(text, "any.json");
        Check(JsonFile(FormatJson(file.root()), "again.json").root() == file.root());
    } catch (const MachineError& error) {
        CheckLine(error, text);
    }
    try {
        const auto config = ParseMachineConfig(text, "machine.json");
        const auto again = ParseMachineConfig(FormatMachineConfig(config), "machine.json");
        Check(again.osVersion.major == config.osVersion.major &&
              again.osVersion.minor == config.osVersion.minor &&
              again.osVersion.build == config.osVersion.build &&
              again.architecture == config.architecture &&
              again.ansiCodePage == config.ansiCodePage &&
              again.windowsDirectory == config.windowsDirectory &&
              again.iisVersion == config.iisVersion && again.iisFeatures == config.iisFeatures);
    } catch (const MachineError& error) {
        CheckLine(error, text);
    }
    try {
        const auto services = ParseServicesFile(text, "services.json");
        Check(ParseServicesFile(FormatServicesFile(services), "services.json") == services);
    } catch (const MachineError& error) {
        CheckLine(error, text);
    }
    return 0;
}
