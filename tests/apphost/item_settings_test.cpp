// Item settings on a stock IIS 10 machine with a pool, a site and an application created through
// the backend: each row is one setting, the file it must land in and what that file must then
// say; rows run in order on one machine, so later rows see what earlier ones wrote.

#include "apphost/vista_backend.h"
#include "testing/file_bytes.h"

namespace webrig::testing {
namespace {

enum class Item { pool, site, app };
enum Setter : char { D = 'D', S = 'S', L = 'L', M = 'M' };

struct Row {
    Item item;
    Setter setter;
    uint32_t id;
    uint32_t number;
    std::u16string text;
    int32_t code;
    // The file that changes ("" when none may change) and an XPath that must then hold in it.
    std::string file, check;
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
        }
        return 1;
    }
    void Run(const std::vector<Row>& rows) {
        const std::vector<std::string> files = {"apphost", "shop", "shop/app"};
        for (const Row& row : rows) {
            std::map<std::string, std::string> before;
            for (const std::string& file : files) {
                before[file] = Text(file);
            }
            const std::string where = row.check + " (" + std::to_string(row.id) + ")";
            EXPECT_EQ(Apply(row), row.code) << where;
            for (const std::string& file : files) {
                EXPECT_EQ(Text(file) != before[file], file == row.file) << file << ": " << where;
            }
            if (!row.file.empty()) {
                EXPECT_TRUE(Holds(row.file, row.check)) << where;
            }
        }
    }
};

const std::string kPool =
    "/configuration/system.applicationHost/applicationPools/add[@name='ShopPool']";
const std::string kSchedule = kPool + "/recycling/periodicRestart/schedule/add";

TEST_F(ItemSettingsTest, PoolSettingsLandOnThePoolsEntryOfTheMainFile) {
    constexpr int32_t refused = qm::hr::invalid_data;
    Run({
        {Item::pool, D, 9001, 90, u"", 0, "apphost",
         kPool + "/recycling/periodicRestart[@time='01:30:00']"},
        {Item::pool, D, 9002, 5000, u"", 0, "apphost",
         kPool + "/recycling/periodicRestart[@requests='5000']"},
        {Item::pool, D, 9003, 3, u"", 0, "apphost", kPool + "/processModel[@maxProcesses='3']"},
        {Item::pool, D, 9005, 2880, u"", 0, "apphost",
         kPool + "/processModel[@idleTimeout='2.00:00:00']"},
        {Item::pool, D, 9017, 2000, u"", 0, "apphost", kPool + "[@queueLength='2000']"},
        {Item::pool, D, 9023, 50000, u"", 0, "apphost", kPool + "/cpu[@limit='50000']"},
        {Item::pool, D, 2144, 10, u"", 0, "apphost", kPool + "/cpu[@resetInterval='00:10:00']"},
        // More than the day IIS allows.
        {Item::pool, D, 2144, 1500, u"", refused, "", ""},
        {Item::pool, D, 9022, 1, u"", 0, "apphost", kPool + "/cpu[@action='KillW3wp']"},
        {Item::pool, D, 9022, 2, u"", 0, "apphost", kPool + "/cpu[@action='NoAction']"},
        {Item::pool, D, 9021, 3, u"", 0, "apphost",
         kPool + "/processModel[@identityType='SpecificUser']"},
        {Item::pool, D, 9021, 2, u"", 0, "apphost",
         kPool + "/processModel[@identityType='NetworkService']"},
        {Item::pool, D, 9021, 0, u"", 0, "apphost",
         kPool + "/processModel[@identityType='LocalSystem']"},
        {Item::pool, D, 9021, 9, u"", 0, "apphost",
         kPool + "/processModel[@identityType='NetworkService']"},
        {Item::pool, D, 9043, 2, u"", 0, "apphost",
         kPool + "/processModel[@loadUserProfile='true']"},
        {Item::pool, S, 7501, 0, u"DOM\\svc", 0, "apphost",
         kPool + "/processModel[@userName='DOM\\svc']"},
        {Item::pool, S, 7502, 0, u"Pool$ecret", 0, "apphost",
         "starts-with(" + kPool + "/processModel/@password, '[enc:AesProvider:')"},
        // The schedule only grows; a trailing ";" makes an empty time, which IIS refuses.
        {Item::pool, L, 9020, 0, u"09:00", 0, "apphost", "count(" + kSchedule + ")=1"},
        {Item::pool, L, 9020, 0, u"03:00;15:30;09:00", 0, "apphost",
         kSchedule + "[1]/@value='09:00:00' and " + kSchedule + "[2]/@value='03:00:00' and " +
             kSchedule + "[3]/@value='15:30:00' and count(" + kSchedule + ")=3"},
        {Item::pool, L, 9020, 0, u"03:00;", refused, "", ""},
        {Item::pool, L, 9020, 0, u"", 0, "", ""},
        // No translation: nothing written, no commit.
        {Item::pool, D, 6015, 1, u"", 0, "", ""},
        {Item::pool, S, 1002, 0, u"IIsWebVirtualDir", 0, "", ""},
    });
    EXPECT_EQ(backend.Count("AppHostElement objects detected. Unsupported property."), 2u);
    EXPECT_TRUE(backend.Logged("SetVRtStrProperty for property '7502' with value '********'."));
    for (const std::string& line : backend.log) {
        EXPECT_EQ(line.find("Pool$ecret"), std::string::npos) << line;
    }
}

