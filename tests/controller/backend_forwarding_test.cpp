// What the two bindings do between a controller slot and its backend. Most slots hand their
// arguments on and answer with the backend's result; a few of them stand for all here, with
// values that differ so that a swapped or dropped argument shows. The rest are the slots where a
// binding has its own answer or converts the arguments.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

#include "controller/bound_controllers.h"

namespace webrig::testing {
namespace {

using ::testing::Eq;
using ::testing::Ref;
using ::testing::Return;

constexpr platform::MetadataHandle kHandle{42};
constexpr platform::MetadataHandle kParent{7};
const char16_t kMultiString[] = u"a\0b\0";
const std::byte kBinary[4] = {};

TEST(LegacyBindingTest, PassesArgumentsAndResultsOnUnchanged) {
    LegacyBound b;
    platform::MetadataHandle opened{};
    EXPECT_CALL(b.backend(), OpenKeyLog(kParent, Eq(u"/LM/W3SVC"), 3u, 2000u, Ref(opened)))
        .WillOnce(Return(-4));
    EXPECT_EQ(b.slots().OpenKeyLog(kParent, u"/LM/W3SVC", 3, 2000, opened), -4);
    EXPECT_CALL(b.backend(), SetVRtStrProperty(kHandle, 1002u, 1u, 4u, Eq(u"Pool"), Eq(u"/")))
        .WillOnce(Return(-9));
    EXPECT_EQ(b.slots().SetVRtStrProperty(kHandle, 1002, 1, 4, u"Pool", u"/"), -9);
    EXPECT_CALL(b.backend(), SetVRtDWProperty(kHandle, 6000u, 1u, 5u)).WillOnce(Return(-21));
    EXPECT_EQ(b.slots().SetVRtDWProperty(kHandle, 6000, 1, 5), -21);
    EXPECT_CALL(b.backend(), SetVRtMultiszProperty(kHandle, 6014u, 2u, kMultiString, 10u, Eq(u"/")))
        .WillOnce(Return(-20));
    EXPECT_EQ(b.slots().SetVRtMultiszProperty(kHandle, 6014, 2, kMultiString, 10, u"/"), -20);
    EXPECT_CALL(b.backend(), RemoveApplication(Ref(b.website), Ref(b.vroot))).WillOnce(Return(-16));
    EXPECT_EQ(b.slots().RemoveApplication(b.website, b.vroot), -16);
    EXPECT_CALL(b.backend(), RemoveVirtualDirectory(Ref(b.website), Ref(b.vroot)))
        .WillOnce(Return(-17));
    EXPECT_EQ(b.slots().RemoveVirtualDirectory(b.website, b.vroot), -17);
    EXPECT_CALL(b.backend(), CanDeletePath(Eq(u"/LM/W3SVC/1/Root"), Eq(u"Root")))
        .WillOnce(Return(true));
    EXPECT_TRUE(b.slots().CanDeletePath(u"/LM/W3SVC/1/Root", u"Root"));
    EXPECT_CALL(b.backend(), GetNextWebsiteId(Ref(b.website))).WillOnce([](CIISWebsiteProp& w) {
        w.SiteNumber = u"6";
    });
    b.slots().GetNextWebsiteId(b.website);
    EXPECT_EQ(b.website.SiteNumber, u"6");
}

TEST(LegacyBindingTest, TheMetabaseMakesAndRemovesAnApplicationOneWayOnly) {
    LegacyBound b;
    EXPECT_CALL(b.backend(), AppCreate(Ref(b.website), &b.vroot)).WillOnce(Return(183));
    EXPECT_EQ(b.slots().CreateApplication(b.website, &b.vroot), 183);
    EXPECT_CALL(b.backend(), RemoveApplication(Ref(b.website), Ref(b.vroot))).WillOnce(Return(-15));
    EXPECT_EQ(b.slots().RemoveLegacyApplication(b.website, b.vroot), -15);
}

TEST(LegacyBindingTest, SettingsOfIis7AndLaterAnswerZeroWithoutTheBackend) {
    LegacyBound b;  // the strict double fails the test on any call
    EXPECT_EQ(b.slots().SetAppPoolProperties(std::as_const(b.pool)), 0);
    EXPECT_EQ(b.slots().SetFormsAuthentication(kHandle, true, true), 0);
    EXPECT_FALSE(b.slots().IsVistaBackend());
}

TEST(VistaBindingTest, TheMetabaseKeyOperationsAnswerZeroWithoutTheBackend) {
    VistaBound b;  // the strict double fails the test on any call
    platform::MetadataHandle opened{};
    platform::MetadataRecord record;
    uint32_t required = 0;
    qm::wstring name;
    EXPECT_EQ(b.slots().CloseKey(kHandle), 0);
    EXPECT_EQ(b.slots().OpenKeyLog(kParent, u"/LM/W3SVC", 2, 2000, opened), 0);
    EXPECT_EQ(b.slots().GetData(kHandle, u"/", record, required), 0);
    EXPECT_EQ(b.slots().EnumKeys(kHandle, u"/", name, 0), 0);
    EXPECT_EQ(b.slots().CompareDirValues(b.website, b.vroot), 0);
    EXPECT_TRUE(b.slots().IsVistaBackend());
}

TEST(VistaBindingTest, SettersGoOnWithoutTheKeyHandle) {
    VistaBound b;
    EXPECT_CALL(b.backend(), SetVRtStrProperty(7501u, 1u, 4u, Eq(u"shopuser"), Eq(u"/")))
        .WillOnce(Return(-9));
    EXPECT_EQ(b.slots().SetVRtStrProperty(kHandle, 7501, 1, 4, u"shopuser", u"/"), -9);
    EXPECT_CALL(b.backend(), SetVRtDelimMultiszProperty(6008u, 2u, Eq(u"404,0,URL,/nf.aspx")))
        .WillOnce(Return(-19));
    EXPECT_EQ(b.slots().SetVRtDelimMultiszProperty(kHandle, 6008, 2, u"404,0,URL,/nf.aspx"), -19);
    EXPECT_CALL(b.backend(), SetVRtMultiszProperty(6014u, 2u, kMultiString, 10u, Eq(u"/")))
        .WillOnce(Return(-20));
    EXPECT_EQ(b.slots().SetVRtMultiszProperty(kHandle, 6014, 2, kMultiString, 10, u"/"), -20);
    EXPECT_CALL(b.backend(), SetVRtDWProperty(9005u, 1u, 20u)).WillOnce(Return(-21));
    EXPECT_EQ(b.slots().SetVRtDWProperty(kHandle, 9005, 1, 20), -21);
    EXPECT_CALL(b.backend(), SetVRtBinProperty(5506u, 1u, kBinary, 4u)).WillOnce(Return(-22));
    EXPECT_EQ(b.slots().SetVRtBinProperty(kHandle, 5506, 1, kBinary, 4), -22);
    EXPECT_CALL(b.backend(), SetDynamicMetaDataProperties(Ref(b.website))).WillOnce(Return(-23));
    EXPECT_EQ(b.slots().SetDynamicMetaDataProperties(kHandle, b.website), -23);
    EXPECT_CALL(b.backend(), SetFormsAuthentication(true, false)).WillOnce(Return(-2105));
    EXPECT_EQ(b.slots().SetFormsAuthentication(kHandle, true, false), -2105);
    // The MIME maps alone keep it.
    EXPECT_CALL(b.backend(), InstallMimeTypes(kHandle, Ref(b.website.mimeMaps)))
        .WillOnce(Return(1));
    EXPECT_EQ(b.slots().InstallMimeTypes(kHandle, b.website.mimeMaps), 1);
}

TEST(VistaBindingTest, ThePathCheckLooksAtTheCurrentSiteInsteadOfItsArguments) {
    VistaBound b;
    EXPECT_CALL(b.backend(), CanDeletePath()).WillOnce(Return(true)).WillOnce(Return(false));
    EXPECT_TRUE(b.slots().CanDeletePath(u"/LM/W3SVC/1/Root", u""));
    EXPECT_FALSE(b.slots().CanDeletePath(u"/LM/W3SVC/1/Root", u"Root"));
}

TEST(VistaBindingTest, EachApplicationAndDirectorySlotReachesItsOwnOperation) {
    VistaBound b;
    EXPECT_CALL(b.backend(), AppCreate(Ref(b.website), nullptr)).WillOnce(Return(-11));
    EXPECT_EQ(b.slots().AppCreate(b.website, nullptr), -11);
    EXPECT_CALL(b.backend(), CreateApplication(Ref(b.website), &b.vroot)).WillOnce(Return(183));
    EXPECT_EQ(b.slots().CreateApplication(b.website, &b.vroot), 183);
    EXPECT_CALL(b.backend(), RemoveLegacyApplication(Ref(b.website), Ref(b.vroot)))
        .WillOnce(Return(-15));
    EXPECT_EQ(b.slots().RemoveLegacyApplication(b.website, b.vroot), -15);
    EXPECT_CALL(b.backend(), RemoveApplication(Ref(b.website), Ref(b.vroot))).WillOnce(Return(-16));
    EXPECT_EQ(b.slots().RemoveApplication(b.website, b.vroot), -16);
    EXPECT_CALL(b.backend(), RemoveVirtualDirectory(Ref(b.website), Ref(b.vroot)))
        .WillOnce(Return(-17));
    EXPECT_EQ(b.slots().RemoveVirtualDirectory(b.website, b.vroot), -17);
    const auto exists = static_cast<int32_t>(0x800700B7u);
    EXPECT_CALL(b.backend(), CreateAppPoolFunction(Ref(b.pool))).WillOnce(Return(exists));
    EXPECT_EQ(b.slots().CreateAppPoolFunction(b.pool), exists);
    EXPECT_CALL(b.backend(), FindSiteWithPort(Ref(b.website))).WillOnce(Return(true));
    EXPECT_TRUE(b.slots().FindSiteWithPort(b.website));
}

}  // namespace
}  // namespace webrig::testing
