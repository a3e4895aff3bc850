// The guards of removal: which pools and websites stay, and the markers that decide it.

#include <gtest/gtest.h>

#include <array>

#include "controller/flow_fixture.h"
#include "settings/uninstall_information.h"
#include "testing/case_name.h"

namespace webrig::testing {
namespace {

using ::testing::_;
using ::testing::Ref;
using ::testing::Return;

constexpr char16_t kProduct[] = u"{PRODUCT}";

class RemovalTest : public FlowTest {
  protected:
    RemovalTest() { bag.productCode = kProduct; }

    void SetMarker(const qm::wstring& poolKey) {
        platform::ScopedRegKey key(registry());
        ASSERT_EQ(settings::OpenOrCreateUninstallInformationKey(registry(), kProduct, key), 0u);
        registry().SetValue(key.get(), poolKey + u"_Installed", platform::RegValue::Dword(1));
    }

    bool ProductKeyExists() {
        platform::ScopedRegKey key(registry());
        return registry().OpenKey(platform::kLocalMachine, settings::UninstallInfoKeyPath(kProduct),
                                  platform::key_access::read, key.receive()) == 0;
    }

    platform::Registry& registry() { return temp.machine().registry(); }
};

TEST_F(RemovalTest, PoolsCreatedHereAreMarkedAndTheKeyGoesWithTheLastMarker) {
    std::array<CIISAppPoolProp, 2> pools;
    pools[0].Key = pools[0].Name = u"A";
    pools[1].Key = pools[1].Name = u"B";
    AcceptWrites();  // the new pools' settings
    EXPECT_CALL(backend(), SetAppPoolProperties(_)).Times(2).WillRepeatedly(Return(0));
    EXPECT_CALL(backend(), CreateAppPoolFunction(_))
        .WillOnce(Return(0))
        .WillOnce(Return(0))
        .WillOnce(Return(qm::status::app_pool_already_exists));
    for (CIISAppPoolProp& pool : pools) {
        pool.OverwriteExisting = u"0";
        EXPECT_EQ(slots().CreateAppPool(pool), 0);
        EXPECT_EQ(pool.ActionTaken, 3);
    }
    CIISAppPoolProp existing;
    existing.Key = existing.Name = u"C";
    existing.OverwriteExisting = u"0";
    EXPECT_EQ(slots().CreateAppPool(existing), 0);
    EXPECT_EQ(existing.ActionTaken, 0);
    EXPECT_CALL(backend(), RemoveAppPoolFunction(_)).Times(3).WillRepeatedly(Return(0));
    EXPECT_EQ(slots().RemoveAppPool(existing), 0) << "no marker: it stays";
    CIISAppPoolProp defaultPool;
    defaultPool.Name = u"defaultAPPPOOL";
    EXPECT_EQ(slots().RemoveAppPool(defaultPool), 0) << "never removed";
    existing.OverwriteExisting = u"";
    EXPECT_EQ(slots().RemoveAppPool(existing), 0) << "to be overwritten: removed";
    EXPECT_EQ(slots().RemoveAppPool(pools[0]), 0);
    EXPECT_TRUE(ProductKeyExists());
    EXPECT_EQ(slots().RemoveAppPool(pools[1]), 0);
    EXPECT_FALSE(ProductKeyExists());
}

struct SiteCase {
    const char* what;
    const char16_t* siteNumber;
    int32_t webSiteProps;
    bool siteRemoved;
};

class LastVRootTest : public RemovalTest, public ::testing::WithParamInterface<SiteCase> {};

TEST_P(LastVRootTest, TakesItsWebsiteOnlyWhenChosenAndNotTheDefault) {
    CIISWebsiteProp& website = *bag.AddWebsite(u"Site").record;
    website.SiteNumber = GetParam().siteNumber;
    website.Port = u"80";
    website.WebSiteProps = GetParam().webSiteProps;
    auto* vroot = bag.GetOrAddComponent(u"C").record->AddVRoot(u"VRoot_Shop").record;
    vroot->ParentSite = u"Site";
    vroot->ItemType = 2;
    EXPECT_CALL(backend(), FindSiteWithId(Ref(website))).WillOnce(Return(true));
    EXPECT_CALL(backend(), RemoveApplication(Ref(website), Ref(*vroot))).WillOnce(Return(0));
    if (GetParam().siteRemoved) {
        EXPECT_CALL(backend(), CanDeletePath()).Times(2).WillRepeatedly(Return(true));
        EXPECT_CALL(backend(), RemoveWebsite(Ref(website))).WillOnce(Return(0));
    }
    EXPECT_EQ(slots().RemoveVRootNamed(u"VRoot_Shop"), 0);
    EXPECT_EQ(vroot->ActionTaken, 2);
    EXPECT_EQ(slots().RemoveVRootNamed(u"vroot_shop"), 0) << "names are exact: nothing happens";
}

INSTANTIATE_TEST_SUITE_P(Sites, LastVRootTest,
                         ::testing::Values(SiteCase{"chosen", u"5", 1, true},
                                           SiteCase{"not_chosen", u"5", 2, false},
                                           SiteCase{"default_site", u"1", 1, false}),
                         NameFromWhat());

}  // namespace
}  // namespace webrig::testing
