// Collections: entries merged across levels, added, changed and deleted at the commit path's
// level, and the HRESULTs of entries that break the collection's rules.

#include <gtest/gtest.h>

#include "testing/iis_config_machine.h"

namespace webrig::sim::iis7 {
namespace {

using platform::ConfigElement;
using platform::ElementCollection;
using platform::Variant;
using testing::IisConfigMachine;

constexpr std::u16string_view kAppHost = testing::kAppHostPath;
constexpr std::u16string_view kSite = testing::kDefaultSitePath;
constexpr std::u16string_view kSites = u"system.applicationHost/sites";
constexpr std::u16string_view kPools = u"system.applicationHost/applicationPools";

std::string Replaced(std::string text, std::string_view from, std::string_view to) {
    const size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

// Every CRLF-ended line of `text` with `spaces` more in front.
std::string Indented(std::string_view text, size_t spaces) {
    std::string out;
    for (size_t start = 0; start < text.size();) {
        const size_t end = text.find('\n', start) + 1;
        out.append(spaces, ' ').append(text.substr(start, end - start));
        start = end;
    }
    return out;
}

std::shared_ptr<ElementCollection> CollectionOf(platform::AdminManager& manager,
                                                std::u16string_view section,
                                                std::u16string_view path,
                                                std::u16string_view child = {}) {
    std::shared_ptr<ConfigElement> element;
    EXPECT_EQ(manager.GetAdminSection(section, path, element), 0);
    if (!element) {
        return nullptr;
    }
    if (!child.empty()) {
        std::shared_ptr<ConfigElement> inner;
        EXPECT_EQ(element->GetElementByName(child, inner), 0);
        element = inner;
    }
    std::shared_ptr<ElementCollection> collection;
    EXPECT_EQ(element->GetCollection(collection), 0);
    return collection;
}

qm::hresult Put(ConfigElement& element, std::u16string_view name, const Variant& value) {
    std::shared_ptr<platform::ConfigProperty> property;
    const qm::hresult hr = element.GetPropertyByName(name, property);
    return hr != 0 ? hr : property->PutValue(value);
}

std::u16string Text(ConfigElement& element, std::u16string_view name) {
    std::shared_ptr<platform::ConfigProperty> property;
    std::u16string text;
    if (element.GetPropertyByName(name, property) != 0 || property->GetStringValue(text) != 0) {
        return u"<error>";
    }
    return text;
}

std::vector<std::u16string> Values(ElementCollection& collection, std::u16string_view name) {
    uint32_t count = 0;
    EXPECT_EQ(collection.Count(count), 0);
    std::vector<std::u16string> values;
    for (uint32_t i = 0; i < count; ++i) {
        std::shared_ptr<ConfigElement> item;
        EXPECT_EQ(collection.Item(i, item), 0);
        values.push_back(Text(*item, name));
    }
    return values;
}

// The way the runtime creates a website: the site, its binding, its root application and
// virtual directory, all put together before the site joins the collection. Applications come
// before the bindings element, where IIS writes them.
TEST(Collections, ASiteIsBuiltBeforeItIsAdded) {
    IisConfigMachine machine;
    const std::string before = machine.ReadAppHost();
    auto manager = machine.NewManager();
    auto sites = CollectionOf(*manager, kSites, kAppHost);
    std::shared_ptr<ConfigElement> site;
    ASSERT_EQ(sites->CreateNewElement(u"site", site), 0);
    ASSERT_EQ(Put(*site, u"name", Variant{u"Shop"}), 0);
    ASSERT_EQ(Put(*site, u"id", Variant{u"2"}), 0);
    std::shared_ptr<ConfigElement> bindingsElement;
    ASSERT_EQ(site->GetElementByName(u"bindings", bindingsElement), 0);
    std::shared_ptr<ElementCollection> bindings;
    ASSERT_EQ(bindingsElement->GetCollection(bindings), 0);
    std::shared_ptr<ConfigElement> binding;
    ASSERT_EQ(bindings->CreateNewElement(u"binding", binding), 0);
    ASSERT_EQ(Put(*binding, u"bindingInformation", Variant{u"*:8080:"}), 0);
    ASSERT_EQ(Put(*binding, u"protocol", Variant{u"http"}), 0);
    ASSERT_EQ(bindings->AddElement(binding, -1), 0);
    std::shared_ptr<ElementCollection> applications;
    ASSERT_EQ(site->GetCollection(applications), 0);
    std::shared_ptr<ConfigElement> application;
    ASSERT_EQ(applications->CreateNewElement(u"application", application), 0);
    ASSERT_EQ(Put(*application, u"path", Variant{u"/"}), 0);
    std::shared_ptr<ElementCollection> directories;
    ASSERT_EQ(application->GetCollection(directories), 0);
    std::shared_ptr<ConfigElement> directory;
    ASSERT_EQ(directories->CreateNewElement(u"virtualDirectory", directory), 0);
    ASSERT_EQ(Put(*directory, u"path", Variant{u"/"}), 0);
    ASSERT_EQ(Put(*directory, u"physicalPath", Variant{u"C:\\inetpub\\shop"}), 0);
    ASSERT_EQ(directories->AddElement(directory, -1), 0);
    ASSERT_EQ(applications->AddElement(application, -1), 0);
    ASSERT_EQ(sites->AddElement(site, -1), 0);
    // The site handle follows the site into the collection.
    ASSERT_EQ(Put(*site, u"serverAutoStart", Variant{false}), 0);
    ASSERT_EQ(manager->CommitChanges(), 0);
    EXPECT_EQ(machine.ReadAppHost(),
              Replaced(before, "            </site>\r\n            <siteDefaults",
                       "            </site>\r\n"
                       "            <site name=\"Shop\" id=\"2\" serverAutoStart=\"false\">\r\n"
                       "                <application path=\"/\">\r\n"
                       "                    <virtualDirectory path=\"/\" "
                       "physicalPath=\"C:\\inetpub\\shop\" />\r\n"
                       "                </application>\r\n"
                       "                <bindings>\r\n"
                       "                    <binding bindingInformation=\"*:8080:\" "
                       "protocol=\"http\" />\r\n"
                       "                </bindings>\r\n"
                       "            </site>\r\n"
                       "            <siteDefaults"));
    // The new site is a web.config level of its own.
    auto reader = machine.NewManager();
    ASSERT_EQ(reader->PutCommitPath(u"MACHINE/WEBROOT/APPHOST/Shop"), 0);
    ASSERT_EQ(testing::PutAttribute(*reader, u"system.webServer/directoryBrowse",
                                    u"MACHINE/WEBROOT/APPHOST/Shop", u"enabled", Variant{true}),
              0);
    ASSERT_EQ(reader->CommitChanges(), 0);
    EXPECT_TRUE(std::filesystem::exists(machine.DrivePath("inetpub/shop/web.config")));
}

TEST(Collections, EntriesOfTheSiteLevelComeBeforeInheritedOnesWhereMergeAppendIsOff) {
    IisConfigMachine machine;
    IisConfigMachine::WriteText(machine.DrivePath("inetpub/wwwroot/web.config"),
                                "<configuration><system.webServer><defaultDocument><files>"
                                "<remove value=\"index.html\" /><add value=\"home.aspx\" />"
                                "</files></defaultDocument></system.webServer></configuration>");
    auto manager = machine.NewManager();
    auto files = CollectionOf(*manager, u"system.webServer/defaultDocument", kSite, u"files");
    EXPECT_EQ(Values(*files, u"value"),
              (std::vector<std::u16string>{u"home.aspx", u"Default.htm"}));
    auto top = CollectionOf(*manager, u"system.webServer/defaultDocument", kAppHost, u"files");
    EXPECT_EQ(Values(*top, u"value"), (std::vector<std::u16string>{u"Default.htm", u"index.html"}));
}

TEST(Collections, ClearDropsEverythingInherited) {
    IisConfigMachine machine;
    IisConfigMachine::WriteText(
        machine.DrivePath("inetpub/wwwroot/web.config"),
        "<configuration><system.webServer><httpErrors><clear />"
        "<error statusCode=\"401\" path=\"401.htm\" /></httpErrors></system.webServer>"
        "</configuration>");
    auto manager = machine.NewManager();
    auto errors = CollectionOf(*manager, u"system.webServer/httpErrors",
                               u"MACHINE/WEBROOT/APPHOST/Default Web Site/shop");
    EXPECT_EQ(Values(*errors, u"statusCode"), (std::vector<std::u16string>{u"401"}));
}

TEST(Collections, AnEntryAddedBelowTheMainFileStaysLocal) {
    IisConfigMachine machine;
    auto manager = machine.NewManager();
    ASSERT_EQ(manager->PutCommitPath(kSite), 0);
    auto files = CollectionOf(*manager, u"system.webServer/defaultDocument", kSite, u"files");
    std::shared_ptr<ConfigElement> document;
    ASSERT_EQ(files->CreateNewElement(u"add", document), 0);
    ASSERT_EQ(Put(*document, u"value", Variant{u"default.aspx"}), 0);
    ASSERT_EQ(files->AddElement(document, -1), 0);
    EXPECT_EQ(Values(*files, u"value"),
              (std::vector<std::u16string>{u"default.aspx", u"Default.htm", u"index.html"}));
    ASSERT_EQ(manager->CommitChanges(), 0);
    EXPECT_EQ(machine.ReadAppHost(), testing::TestAppHostConfig());
    EXPECT_EQ(IisConfigMachine::ReadText(machine.DrivePath("inetpub/wwwroot/web.config")),
              testing::WithCrLf("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<configuration>\n"
                                "    <system.webServer>\n        <defaultDocument>\n"
                                "            <files>\n"
                                "                <add value=\"default.aspx\" />\n"
                                "            </files>\n        </defaultDocument>\n"
                                "    </system.webServer>\n</configuration>\n"));
}

TEST(Collections, ChangingAnInheritedEntryReplacesItLocally) {
    IisConfigMachine machine;
    auto manager = machine.NewManager();
    ASSERT_EQ(manager->PutCommitPath(kSite), 0);
    auto errors = CollectionOf(*manager, u"system.webServer/httpErrors", kSite);
    std::shared_ptr<ConfigElement> notFound;
    ASSERT_EQ(errors->Item(0, notFound), 0);
    ASSERT_EQ(Put(*notFound, u"path", Variant{u"/notfound.aspx"}), 0);
    ASSERT_EQ(Put(*notFound, u"responseMode", Variant{u"ExecuteURL"}), 0);
    EXPECT_EQ(Values(*errors, u"path"),
              (std::vector<std::u16string>{u"500.htm", u"/notfound.aspx"}));
    ASSERT_EQ(manager->CommitChanges(), 0);
    EXPECT_EQ(machine.ReadAppHost(), testing::TestAppHostConfig());
    EXPECT_EQ(IisConfigMachine::ReadText(machine.DrivePath("inetpub/wwwroot/web.config")),
              testing::WithCrLf("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<configuration>\n"
                                "    <system.webServer>\n        <httpErrors>\n"
                                "            <remove statusCode=\"404\" subStatusCode=\"-1\" />\n"
                                "            <error statusCode=\"404\" path=\"/notfound.aspx\" "
                                "responseMode=\"ExecuteURL\" />\n"
                                "        </httpErrors>\n    </system.webServer>\n"
                                "</configuration>\n"));
}

TEST(Collections, ACopiedEntryIsIndentedForItsNewDepth) {
    std::string appHost = testing::TestAppHostConfig();
    appHost.insert(appHost.find("            <section name=\"asp\""),
                   "            <sectionGroup name=\"rewrite\">\r\n"
                   "                <section name=\"rules\" overrideModeDefault=\"Allow\" />\r\n"
                   "            </sectionGroup>\r\n");
    const std::string rule =
        "<rule name=\"r\">\r\n"
        "    <match url=\"a\" />\r\n"
        "    <conditions>\r\n"
        "        <add input=\"x\" />\r\n"
        "    </conditions>\r\n"
        "</rule>\r\n";
    appHost.insert(appHost.find("        <asp />"),
                   "        <rewrite>\r\n            <rules>\r\n" + Indented(rule, 16) +
                       "            </rules>\r\n        </rewrite>\r\n");
    IisConfigMachine machine(appHost);
    auto manager = machine.NewManager();
    std::shared_ptr<platform::ConfigElement> rules;
    ASSERT_EQ(manager->GetAdminSection(u"system.webServer/rewrite/rules", kSite, rules), 0);
    std::shared_ptr<platform::ElementCollection> collection;
    ASSERT_EQ(rules->GetCollection(collection), 0);
    std::shared_ptr<platform::ConfigElement> entry;
    ASSERT_EQ(collection->Item(0, entry), 0);
    std::shared_ptr<platform::ConfigProperty> stop;
    ASSERT_EQ(entry->GetPropertyByName(u"stopProcessing", stop), 0);
    ASSERT_EQ(stop->PutValue(Variant{true}), 0);
    ASSERT_EQ(manager->CommitChanges(), 0);
    std::string copied = Indented(rule, 20);
    copied.insert(copied.find('>'), " stopProcessing=\"true\"");
    EXPECT_NE(machine.ReadAppHost().find("                <rules>\r\n"
                                         "                    <remove name=\"r\" />\r\n" +
                                         copied + "                </rules>\r\n"),
              std::string::npos)
        << machine.ReadAppHost();
}

TEST(Collections, DeletingRemovesALocalEntryAndMasksAnInheritedOne) {
    IisConfigMachine machine;
    auto manager = machine.NewManager();
    auto pools = CollectionOf(*manager, kPools, kAppHost);
    ASSERT_EQ(pools->DeleteElement(0), 0);
    EXPECT_EQ(pools->DeleteElement(0), qm::hr::invalid_index);
    ASSERT_EQ(manager->CommitChanges(), 0);
    EXPECT_EQ(machine.ReadAppHost(),
              Replaced(testing::TestAppHostConfig(),
                       "            <add name=\"DefaultAppPool\" />\r\n", ""));

    auto site = machine.NewManager();
    ASSERT_EQ(site->PutCommitPath(kSite), 0);
    auto files = CollectionOf(*site, u"system.webServer/defaultDocument", kSite, u"files");
    ASSERT_EQ(files->DeleteElement(1), 0);
    EXPECT_EQ(Values(*files, u"value"), (std::vector<std::u16string>{u"Default.htm"}));
    ASSERT_EQ(site->CommitChanges(), 0);
    EXPECT_NE(IisConfigMachine::ReadText(machine.DrivePath("inetpub/wwwroot/web.config"))
                  .find("<files>\r\n                <remove value=\"index.html\" />\r\n"),
              std::string::npos);
}

TEST(Collections, PositionZeroPutsAHandlerFirst) {
    IisConfigMachine machine;
    auto manager = machine.NewManager();
    auto handlers = CollectionOf(*manager, u"system.webServer/handlers", kAppHost);
    std::shared_ptr<ConfigElement> handler;
    ASSERT_EQ(handlers->CreateNewElement(u"add", handler), 0);
    ASSERT_EQ(Put(*handler, u"name", Variant{u".abc"}), 0);
    ASSERT_EQ(Put(*handler, u"path", Variant{u".abc"}), 0);
    ASSERT_EQ(Put(*handler, u"verb", Variant{u"*"}), 0);
    ASSERT_EQ(handlers->AddElement(handler, 0), 0);
    ASSERT_EQ(manager->CommitChanges(), 0);
    EXPECT_EQ(machine.ReadAppHost(),
              Replaced(testing::TestAppHostConfig(), "<handlers accessPolicy=\"Read, Script\">\r\n",
                       "<handlers accessPolicy=\"Read, Script\">\r\n"
                       "            <add name=\".abc\" path=\".abc\" verb=\"*\" />\r\n"));
}

struct AddCase {
    const char* name;
    std::vector<std::pair<std::u16string_view, std::u16string_view>> attributes;
    int32_t position;
    qm::hresult result;
};

class AddingPools : public ::testing::TestWithParam<AddCase> {};

TEST_P(AddingPools, FollowTheCollectionsRules) {
    IisConfigMachine machine;
    auto manager = machine.NewManager();
    auto pools = CollectionOf(*manager, kPools, kAppHost);
    std::shared_ptr<ConfigElement> pool;
    ASSERT_EQ(pools->CreateNewElement(u"add", pool), 0);
    for (const auto& [name, value] : GetParam().attributes) {
        ASSERT_EQ(Put(*pool, name, Variant{std::u16string(value)}), 0);
    }
    EXPECT_EQ(pools->AddElement(pool, GetParam().position), GetParam().result);
    ASSERT_EQ(manager->CommitChanges(), 0);
    const std::string text = machine.ReadAppHost();
    if (GetParam().result == 0) {
        EXPECT_NE(text.find("<add name=\"Shop\" />"), std::string::npos);
    } else {
        EXPECT_EQ(text, testing::TestAppHostConfig());
    }
}

INSTANTIATE_TEST_SUITE_P(
    Rules, AddingPools,
    ::testing::Values(
        AddCase{"appended", {{u"name", u"Shop"}}, -1, 0},
        AddCase{"atTheEnd", {{u"name", u"Shop"}}, 1, 0},
        AddCase{"pastTheEnd", {{u"name", u"Shop"}}, 2, qm::hr::invalid_index},
        AddCase{"existingKey", {{u"name", u"DefaultAppPool"}}, -1, qm::hr::already_exists},
        AddCase{"keyInAnotherCase", {{u"name", u"defaultapppool"}}, -1, qm::hr::already_exists},
        AddCase{"requiredKeyMissing", {{u"queueLength", u"10"}}, -1, qm::hr::file_not_found}),
    [](const ::testing::TestParamInfo<AddCase>& item) { return item.param.name; });

// A file that adds an entry whose key the collection already holds, from the same file or
// inherited, cannot be read: IIS answers 0x800700B7 with the file and line of the repeated entry.
struct RepeatedKeyCase {
    const char* name;
    std::string_view appHostFrom;  // an edit of the main file (empty: none)
    std::string_view appHostTo;
    std::string_view webConfig;  // the site's web.config (empty: none)
    std::u16string_view section;
    std::u16string_view path;
    std::u16string_view child;
    qm::hresult result;
    std::string_view error;  // part of the error text
    uint32_t count = 0;      // the entries, when the collection can be read
};

void PrintTo(const RepeatedKeyCase& c, std::ostream* os) {
    *os << c.name;
}

class RepeatedKeys : public ::testing::TestWithParam<RepeatedKeyCase> {};

TEST_P(RepeatedKeys, AreRefusedWhenTheCollectionIsRead) {
    const RepeatedKeyCase& c = GetParam();
    IisConfigMachine machine;
    if (!c.appHostFrom.empty()) {
        machine.WriteAppHost(Replaced(machine.ReadAppHost(), c.appHostFrom, c.appHostTo));
    }
    if (!c.webConfig.empty()) {
        IisConfigMachine::WriteText(machine.DrivePath("inetpub/wwwroot/web.config"), c.webConfig);
    }
    const std::string appHost = machine.ReadAppHost();
    auto manager = machine.NewManager();
    auto collection = CollectionOf(*manager, c.section, c.path, c.child);
    ASSERT_NE(collection, nullptr);
    uint32_t count = 0;
    EXPECT_EQ(collection->Count(count), c.result);
    if (c.result != 0) {
        EXPECT_NE(qm::to_utf8(manager->LastErrorDescription()).find(c.error), std::string::npos)
            << qm::to_utf8(manager->LastErrorDescription());
    } else {
        EXPECT_EQ(count, c.count);
    }
    // Reading never writes.
    EXPECT_EQ(manager->CommitChanges(), 0);
    EXPECT_EQ(machine.ReadAppHost(), appHost);
}

constexpr std::string_view kFiles = "                <add value=\"index.html\" />\r\n";
constexpr std::string_view kBinding =
    "                    <binding protocol=\"http\" bindingInformation=\"*:80:\" />\r\n";
constexpr std::string_view kStaticFile = "<add name=\"StaticFile\" path=\"*\"";
constexpr std::u16string_view kDocuments = u"system.webServer/defaultDocument";

INSTANTIATE_TEST_SUITE_P(
    Cases, RepeatedKeys,
    ::testing::Values(
        RepeatedKeyCase{"inTheSameFileInAnotherCase", kFiles,
                        "                <add value=\"index.html\" />\r\n"
                        "                <add value=\"INDEX.HTML\" />\r\n",
                        "", kDocuments, testing::kAppHostPath, u"files", qm::hr::already_exists,
                        "applicationHost.config(55): Cannot add duplicate collection entry of "
                        "type 'add' with unique key attribute 'value' set to 'INDEX.HTML'"},
        RepeatedKeyCase{"inheritedByAWebConfig", "", "",
                        "<configuration>\n<system.webServer><defaultDocument><files>\n"
                        "<add value=\"Default.htm\" />\n"
                        "</files></defaultDocument></system.webServer></configuration>",
                        kDocuments, kSite, u"files", qm::hr::already_exists,
                        "web.config(3): Cannot add duplicate collection entry of type 'add' with "
                        "unique key attribute 'value' set to 'Default.htm'"},
        RepeatedKeyCase{"inheritedButRemovedFirst", "", "",
                        "<configuration><system.webServer><defaultDocument><files>"
                        "<remove value=\"default.htm\" /><add value=\"Default.htm\" />"
                        "</files></defaultDocument></system.webServer></configuration>",
                        kDocuments, kSite, u"files", 0, "", 2},
        RepeatedKeyCase{"inheritedButCleared", "", "",
                        "<configuration><system.webServer><defaultDocument><files><clear />"
                        "<add value=\"index.html\" /><add value=\"Default.htm\" />"
                        "</files></defaultDocument></system.webServer></configuration>",
                        kDocuments, kSite, u"files", 0, "", 2},
        RepeatedKeyCase{"caseSensitiveKeyInAnotherCase", kStaticFile,
                        "<add name=\"staticfile\" path=\"*.x\" verb=\"*\" />\r\n            "
                        "<add name=\"StaticFile\" path=\"*\"",
                        "", u"system.webServer/handlers", testing::kAppHostPath, u"", 0, "", 2}),
    [](const ::testing::TestParamInfo<RepeatedKeyCase>& item) { return item.param.name; });

// A site's name and its id are each unique on their own.
TEST(Collections, ASiteNeedsAFreeNameAndAFreeId) {
    IisConfigMachine machine;
    auto manager = machine.NewManager();
    auto sites = CollectionOf(*manager, kSites, kAppHost);
    const auto add = [&](std::u16string_view name, std::u16string_view id) {
        std::shared_ptr<ConfigElement> site;
        EXPECT_EQ(sites->CreateNewElement(u"site", site), 0);
        EXPECT_EQ(Put(*site, u"name", Variant{std::u16string(name)}), 0);
        EXPECT_EQ(Put(*site, u"id", Variant{std::u16string(id)}), 0);
        return sites->AddElement(site, -1);
    };
    EXPECT_EQ(add(u"Shop", u"1"), qm::hr::already_exists);
    EXPECT_EQ(add(u"default web site", u"2"), qm::hr::already_exists);
    EXPECT_EQ(add(u"Shop", u"2"), 0);
    uint32_t count = 0;
    EXPECT_EQ(sites->Count(count), 0);
    EXPECT_EQ(count, 2u);
}

// A site that repeats a binding: the message names every attribute of the combined key.
TEST(Collections, ARepeatedBindingNamesItsCombinedKey) {
    IisConfigMachine machine;
    machine.WriteAppHost(
        Replaced(machine.ReadAppHost(), kBinding, std::string(kBinding) + std::string(kBinding)));
    auto manager = machine.NewManager();
    auto sites = CollectionOf(*manager, kSites, kAppHost);
    std::shared_ptr<ConfigElement> site;
    ASSERT_EQ(sites->Item(0, site), 0);
    std::shared_ptr<ConfigElement> bindingsElement;
    ASSERT_EQ(site->GetElementByName(u"bindings", bindingsElement), 0);
    std::shared_ptr<ElementCollection> bindings;
    ASSERT_EQ(bindingsElement->GetCollection(bindings), 0);
    uint32_t count = 0;
    EXPECT_EQ(bindings->Count(count), qm::hr::already_exists);
    EXPECT_NE(qm::to_utf8(manager->LastErrorDescription())
                  .find("applicationHost.config(42): Cannot add duplicate collection entry of "
                        "type 'binding' with combined key attributes 'protocol, "
                        "bindingInformation' respectively set to 'http, *:80:'"),
              std::string::npos)
        << qm::to_utf8(manager->LastErrorDescription());
}

TEST(Collections, IndexesAndNamesOutsideTheCollectionAreInvalid) {
    IisConfigMachine machine;
    auto manager = machine.NewManager();
    auto pools = CollectionOf(*manager, kPools, kAppHost);
    std::shared_ptr<ConfigElement> element;
    EXPECT_EQ(pools->Item(1, element), qm::hr::invalid_index);
    EXPECT_EQ(pools->CreateNewElement(u"site", element), qm::hr::invalid_index);
    EXPECT_EQ(pools->CreateNewElement(u"remove", element), qm::hr::invalid_index);
    ASSERT_EQ(pools->Item(0, element), 0);
    std::shared_ptr<platform::ConfigProperty> property;
    EXPECT_EQ(element->GetPropertyByName(u"colour", property), qm::hr::invalid_index);
    std::shared_ptr<ConfigElement> child;
    EXPECT_EQ(element->GetElementByName(u"nothing", child), qm::hr::invalid_index);
    std::shared_ptr<ElementCollection> none;
    EXPECT_EQ(element->GetCollection(none), qm::hr::invalid_index);
    std::u16string name;
    ASSERT_EQ(element->GetName(name), 0);
    EXPECT_EQ(name, u"add");
}

TEST(Collections, SitesNestedCollectionsAndDefaults) {
    IisConfigMachine machine;
    auto manager = machine.NewManager();
    auto sites = CollectionOf(*manager, kSites, kAppHost);
    std::shared_ptr<ConfigElement> site;
    ASSERT_EQ(sites->Item(0, site), 0);
    EXPECT_EQ(Text(*site, u"serverAutoStart"), u"true");
    std::shared_ptr<ElementCollection> applications;
    ASSERT_EQ(site->GetCollection(applications), 0);
    EXPECT_EQ(Values(*applications, u"path"), (std::vector<std::u16string>{u"/", u"/shop"}));
    // applicationDefaults of the sites section gives the root application its pool.
    EXPECT_EQ(Values(*applications, u"applicationPool"),
              (std::vector<std::u16string>{u"DefaultAppPool", u"DefaultAppPool"}));
    std::shared_ptr<ConfigElement> shop;
    ASSERT_EQ(applications->Item(1, shop), 0);
    ASSERT_EQ(applications->DeleteElement(1), 0);
    EXPECT_EQ(Text(*shop, u"path"), u"<error>");
    ASSERT_EQ(manager->CommitChanges(), 0);
    EXPECT_EQ(
        machine.ReadAppHost(),
        Replaced(testing::TestAppHostConfig(),
                 "                <application path=\"/shop\" applicationPool=\"DefaultAppPool\">"
                 "\r\n                    <virtualDirectory path=\"/\" "
                 "physicalPath=\"C:\\inetpub\\shop\" />\r\n"
                 "                </application>\r\n",
                 ""));
}

TEST(Locations, AreCountedReadAndDeletedByIndex) {
    std::string appHost = testing::TestAppHostConfig();
    appHost.insert(appHost.rfind("</configuration>"),
                   "    <location path=\"Default Web Site\">\r\n    </location>\r\n"
                   "    <location path=\"Default Web Site/shop\" />\r\n");
    IisConfigMachine machine(appHost);
    auto manager = machine.NewManager();
    std::shared_ptr<platform::ConfigManager> configManager;
    ASSERT_EQ(manager->GetConfigManager(configManager), 0);
    std::shared_ptr<platform::ConfigFile> file;
    EXPECT_EQ(configManager->GetConfigFile(kSite, file), qm::hr::invalid_arg);
    ASSERT_EQ(configManager->GetConfigFile(kAppHost, file), 0);
    std::shared_ptr<platform::ConfigLocations> locations;
    ASSERT_EQ(file->GetLocations(locations), 0);
    uint32_t count = 0;
    ASSERT_EQ(locations->Count(count), 0);
    EXPECT_EQ(count, 2u);
    std::shared_ptr<platform::ConfigLocation> location;
    ASSERT_EQ(locations->Item(1, location), 0);
    std::u16string path;
    ASSERT_EQ(location->GetPath(path), 0);
    EXPECT_EQ(path, u"Default Web Site/shop");
    EXPECT_EQ(locations->Item(2, location), qm::hr::invalid_index);
    EXPECT_EQ(locations->DeleteLocation(2), qm::hr::invalid_index);
    ASSERT_EQ(locations->DeleteLocation(0), 0);
    ASSERT_EQ(locations->Count(count), 0);
    EXPECT_EQ(count, 1u);
    ASSERT_EQ(manager->CommitChanges(), 0);
    EXPECT_EQ(
        machine.ReadAppHost(),
        Replaced(appHost, "    <location path=\"Default Web Site\">\r\n    </location>\r\n", ""));
}

}  // namespace
}  // namespace webrig::sim::iis7
