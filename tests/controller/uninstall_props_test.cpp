// The project's uninstall properties, written to and removed from the product's
// uninstall-information key.

#include <gtest/gtest.h>

#include "controller/bound_controllers.h"
#include "settings/uninstall_information.h"

namespace webrig::testing {
namespace {

using ::testing::Return;

class UninstallPropsTest : public ::testing::Test {
  protected:
    UninstallPropsTest() {
        bag.productCode = u"{AAAAAAAA-0000-0000-0000-000000000001}";
        bag.SetUninstallProp(u"InstallDir", u"C:\\Shop");
        bag.SetUninstallProp(u"SiteName", u"Shop");
        EXPECT_CALL(bound.backend(), InitIISObject()).WillOnce(Return(0));
        bound.controller.SetPropertyBag(bag);
    }

    // The product key's values, name to text; empty when the key is missing.
    std::map<qm::wstring, qm::wstring> StoredValues(const qm::wstring& productCode) {
        platform::Registry& registry = bound.temp.machine().registry();
        platform::ScopedRegKey key(registry);
        std::map<qm::wstring, qm::wstring> values;
        if (registry.OpenKey(platform::kLocalMachine, settings::UninstallInfoKeyPath(productCode),
                             platform::key_access::read, key.receive()) != 0) {
            return values;
        }
        qm::wstring name;
        platform::RegValue value;
        for (uint32_t i = 0; registry.EnumValue(key.get(), i, name, value) == 0; ++i) {
            EXPECT_EQ(value.type, platform::reg_type::sz) << qm::to_utf8(name);
            values[name] = value.AsString();
        }
        return values;
    }

    LegacyBound bound;
    CIISPropertyBag bag;
};

TEST_F(UninstallPropsTest, EachEntryBecomesAValueOfTheProductKey) {
    EXPECT_EQ(bound.slots().WriteUninstallProps(), 0);
    EXPECT_EQ(
        StoredValues(bag.productCode),
        (std::map<qm::wstring, qm::wstring>{{u"InstallDir", u"C:\\Shop"}, {u"SiteName", u"Shop"}}));
}

TEST_F(UninstallPropsTest, RemovalTakesOnlyTheEntriesValues) {
    settings::WriteSiteNumberValue(bound.temp.machine().registry(), bag.productCode, u"SHOP_SITE",
                                   u"4");
    ASSERT_EQ(bound.slots().WriteUninstallProps(), 0);
    EXPECT_EQ(bound.slots().RemoveUninstallProps(), 0);
    EXPECT_EQ(StoredValues(bag.productCode),
              (std::map<qm::wstring, qm::wstring>{{u"SHOP_SITE", u"4"}}));
}

TEST_F(UninstallPropsTest, RemovingWhatWasNeverWrittenIsFine) {
    EXPECT_EQ(bound.slots().RemoveUninstallProps(), 0);
    EXPECT_TRUE(StoredValues(bag.productCode).empty());
}

TEST_F(UninstallPropsTest, WithoutAProductCodeTheFixedCodeIsUsed) {
    bag.productCode.clear();
    ASSERT_EQ(bound.slots().WriteUninstallProps(), 0);
    EXPECT_EQ(StoredValues(settings::kFallbackProductCode).size(), 2u);
    EXPECT_EQ(bound.slots().RemoveUninstallProps(), 0);
    EXPECT_TRUE(StoredValues(settings::kFallbackProductCode).empty());
}

}  // namespace
}  // namespace webrig::testing
