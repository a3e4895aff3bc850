// The operations that create records: the bag's, the component's and the common record's, and
// who keeps a record alive.

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "settings/iis_component_prop.h"
#include "settings/iis_property_bag.h"
#include "settings/iis_vroot_prop.h"
#include "settings/iis_website_prop.h"

namespace {

using qm::wstring;

TEST(GetOrAddComponent, FindsAComponentByItsExactNameAndKeepsAnEmptyNameItRefused) {
    CIISPropertyBag bag;
    const auto first = bag.GetOrAddComponent(u"Web");
    EXPECT_EQ(first.status, 0);
    EXPECT_EQ(first.record->Name, u"Web");
    EXPECT_EQ(bag.GetOrAddComponent(u"Web").record, first.record);
    EXPECT_NE(bag.GetOrAddComponent(u"web").record, first.record);

    const auto empty = bag.GetOrAddComponent(u"");
    EXPECT_EQ(empty.status, -1210);
    EXPECT_EQ(bag.components.at(u"").get(), empty.record);
    EXPECT_EQ(bag.GetOrAddComponent(u"").status, 0);  // found like any other afterwards
    EXPECT_EQ(bag.components.size(), 3u);
}

// A component's Add operations put a fresh record under the key, in place of what the key held,
// and answer with the status of its SetKey; a refused key leaves the record in place.
template <class Map, class Add>
void ExpectAddReplacesAndKeepsRefusedKeys(Add add, Map CIISComponentProp::*map,
                                          int32_t emptyKeyStatus) {
    CIISComponentProp component;
    const auto first = (component.*add)(u"Shop");
    EXPECT_EQ(first.status, 0);
    first.record->ActionTaken = 3;
    const auto second = (component.*add)(u"Shop");
    EXPECT_EQ((component.*map).size(), 1u);
    EXPECT_EQ(&*(component.*map).at(u"Shop"), &*second.record);
    EXPECT_EQ(second.record->ActionTaken, 0);
    EXPECT_EQ(second.record->Key, u"Shop");
    const auto refused = (component.*add)(u"");
    EXPECT_EQ(refused.status, emptyKeyStatus);
    EXPECT_EQ(&*(component.*map).at(u""), &*refused.record);
}

TEST(ComponentAdd, ReplacesWhatTheKeyHeldAndKeepsARecordWhoseKeyWasRefused) {
    using C = CIISComponentProp;
    ExpectAddReplacesAndKeepsRefusedKeys(&C::AddVRoot, &C::vroots, -1212);
    ExpectAddReplacesAndKeepsRefusedKeys(&C::AddAppPool, &C::appPools, -1216);
    ExpectAddReplacesAndKeepsRefusedKeys(&C::AddWebServiceExtension, &C::webServiceExtensions,
                                         -1223);
    ExpectAddReplacesAndKeepsRefusedKeys(&C::AddWebsite, &C::componentWebsites, -1212);
}

TEST(BagMaps, UninstallPropsAndProgressTextsAreAddedOrReplacedByExactName) {
    CIISPropertyBag bag;
    bag.SetUninstallProp(u"SITE_NUMBER", u"1");
    bag.SetUninstallProp(u"site_number", u"2");
    bag.SetUninstallProp(u"SITE_NUMBER", u"3");
    EXPECT_EQ(bag.uninstallProps,
              (std::map<wstring, wstring>{{u"SITE_NUMBER", u"3"}, {u"site_number", u"2"}}));
    bag.SetProgressMessage(u"PROGMSG_IIS_CREATEVROOT", u"Creating [1]");
    bag.SetProgressMessage(u"PROGMSG_IIS_CREATEVROOT", u"Creating virtual directory [1]");
    EXPECT_EQ(bag.progressMessages.at(u"PROGMSG_IIS_CREATEVROOT"),
              u"Creating virtual directory [1]");
}

// ---- Websites: shared by the bag and the components that list them.

TEST(BagAddWebsite, TakesAnyKeyAndReleasesTheRecordItReplaces) {
    CIISPropertyBag bag;
    EXPECT_EQ(bag.AddWebsite(u"").status, 0);
    bag.AddWebsite(u"Website_Main");
    const std::weak_ptr<CIISWebsiteProp> first = bag.websites.at(u"Website_Main");
    const auto second = bag.AddWebsite(u"Website_Main");
    EXPECT_TRUE(first.expired());
    EXPECT_EQ(bag.websites.at(u"Website_Main").get(), second.record);

    auto replacement = std::make_shared<CIISWebsiteProp>();
    CIISWebsiteProp* const replacementRecord = replacement.get();
    const std::weak_ptr<CIISWebsiteProp> added = bag.websites.at(u"Website_Main");
    bag.ReplaceWebsite(u"Website_Main", std::move(replacement));
    EXPECT_TRUE(added.expired());
    EXPECT_EQ(bag.websites.at(u"Website_Main").get(), replacementRecord);
    EXPECT_EQ(bag.websites.size(), 2u);
}

// The loader's way with a component's website: the component adds it, the bag takes the same
// record in place of its own.
std::shared_ptr<CIISWebsiteProp> AddComponentWebsite(CIISPropertyBag& bag, const wstring& component,
                                                     const wstring& key) {
    bag.AddWebsite(key);
    auto added = bag.GetOrAddComponent(component).record->AddWebsite(key);
    bag.ReplaceWebsite(key, added.record);
    return added.record;
}

TEST(WebsiteLifetime, AComponentKeepsAWebsiteTheBagPushedOutUntilItGoes) {
    CIISPropertyBag bag;
    std::weak_ptr<CIISWebsiteProp> listed = AddComponentWebsite(bag, u"Web", u"Website_Main");
    EXPECT_EQ(bag.websites.at(u"Website_Main"), listed.lock());
    bag.AddWebsite(u"Website_Main");  // the same key again, from another section
    ASSERT_FALSE(listed.expired());
    EXPECT_NE(bag.websites.at(u"Website_Main"), listed.lock());
    EXPECT_EQ(bag.components.at(u"Web")->componentWebsites.at(u"Website_Main"), listed.lock());
    bag.components.erase(u"Web");
    EXPECT_TRUE(listed.expired());
}

TEST(WebsiteLifetime, DestroyingTheBagReleasesEveryWebsite) {
    auto bag = std::make_unique<CIISPropertyBag>();
    std::vector<std::weak_ptr<CIISWebsiteProp>> websites;
    websites.push_back(AddComponentWebsite(*bag, u"Web", u"Website_Main"));
    bag->AddWebsite(u"Website_Main");  // pushes the shared record out: only Web holds it
    websites.push_back(bag->websites.at(u"Website_Main"));
    bag.reset();
    for (const auto& website : websites) {
        EXPECT_TRUE(website.expired());
    }
}

// ---- The lists of a virtual directory or website.

template <class Record>
class CommonLists : public ::testing::Test {};

using CommonRecordKinds = ::testing::Types<CIISVRootProp, CIISWebsiteProp>;
TYPED_TEST_SUITE(CommonLists, CommonRecordKinds);

TYPED_TEST(CommonLists, AppMapsAreKeyedByExactKeyAndReplaced) {
    TypeParam record;
    record.AddAppMap(u".asp").record->AppMapProps = 5;
    const auto second = record.AddAppMap(u".asp");
    EXPECT_EQ(second.record->AppMapProps, 0);
    EXPECT_EQ(record.appMaps.at(u".asp").get(), second.record);
    record.AddAppMap(u".ASP");
    EXPECT_EQ(record.appMaps.size(), 2u);
    const auto refused = record.AddAppMap(u"");
    EXPECT_EQ(refused.status, -1206);
    EXPECT_EQ(record.appMaps.at(u"").get(), refused.record);
}

TYPED_TEST(CommonLists, MimeMapsAndMetadataAppendInOrderAndStayValidWhileTheListsGrow) {
    TypeParam record;
    CIISMimeMapProp* const firstMime = record.AddMimeMap().record;
    CIISMetaDataProp* const firstMeta = record.AddMetaData().record;
    CIISVRootAppMapProp* const firstMap = record.AddAppMap(u"a000").record;
    for (int i = 1; i < 1000; ++i) {
        record.AddMimeMap();
        record.AddMetaData().record->Prop = i;
        record.AddAppMap(u"a" + qm::widen_ascii(std::to_string(1000 + i)));
    }
    EXPECT_EQ(firstMime->SetType(u"application/json"), 0);
    EXPECT_EQ(firstMeta->SetValue(u"1"), 0);
    EXPECT_EQ(firstMap->SetVerb(u"GET"), 0);
    EXPECT_EQ(record.mimeMaps.front()->Type, u"application/json");
    EXPECT_EQ(record.metaDataProps.front()->Value, u"1");
    EXPECT_EQ(record.metaDataProps.back()->Prop, 999);
    EXPECT_EQ(record.appMaps.at(u"a000")->Verb, u"GET");
}

}  // namespace
