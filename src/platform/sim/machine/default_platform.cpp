// libwebrig.so runs on the simulated machine named by WEBRIG_MACHINE.

#include "platform/default_platform.h"

#include <cstdio>
#include <cstdlib>
#include <exception>

#include "platform/sim/machine/machine.h"
#include "platform/sim/machine/unavailable_machine.h"

namespace webrig::platform {

std::shared_ptr<Platform> OpenDefaultPlatform(qm::wstring& problem) {
    problem.clear();
    std::string reason;
    const char* folder = std::getenv("WEBRIG_MACHINE");
    if (folder == nullptr || *folder == '\0') {
        reason = "the environment variable WEBRIG_MACHINE is not set";
    } else {
        try {
            return std::shared_ptr<Platform>(sim::Machine::Open(folder));
        } catch (const std::exception& error) {
            reason = error.what();
        }
    }
    std::fprintf(stderr, "webrig: the simulated machine is unavailable: %s\n", reason.c_str());
    problem = qm::from_utf8(reason);
    return std::make_shared<sim::UnavailableMachine>(problem);
}

}  // namespace webrig::platform
