#pragma once
// services.json: the machine's Windows services, each with its state and start type and with
// the behaviour a test or an installer author scripts for it: how long a start or stop stays
// pending, the checkpoints and wait hints it reports meanwhile, and the errors it answers with.
//
//   {
//     "managerError": 0,
//     "services": {
//       "W3SVC": { "state": "running", "startType": "auto", "startPendingMs": 1500, ... }
//     }
//   }

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "support/case_insensitive.h"
#include "support/wide_string.h"

namespace webrig::sim {

enum class StartType { automatic, demand, disabled };

struct ServiceScript {
    uint32_t state = 1;  // a service_state value
    StartType startType = StartType::demand;
    // How long a start (or continue) stays pending; nullopt: it never ends.
    std::optional<uint32_t> startPendingMs = 0;
    // How long a stop stays pending; nullopt: it never ends.
    std::optional<uint32_t> stopPendingMs = 0;
    // The wait hint reported while pending.
    uint32_t waitHintMs = 0;
    // The checkpoint goes up by one this often while pending; 0: it never moves. It never moves
    // either in a transition that never ends.
    uint32_t checkPointEveryMs = 0;
    // Win32 codes the calls fail with (0: they do not).
    uint32_t openError = 0;
    uint32_t queryError = 0;
    uint32_t startError = 0;
    uint32_t stopError = 0;
    // A stop request is accepted and then nothing happens.
    bool ignoresStop = false;

    bool operator==(const ServiceScript&) const = default;
};

struct ServicesFile {
    // OpenSCManager fails with this code (0: it does not); 120 plays a system without services.
    uint32_t managerError = 0;
    // Service names compare without regard to case, as the service control manager does.
    std::map<qm::wstring, ServiceScript, qm::iless> services;

    bool operator==(const ServicesFile&) const = default;
};

// Reads services.json text. Unknown keys, wrong types and unknown names are errors: throws
// MachineError naming `file` and the line.
ServicesFile ParseServicesFile(std::string_view json, const std::filesystem::path& file);

std::string FormatServicesFile(const ServicesFile& services);

}  // namespace webrig::sim
