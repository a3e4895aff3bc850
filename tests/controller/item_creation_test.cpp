// Creation of single items: which backend creation a virtual directory gets, what "already
// exists" leaves alone, and the marker of a pool this installation created.

#include <gtest/gtest.h>

#include "controller/flow_fixture.h"
#include "testing/case_name.h"

namespace webrig::testing {
namespace {

using ::testing::_;
using ::testing::Return;

enum class Creation { application, virtualDirectory, both };

struct ItemTypeCase {
    const char* what;
    int32_t itemType;
    Creation creation;
};

class VRootCreationTest : public FlowTest, public ::testing::WithParamInterface<ItemTypeCase> {
  protected:
    VRootCreationTest() {
        website = bag.AddWebsite(u"Site").record;
        website->SiteNumber = u"5";
        website->Port = u"80";
        vroot.ParentSite = u"Site";
        vroot.DisplayName = u"shop";
        EXPECT_CALL(backend(), OpenKeyToWebsite(nullptr, nullptr, nullptr)).WillOnce(Return(0));
    }

    CIISWebsiteProp* website = nullptr;
    CIISVRootProp vroot;
};

TEST_P(VRootCreationTest, ItemTypeChoosesTheCreationAndAnExistingItemIsLeftAlone) {
    vroot.ItemType = GetParam().itemType;
    EXPECT_CALL(backend(), FindSiteWithId(_)).WillOnce(Return(true));
    switch (GetParam().creation) {
        case Creation::application:
            EXPECT_CALL(backend(), CreateApplication(_, &vroot)).WillOnce(Return(183));
            break;
        case Creation::virtualDirectory:
            EXPECT_CALL(backend(), CreateVirtualDirectory(_, _)).WillOnce(Return(183));
            break;
        case Creation::both:
            EXPECT_CALL(backend(), AppCreate(_, &vroot)).WillOnce(Return(183));
            break;
    }
    // No setting is written: the strict double would fail on it.
    EXPECT_EQ(slots().CreateVRoot(vroot), 0);
    EXPECT_EQ(sink.logLines.back(), u"Application already exists");
    EXPECT_EQ(vroot.ActionTaken, 0);
}

INSTANTIATE_TEST_SUITE_P(
    ItemTypes, VRootCreationTest,
    ::testing::Values(ItemTypeCase{"application", 2, Creation::application},
                      ItemTypeCase{"virtual_directory", 3, Creation::virtualDirectory},
                      ItemTypeCase{"legacy", 1, Creation::both},
                      ItemTypeCase{"legacy_flag", static_cast<int32_t>(0x80000003u),
                                   Creation::both}),
    NameFromWhat());

TEST_F(FlowTest, AVirtualDirectoryWhoseWebsiteIsMissingFailsAndSaysWhich) {
    CIISVRootProp vroot;
    vroot.DisplayName = u"shop";
    vroot.ParentSite = u"Website_Gone";
    EXPECT_CALL(backend(), OpenKeyToWebsite(nullptr, nullptr, nullptr)).WillOnce(Return(0));
    EXPECT_EQ(slots().CreateVRoot(vroot), qm::status::vroot_website_missing);
    EXPECT_NE(sink.logLines.back().find(u"names the website 'Website_Gone'"), qm::wstring::npos);
    EXPECT_EQ(slots().RemoveVRoot(vroot), qm::status::vroot_website_missing);
    EXPECT_NE(sink.logLines.back().find(u"names the website 'Website_Gone'"), qm::wstring::npos);
}

}  // namespace
}  // namespace webrig::testing
