#pragma once
// The controller over the IIS 7+ configuration backend.

#include "controller/vista_backend_binding.h"

extern template class webrig::controller::VistaBackendBinding<CIisFunctionsVista>;

class CBrindleVistaController final
    : public webrig::controller::VistaBackendBinding<CIisFunctionsVista> {
  public:
    explicit CBrindleVistaController(webrig::platform::Platform& platform)
        : VistaBackendBinding(platform) {}
};
