#include "support/last_error.h"

#include <gtest/gtest.h>

namespace {

TEST(LastErrorGuard, RestoresTheValueWhenItGoes) {
    qm::set_last_error(5);
    {
        qm::last_error_guard guard;
        qm::set_last_error(1060);
        EXPECT_EQ(qm::get_last_error(), 1060u);
        qm::set_last_error(0);
    }
    EXPECT_EQ(qm::get_last_error(), 5u);
}

TEST(LastErrorGuard, NestedGuardsRestoreTheirOwnValues) {
    qm::set_last_error(1058);
    {
        qm::last_error_guard outer;
        qm::set_last_error(2);
        {
            qm::last_error_guard inner;
            qm::set_last_error(3);
        }
        EXPECT_EQ(qm::get_last_error(), 2u);
        qm::set_last_error(4);
    }
    EXPECT_EQ(qm::get_last_error(), 1058u);
}

}  // namespace
