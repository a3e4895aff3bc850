// The operations that create records: the bag's, the component's and the common record's, and
// who keeps a record alive.

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "settings/iis_component_prop.h"
#include "settings/iis_property_bag.h"
#include "settings/iis_vroot_prop.h"
#include "settings/iis_website_prop.h"

namespace {

using qm::wstring;

template <class Map>
std::vector<wstring> KeysOf(const Map& map) {
    std::vector<wstring> keys;
    for (const auto& entry : map) {
        keys.push_back(entry.first);
    }
    return keys;
}

template <class T>
T* Raw(T* record) {
    return record;
}
template <class T>
T* Raw(const std::shared_ptr<T>& record) {
    return record.get();
}
template <class T>
T* Raw(const std::unique_ptr<T>& record) {
    return record.get();
}

// ---------------------------------------------------------------------------------------------
// Components.

TEST(GetOrAddComponent, CreatesANamedComponentOnce) {
    CIISPropertyBag bag;
    const auto first = bag.GetOrAddComponent(u"WebFiles");
    EXPECT_EQ(first.status, 0);
    ASSERT_NE(first.record, nullptr);
    EXPECT_EQ(first.record->Name, u"WebFiles");
    first.record->actionState = 2;

    const auto again = bag.GetOrAddComponent(u"WebFiles");
    EXPECT_EQ(again.status, 0);
    EXPECT_EQ(again.record, first.record);
    EXPECT_EQ(again.record->actionState, 2);
    EXPECT_EQ(bag.components.size(), 1u);
}

TEST(GetOrAddComponent, LetterCaseMakesAnotherComponent) {
    CIISPropertyBag bag;
    const auto upper = bag.GetOrAddComponent(u"A");
    const auto lower = bag.GetOrAddComponent(u"a");
    EXPECT_EQ(lower.status, 0);
    EXPECT_NE(lower.record, upper.record);
    EXPECT_EQ(lower.record->Name, u"a");
    EXPECT_EQ(KeysOf(bag.components), (std::vector<wstring>{u"A", u"a"}));
}

TEST(GetOrAddComponent, AnEmptyNameIsRefusedButTheComponentStays) {
    CIISPropertyBag bag;
    const auto empty = bag.GetOrAddComponent(u"");
    EXPECT_EQ(empty.status, -1210);
    ASSERT_NE(empty.record, nullptr);
    EXPECT_EQ(empty.record->Name, u"");
    ASSERT_EQ(bag.components.count(u""), 1u);
    EXPECT_EQ(bag.components.at(u"").get(), empty.record);

    // It is found like any other afterwards.
    const auto again = bag.GetOrAddComponent(u"");
    EXPECT_EQ(again.status, 0);
    EXPECT_EQ(again.record, empty.record);
    EXPECT_EQ(bag.components.size(), 1u);
}

// ---------------------------------------------------------------------------------------------
// A component's Add operations: a record under the key, replacing what the key held, with the
// status of the record's SetKey; the record stays even when SetKey refused the key.

struct ComponentAddCase {
    const char* name;
    int32_t empty_key_status;
    // Adds under the key and returns the record; `status` receives the status.
    std::function<void*(CIISComponentProp&, const wstring&, int32_t& status)> add;
    std::function<std::vector<wstring>(const CIISComponentProp&)> keys;
    std::function<void*(const CIISComponentProp&, const wstring&)> stored;
    std::function<wstring(void*)> key_of;
    // Marks a record so that a fresh one can be told from it.
    std::function<void(void*)> mark;
    std::function<bool(void*)> marked;
};

void PrintTo(const ComponentAddCase& c, std::ostream* os) {
    *os << c.name;
}

template <class Record, class Added>
ComponentAddCase MakeAddCase(const char* name, int32_t empty_key_status,
                             Added (CIISComponentProp::*add)(const wstring&), auto member) {
    ComponentAddCase c;
    c.name = name;
    c.empty_key_status = empty_key_status;
    c.add = [add](CIISComponentProp& component, const wstring& key, int32_t& status) -> void* {
        auto added = (component.*add)(key);
        status = added.status;
        return Raw(added.record);
    };
    c.keys = [member](const CIISComponentProp& component) { return KeysOf(component.*member); };
    c.stored = [member](const CIISComponentProp& component, const wstring& key) -> void* {
        const auto& map = component.*member;
        const auto found = map.find(key);
        return found == map.end() ? nullptr : Raw(found->second);
    };
    c.key_of = [](void* record) { return static_cast<Record*>(record)->Key; };
    c.mark = [](void* record) { static_cast<Record*>(record)->ActionTaken = 3; };
    c.marked = [](void* record) { return static_cast<Record*>(record)->ActionTaken == 3; };
    return c;
}

class ComponentAdd : public ::testing::TestWithParam<ComponentAddCase> {};

TEST_P(ComponentAdd, StoresANewRecordUnderTheKey) {
    const ComponentAddCase& c = GetParam();
    CIISComponentProp component;
    int32_t status = 99;
    void* record = c.add(component, u"Shop", status);
    EXPECT_EQ(status, 0);
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(c.key_of(record), u"Shop");
    EXPECT_EQ(c.stored(component, u"Shop"), record);
    EXPECT_EQ(c.keys(component), std::vector<wstring>{u"Shop"});
}

TEST_P(ComponentAdd, ReplacesWhatTheKeyHeld) {
    const ComponentAddCase& c = GetParam();
    CIISComponentProp component;
    int32_t status = 99;
    c.mark(c.add(component, u"Shop", status));
    void* second = c.add(component, u"Shop", status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(c.keys(component), std::vector<wstring>{u"Shop"});
    EXPECT_EQ(c.stored(component, u"Shop"), second);
    EXPECT_FALSE(c.marked(second)) << "the key still holds the first record";
    EXPECT_EQ(c.key_of(second), u"Shop");
}

TEST_P(ComponentAdd, KeepsARecordWhoseKeyWasRefused) {
    const ComponentAddCase& c = GetParam();
    CIISComponentProp component;
    int32_t status = 99;
    void* record = c.add(component, u"", status);
    EXPECT_EQ(status, c.empty_key_status);
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(c.stored(component, u""), record);
    EXPECT_EQ(c.key_of(record), u"");
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, ComponentAdd,
    ::testing::Values(
        MakeAddCase<CIISVRootProp>("AddVRoot", -1212, &CIISComponentProp::AddVRoot,
                                   &CIISComponentProp::vroots),
        MakeAddCase<CIISAppPoolProp>("AddAppPool", -1216, &CIISComponentProp::AddAppPool,
                                     &CIISComponentProp::appPools),
        MakeAddCase<CIISWebServiceExtensionProp>("AddWebServiceExtension", -1223,
                                                 &CIISComponentProp::AddWebServiceExtension,
                                                 &CIISComponentProp::webServiceExtensions),
        MakeAddCase<CIISWebsiteProp>("AddWebsite", -1212, &CIISComponentProp::AddWebsite,
                                     &CIISComponentProp::componentWebsites)),
    [](const auto& param_info) { return std::string(param_info.param.name); });

// ---------------------------------------------------------------------------------------------
// The maps of the bag.

TEST(BagMaps, UninstallPropsAndProgressTextsAreAddedOrReplaced) {
    CIISPropertyBag bag;
    bag.SetUninstallProp(u"SITE_NUMBER", u"1");
    bag.SetUninstallProp(u"site_number", u"2");
    bag.SetUninstallProp(u"SITE_NUMBER", u"3");
    bag.SetUninstallProp(u"EMPTY", u"");
    EXPECT_EQ(bag.uninstallProps,
              (std::map<wstring, wstring>{
                  {u"EMPTY", u""}, {u"SITE_NUMBER", u"3"}, {u"site_number", u"2"}}));

    bag.SetProgressMessage(u"PROGMSG_IIS_CREATEVROOT", u"Creating [1]");
    bag.SetProgressMessage(u"PROGMSG_IIS_CREATEVROOT", u"Creating virtual directory [1]");
    EXPECT_EQ(bag.progressMessages,
              (std::map<wstring, wstring>{
                  {u"PROGMSG_IIS_CREATEVROOT", u"Creating virtual directory [1]"}}));
}

// ---------------------------------------------------------------------------------------------
// Websites: shared by the bag and the components that list them.

TEST(BagAddWebsite, StoresANewRecordWithStatusZeroEvenForAnEmptyKey) {
    CIISPropertyBag bag;
    const auto named = bag.AddWebsite(u"Website_Main");
    EXPECT_EQ(named.status, 0);
    ASSERT_NE(named.record, nullptr);
    EXPECT_EQ(named.record->Key, u"Website_Main");
    EXPECT_EQ(bag.websites.at(u"Website_Main").get(), named.record);

    const auto unnamed = bag.AddWebsite(u"");
    EXPECT_EQ(unnamed.status, 0);
    ASSERT_NE(unnamed.record, nullptr);
    EXPECT_EQ(unnamed.record->Key, u"");
    EXPECT_EQ(bag.websites.at(u"").get(), unnamed.record);
    EXPECT_EQ(bag.websites.size(), 2u);
}

TEST(BagAddWebsite, TheSameKeyTwiceReleasesTheFirstRecord) {
    CIISPropertyBag bag;
    bag.AddWebsite(u"Website_Main");
    const std::weak_ptr<CIISWebsiteProp> first = bag.websites.at(u"Website_Main");
    const auto second = bag.AddWebsite(u"Website_Main");
    EXPECT_TRUE(first.expired());
    EXPECT_EQ(bag.websites.size(), 1u);
    EXPECT_EQ(bag.websites.at(u"Website_Main").get(), second.record);
}

TEST(ReplaceWebsite, LeavesExactlyTheGivenRecordAndReleasesTheOldOne) {
    CIISPropertyBag bag;
    bag.AddWebsite(u"Website_Main");
    const std::weak_ptr<CIISWebsiteProp> added = bag.websites.at(u"Website_Main");
    auto replacement = std::make_shared<CIISWebsiteProp>();
    replacement->SetPort(u"8080");
    CIISWebsiteProp* const replacement_record = replacement.get();

    bag.ReplaceWebsite(u"Website_Main", std::move(replacement));
    EXPECT_TRUE(added.expired());
    ASSERT_EQ(bag.websites.size(), 1u);
    EXPECT_EQ(bag.websites.at(u"Website_Main").get(), replacement_record);
    EXPECT_EQ(bag.websites.at(u"Website_Main")->Port, u"8080");
}

TEST(ReplaceWebsite, StoresUnderANewKey) {
    CIISPropertyBag bag;
    auto website = std::make_shared<CIISWebsiteProp>();
    CIISWebsiteProp* const record = website.get();
    bag.ReplaceWebsite(u"Website_New", std::move(website));
    EXPECT_EQ(bag.websites.at(u"Website_New").get(), record);
}

// The loader's way with a component's website: the component adds it, the bag takes the same
// record in place of its own.
std::shared_ptr<CIISWebsiteProp> AddComponentWebsite(CIISPropertyBag& bag, const wstring& component,
                                                     const wstring& key) {
    bag.AddWebsite(key);
    auto added = bag.GetOrAddComponent(component).record->AddWebsite(key);
    EXPECT_EQ(added.status, 0);
    bag.ReplaceWebsite(key, added.record);
    return added.record;
}

TEST(WebsiteLifetime, TheComponentAndTheBagShareOneRecord) {
    CIISPropertyBag bag;
    const auto website = AddComponentWebsite(bag, u"WebFiles", u"Website_Main");
    EXPECT_EQ(bag.websites.at(u"Website_Main"), website);
    EXPECT_EQ(bag.components.at(u"WebFiles")->componentWebsites.at(u"Website_Main"), website);
    website->SetPort(u"81");
    EXPECT_EQ(bag.websites.at(u"Website_Main")->Port, u"81");
}

TEST(WebsiteLifetime, AComponentKeepsAWebsiteTheBagPushedOut) {
    CIISPropertyBag bag;
    std::weak_ptr<CIISWebsiteProp> listed = AddComponentWebsite(bag, u"WebFiles", u"Website_Main");
    bag.AddWebsite(u"Website_Main");  // the same key again, from another section

    ASSERT_FALSE(listed.expired());
    EXPECT_NE(bag.websites.at(u"Website_Main"), listed.lock());
    EXPECT_EQ(bag.components.at(u"WebFiles")->componentWebsites.at(u"Website_Main"), listed.lock());
    EXPECT_EQ(listed.lock()->Key, u"Website_Main");

    // Released once nothing holds it.
    bag.components.erase(u"WebFiles");
    EXPECT_TRUE(listed.expired());
}

TEST(WebsiteLifetime, DestroyingAComponentLeavesTheBagsWebsites) {
    CIISPropertyBag bag;
    std::weak_ptr<CIISWebsiteProp> listed = AddComponentWebsite(bag, u"WebFiles", u"Website_Main");
    bag.components.erase(u"WebFiles");
    ASSERT_FALSE(listed.expired());
    EXPECT_EQ(bag.websites.at(u"Website_Main"), listed.lock());
}

TEST(WebsiteLifetime, AComponentAddingTheSameKeyTwiceReleasesTheFirst) {
    CIISComponentProp component;
    std::weak_ptr<CIISWebsiteProp> first = component.AddWebsite(u"Website_Main").record;
    ASSERT_FALSE(first.expired());
    component.AddWebsite(u"Website_Main");
    EXPECT_TRUE(first.expired()) << "nothing but the component held the first record";
    EXPECT_EQ(component.componentWebsites.size(), 1u);
}

TEST(WebsiteLifetime, DestroyingTheBagReleasesEveryWebsite) {
    auto bag = std::make_unique<CIISPropertyBag>();
    std::vector<std::weak_ptr<CIISWebsiteProp>> websites;
    websites.push_back(AddComponentWebsite(*bag, u"WebFiles", u"Website_Main"));
    websites.push_back(AddComponentWebsite(*bag, u"Admin", u"Website_Admin"));
    bag->AddWebsite(u"Website_Main");  // pushes the shared record out: only WebFiles holds it
    websites.push_back(bag->websites.at(u"Website_Main"));
    bag->AddWebsite(u"Website_Plain");
    websites.push_back(bag->websites.at(u"Website_Plain"));
    for (const auto& website : websites) {
        ASSERT_FALSE(website.expired());
    }
    bag.reset();
    for (const auto& website : websites) {
        EXPECT_TRUE(website.expired());
    }
}

// ---------------------------------------------------------------------------------------------
// The lists of a virtual directory or website.

template <class Record>
class CommonLists : public ::testing::Test {};

using CommonRecordKinds = ::testing::Types<CIISVRootProp, CIISWebsiteProp>;
TYPED_TEST_SUITE(CommonLists, CommonRecordKinds);

TYPED_TEST(CommonLists, AddAppMapStoresUnderTheKeyAndReplaces) {
    TypeParam record;
    const auto first = record.AddAppMap(u".asp");
    EXPECT_EQ(first.status, 0);
    ASSERT_NE(first.record, nullptr);
    EXPECT_EQ(first.record->Key, u".asp");
    first.record->AppMapProps = 5;

    const auto second = record.AddAppMap(u".asp");
    EXPECT_EQ(second.status, 0);
    ASSERT_EQ(record.appMaps.size(), 1u);
    EXPECT_EQ(record.appMaps.at(u".asp").get(), second.record);
    EXPECT_EQ(second.record->AppMapProps, 0);

    record.AddAppMap(u".ASP");
    record.AddAppMap(u".aspx");
    EXPECT_EQ(KeysOf(record.appMaps), (std::vector<wstring>{u".ASP", u".asp", u".aspx"}));
}

TYPED_TEST(CommonLists, AddAppMapKeepsAnEntryWhoseKeyWasRefused) {
    TypeParam record;
    const auto added = record.AddAppMap(u"");
    EXPECT_EQ(added.status, -1206);
    ASSERT_NE(added.record, nullptr);
    EXPECT_EQ(record.appMaps.at(u"").get(), added.record);
    EXPECT_EQ(added.record->Key, u"");
}

TYPED_TEST(CommonLists, AddMimeMapAppendsEmptyEntriesInOrder) {
    TypeParam record;
    std::vector<CIISMimeMapProp*> added;
    for (const char16_t* extension : {u".json", u".json", u".woff2"}) {
        const auto entry = record.AddMimeMap();
        EXPECT_EQ(entry.status, 0);
        ASSERT_NE(entry.record, nullptr);
        EXPECT_TRUE(entry.record->Extension.empty());
        EXPECT_TRUE(entry.record->Type.empty());
        entry.record->SetExtension(extension);
        added.push_back(entry.record);
    }
    ASSERT_EQ(record.mimeMaps.size(), 3u);
    for (size_t i = 0; i < added.size(); ++i) {
        EXPECT_EQ(record.mimeMaps[i].get(), added[i]) << i;
    }
    EXPECT_EQ(record.mimeMaps[2]->Extension, u".woff2");
}

TYPED_TEST(CommonLists, AddMetaDataAppendsEntriesWithAnEmptyValue) {
    TypeParam record;
    std::vector<CIISMetaDataProp*> added;
    for (int32_t prop : {6016, 6016, 2017}) {
        const auto entry = record.AddMetaData();
        EXPECT_EQ(entry.status, 0);
        ASSERT_NE(entry.record, nullptr);
        EXPECT_TRUE(entry.record->Value.empty());
        EXPECT_EQ(entry.record->Prop, 0);
        entry.record->Prop = prop;
        added.push_back(entry.record);
    }
    ASSERT_EQ(record.metaDataProps.size(), 3u);
    for (size_t i = 0; i < added.size(); ++i) {
        EXPECT_EQ(record.metaDataProps[i].get(), added[i]) << i;
    }
    EXPECT_EQ(record.metaDataProps[2]->Prop, 2017);
}

TYPED_TEST(CommonLists, EarlierEntriesStayValidWhileTheListGrows) {
    TypeParam record;
    CIISMimeMapProp* const first_mime = record.AddMimeMap().record;
    CIISMetaDataProp* const first_meta = record.AddMetaData().record;
    CIISVRootAppMapProp* const first_map = record.AddAppMap(u"a000").record;
    for (int i = 1; i < 1000; ++i) {
        record.AddMimeMap();
        record.AddMetaData();
        record.AddAppMap(u"a" + qm::widen_ascii(std::to_string(1000 + i)));
    }
    EXPECT_EQ(first_mime->SetType(u"application/json"), 0);
    EXPECT_EQ(first_meta->SetValue(u"1"), 0);
    EXPECT_EQ(first_map->SetVerb(u"GET"), 0);
    EXPECT_EQ(record.mimeMaps.front()->Type, u"application/json");
    EXPECT_EQ(record.metaDataProps.front()->Value, u"1");
    EXPECT_EQ(record.appMaps.at(u"a000")->Verb, u"GET");
}

}  // namespace
