#include "controller/brindle_legacy_controller.h"

template class webrig::controller::LegacyBackendBinding<CIisFunctionsLegacy>;
