// Item settings on a stock IIS 10 machine with a pool, a site and an application created through
// the backend: each row is one setting, the file it must land in and what that file must then
// say; rows run in order on one machine, so later rows see what earlier ones wrote.

#include "apphost/config_calls.h"
#include "apphost/vista_backend.h"

namespace webrig::testing {
namespace {

enum class Item { pool, site, app };
// The setters, and F: SetFormsAuthentication (number: 1 effective, 2 own); T: InstallMimeTypes
// (text: ".ext=type;...").
enum Setter : char { D = 'D', S = 'S', L = 'L', M = 'M', F = 'F', T = 'T' };

struct Row {
    Item item;
    Setter setter;
    uint32_t id;
    uint32_t number = 0;
    std::u16string text = {};
    int32_t code = 0;
    // The one file that changes and an XPath that must then hold in it; without a file, nothing
    // changes and nothing is committed.
    std::string file = {}, check = {};
};

struct ItemSettingsTest : VistaFixture {
    CIISAppPoolProp pool;
    std::unique_ptr<CIISVRootProp> app = VRoot(u"app", 2);

    void SetUp() override {
        std::filesystem::create_directories(Drive("shop/app"));
        pool.Name = u"ShopPool";
        website.DisplayName = u"Shop";
        website.Port = u"8080";
        website.RootDir = u"C:\\shop";
        website.Component = u"Shop";
        app->RootDir = u"C:\\shop\\app";
        app->AppPool = u"ShopPool";
        ASSERT_EQ(backend.CreateAppPoolFunction(pool), 0);
        ASSERT_EQ(backend.CommitChanges(), 0);
        backend.GetNextWebsiteId(website);
        ASSERT_EQ(backend.AddWebSiteFunction(website), 0);
        ASSERT_TRUE(backend.FindSiteWithId(website));
        ASSERT_EQ(backend.CreateApplication(website, app.get()), 0);
    }
    std::filesystem::path File(const std::string& name) {
        return name == "apphost" ? AppHost() : Drive(name + "/web.config");
    }
    std::string Text(const std::string& name) {
        return std::filesystem::exists(File(name)) ? IisConfigMachine::ReadText(File(name)) : "";
    }
    bool Holds(const std::string& name, const std::string& check) {
        pugi::xml_document document;
        EXPECT_TRUE(document.load_file(File(name).c_str())) << name;
        return pugi::xpath_query(check.c_str()).evaluate_boolean(document);
    }
    int32_t Apply(const Row& row) {
        if (row.item == Item::pool) {
            backend.OpenKeyToWebsite(nullptr, nullptr, nullptr);
        } else {
            backend.OpenKeyToWebsite(&website, nullptr,
                                     row.item == Item::app ? app.get() : nullptr);
        }
        switch (row.setter) {
            case D:
                return backend.SetVRtDWProperty(row.id, 1, row.number);
            case S:
                return backend.SetVRtStrProperty(row.id, 1, 0, row.text, u"/");
            case L:
                return backend.SetVRtDelimMultiszProperty(row.id, 1, row.text);
            case M:
                return backend.SetVRtMultiszProperty(row.id, 2, row.text.c_str(),
                                                     uint32_t(row.text.size() + 2) * 2, u"/");
            case F:
                return backend.SetFormsAuthentication(row.number & 1, row.number & 2);
            case T:
                break;
        }
        std::vector<std::unique_ptr<CIISMimeMapProp>> maps;
        for (const std::u16string& map : apphost::SplitText(row.text, u';', false)) {
            maps.push_back(std::make_unique<CIISMimeMapProp>());
            maps.back()->Extension = map.substr(0, map.find(u'='));
            maps.back()->Type = map.substr(map.find(u'=') + 1);
        }
        return backend.InstallMimeTypes({}, maps);
    }
    void Run(const std::vector<Row>& rows) {
        const std::vector<std::string> files = {"apphost", "shop", "shop/app"};
        for (const Row& row : rows) {
            std::map<std::string, std::string> before;
            for (const std::string& file : files) {
                before[file] = Text(file);
            }
            const std::string where = row.check + " (" + std::to_string(row.id) + ")";
            const size_t logged = backend.log.size();
            EXPECT_EQ(Apply(row), row.code) << where;
            for (const std::string& file : files) {
                EXPECT_EQ(Text(file) != before[file], file == row.file) << file << ": " << where;
            }
            if (row.file.empty()) {
                EXPECT_TRUE(
                    std::none_of(backend.log.begin() + logged, backend.log.end(),
                                 [](auto& line) { return line.starts_with("CommitChanges"); }))
                    << where;
            } else if (!row.check.empty()) {
                EXPECT_TRUE(Holds(row.file, row.check)) << where;
            }
        }
    }
};

const std::string kPool =
    "/configuration/system.applicationHost/applicationPools/add[@name='ShopPool']";
const std::string kSchedule = kPool + "/recycling/periodicRestart/schedule/add";

// The plain translations are in the end-to-end test below; these are the edges.
TEST_F(ItemSettingsTest, PoolSettingsLandOnThePoolsEntryOfTheMainFile) {
    constexpr int32_t refused = qm::hr::invalid_data;
    Run({
        {Item::pool, D, 9005, 2880, u"", 0, "apphost",
         kPool + "/processModel[@idleTimeout='2.00:00:00']"},
        {Item::pool, D, 2144, 1500, u"", refused},  // more than the day IIS allows
        {Item::pool, D, 9022, 1, u"", 0, "apphost", kPool + "/cpu[@action='KillW3wp']"},
        {Item::pool, D, 9022, 2, u"", 0, "apphost", kPool + "/cpu[@action='NoAction']"},
        {Item::pool, D, 9021, 9, u"", 0, "apphost",
         kPool + "/processModel[@identityType='NetworkService']"},
        {Item::pool, S, 7502, 0, u"Pool$ecret", 0, "apphost",
         "starts-with(" + kPool + "/processModel/@password, '[enc:AesProvider:')"},
        // The schedule only grows; a trailing ";" makes an empty time, which IIS refuses.
        {Item::pool, L, 9020, 0, u"09:00", 0, "apphost", "count(" + kSchedule + ")=1"},
        {Item::pool, L, 9020, 0, u"03:00;15:30;09:00", 0, "apphost",
         kSchedule + "[1]/@value='09:00:00' and " + kSchedule + "[2]/@value='03:00:00' and " +
             kSchedule + "[3]/@value='15:30:00' and count(" + kSchedule + ")=3"},
        {Item::pool, L, 9020, 0, u"03:00;", refused},
        {Item::pool, D, 6015, 1},  // no translation
    });
    EXPECT_TRUE(backend.Logged("SetVRtStrProperty for property '7502' with value '********'."));
    EXPECT_TRUE(backend.Logged("AppHostElement objects detected. Unsupported property."));
    for (const std::string& line : backend.log) {
        EXPECT_EQ(line.find("Pool$ecret"), std::string::npos) << line;
    }
}

const std::string kWeb = "/configuration/system.webServer";
const std::string kAppLocation = "/configuration/location[@path='Shop/app']/system.webServer";
const std::string kAuth = kAppLocation + "/security/authentication";
const std::string kErrors = kWeb + "/httpErrors/error[@statusCode='500' and @subStatusCode='100']";

TEST_F(ItemSettingsTest, SiteAndApplicationSettingsLandInTheirWebConfigOrTheirLocation) {
    const std::string authentication = "/configuration/system.web/authentication";
    Run({
        // Authentication may not be set below the server: each section is written in a location
        // tag, and committed before the next is opened at the item's level again.
        {Item::app, D, 6000, 5, u"", 0, "apphost",
         kAuth +
             "[anonymousAuthentication/@enabled='true' and basicAuthentication/@enabled='false'"
             " and windowsAuthentication/@enabled='true'] and not(" +
             kWeb + "/security/authentication/windowsAuthentication/@enabled)"},
        {Item::site, D, 6005, 0x40000000, u"", 0, "shop",
         kWeb + "/directoryBrowse[@enabled='false']"},
        {Item::site, D, 6016, 0, u"", 0, "shop", kWeb + "/handlers[@accessPolicy='None']"},
        // Inherited documents stay; new ones go after them.
        {Item::app, S, 6006, 0, u"default.aspx,INDEX.htm", 0, "shop/app",
         "count(" + kWeb + "/defaultDocument/files/add[@value='default.aspx'])=1 and count(" +
             kWeb + "/defaultDocument/files/add)=1"},
        {Item::app, S, 9101, 0, u"ShopPool"},
        {Item::app, L, 6008, 0, u"500,100,FILE,C:\\err\\500.htm", 0, "shop/app",
         kErrors + "[@responseMode='File' and @path='C:\\err\\500.htm']"},
        {Item::app, L, 6008, 0, u"500,100,URL,/oops.aspx;", 0, "shop/app",
         "count(" + kErrors + ")=1 and " + kErrors +
             "[@responseMode='ExecuteURL' and @path='/oops.aspx']"},
        // A mode in lower case is written empty, which IIS refuses; so is an entry without path.
        {Item::app, L, 6008, 0, u"500,100,file,C:\\x.htm", qm::hr::invalid_data},
        {Item::app, L, 6008, 0, u"404,7,FILE", qm::hr::file_not_found},
        // Nothing is rolled back: the refused entry's new path rides on the session's next commit.
        {Item::app, D, 6005, 0, u"", 0, "shop/app", kErrors + "[@path='C:\\x.htm']"},
        // An existing handler is updated in place; a new one goes to the top of the list.
        {Item::app, M, 6014, 0, u".abc,C:\\x.dll,1;", 0, "shop/app",
         kWeb + "/handlers/add[1][@name='.abc' and @verb='*']"},
        {Item::app, M, 6014, 0, u".abc,C:\\y.dll,5,GET,POST;.xyz,C:\\z.dll,1;", 0, "shop/app",
         kWeb + "/handlers/add[1][@name='.xyz'] and " + kWeb +
             "/handlers/add[2][@name='.abc' and @verb='GET,POST' and "
             "@scriptProcessor='C:\\y.dll']"},
        // The forms mode is not committed where it is set: the next setting's commit carries it.
        {Item::app, F, 0, 0},
        {Item::app, F, 0, 1},
        {Item::app, D, 6016, 0x201, u"", 0, "shop/app", authentication + "[@mode='Windows']"},
        // Maps whose extensions exist (in any case) change nothing and commit nothing.
        {Item::app, T, 0, 0, u".JSON=text/json;.htm=x/y"},
        {Item::app, D, 6039, 0},
    });
}

// Without the handlers section there is nothing to add the maps to: nothing is written.
TEST_F(ItemSettingsTest, ApplicationMapsFailWithoutTheHandlersSection) {
    IisConfigMachine::WriteText(File("shop/app"), R"(<?xml version="1.0" encoding="UTF-8"?>
<configuration><system.webServer><handlers><bogus /></handlers></system.webServer></configuration>)");
    Run({{Item::app, M, 6014, 0, u".abc,C:\\x.dll,1;", qm::status::handlers_unavailable}});
}

// netsh binds the hash to the site's address; its own exit code (1 here: the store does not
// hold the certificate) does not fail the install.
TEST_F(ItemSettingsTest, TheCertificateHashIsBoundByNetsh) {
    const std::byte hash[] = {std::byte{0xAB}, std::byte{0x01}, std::byte{0xFF}};
    for (const char16_t* ip : {u"", u"10.0.0.5"}) {
        website.IPAddress = ip;
        ASSERT_TRUE(backend.FindSiteWithId(website));
        EXPECT_EQ(backend.SetVRtBinProperty(5506, 1, hash, sizeof hash), 0);
    }
    const std::string journal =
        IisConfigMachine::ReadText(sim::ProcessJournalPath(platform.temp().path()));
    EXPECT_NE(journal.find(R"({"commandLine":"\"C:\\Windows\\system32\\netsh.exe\" http add )"
                           R"(sslcert ipport=0.0.0.0:8080 certhash=\"AB01FF\" appid={00112233-)"
                           R"(4455-6677-8899-AABBCCDDEEFF}","executable":"C:\\Windows\\)"
                           R"(SysWOW64\\netsh.exe","exitCode":1,)"),
              std::string::npos)
        << journal;
    EXPECT_NE(journal.find("ipport=10.0.0.5:8080 "), std::string::npos);
    EXPECT_EQ(backend.Count("netsh add retval: 1"), 2u);
    std::filesystem::remove(Drive("Windows/SysWOW64/netsh.exe"));
    EXPECT_EQ(backend.SetVRtBinProperty(5506, 1, hash, sizeof hash),
              qm::status::certificate_import_failed);
    EXPECT_TRUE(
        backend.Logged("Could not find path 'C:\\Windows\\system32\\netsh.exe' while "
                       "setting SSL properties. uResult = '19'"));
}

TEST_F(ItemSettingsTest, AspNetBitnessFollowsThePoolsThirtyTwoBitFlag) {
    // The configuration system reads "True" as the boolean and gives its text as "true".
    EditAppHost(R"(<add name="ShopPool")", R"(<add name="P32" enable32BitAppOnWin64="True" />)"
                                           R"(<add name="ShopPool")");
    EXPECT_TRUE(backend.CheckAspNetBitness(u"P32", u"x86"));
    EXPECT_FALSE(backend.CheckAspNetBitness(u"P32", u"x64"));
    EXPECT_FALSE(backend.CheckAspNetBitness(u"", u"x86"));  // DefaultAppPool
    EXPECT_TRUE(backend.CheckAspNetBitness(u"", u"amd64"));
    EXPECT_FALSE(backend.CheckAspNetBitness(u"Missing", u"x64"));
}

// One pool and one application with every setting, in the order the install writes them; the
// files are compared with a reviewed copy (secrets, encrypted afresh each time, as "[enc:...]").
TEST_F(ItemSettingsTest, EverySettingOfAPoolAndAnApplication) {
    // clang-format off
    const Row poolRows[] = {
        {Item::pool, D, 9005, 15}, {Item::pool, D, 9003, 2}, {Item::pool, D, 9002, 10000},
        {Item::pool, D, 9001, 1500}, {Item::pool, D, 9017, 4000}, {Item::pool, D, 9043, 1},
        {Item::pool, L, 9020, 0, u"03:00;15:30"}, {Item::pool, D, 9023, 50000},
        {Item::pool, D, 2144, 5}, {Item::pool, D, 9022, 1}, {Item::pool, D, 9021, 3},
        {Item::pool, S, 7501, 0, u"DOM\\svc"}, {Item::pool, S, 7502, 0, u"P"},
    };
    const Row appRows[] = {
        {Item::app, S, 3001, 0, u"C:\\shop\\app"}, {Item::app, S, 2102, 0, u"app"},
        {Item::app, F, 0, 3}, {Item::app, S, 1002, 0, u"IIsWebVirtualDir"},
        {Item::app, D, 6016, 0x201}, {Item::app, D, 6005, 0x80000000}, {Item::app, D, 7007, 30},
        {Item::app, D, 7006, 120}, {Item::app, D, 6000, 4}, {Item::app, S, 6020, 0, u"DOM\\anon"},
        {Item::app, D, 6022, 0}, {Item::app, S, 6021, 0, u"A"}, {Item::app, D, 6039, 0},
        {Item::app, D, 6023, 1}, {Item::app, D, 2104, 1},
        {Item::app, S, 6006, 0, u"default.aspx,index.htm"},
        {Item::app, L, 6008, 0, u"404,0,URL,/notfound.aspx;500,100,FILE,C:\\err\\500.htm"},
        {Item::app, M, 6014, 0, u".abc,C:\\x\\isapi.dll,1;.def,C:\\x\\isapi.dll,5,GET,POST;"},
        {Item::app, T, 0, 0, u".webp=image/webp"}, {Item::app, S, 9101, 0, u"ShopPool"},
    };
    // clang-format on
    for (const Row& row : poolRows) {
        EXPECT_EQ(Apply(row), 0) << row.id;
    }
    pool.ManagedRuntimeVersion = u"v2.0";
    pool.ManagedPipelineMode = u"Classic";
    pool.Enable32bitAppOnWin64 = u"true";
    EXPECT_EQ(backend.SetAppPoolProperties(pool), 0);
    for (const Row& row : appRows) {
        EXPECT_EQ(Apply(row), 0) << row.id;
    }
    EXPECT_EQ(backend.SetDynamicMetaDataProperties(*app), 0);

    const auto part = [](std::string text, const std::string& from, const std::string& to) {
        text = text.substr(text.find(from));
        text = text.substr(0, text.find(to) + to.size());
        for (size_t at; (at = text.find("[enc:AesProvider:")) != std::string::npos;) {
            text.replace(at, text.find(":enc]", at) + 5 - at, "[enc:...]");
        }
        return text;
    };
    const std::string appHost = Text("apphost");
    const std::string written = part(appHost, "<add name=\"ShopPool\"", "</add>") + "\r\n" +
                                part(appHost, "<location path=\"Shop/app\">", "</location>") +
                                "\r\n" +
                                part(Text("shop/app"), "<configuration>", "</configuration>");
    const char* data = std::getenv("WEBRIG_TEST_DATA");
    ASSERT_NE(data, nullptr);
    const auto expected = std::filesystem::path(data) / "apphost" / "every_setting.config";
    EXPECT_EQ(written, IisConfigMachine::ReadText(expected));
}

}  // namespace
}  // namespace webrig::testing
