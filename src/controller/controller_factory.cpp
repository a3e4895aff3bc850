#include "controller/controller_factory.h"

#include "controller/brindle_legacy_controller.h"
#include "controller/brindle_vista_controller.h"

namespace webrig::controller {

std::unique_ptr<CIISProVRootController> BuildController(bool useIis7Objects,
                                                        platform::Platform& platform) {
    if (useIis7Objects) {
        return std::make_unique<CBrindleVistaController>(platform);
    }
    return std::make_unique<CBrindleLegacyController>(platform);
}

}  // namespace webrig::controller