const std::string kWeb = "/configuration/system.webServer";
const std::string kAppLocation = "/configuration/location[@path='Shop/app']/system.webServer";
const std::string kAuth = kAppLocation + "/security/authentication";
const std::string kErrors = kWeb + "/httpErrors/error[@statusCode='500' and @subStatusCode='100']";

TEST_F(ItemSettingsTest, SiteAndApplicationSettingsLandInTheirWebConfigOrTheirLocation) {
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
        {Item::site, D, 6005, 0x80000000, u"", 0, "shop",
         kWeb + "/directoryBrowse[@enabled='true']"},
        {Item::app, D, 6016, 0x205, u"", 0, "shop/app",
         kWeb + "/handlers[@accessPolicy='Read, Execute, Script']"},
        {Item::site, D, 6016, 0, u"", 0, "shop", kWeb + "/handlers[@accessPolicy='None']"},
        {Item::site, D, 6023, 1, u"", 0, "apphost",
         "/configuration/location[@path='Shop']/system.webServer/httpLogging[@dontLog='true']"},
        // The ASP limits always go to a location tag of the main file.
        {Item::app, D, 7006, 90, u"", 0, "apphost",
         kAppLocation + "/asp/limits[@scriptTimeout='00:01:30']"},
        {Item::app, D, 7007, 20, u"", 0, "apphost",
         kAppLocation + "/asp/session[@timeout='00:20:00']"},
        {Item::app, S, 6020, 0, u"DOM\\anon", 0, "apphost",
         kAuth + "/anonymousAuthentication[@userName='DOM\\anon']"},
        {Item::app, S, 6021, 0, u"Anon$ecret", 0, "apphost",
         "starts-with(" + kAuth + "/anonymousAuthentication/@password, '[enc:AesProvider:')"},
        // Inherited documents stay; new ones go after them.
        {Item::app, S, 6006, 0, u"default.aspx,INDEX.htm", 0, "shop/app",
         "count(" + kWeb + "/defaultDocument/files/add)=1 and " + kWeb +
             "/defaultDocument/files/add/@value='default.aspx'"},
        {Item::app, S, 9101, 0, u"ShopPool", 0, "", ""},
        {Item::app, L, 6008, 0, u"500,100,FILE,C:\\err\\500.htm", 0, "shop/app",
         kErrors + "[@responseMode='File' and @path='C:\\err\\500.htm']"},
        {Item::app, L, 6008, 0, u"500,100,URL,/oops.aspx;", 0, "shop/app",
         "count(" + kErrors + ")=1 and " + kErrors +
             "[@responseMode='ExecuteURL' and @path='/oops.aspx']"},
        // A mode in lower case is written empty, which IIS refuses; so is an entry without path.
        {Item::app, L, 6008, 0, u"500,100,file,C:\\x.htm", qm::hr::invalid_data, "", ""},
        {Item::app, L, 6008, 0, u"404,7,FILE", qm::hr::file_not_found, "", ""},
        // Nothing is rolled back: the refused entry's new path rides on the session's next commit.
        {Item::app, D, 6005, 0, u"", 0, "shop/app",
         kErrors + "[@path='C:\\x.htm' and @responseMode='ExecuteURL']"},
        // A new handler goes to the top of the list, matched before the inherited ones.
        {Item::app, M, 6014, 0, u".abc,C:\\x\\isapi.dll,1;", 0, "shop/app",
         kWeb + "/handlers/add[1][@name='.abc' and @path='.abc' and @modules='IsapiModule' and "
                "@resourceType='File' and @verb='*' and @scriptProcessor='C:\\x\\isapi.dll']"},
        {Item::app, M, 6014, 0, u".abc,C:\\y.dll,5,GET,POST;.xyz,C:\\z.dll,1;", 0, "shop/app",
         kWeb + "/handlers/add[1][@name='.xyz'] and " + kWeb +
             "/handlers/add[2][@name='.abc' and @verb='GET,POST' and "
             "@scriptProcessor='C:\\y.dll']"},
        {Item::app, S, 6039, 0, u"x", 0, "", ""},
    });
    for (const std::string& line : backend.log) {
        EXPECT_EQ(line.find("Anon$ecret"), std::string::npos) << line;
    }
}

