// The controllers the exports build, over their real backends.

#include "controller/controller_factory.h"

#include <gtest/gtest.h>

#include "controller/brindle_legacy_controller.h"
#include "controller/brindle_vista_controller.h"
#include "testing/temp_machine.h"

namespace webrig::testing {
namespace {

static_assert(std::is_base_of_v<CIISProVRootController, CBrindleLegacyController>);
static_assert(std::is_base_of_v<CIisFunctionsLegacy, CBrindleLegacyController>);
static_assert(std::is_base_of_v<CIISProVRootController, CBrindleVistaController>);
static_assert(std::is_base_of_v<CIisFunctionsVista, CBrindleVistaController>);

TEST(ControllerFactoryTest, BuildsTheControllerOfTheChosenBackend) {
    TempMachine temp;
    const auto vista = controller::BuildController(true, temp.machine());
    const auto legacy = controller::BuildController(false, temp.machine());
    EXPECT_NE(dynamic_cast<CBrindleVistaController*>(vista.get()), nullptr);
    EXPECT_NE(dynamic_cast<CBrindleLegacyController*>(legacy.get()), nullptr);
    EXPECT_TRUE(vista->IsVistaBackend());
    EXPECT_FALSE(legacy->IsVistaBackend());
}

}  // namespace
}  // namespace webrig::testing
