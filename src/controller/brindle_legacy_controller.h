#pragma once
// The controller over the IIS 6 metabase backend.

#include "controller/legacy_backend_binding.h"

extern template class webrig::controller::LegacyBackendBinding<CIisFunctionsLegacy>;

class CBrindleLegacyController final
    : public webrig::controller::LegacyBackendBinding<CIisFunctionsLegacy> {
  public:
    explicit CBrindleLegacyController(webrig::platform::Platform& platform)
        : LegacyBackendBinding(platform) {}
};