// The mode is not committed by SetFormsAuthentication: the next setting's commit carries it.
TEST_F(ItemSettingsTest, TheFormsModeRidesOnTheNextCommit) {
    const std::string authentication = "/configuration/system.web/authentication";
    const struct {
        bool effective, own;
        std::string file, check;
    } cases[] = {
        {false, false, "shop/app", "not(" + authentication + ")"},
        {true, false, "shop/app", authentication + "[@mode='Windows']"},
        {true, true, "shop", authentication + "[@mode='Forms']"},
    };
    for (const auto& c : cases) {
        const Item item = c.file == "shop" ? Item::site : Item::app;
        backend.OpenKeyToWebsite(&website, nullptr, item == Item::app ? app.get() : nullptr);
        const std::string before = Text(c.file);
        EXPECT_EQ(backend.SetFormsAuthentication(c.effective, c.own), 0);
        EXPECT_EQ(Text(c.file), before);
        Run({{item, D, 6016, 0x201, u"", 0, c.file, c.check}});
    }
}

TEST_F(ItemSettingsTest, MimeMapsAreAddedOnlyForNewExtensions) {
    const auto maps = [](std::vector<std::pair<std::u16string, std::u16string>> list) {
        std::vector<std::unique_ptr<CIISMimeMapProp>> result;
        for (auto& [extension, type] : list) {
            result.push_back(std::make_unique<CIISMimeMapProp>());
            result.back()->Extension = extension;
            result.back()->Type = type;
        }
        return result;
    };
    const std::string staticContent = kWeb + "/staticContent/mimeMap";
    backend.OpenKeyToWebsite(&website, nullptr, app.get());
    const size_t logged = backend.log.size();
    EXPECT_EQ(backend.InstallMimeTypes({}, maps({{u".JSON", u"text/json"}, {u".htm", u"x/y"}})), 0);
    EXPECT_FALSE(std::filesystem::exists(File("shop/app")));
    EXPECT_TRUE(std::none_of(backend.log.begin() + logged, backend.log.end(),
                             [](auto& line) { return line.starts_with("CommitChanges"); }));
    EXPECT_EQ(backend.InstallMimeTypes({}, maps({{u".webp", u"image/webp"}, {u".json", u"x/y"}})),
              0);
    EXPECT_TRUE(Holds("shop/app", "count(" + staticContent + ")=1 and " + staticContent +
                                      "[@fileExtension='.webp' and @mimeType='image/webp']"));
    EXPECT_EQ(backend.GetCommitPath(), u"MACHINE/WEBROOT/APPHOST/Shop/app");
}

