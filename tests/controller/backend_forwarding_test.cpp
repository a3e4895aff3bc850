// Which controller operations reach the backend, with which arguments, and what comes back.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "controller/bound_controllers.h"
#include "testing/case_name.h"

namespace webrig::testing {
namespace {

using ::testing::Eq;
using ::testing::Ref;
using ::testing::Return;

constexpr platform::MetadataHandle kHandle{42};
constexpr platform::MetadataHandle kParent{7};
const char16_t kMultiString[] = u"a\0b\0";
const std::byte kBinary[4] = {};

// `what` names the controller operation; `check` calls it and looks at what the backend got.
template <class Bound>
struct SlotCase {
    const char* what;
    std::function<void(Bound&)> check;

    friend void PrintTo(const SlotCase& slotCase, std::ostream* out) { *out << slotCase.what; }
};

// ---- IIS 6 metabase backend: every backend slot forwards unchanged.

using LegacyCase = SlotCase<LegacyBound>;
class LegacySlotTest : public ::testing::TestWithParam<LegacyCase> {};

TEST_P(LegacySlotTest, ReachesTheBackendAsTabled) {
    LegacyBound bound;
    GetParam().check(bound);
}

INSTANTIATE_TEST_SUITE_P(
    Slots, LegacySlotTest,
    ::testing::Values(
        LegacyCase{"CloseKey",
                   [](LegacyBound& b) {
                       EXPECT_CALL(b.backend(), CloseKey(kHandle)).WillOnce(Return(-3));
                       EXPECT_EQ(b.slots().CloseKey(kHandle), -3);
                   }},
        LegacyCase{"OpenKeyLog",
                   [](LegacyBound& b) {
                       platform::MetadataHandle opened{};
                       EXPECT_CALL(b.backend(),
                                   OpenKeyLog(kParent, Eq(u"/LM/W3SVC"), 3u, 2000u, Ref(opened)))
                           .WillOnce(Return(-4));
                       EXPECT_EQ(b.slots().OpenKeyLog(kParent, u"/LM/W3SVC", 3, 2000, opened), -4);
                   }},
        LegacyCase{"GetData",
                   [](LegacyBound& b) {
                       platform::MetadataRecord record;
                       uint32_t required = 0;
                       EXPECT_CALL(b.backend(),
                                   GetData(kHandle, Eq(u"/ROOT"), Ref(record), Ref(required)))
                           .WillOnce(Return(-5));
                       EXPECT_EQ(b.slots().GetData(kHandle, u"/ROOT", record, required), -5);
                   }},
        LegacyCase{"EnumKeys",
                   [](LegacyBound& b) {
                       qm::wstring name;
                       EXPECT_CALL(b.backend(), EnumKeys(kHandle, Eq(u"/"), Ref(name), 9u))
                           .WillOnce(Return(-6));
                       EXPECT_EQ(b.slots().EnumKeys(kHandle, u"/", name, 9), -6);
                   }},
        LegacyCase{"InitIISObject",
                   [](LegacyBound& b) {
                       EXPECT_CALL(b.backend(), InitIISObject()).WillOnce(Return(-1121));
                       EXPECT_EQ(b.slots().InitIISObject(), -1121);
                   }},
        LegacyCase{"AddWebSiteFunction",
                   [](LegacyBound& b) {
                       EXPECT_CALL(b.backend(), AddWebSiteFunction(Ref(b.website)))
                           .WillOnce(Return(-2160));
                       EXPECT_EQ(b.slots().AddWebSiteFunction(b.website), -2160);
                   }},
        LegacyCase{"SetVRtStrProperty",
                   [](LegacyBound& b) {
                       EXPECT_CALL(b.backend(),
                                   SetVRtStrProperty(kHandle, 1002u, 1u, 0u,
                                                     Eq(u"IIsApplicationPool"), Eq(u"/")))
                           .WillOnce(Return(-9));
                       EXPECT_EQ(b.slots().SetVRtStrProperty(kHandle, 1002, 1, 0,
                                                             u"IIsApplicationPool", u"/"),
                                 -9);
                   }},
        LegacyCase{
            "RemoveWebsite",
            [](LegacyBound& b) {
                EXPECT_CALL(b.backend(), RemoveWebsite(Ref(b.website))).WillOnce(Return(-2352));
                EXPECT_EQ(b.slots().RemoveWebsite(b.website), -2352);
            }},
        LegacyCase{
            "AppCreate",
            [](LegacyBound& b) {
                EXPECT_CALL(b.backend(), AppCreate(Ref(b.website), &b.vroot)).WillOnce(Return(183));
                EXPECT_EQ(b.slots().AppCreate(b.website, &b.vroot), 183);
            }},
        LegacyCase{
            "CreateApplicationIsAppCreate",
            [](LegacyBound& b) {
                EXPECT_CALL(b.backend(), AppCreate(Ref(b.website), &b.vroot)).WillOnce(Return(-12));
                EXPECT_EQ(b.slots().CreateApplication(b.website, &b.vroot), -12);
            }},
        LegacyCase{"CreateVirtualDirectory",
                   [](LegacyBound& b) {
                       EXPECT_CALL(b.backend(),
                                   CreateVirtualDirectory(Ref(b.website), Ref(b.vroot)))
                           .WillOnce(Return(-2104));
                       EXPECT_EQ(b.slots().CreateVirtualDirectory(b.website, b.vroot), -2104);
                   }},
        LegacyCase{
            "CreateAppPoolFunction",
            [](LegacyBound& b) {
                EXPECT_CALL(b.backend(), CreateAppPoolFunction(Ref(b.pool))).WillOnce(Return(-14));
                EXPECT_EQ(b.slots().CreateAppPoolFunction(b.pool), -14);
            }},
        LegacyCase{"RemoveLegacyApplicationIsRemoveApplication",
                   [](LegacyBound& b) {
                       EXPECT_CALL(b.backend(), RemoveApplication(Ref(b.website), Ref(b.vroot)))
                           .WillOnce(Return(-15));
                       EXPECT_EQ(b.slots().RemoveLegacyApplication(b.website, b.vroot), -15);
                   }},
        LegacyCase{"RemoveApplication",
                   [](LegacyBound& b) {
                       EXPECT_CALL(b.backend(), RemoveApplication(Ref(b.website), Ref(b.vroot)))
                           .WillOnce(Return(-16));
                       EXPECT_EQ(b.slots().RemoveApplication(b.website, b.vroot), -16);
                   }},
        LegacyCase{"RemoveVirtualDirectory",
                   [](LegacyBound& b) {
                       EXPECT_CALL(b.backend(),
                                   RemoveVirtualDirectory(Ref(b.website), Ref(b.vroot)))
                           .WillOnce(Return(-17));
                       EXPECT_EQ(b.slots().RemoveVirtualDirectory(b.website, b.vroot), -17);
                   }},
        LegacyCase{
            "RemoveAppPoolFunction",
            [](LegacyBound& b) {
                EXPECT_CALL(b.backend(), RemoveAppPoolFunction(Ref(b.pool))).WillOnce(Return(-18));
                EXPECT_EQ(b.slots().RemoveAppPoolFunction(b.pool), -18);
            }},
        LegacyCase{"SetVRtDelimMultiszProperty",
                   [](LegacyBound& b) {
                       EXPECT_CALL(b.backend(), SetVRtDelimMultiszProperty(kHandle, 9020u, 1u,
                                                                           Eq(u"03:00;15:30")))
                           .WillOnce(Return(-19));
                       EXPECT_EQ(
                           b.slots().SetVRtDelimMultiszProperty(kHandle, 9020, 1, u"03:00;15:30"),
                           -19);
                   }},
        LegacyCase{"SetVRtMultiszProperty",
                   [](LegacyBound& b) {
                       EXPECT_CALL(b.backend(), SetVRtMultiszProperty(kHandle, 6014u, 2u,
                                                                      kMultiString, 10u, Eq(u"/")))
                           .WillOnce(Return(-20));
                       EXPECT_EQ(b.slots().SetVRtMultiszProperty(kHandle, 6014, 2, kMultiString, 10,
                                                                 u"/"),
                                 -20);
                   }},
        LegacyCase{"SetVRtDWProperty",
                   [](LegacyBound& b) {
                       EXPECT_CALL(b.backend(), SetVRtDWProperty(kHandle, 6000u, 1u, 5u))
                           .WillOnce(Return(-21));
                       EXPECT_EQ(b.slots().SetVRtDWProperty(kHandle, 6000, 1, 5), -21);
                   }},
        LegacyCase{"SetVRtBinProperty",
                   [](LegacyBound& b) {
                       EXPECT_CALL(b.backend(), SetVRtBinProperty(kHandle, 5506u, 1u, kBinary, 4u))
                           .WillOnce(Return(-22));
                       EXPECT_EQ(b.slots().SetVRtBinProperty(kHandle, 5506, 1, kBinary, 4), -22);
                   }},
        LegacyCase{"SetDynamicMetaDataProperties",
                   [](LegacyBound& b) {
                       EXPECT_CALL(b.backend(), SetDynamicMetaDataProperties(kHandle, Ref(b.vroot)))
                           .WillOnce(Return(-2008));
                       EXPECT_EQ(b.slots().SetDynamicMetaDataProperties(kHandle, b.vroot), -2008);
                   }},
        LegacyCase{"CompareDirValues",
                   [](LegacyBound& b) {
                       EXPECT_CALL(b.backend(), CompareDirValues(Ref(b.website), Ref(b.vroot)))
                           .WillOnce(Return(-2005));
                       EXPECT_EQ(b.slots().CompareDirValues(b.website, b.vroot), -2005);
                   }},
        LegacyCase{"OpenKeyToWebsite",
                   [](LegacyBound& b) {
                       platform::MetadataHandle opened{};
                       EXPECT_CALL(b.backend(), OpenKeyToWebsite(&b.website, &opened, &b.vroot))
                           .WillOnce(Return(-25));
                       EXPECT_EQ(b.slots().OpenKeyToWebsite(&b.website, &opened, &b.vroot), -25);
                   }},
        LegacyCase{"FindSiteWithId",
                   [](LegacyBound& b) {
                       EXPECT_CALL(b.backend(), FindSiteWithId(Ref(b.website)))
                           .WillOnce(Return(true))
                           .WillOnce(Return(false));
                       EXPECT_TRUE(b.slots().FindSiteWithId(b.website));
                       EXPECT_FALSE(b.slots().FindSiteWithId(b.website));
                   }},
        LegacyCase{"FindSiteWithPort",
                   [](LegacyBound& b) {
                       EXPECT_CALL(b.backend(), FindSiteWithPort(Ref(b.website)))
                           .WillOnce(Return(true))
                           .WillOnce(Return(false));
                       EXPECT_TRUE(b.slots().FindSiteWithPort(b.website));
                       EXPECT_FALSE(b.slots().FindSiteWithPort(b.website));
                   }},
        LegacyCase{"CanDeletePath",
                   [](LegacyBound& b) {
                       EXPECT_CALL(b.backend(), CanDeletePath(Eq(u"/LM/W3SVC/1/Root"), Eq(u"Root")))
                           .WillOnce(Return(true))
                           .WillOnce(Return(false));
                       EXPECT_TRUE(b.slots().CanDeletePath(u"/LM/W3SVC/1/Root", u"Root"));
                       EXPECT_FALSE(b.slots().CanDeletePath(u"/LM/W3SVC/1/Root", u"Root"));
                   }},
        LegacyCase{"GetNextWebsiteId",
                   [](LegacyBound& b) {
                       EXPECT_CALL(b.backend(), GetNextWebsiteId(Ref(b.website)))
                           .WillOnce([](CIISWebsiteProp& w) { w.SiteNumber = u"6"; });
                       b.slots().GetNextWebsiteId(b.website);
                       EXPECT_EQ(b.website.SiteNumber, u"6");
                   }},
        LegacyCase{"InstallMimeTypes",
                   [](LegacyBound& b) {
                       EXPECT_CALL(b.backend(), InstallMimeTypes(kHandle, Ref(b.vroot.mimeMaps)))
                           .WillOnce(Return(-30));
                       EXPECT_EQ(b.slots().InstallMimeTypes(kHandle, b.vroot.mimeMaps), -30);
                   }},
        LegacyCase{"CheckAspNetBitness",
                   [](LegacyBound& b) {
                       EXPECT_CALL(b.backend(), CheckAspNetBitness(Eq(u"ShopPool"), Eq(u"x86")))
                           .WillOnce(Return(true))
                           .WillOnce(Return(false));
                       EXPECT_TRUE(b.slots().CheckAspNetBitness(u"ShopPool", u"x86"));
                       EXPECT_FALSE(b.slots().CheckAspNetBitness(u"ShopPool", u"x86"));
                   }},
        // The strict backend double fails the test on any call these make.
        LegacyCase{"SetAppPoolPropertiesAnswersZero",
                   [](LegacyBound& b) { EXPECT_EQ(b.slots().SetAppPoolProperties(b.pool), 0); }},
        LegacyCase{"SetFormsAuthenticationAnswersZero",
                   [](LegacyBound& b) {
                       EXPECT_EQ(b.slots().SetFormsAuthentication(kHandle, true, true), 0);
                   }}),
    NameFromWhat());

// ---- IIS 7+ configuration backend: no metabase keys, and some arguments stay behind.

using VistaCase = SlotCase<VistaBound>;
class VistaSlotTest : public ::testing::TestWithParam<VistaCase> {};

TEST_P(VistaSlotTest, ReachesTheBackendAsTabled) {
    VistaBound bound;
    GetParam().check(bound);
}

INSTANTIATE_TEST_SUITE_P(
    Slots, VistaSlotTest,
    ::testing::Values(
        // The strict backend double fails the test on any call these make.
        VistaCase{"CloseKeyAnswersZero",
                  [](VistaBound& b) { EXPECT_EQ(b.slots().CloseKey(kHandle), 0); }},
        VistaCase{"OpenKeyLogAnswersZero",
                  [](VistaBound& b) {
                      platform::MetadataHandle opened{};
                      EXPECT_EQ(b.slots().OpenKeyLog(kParent, u"/LM/W3SVC", 2, 2000, opened), 0);
                  }},
        VistaCase{"GetDataAnswersZero",
                  [](VistaBound& b) {
                      platform::MetadataRecord record;
                      uint32_t required = 0;
                      EXPECT_EQ(b.slots().GetData(kHandle, u"/", record, required), 0);
                  }},
        VistaCase{"EnumKeysAnswersZero",
                  [](VistaBound& b) {
                      qm::wstring name;
                      EXPECT_EQ(b.slots().EnumKeys(kHandle, u"/", name, 0), 0);
                  }},
        VistaCase{
            "CompareDirValuesAnswersZero",
            [](VistaBound& b) { EXPECT_EQ(b.slots().CompareDirValues(b.website, b.vroot), 0); }},
        VistaCase{"InitIISObject",
                  [](VistaBound& b) {
                      EXPECT_CALL(b.backend(), InitIISObject()).WillOnce(Return(-7));
                      EXPECT_EQ(b.slots().InitIISObject(), -7);
                  }},
        VistaCase{
            "AddWebSiteFunction",
            [](VistaBound& b) {
                EXPECT_CALL(b.backend(), AddWebSiteFunction(Ref(b.website))).WillOnce(Return(-8));
                EXPECT_EQ(b.slots().AddWebSiteFunction(b.website), -8);
            }},
        VistaCase{"SetVRtStrPropertyWithoutTheHandle",
                  [](VistaBound& b) {
                      EXPECT_CALL(b.backend(),
                                  SetVRtStrProperty(7501u, 1u, 0u, Eq(u"shopuser"), Eq(u"/")))
                          .WillOnce(Return(-9));
                      EXPECT_EQ(b.slots().SetVRtStrProperty(kHandle, 7501, 1, 0, u"shopuser", u"/"),
                                -9);
                  }},
        VistaCase{"RemoveWebsite",
                  [](VistaBound& b) {
                      EXPECT_CALL(b.backend(), RemoveWebsite(Ref(b.website))).WillOnce(Return(-10));
                      EXPECT_EQ(b.slots().RemoveWebsite(b.website), -10);
                  }},
        VistaCase{
            "AppCreate",
            [](VistaBound& b) {
                EXPECT_CALL(b.backend(), AppCreate(Ref(b.website), nullptr)).WillOnce(Return(-11));
                EXPECT_EQ(b.slots().AppCreate(b.website, nullptr), -11);
            }},
        VistaCase{"CreateApplication",
                  [](VistaBound& b) {
                      EXPECT_CALL(b.backend(), CreateApplication(Ref(b.website), &b.vroot))
                          .WillOnce(Return(183));
                      EXPECT_EQ(b.slots().CreateApplication(b.website, &b.vroot), 183);
                  }},
        VistaCase{"CreateVirtualDirectory",
                  [](VistaBound& b) {
                      EXPECT_CALL(b.backend(), CreateVirtualDirectory(Ref(b.website), Ref(b.vroot)))
                          .WillOnce(Return(-13));
                      EXPECT_EQ(b.slots().CreateVirtualDirectory(b.website, b.vroot), -13);
                  }},
        VistaCase{"CreateAppPoolFunction",
                  [](VistaBound& b) {
                      const int32_t exists = static_cast<int32_t>(0x800700B7u);
                      EXPECT_CALL(b.backend(), CreateAppPoolFunction(Ref(b.pool)))
                          .WillOnce(Return(exists));
                      EXPECT_EQ(b.slots().CreateAppPoolFunction(b.pool), exists);
                  }},
        VistaCase{"RemoveLegacyApplication",
                  [](VistaBound& b) {
                      EXPECT_CALL(b.backend(),
                                  RemoveLegacyApplication(Ref(b.website), Ref(b.vroot)))
                          .WillOnce(Return(-15));
                      EXPECT_EQ(b.slots().RemoveLegacyApplication(b.website, b.vroot), -15);
                  }},
        VistaCase{"RemoveApplication",
                  [](VistaBound& b) {
                      EXPECT_CALL(b.backend(), RemoveApplication(Ref(b.website), Ref(b.vroot)))
                          .WillOnce(Return(-16));
                      EXPECT_EQ(b.slots().RemoveApplication(b.website, b.vroot), -16);
                  }},
        VistaCase{"RemoveVirtualDirectory",
                  [](VistaBound& b) {
                      EXPECT_CALL(b.backend(), RemoveVirtualDirectory(Ref(b.website), Ref(b.vroot)))
                          .WillOnce(Return(-17));
                      EXPECT_EQ(b.slots().RemoveVirtualDirectory(b.website, b.vroot), -17);
                  }},
        VistaCase{
            "RemoveAppPoolFunction",
            [](VistaBound& b) {
                EXPECT_CALL(b.backend(), RemoveAppPoolFunction(Ref(b.pool))).WillOnce(Return(-18));
                EXPECT_EQ(b.slots().RemoveAppPoolFunction(b.pool), -18);
            }},
        VistaCase{"SetVRtDelimMultiszPropertyWithoutTheHandle",
                  [](VistaBound& b) {
                      EXPECT_CALL(b.backend(),
                                  SetVRtDelimMultiszProperty(6008u, 2u, Eq(u"404,0,URL,/nf.aspx")))
                          .WillOnce(Return(-19));
                      EXPECT_EQ(b.slots().SetVRtDelimMultiszProperty(kHandle, 6008, 2,
                                                                     u"404,0,URL,/nf.aspx"),
                                -19);
                  }},
        VistaCase{"SetVRtMultiszPropertyWithoutTheHandle",
                  [](VistaBound& b) {
                      EXPECT_CALL(b.backend(),
                                  SetVRtMultiszProperty(6014u, 2u, kMultiString, 10u, Eq(u"/")))
                          .WillOnce(Return(-20));
                      EXPECT_EQ(
                          b.slots().SetVRtMultiszProperty(kHandle, 6014, 2, kMultiString, 10, u"/"),
                          -20);
                  }},
        VistaCase{
            "SetVRtDWPropertyWithoutTheHandle",
            [](VistaBound& b) {
                EXPECT_CALL(b.backend(), SetVRtDWProperty(9005u, 1u, 20u)).WillOnce(Return(-21));
                EXPECT_EQ(b.slots().SetVRtDWProperty(kHandle, 9005, 1, 20), -21);
            }},
        VistaCase{"SetVRtBinPropertyWithoutTheHandle",
                  [](VistaBound& b) {
                      EXPECT_CALL(b.backend(), SetVRtBinProperty(5506u, 1u, kBinary, 4u))
                          .WillOnce(Return(-22));
                      EXPECT_EQ(b.slots().SetVRtBinProperty(kHandle, 5506, 1, kBinary, 4), -22);
                  }},
        VistaCase{"SetDynamicMetaDataPropertiesWithoutTheHandle",
                  [](VistaBound& b) {
                      EXPECT_CALL(b.backend(), SetDynamicMetaDataProperties(Ref(b.website)))
                          .WillOnce(Return(-23));
                      EXPECT_EQ(b.slots().SetDynamicMetaDataProperties(kHandle, b.website), -23);
                  }},
        VistaCase{"OpenKeyToWebsite",
                  [](VistaBound& b) {
                      EXPECT_CALL(b.backend(), OpenKeyToWebsite(nullptr, nullptr, nullptr))
                          .WillOnce(Return(-25));
                      EXPECT_EQ(b.slots().OpenKeyToWebsite(nullptr, nullptr, nullptr), -25);
                  }},
        VistaCase{"FindSiteWithId",
                  [](VistaBound& b) {
                      EXPECT_CALL(b.backend(), FindSiteWithId(Ref(b.website)))
                          .WillOnce(Return(true))
                          .WillOnce(Return(false));
                      EXPECT_TRUE(b.slots().FindSiteWithId(b.website));
                      EXPECT_FALSE(b.slots().FindSiteWithId(b.website));
                  }},
        VistaCase{"FindSiteWithPort",
                  [](VistaBound& b) {
                      EXPECT_CALL(b.backend(), FindSiteWithPort(Ref(b.website)))
                          .WillOnce(Return(true))
                          .WillOnce(Return(false));
                      EXPECT_TRUE(b.slots().FindSiteWithPort(b.website));
                      EXPECT_FALSE(b.slots().FindSiteWithPort(b.website));
                  }},
        VistaCase{"CanDeletePathWithoutArguments",
                  [](VistaBound& b) {
                      EXPECT_CALL(b.backend(), CanDeletePath())
                          .WillOnce(Return(true))
                          .WillOnce(Return(false));
                      EXPECT_TRUE(b.slots().CanDeletePath(u"/LM/W3SVC/1/Root", u""));
                      EXPECT_FALSE(b.slots().CanDeletePath(u"/LM/W3SVC/1/Root", u"Root"));
                  }},
        VistaCase{"GetNextWebsiteId",
                  [](VistaBound& b) {
                      EXPECT_CALL(b.backend(), GetNextWebsiteId(Ref(b.website)))
                          .WillOnce([](CIISWebsiteProp& w) { w.SiteNumber = u"8"; });
                      b.slots().GetNextWebsiteId(b.website);
                      EXPECT_EQ(b.website.SiteNumber, u"8");
                  }},
        VistaCase{"InstallMimeTypesWithTheHandle",
                  [](VistaBound& b) {
                      EXPECT_CALL(b.backend(), InstallMimeTypes(kHandle, Ref(b.website.mimeMaps)))
                          .WillOnce(Return(1));
                      EXPECT_EQ(b.slots().InstallMimeTypes(kHandle, b.website.mimeMaps), 1);
                  }},
        VistaCase{"CheckAspNetBitness",
                  [](VistaBound& b) {
                      EXPECT_CALL(b.backend(), CheckAspNetBitness(Eq(u""), Eq(u"x64")))
                          .WillOnce(Return(true))
                          .WillOnce(Return(false));
                      EXPECT_TRUE(b.slots().CheckAspNetBitness(u"", u"x64"));
                      EXPECT_FALSE(b.slots().CheckAspNetBitness(u"", u"x64"));
                  }},
        VistaCase{"SetAppPoolProperties",
                  [](VistaBound& b) {
                      const int32_t notFound = static_cast<int32_t>(0x80070003u);
                      EXPECT_CALL(b.backend(), SetAppPoolProperties(Ref(b.pool)))
                          .WillOnce(Return(notFound));
                      EXPECT_EQ(b.slots().SetAppPoolProperties(b.pool), notFound);
                  }},
        VistaCase{"SetFormsAuthenticationWithoutTheHandle",
                  [](VistaBound& b) {
                      EXPECT_CALL(b.backend(), SetFormsAuthentication(true, false))
                          .WillOnce(Return(-2105));
                      EXPECT_EQ(b.slots().SetFormsAuthentication(kHandle, true, false), -2105);
                  }}),
    NameFromWhat());

}  // namespace
}  // namespace webrig::testing
