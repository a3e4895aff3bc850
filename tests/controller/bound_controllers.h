#pragma once
// Controllers bound to strict backend doubles over a fresh simulated machine, with the records
// the tests hand to them.

#include <gmock/gmock.h>

#include "controller/backend_doubles.h"
#include "controller/legacy_backend_binding.h"
#include "controller/vista_backend_binding.h"
#include "testing/temp_machine.h"

namespace webrig::testing {

using LegacyUnderTest = controller::LegacyBackendBinding<::testing::StrictMock<MockLegacyBackend>>;
using VistaUnderTest = controller::VistaBackendBinding<::testing::StrictMock<MockVistaBackend>>;

template <class Controller, class Backend>
struct BoundController {
    TempMachine temp;
    Controller controller{temp.machine()};
    CIISWebsiteProp website;
    CIISVRootProp vroot;
    CIISAppPoolProp pool;

    // The controller as install and uninstall code sees it.
    CIISVRootController& slots() { return controller; }
    Backend& backend() { return controller; }
};

using LegacyBound = BoundController<LegacyUnderTest, MockLegacyBackend>;
using VistaBound = BoundController<VistaUnderTest, MockVistaBackend>;

}  // namespace webrig::testing