// Without the handlers section there is nothing to add the maps to: nothing is written.
TEST_F(ItemSettingsTest, ApplicationMapsFailWithoutTheHandlersSection) {
    IisConfigMachine::WriteText(File("shop/app"), R"(<?xml version="1.0" encoding="UTF-8"?>
<configuration><system.webServer><handlers><bogus /></handlers></system.webServer></configuration>)");
    const std::string stock = AppHostElements();
    Run({{Item::app, M, 6014, 0, u".abc,C:\\x.dll,1;", qm::status::handlers_unavailable, "", ""}});
    EXPECT_EQ(AppHostElements(), stock);
}

// netsh binds the hash to the site's address; its own exit code (1 here: the store does not
// hold the certificate) does not fail the install.
TEST_F(ItemSettingsTest, TheCertificateHashIsBoundByNetsh) {
    const std::byte hash[] = {std::byte{0xAB}, std::byte{0x01}, std::byte{0xFF}};
    const struct {
        std::u16string ip;
        std::string ipport;
    } cases[] = {{u"", "0.0.0.0:8080"}, {u"10.0.0.5", "10.0.0.5:8080"}};
    for (const auto& c : cases) {
        website.IPAddress = c.ip;
        ASSERT_TRUE(backend.FindSiteWithId(website));
        EXPECT_EQ(backend.SetVRtBinProperty(5506, 1, hash, sizeof hash), 0);
        const std::string journal =
            IisConfigMachine::ReadText(sim::ProcessJournalPath(platform.temp().path()));
        EXPECT_NE(journal.find(R"({"commandLine":"\"C:\\Windows\\system32\\netsh.exe\" http add )"
                               R"(sslcert ipport=)" +
                               c.ipport +
                               R"( certhash=\"AB01FF\" appid={00112233-4455-6677-8899-)"
                               R"(AABBCCDDEEFF}","executable":"C:\\Windows\\SysWOW64\\netsh.exe",)"
                               R"("exitCode":1)"),
                  std::string::npos)
            << journal;
    }
    EXPECT_EQ(backend.Count("netsh add retval: 1"), 2u);
    std::filesystem::remove(Drive("Windows/SysWOW64/netsh.exe"));
    EXPECT_EQ(backend.SetVRtBinProperty(5506, 1, hash, sizeof hash),
              qm::status::certificate_import_failed);
    EXPECT_TRUE(
        backend.Logged("Could not find path 'C:\\Windows\\system32\\netsh.exe' while "
                       "setting SSL properties. uResult = '19'"));
}

