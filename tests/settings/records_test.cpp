// The item records: their initial values and the rule every text setter follows.

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "settings/iis_app_pool_prop.h"
#include "settings/iis_component_prop.h"
#include "settings/iis_meta_data_prop.h"
#include "settings/iis_mime_map_prop.h"
#include "settings/iis_property_bag.h"
#include "settings/iis_vroot_app_map_prop.h"
#include "settings/iis_vroot_prop.h"
#include "settings/iis_web_service_extension_prop.h"
#include "settings/iis_website_prop.h"

namespace {

using qm::wstring;

// One text field of a record and its setter. `empty_status` is the status with which the setter
// refuses an empty text, 0 for a setter that stores it.
template <class Record>
struct TextField {
    const char* name;
    int32_t (Record::*setter)(wstring);
    wstring Record::*field;
    int32_t empty_status;
};

template <class Record>
struct IntField {
    const char* name;
    int32_t Record::*field;
    int32_t initial;
};

// The text fields of each record, with the statuses of the setters that refuse empty text.

template <class Record>
std::vector<TextField<Record>> CommonTextFields(int32_t display_name_status) {
    return {
        {"Key", &Record::SetKey, &Record::Key, -1212},
        {"ParentKey", &Record::SetParentKey, &Record::ParentKey, 0},
        {"DisplayName", &Record::SetDisplayName, &Record::DisplayName, display_name_status},
        {"RootDir", &Record::SetRootDir, &Record::RootDir, -1203},
        {"DefDoc", &Record::SetDefDoc, &Record::DefDoc, 0},
        {"AnonyUserName", &Record::SetAnonyUserName, &Record::AnonyUserName, 0},
        {"AnonyPasswrd", &Record::SetAnonyPasswrd, &Record::AnonyPasswrd, 0},
        {"CustomErrors", &Record::SetCustomErrors, &Record::CustomErrors, 0},
        {"AppName", &Record::SetAppName, &Record::AppName, 0},
        {"Aspversion", &Record::SetAspversion, &Record::Aspversion, 0},
        {"SSLCertPath", &Record::SetSSLCertPath, &Record::SSLCertPath, 0},
        {"AppPool", &Record::SetAppPool, &Record::AppPool, 0},
        {"SslPassword", &Record::SetSslPassword, &Record::SslPassword, 0},
        {"HostHeaderName", &Record::SetHostHeaderName, &Record::HostHeaderName, 0},
        {"AspVersionBitness", &Record::SetAspVersionBitness, &Record::AspVersionBitness, 0},
        {"AspNetRegistration", &Record::SetAspNetRegistration, &Record::AspNetRegistration, 0},
    };
}

std::vector<TextField<CIISVRootProp>> VRootTextFields() {
    auto fields = CommonTextFields<CIISVRootProp>(-1202);
    fields.push_back({"Component", &CIISVRootProp::SetComponent, &CIISVRootProp::Component, -1204});
    fields.push_back(
        {"ParentSite", &CIISVRootProp::SetParentSite, &CIISVRootProp::ParentSite, -1228});
    return fields;
}

std::vector<TextField<CIISWebsiteProp>> WebsiteTextFields() {
    auto fields = CommonTextFields<CIISWebsiteProp>(0);
    fields.push_back({"Port", &CIISWebsiteProp::SetPort, &CIISWebsiteProp::Port, -1213});
    fields.push_back({"IPAddress", &CIISWebsiteProp::SetIPAddress, &CIISWebsiteProp::IPAddress, 0});
    fields.push_back(
        {"SiteNumber", &CIISWebsiteProp::SetSiteNumber, &CIISWebsiteProp::SiteNumber, -1214});
    fields.push_back({"SiteNumberProperty", &CIISWebsiteProp::SetSiteNumberProperty,
                      &CIISWebsiteProp::SiteNumberProperty, 0});
    fields.push_back({"Component", &CIISWebsiteProp::SetComponent, &CIISWebsiteProp::Component, 0});
    return fields;
}

std::vector<TextField<CIISAppPoolProp>> AppPoolTextFields() {
    using P = CIISAppPoolProp;
    return {
        {"Key", &P::SetKey, &P::Key, -1216},
        {"Name", &P::SetName, &P::Name, -1217},
        {"Extra", &P::SetExtra, &P::Extra, -1218},
        {"User", &P::SetUser, &P::User, 0},
        {"UserPassword", &P::SetUserPassword, &P::UserPassword, 0},
        {"RecycleTimes", &P::SetRecycleTimes, &P::RecycleTimes, 0},
        {"CPUMon", &P::SetCPUMon, &P::CPUMon, 0},
        {"ManagedPipelineMode", &P::SetManagedPipelineMode, &P::ManagedPipelineMode, -1229},
        {"Enable32bitAppOnWin64", &P::SetEnable32bitAppOnWin64, &P::Enable32bitAppOnWin64, 0},
        {"ManagedRuntimeVersion", &P::SetManagedRuntimeVersion, &P::ManagedRuntimeVersion, 0},
        {"OverwriteExisting", &P::SetOverwriteExisting, &P::OverwriteExisting, 0},
    };
}

std::vector<TextField<CIISWebServiceExtensionProp>> ExtensionTextFields() {
    using E = CIISWebServiceExtensionProp;
    return {
        {"Key", &E::SetKey, &E::Key, -1223},
        {"Extra", &E::SetExtra, &E::Extra, -1224},
        {"File", &E::SetFile, &E::File, -1225},
        {"Description", &E::SetDescription, &E::Description, -1226},
        {"Group", &E::SetGroup, &E::Group, -1227},
    };
}

std::vector<TextField<CIISVRootAppMapProp>> AppMapTextFields() {
    using A = CIISVRootAppMapProp;
    return {
        {"Key", &A::SetKey, &A::Key, -1206},
        {"Extension", &A::SetExtension, &A::Extension, -1207},
        {"ExecPath", &A::SetExecPath, &A::ExecPath, -1208},
        {"Verb", &A::SetVerb, &A::Verb, -1209},
    };
}

std::vector<TextField<CIISMimeMapProp>> MimeMapTextFields() {
    return {
        {"Extension", &CIISMimeMapProp::SetExtension, &CIISMimeMapProp::Extension, -1230},
        {"Type", &CIISMimeMapProp::SetType, &CIISMimeMapProp::Type, -1230},
    };
}

std::vector<TextField<CIISMetaDataProp>> MetaDataTextFields() {
    return {{"Value", &CIISMetaDataProp::SetValue, &CIISMetaDataProp::Value, -1215}};
}

std::vector<TextField<CIISComponentProp>> ComponentTextFields() {
    return {
        {"Name", &CIISComponentProp::SetName, &CIISComponentProp::Name, -1210},
        {"feature", &CIISComponentProp::SetFeature, &CIISComponentProp::feature, -1210},
    };
}

std::vector<TextField<CIISPropertyBag>> BagTextFields() {
    using B = CIISPropertyBag;
    return {
        {"restartW3svc", &B::SetRestartW3svc, &B::restartW3svc, 0},
        {"preferLegacyObjects", &B::SetPreferLegacyObjects, &B::preferLegacyObjects, 0},
        {"ssiProperty", &B::SetSsiProperty, &B::ssiProperty, 0},
        {"msiHiddenProperties", &B::SetMsiHiddenProperties, &B::msiHiddenProperties, 0},
        {"productCode", &B::SetProductCode, &B::productCode, 0},
    };
}

// A test case that runs one check on one record type.
struct RecordCase {
    std::string name;
    std::function<void()> run;
};

void PrintTo(const RecordCase& c, std::ostream* os) {
    *os << c.name;
}

// The setter of field `index` stores a text as given and touches no other field; an empty text
// is stored or refused with the field's status, the old text then staying.
template <class Record>
void CheckSetter(const std::vector<TextField<Record>>& fields, size_t index) {
    const TextField<Record>& tested = fields[index];
    Record record;
    for (const TextField<Record>& f : fields) {
        record.*f.field = u"before " + qm::widen_ascii(f.name);
    }
    const auto expect_others_untouched = [&] {
        for (const TextField<Record>& f : fields) {
            if (&f != &tested) {
                EXPECT_EQ(record.*f.field, u"before " + qm::widen_ascii(f.name))
                    << f.name << " changed by the setter of " << tested.name;
            }
        }
    };

    const wstring text = u"  C:\\Inet Pub\\\u00E9\U0001F600  ";  // kept as given, not trimmed
    EXPECT_EQ((record.*tested.setter)(text), 0);
    EXPECT_EQ(record.*tested.field, text);
    expect_others_untouched();

    EXPECT_EQ((record.*tested.setter)(u""), tested.empty_status);
    EXPECT_EQ(record.*tested.field, tested.empty_status != 0 ? text : wstring());
    expect_others_untouched();

    // A text of one blank is not empty.
    EXPECT_EQ((record.*tested.setter)(u" "), 0);
    EXPECT_EQ(record.*tested.field, u" ");
}

template <class Record>
void AddSetterCases(std::vector<RecordCase>& cases, const char* record_name,
                    std::vector<TextField<Record>> (*fields)()) {
    const size_t count = fields().size();
    for (size_t i = 0; i < count; ++i) {
        cases.push_back({std::string(record_name) + "_" + fields()[i].name,
                         [fields, i] { CheckSetter(fields(), i); }});
    }
}

std::vector<RecordCase> SetterCases() {
    std::vector<RecordCase> cases;
    AddSetterCases<CIISVRootProp>(cases, "VRoot", &VRootTextFields);
    AddSetterCases<CIISWebsiteProp>(cases, "Website", &WebsiteTextFields);
    AddSetterCases<CIISAppPoolProp>(cases, "AppPool", &AppPoolTextFields);
    AddSetterCases<CIISWebServiceExtensionProp>(cases, "Extension", &ExtensionTextFields);
    AddSetterCases<CIISVRootAppMapProp>(cases, "AppMap", &AppMapTextFields);
    AddSetterCases<CIISMimeMapProp>(cases, "MimeMap", &MimeMapTextFields);
    AddSetterCases<CIISMetaDataProp>(cases, "MetaData", &MetaDataTextFields);
    AddSetterCases<CIISComponentProp>(cases, "Component", &ComponentTextFields);
    AddSetterCases<CIISPropertyBag>(cases, "Bag", &BagTextFields);
    return cases;
}

class TextSetters : public ::testing::TestWithParam<RecordCase> {};

TEST_P(TextSetters, StoreTheTextOrRefuseAnEmptyOne) {
    GetParam().run();
}

INSTANTIATE_TEST_SUITE_P(Records, TextSetters, ::testing::ValuesIn(SetterCases()),
                         [](const auto& param_info) { return param_info.param.name; });

// ---------------------------------------------------------------------------------------------
// Initial values.

template <class Record>
void CheckInitialValues(std::vector<TextField<Record>> (*text_fields)(),
                        const std::vector<IntField<Record>>& int_fields) {
    const Record record;
    for (const TextField<Record>& f : text_fields()) {
        EXPECT_TRUE((record.*f.field).empty()) << f.name;
    }
    for (const IntField<Record>& f : int_fields) {
        EXPECT_EQ(record.*f.field, f.initial) << f.name;
    }
}

template <class Record>
std::vector<IntField<Record>> CommonIntFields() {
    return {{"SessionTimeout", &Record::SessionTimeout, 20},
            {"ScriptTimeout", &Record::ScriptTimeout, 90},
            {"Attributes", &Record::Attributes, 0},
            {"ActionTaken", &Record::ActionTaken, 0},
            {"ItemType", &Record::ItemType, 0}};
}

template <class Record>
void CheckCommonLists(const Record& record) {
    EXPECT_FALSE(record.FormsAuthentication);
    EXPECT_FALSE(record.FormsAuthenticationEffective);
    EXPECT_TRUE(record.appMaps.empty());
    EXPECT_TRUE(record.mimeMaps.empty());
    EXPECT_TRUE(record.metaDataProps.empty());
}

std::vector<RecordCase> InitialValueCases() {
    return {
        {"VRoot",
         [] {
             auto ints = CommonIntFields<CIISVRootProp>();
             ints.push_back({"VRootProps", &CIISVRootProp::VRootProps, 0});
             CheckInitialValues(&VRootTextFields, ints);
             CheckCommonLists(CIISVRootProp());
         }},
        {"Website",
         [] {
             auto ints = CommonIntFields<CIISWebsiteProp>();
             ints.push_back({"WebSiteProps", &CIISWebsiteProp::WebSiteProps, 0});
             CheckInitialValues(&WebsiteTextFields, ints);
             CheckCommonLists(CIISWebsiteProp());
         }},
        {"AppPool",
         [] {
             using P = CIISAppPoolProp;
             CheckInitialValues(&AppPoolTextFields, {{"Attributes", &P::Attributes, -1},
                                                     {"RecycleMinutes", &P::RecycleMinutes, -1},
                                                     {"RecycleRequests", &P::RecycleRequests, -1},
                                                     {"IdleTimeout", &P::IdleTimeout, -1},
                                                     {"QueueLimit", &P::QueueLimit, -1},
                                                     {"MaxProc", &P::MaxProc, -1},
                                                     {"ActionTaken", &P::ActionTaken, 0},
                                                     {"LoadUserProfile", &P::LoadUserProfile, 0}});
         }},
        {"Extension",
         [] {
             using E = CIISWebServiceExtensionProp;
             CheckInitialValues(&ExtensionTextFields, {{"Attributes", &E::Attributes, 0},
                                                       {"ActionTaken", &E::ActionTaken, 0}});
         }},
        {"AppMap",
         [] {
             CheckInitialValues(&AppMapTextFields,
                                {{"AppMapProps", &CIISVRootAppMapProp::AppMapProps, 0}});
         }},
        {"MimeMap", [] { CheckInitialValues<CIISMimeMapProp>(&MimeMapTextFields, {}); }},
        {"MetaData",
         [] {
             using M = CIISMetaDataProp;
             CheckInitialValues(
                 &MetaDataTextFields,
                 {{"Prop", &M::Prop, 0}, {"Type", &M::Type, 0}, {"UserType", &M::UserType, 0}});
         }},
        {"Component",
         [] {
             CheckInitialValues(&ComponentTextFields,
                                {{"actionState", &CIISComponentProp::actionState, 3}});
             const CIISComponentProp component;
             EXPECT_TRUE(component.vroots.empty());
             EXPECT_TRUE(component.appPools.empty());
             EXPECT_TRUE(component.webServiceExtensions.empty());
             EXPECT_TRUE(component.componentWebsites.empty());
         }},
        {"Bag",
         [] {
             using B = CIISPropertyBag;
             CheckInitialValues(&BagTextFields, {{"ignoreIIS", &B::ignoreIIS, 0},
                                                 {"iisMajorVersion", &B::iisMajorVersion, 0},
                                                 {"removeUninstProps", &B::removeUninstProps, 0}});
             const CIISPropertyBag bag;
             EXPECT_TRUE(bag.websites.empty());
             EXPECT_TRUE(bag.components.empty());
             EXPECT_TRUE(bag.progressMessages.empty());
             EXPECT_TRUE(bag.uninstallProps.empty());
         }},
    };
}

class InitialValues : public ::testing::TestWithParam<RecordCase> {};

TEST_P(InitialValues, OfAFreshRecord) {
    GetParam().run();
}

INSTANTIATE_TEST_SUITE_P(Records, InitialValues, ::testing::ValuesIn(InitialValueCases()),
                         [](const auto& param_info) { return param_info.param.name; });

// ---------------------------------------------------------------------------------------------
// The one override: a virtual directory must have a display name, a website need not.

TEST(DisplayName, WebsiteStoresAnEmptyNameThroughTheBase) {
    CIISWebsiteProp website;
    CIISCommonProp& common = website;
    ASSERT_EQ(common.SetDisplayName(u"Shop"), 0);
    EXPECT_EQ(common.SetDisplayName(u""), 0);
    EXPECT_EQ(website.DisplayName, u"");
}

TEST(DisplayName, VRootRefusesAnEmptyNameAlsoThroughTheBase) {
    CIISVRootProp vroot;
    CIISCommonProp& common = vroot;
    ASSERT_EQ(common.SetDisplayName(u"Shop"), 0);
    EXPECT_EQ(vroot.DisplayName, u"Shop");
    EXPECT_EQ(common.SetDisplayName(u""), -1202);
    EXPECT_EQ(vroot.SetDisplayName(u""), -1202);
    EXPECT_EQ(vroot.DisplayName, u"Shop");
    // The base's own rule is unchanged by the override.
    EXPECT_EQ(vroot.CIISCommonProp::SetDisplayName(u""), 0);
    EXPECT_EQ(vroot.DisplayName, u"");
}

TEST(RootDir, IsRequiredOnBothRecordKindsThroughTheBase) {
    CIISVRootProp vroot;
    CIISWebsiteProp website;
    for (CIISCommonProp* common :
         {static_cast<CIISCommonProp*>(&vroot), static_cast<CIISCommonProp*>(&website)}) {
        ASSERT_EQ(common->SetRootDir(u"C:\\inetpub\\shop"), 0);
        EXPECT_EQ(common->SetRootDir(u""), -1203);
        EXPECT_EQ(common->RootDir, u"C:\\inetpub\\shop");
    }
}

}  // namespace
