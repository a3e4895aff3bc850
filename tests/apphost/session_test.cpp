// The administration session: commit paths, sections with their retry, commits and their
// excuses, the manager's lifetime and the metabase probe.

#include "apphost/vista_backend.h"

namespace webrig::testing {
namespace {

constexpr qm::hresult kNotSupported = qm::hr::not_supported;

using SessionTest = VistaFixture;

TEST_F(SessionTest, ConfigurationDirectoryIsTheSystemDirectorysInetsrvConfig) {
    EXPECT_EQ(backend.m_sConfigDirectory, u"C:\\Windows\\system32\\inetsrv\\config\\");
    EXPECT_EQ(backend.m_sPhysicalPath, backend.m_sConfigDirectory);
}

struct CommitPathCase {
    std::u16string site, app, expected;
};

TEST_F(SessionTest, SetCommitPathJoinsSiteAndApplication) {
    const CommitPathCase cases[] = {
        {u"", u"", u"MACHINE/WEBROOT/APPHOST"},
        {u"Default Web Site", u"", kSitePath},
        {u"Default Web Site", u"/shop", u"MACHINE/WEBROOT/APPHOST/Default Web Site/shop"},
        {u"Default Web Site", u"a\\b", u"MACHINE/WEBROOT/APPHOST/Default Web Site/a/b"},
    };
    for (const CommitPathCase& c : cases) {
        EXPECT_EQ(backend.SetCommitPath(c.site, c.app), 0);
        EXPECT_EQ(backend.GetCommitPath(), c.expected);
    }
    // The current path again: no put, no line.
    backend.log.clear();
    std::u16string same = backend.GetCommitPath();
    EXPECT_EQ(backend.ChangeCommitPath(same), 0);
    EXPECT_EQ(backend.log, std::vector<std::string>{});
}

struct CommitCase {
    std::vector<qm::hresult> answers;
    bool valueChanged;
    qm::hresult expected;
    std::string line;
};

TEST_F(SessionTest, CommitFailuresAreExcusedOnlyWhereTheyMayBe) {
    const CommitCase cases[] = {
        {{kNotSupported},
         true,
         kNotSupported,
         "CommitChanges failed with the following HRESULT: '-2147024846'. The request is not "
         "supported. "},
        {{qm::hr::already_exists},
         true,
         0,
         "Ignoring error because it indicates that the item already exists."},
        {{qm::hr::path_not_found},
         false,
         0,
         "put_Value determined that property is not actually changing, so ignore CommitChanges "
         "failure."},
    };
    for (const CommitCase& c : cases) {
        platform.faults.commitAnswers.assign(c.answers.begin(), c.answers.end());
        backend.m_bValueChanged = c.valueChanged;
        backend.SetCommitPath(u"Default Web Site", u"");
        EXPECT_EQ(backend.CommitChanges(), c.expected) << c.line;
        EXPECT_TRUE(backend.Logged(c.line)) << c.line;
        EXPECT_TRUE(backend.m_bValueChanged);
        EXPECT_EQ(backend.GetCommitPath(), u"MACHINE/WEBROOT/APPHOST") << "a fresh manager";
    }
    // The excuse is spent: the next failure is returned, and a missing folder is named.
    platform.faults.commitAnswers = {qm::hr::path_not_found};
    backend.m_sPhysicalPath = u"C:\\nowhere";
    EXPECT_EQ(backend.CommitChanges(), qm::hr::path_not_found);
    EXPECT_TRUE(backend.Logged(
        "CommitChanges failed with the following HRESULT: '-2147024893'. The system cannot find "
        "the path specified. Physical path not found. "));
}

TEST_F(SessionTest, AManagerThatCannotBeCreatedFailsEveryCallWithItsCode) {
    platform.faults.createManager = qm::hr::class_not_registered;
    EXPECT_EQ(backend.GetAdminSection(u"system.webServer/asp", u"MACHINE/WEBROOT/APPHOST"),
              nullptr);
    EXPECT_EQ(backend.CommitChanges(), qm::hr::class_not_registered);
    EXPECT_TRUE(
        backend.Logged("m_spAppHostAdminManager NULL, CoCreateInstance returned: -2147221164"));
    EXPECT_TRUE(backend.Logged("GetAdminSection returned: -2147221164"));
    EXPECT_TRUE(backend.Logged("get_CommitPath failed"));
}

TEST_F(SessionTest, AnUnreadableCommitPathIsEmpty) {
    platform.faults.getCommitPath = qm::hr::fail;
    EXPECT_EQ(backend.GetCommitPath(), u"");
    EXPECT_TRUE(backend.Logged("get_CommitPath failed"));
}

TEST_F(SessionTest, ASectionMissingInTheMainFileIsNotRetried) {
    EXPECT_EQ(backend.GetAdminSection(u"system.webServer/nothing", u"MACHINE/WEBROOT/APPHOST"),
              nullptr);
    EXPECT_TRUE(backend.Logged("GetAdminSection returned: -2147024846"));
    EXPECT_TRUE(backend.Logged("Error: already using the main configuration file."));
    EXPECT_EQ(backend.Count("GetAdminSection for section 'system.webServer/nothing' and path "
                            "'MACHINE/WEBROOT/APPHOST' and commitpath 'MACHINE/WEBROOT/APPHOST'."),
              1u);
}

// A section asked for above the commit path is refused (0x80070057) and read again through a
// fresh manager, at the old commit path, which is now a location of the main file.
TEST_F(SessionTest, ASectionAboveTheCommitPathIsReadAtTheOldCommitPathInTheMainFile) {
    backend.SetCommitPath(u"Default Web Site", u"");
    const auto section =
        backend.GetAdminSection(u"system.webServer/defaultDocument", u"MACHINE/WEBROOT/APPHOST");
    ASSERT_NE(section, nullptr);
    EXPECT_TRUE(backend.Logged("GetAdminSection returned: -2147024809"));
    EXPECT_TRUE(backend.Logged(
        "GetAdminSection for section 'system.webServer/defaultDocument' and path "
        "'MACHINE/WEBROOT/APPHOST/Default Web Site' and commitpath 'MACHINE/WEBROOT/APPHOST'."));
    EXPECT_EQ(backend.PutPropertyValue(section, u"enabled", u"false", false), 0);
    EXPECT_EQ(backend.CommitChanges(), 0);
    EXPECT_EQ(CountNodes("/configuration/location[@path='Default Web Site']/system.webServer/"
                         "defaultDocument[@enabled='false']"),
              1u);
}

struct ProbeCase {
    bool compatibility;
    qm::hresult createInstance;
    std::vector<std::string> lines;
};

TEST(InitIISObjectTest, ProbesTheMetabaseCompatibilityLayerForTheLogOnly) {
    const ProbeCase cases[] = {
        {false,
         0,
         {"InitIISObject", "CoGetClassObject(GETAdminBaseCLSID(TRUE) error: -2147221164",
          "Legacy objects not supported"}},
        {true, 0, {"InitIISObject", "Legacy objects are supported"}},
        {true,
         static_cast<qm::hresult>(0x80070005),
         {"InitIISObject", "CreateInstance IID_IMSAdminBase error: -2147024891",
          "Legacy objects not supported"}},
    };
    for (const ProbeCase& c : cases) {
        sim::MachineConfig config;
        if (c.compatibility) {
            config.iisFeatures = {sim::IisFeature::metabaseCompatibility};
        }
        FaultyPlatform platform(config);
        platform.faults.createAdminBase = c.createInstance;
        TestVistaBackend backend(platform);
        EXPECT_EQ(backend.InitIISObject(), 0);
        EXPECT_EQ(backend.log, c.lines);
    }
}

struct OpenKeyCase {
    bool website;
    std::u16string displayName;
    int32_t itemType;
    std::u16string parentAppPath;
    qm::hresult expected;
    std::u16string commitPath, physicalPath;
};

TEST_F(SessionTest, OpenKeyToWebsiteSelectsTheItemsLocation) {
    const OpenKeyCase cases[] = {
        {false, u"", 0, u"", 0, u"MACHINE/WEBROOT/APPHOST",
         u"C:\\Windows\\system32\\inetsrv\\config\\"},
        {true, u"", 0, u"", 0, kSitePath, u"C:\\site"},
        {true, u"shop", 1, u"", 0, u"MACHINE/WEBROOT/APPHOST/Default Web Site/shop", u"C:\\vdir"},
        {true, u"a\\b", 2, u"", 0, u"MACHINE/WEBROOT/APPHOST/Default Web Site/a/b", u"C:\\vdir"},
        {true, u"a\\b", 1, u"/shop", 0, u"MACHINE/WEBROOT/APPHOST/Default Web Site/shop/a/b",
         u"C:\\vdir"},
        // A child of the root application: "//parent\child" is no configuration path.
        {true, u"parent\\child", 1, u"/", qm::hr::invalid_arg, u"MACHINE/WEBROOT/APPHOST",
         u"C:\\vdir"},
    };
    for (const OpenKeyCase& c : cases) {
        website.RootDir = u"C:\\site";
        CIISVRootProp vroot;
        vroot.DisplayName = c.displayName;
        vroot.RootDir = u"C:\\vdir";
        vroot.ItemType = c.itemType;
        backend.m_sParentAppPath = c.parentAppPath;
        backend.PutCommitPath(u"MACHINE/WEBROOT/APPHOST");
        EXPECT_EQ(backend.OpenKeyToWebsite(c.website ? &website : nullptr, nullptr,
                                           c.displayName.empty() ? nullptr : &vroot),
                  c.expected);
        EXPECT_EQ(backend.GetCommitPath(), c.commitPath);
        EXPECT_EQ(backend.m_sPhysicalPath, c.physicalPath);
    }
    EXPECT_TRUE(backend.Logged(
        "put_CommitPath for path 'MACHINE/WEBROOT/APPHOST/Default Web Site//parent/child' failed "
        "with the following HRESULT: -2147024809"));
}

}  // namespace
}  // namespace webrig::testing
