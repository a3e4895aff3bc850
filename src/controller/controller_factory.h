#pragma once
// The controller an install or uninstall export builds for its one call.

#include <memory>

#include "controller/iis_pro_vroot_controller.h"

namespace webrig::controller {

// A CBrindleVistaController over the IIS 7+ configuration system when `useIis7Objects`, else a
// CBrindleLegacyController over the IIS 6 metabase. Both reach IIS through `platform`, which
// must outlive the controller.
std::unique_ptr<CIISProVRootController> BuildController(bool useIis7Objects,
                                                        platform::Platform& platform);

}  // namespace webrig::controller
