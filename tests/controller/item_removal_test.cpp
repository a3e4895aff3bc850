// The guards of removal: which pools and websites stay, and the markers that decide it.

#include <gtest/gtest.h>

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
        return registry().OpenKey(platform::kLocalMachine,
                                  settings::UninstallInformationKeyOf(kProduct),
                                  platform::key_access::read, key.receive()) == 0;
    }

    platform::Registry& registry() { return temp.machine().registry(); }
};

struct PoolCase {
    const char* what;
    const char16_t* name;
    const char16_t* overwriteExisting;
    bool marked;
    bool removed;
};

class PoolRemovalTest : public RemovalTest, public ::testing::WithParamInterface<PoolCase> {};

TEST_P(PoolRemovalTest, RemovesOnlyPoolsThisProductMayRemove) {
    CIISAppPoolProp pool;
    pool.Key = u"Pool_Section";
    pool.Name = GetParam().name;
    pool.OverwriteExisting = GetParam().overwriteExisting;
    if (GetParam().marked) {
        SetMarker(pool.Key);
    }
    EXPECT_CALL(backend(), RemoveAppPoolFunction(Ref(pool))).Times(GetParam().removed ? 1 : 0);
    EXPECT_EQ(slots().RemoveAppPool(pool), 0);
}

INSTANTIATE_TEST_SUITE_P(Pools, PoolRemovalTest,
                         ::testing::Values(PoolCase{"existed_before", u"Shop", u"0", false, false},
                                           PoolCase{"created_here", u"Shop", u"0", true, true},
                                           PoolCase{"overwritten", u"Shop", u"1", false, true},
                                           PoolCase{"overwrite_empty", u"Shop", u"", false, true},
                                           PoolCase{"default_pool_any_case", u"defaultAPPPOOL",
                                                    u"1", true, false}),
                         NameFromWhat());

TEST_F(RemovalTest, TheProductKeyGoesWithItsLastMarker) {
    CIISAppPoolProp first;
    first.Key = u"A";
    first.Name = u"A";
    first.OverwriteExisting = u"0";
    CIISAppPoolProp second;
    second.Key = u"B";
    second.Name = u"B";
    second.OverwriteExisting = u"0";
    SetMarker(u"A");
    SetMarker(u"B");
    EXPECT_CALL(backend(), RemoveAppPoolFunction(_)).Times(2).WillRepeatedly(Return(0));
    EXPECT_EQ(slots().RemoveAppPool(first), 0);
    EXPECT_TRUE(ProductKeyExists());
    EXPECT_EQ(slots().RemoveAppPool(second), 0);
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