TEST_F(ItemSettingsTest, AspNetBitnessFollowsThePoolsThirtyTwoBitFlag) {
    EditAppHost(R"(<add name="ShopPool")",
                R"(<add name="Pool32" enable32BitAppOnWin64="true" />)"
                R"(<add name="PoolCapital" enable32BitAppOnWin64="True" />)"
                R"(<add name="ShopPool")");
    const struct {
        std::u16string pool, requested;
        bool safe;
    } cases[] = {
        {u"Pool32", u"x86", true},
        {u"Pool32", u"x64", false},
        // The configuration system reads "True" as the boolean and gives its text as "true".
        {u"PoolCapital", u"x86", true},
        {u"PoolCapital", u"x64", false},
        {u"", u"x86", false},
        {u"", u"amd64", true},
        {u"Missing", u"x64", false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(backend.CheckAspNetBitness(c.pool, c.requested), c.safe)
            << qm::to_utf8(c.pool) << " " << qm::to_utf8(c.requested);
    }
}

// One pool and one application with every setting, in the order the install writes them; the
// files are compared with reviewed copies (secrets, which are encrypted afresh each time, stand
// as "[enc:...]").
TEST_F(ItemSettingsTest, EverySettingOfAPoolAndAnApplication) {
    Run({
        {Item::pool, D, 9005, 15, u"", 0, "apphost", "true()"},
        {Item::pool, D, 9003, 2, u"", 0, "apphost", "true()"},
        {Item::pool, D, 9002, 10000, u"", 0, "apphost", "true()"},
        {Item::pool, D, 9001, 1500, u"", 0, "apphost", "true()"},
        {Item::pool, D, 9017, 4000, u"", 0, "apphost", "true()"},
        {Item::pool, D, 9043, 1, u"", 0, "apphost", "true()"},
        {Item::pool, L, 9020, 0, u"03:00;15:30", 0, "apphost", "true()"},
        {Item::pool, D, 9023, 50000, u"", 0, "apphost", "true()"},
        {Item::pool, D, 2144, 5, u"", 0, "apphost", "true()"},
        {Item::pool, D, 9022, 1, u"", 0, "apphost", "true()"},
        {Item::pool, D, 9021, 3, u"", 0, "apphost", "true()"},
        {Item::pool, S, 7501, 0, u"DOM\\svc", 0, "apphost", "true()"},
        {Item::pool, S, 7502, 0, u"Pool$ecret", 0, "apphost", "true()"},
    });
    pool.ManagedRuntimeVersion = u"v2.0";
    pool.ManagedPipelineMode = u"Classic";
    pool.Enable32bitAppOnWin64 = u"true";
    EXPECT_EQ(backend.SetAppPoolProperties(pool), 0);

    backend.OpenKeyToWebsite(&website, nullptr, app.get());
    EXPECT_EQ(backend.SetFormsAuthentication(true, true), 0);
    Run({
        {Item::app, S, 3001, 0, u"C:\\shop\\app", 0, "", ""},
        {Item::app, S, 2102, 0, u"app", 0, "", ""},
        {Item::app, S, 1002, 0, u"IIsWebVirtualDir", 0, "", ""},
        {Item::app, D, 6016, 0x201, u"", 0, "shop/app", "true()"},
        {Item::app, D, 6005, 0x80000000, u"", 0, "shop/app", "true()"},
        {Item::app, D, 7007, 30, u"", 0, "apphost", "true()"},
        {Item::app, D, 7006, 120, u"", 0, "apphost", "true()"},
        {Item::app, D, 6000, 4, u"", 0, "apphost", "true()"},
        {Item::app, S, 6020, 0, u"DOM\\anon", 0, "apphost", "true()"},
        {Item::app, D, 6022, 0, u"", 0, "", ""},
        {Item::app, S, 6021, 0, u"Anon$ecret", 0, "apphost", "true()"},
        {Item::app, D, 6039, 0, u"", 0, "", ""},
        {Item::app, D, 6023, 1, u"", 0, "apphost", "true()"},
        {Item::app, D, 2104, 1, u"", 0, "", ""},
        {Item::app, S, 6006, 0, u"default.aspx,index.htm", 0, "shop/app", "true()"},
        {Item::app, L, 6008, 0, u"404,0,URL,/notfound.aspx;500,100,FILE,C:\\err\\500.htm", 0,
         "shop/app", "true()"},
        {Item::app, M, 6014, 0, u".abc,C:\\x\\isapi.dll,1;.def,C:\\x\\isapi.dll,5,GET,POST;", 0,
         "shop/app", "true()"},
        {Item::app, S, 9101, 0, u"ShopPool", 0, "", ""},
    });
    EXPECT_EQ(backend.SetDynamicMetaDataProperties(*app), 0);
    std::vector<std::unique_ptr<CIISMimeMapProp>> maps(1);
    maps[0] = std::make_unique<CIISMimeMapProp>();
    maps[0]->Extension = u".webp";
    maps[0]->Type = u"image/webp";
    EXPECT_EQ(backend.InstallMimeTypes({}, maps), 0);

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
    if (std::getenv("WEBRIG_WRITE_EXPECTED") != nullptr) {
        IisConfigMachine::WriteText(expected, written);
    }
    EXPECT_EQ(written, IisConfigMachine::ReadText(expected));
}

}  // namespace
}  // namespace webrig::testing
