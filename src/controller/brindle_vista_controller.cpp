#include "controller/brindle_vista_controller.h"

template class webrig::controller::VistaBackendBinding<CIisFunctionsVista>;
