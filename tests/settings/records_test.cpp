// The rule of the record setters that must not store an empty text: each refuses it with its own
// status and keeps the text it had.

#include <gtest/gtest.h>

#include "settings/iis_app_pool_prop.h"
#include "settings/iis_component_prop.h"
#include "settings/iis_meta_data_prop.h"
#include "settings/iis_mime_map_prop.h"
#include "settings/iis_vroot_app_map_prop.h"
#include "settings/iis_vroot_prop.h"
#include "settings/iis_web_service_extension_prop.h"
#include "settings/iis_website_prop.h"

namespace {

template <class Record>
void ExpectRefusesEmpty(int32_t (Record::*setter)(qm::wstring), qm::wstring Record::*field,
                        int32_t status) {
    Record record;
    EXPECT_EQ((record.*setter)(u" "), 0) << status;  // one blank is not empty
    EXPECT_EQ((record.*setter)(u""), status);
    EXPECT_EQ(record.*field, u" ") << status;
}

TEST(RecordSetters, RefuseAnEmptyTextWithTheFieldsStatus) {
    using V = CIISVRootProp;
    ExpectRefusesEmpty<V>(&V::SetKey, &V::Key, -1212);
    ExpectRefusesEmpty<V>(&V::SetDisplayName, &V::DisplayName, -1202);
    ExpectRefusesEmpty<V>(&V::SetRootDir, &V::RootDir, -1203);
    ExpectRefusesEmpty<V>(&V::SetComponent, &V::Component, -1204);
    ExpectRefusesEmpty<V>(&V::SetParentSite, &V::ParentSite, -1228);
    using W = CIISWebsiteProp;
    ExpectRefusesEmpty<W>(&W::SetKey, &W::Key, -1212);
    ExpectRefusesEmpty<W>(&W::SetRootDir, &W::RootDir, -1203);
    ExpectRefusesEmpty<W>(&W::SetPort, &W::Port, -1213);
    ExpectRefusesEmpty<W>(&W::SetSiteNumber, &W::SiteNumber, -1214);
    using P = CIISAppPoolProp;
    ExpectRefusesEmpty<P>(&P::SetKey, &P::Key, -1216);
    ExpectRefusesEmpty<P>(&P::SetName, &P::Name, -1217);
    ExpectRefusesEmpty<P>(&P::SetExtra, &P::Extra, -1218);
    ExpectRefusesEmpty<P>(&P::SetManagedPipelineMode, &P::ManagedPipelineMode, -1229);
    using E = CIISWebServiceExtensionProp;
    ExpectRefusesEmpty<E>(&E::SetKey, &E::Key, -1223);
    ExpectRefusesEmpty<E>(&E::SetExtra, &E::Extra, -1224);
    ExpectRefusesEmpty<E>(&E::SetFile, &E::File, -1225);
    ExpectRefusesEmpty<E>(&E::SetDescription, &E::Description, -1226);
    ExpectRefusesEmpty<E>(&E::SetGroup, &E::Group, -1227);
    using A = CIISVRootAppMapProp;
    ExpectRefusesEmpty<A>(&A::SetKey, &A::Key, -1206);
    ExpectRefusesEmpty<A>(&A::SetExtension, &A::Extension, -1207);
    ExpectRefusesEmpty<A>(&A::SetExecPath, &A::ExecPath, -1208);
    ExpectRefusesEmpty<A>(&A::SetVerb, &A::Verb, -1209);
    ExpectRefusesEmpty(&CIISMimeMapProp::SetExtension, &CIISMimeMapProp::Extension, -1230);
    ExpectRefusesEmpty(&CIISMimeMapProp::SetType, &CIISMimeMapProp::Type, -1230);
    ExpectRefusesEmpty(&CIISMetaDataProp::SetValue, &CIISMetaDataProp::Value, -1215);
    ExpectRefusesEmpty(&CIISComponentProp::SetName, &CIISComponentProp::Name, -1210);
    ExpectRefusesEmpty(&CIISComponentProp::SetFeature, &CIISComponentProp::feature, -1210);
}

// A virtual directory must have a display name, a website need not: the override holds also
// when the record is set through its base.
TEST(RecordSetters, OnlyAVirtualDirectoryRequiresADisplayName) {
    CIISVRootProp vroot;
    CIISWebsiteProp website;
    CIISCommonProp& vrootCommon = vroot;
    CIISCommonProp& websiteCommon = website;
    ASSERT_EQ(vrootCommon.SetDisplayName(u"Shop"), 0);
    EXPECT_EQ(vrootCommon.SetDisplayName(u""), -1202);
    EXPECT_EQ(vroot.DisplayName, u"Shop");
    ASSERT_EQ(websiteCommon.SetDisplayName(u"Shop"), 0);
    EXPECT_EQ(websiteCommon.SetDisplayName(u""), 0);
    EXPECT_EQ(website.DisplayName, u"");
    EXPECT_EQ(websiteCommon.SetRootDir(u""), -1203);
}

}  // namespace
