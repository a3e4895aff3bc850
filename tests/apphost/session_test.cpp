// The administration session: commit paths, sections with their retry, commits and their
// excuses, the manager's lifetime and the metabase probe.

#include "apphost/vista_backend.h"

namespace webrig::testing {
namespace {

using SessionTest = VistaFixture;
constexpr char16_t kAppHost[] = u"MACHINE/WEBROOT/APPHOST";

struct OpenKeyCase {
    bool website;
    std::u16string name;
    int32_t itemType;
    std::u16string parentAppPath;
    qm::hresult expected;
    std::u16string commitPath, physicalPath;
};

TEST_F(SessionTest, OpenKeyToWebsiteSelectsTheItemsLocation) {
    const std::u16string site = kSitePath;
    const OpenKeyCase cases[] = {
        {false, u"", 0, u"", 0, kAppHost, u"C:\\Windows\\system32\\inetsrv\\config\\"},
        {true, u"", 0, u"", 0, site, u"C:\\inetpub\\wwwroot"},
        {true, u"a\\b", 2, u"", 0, site + u"/a/b", u"C:\\content"},
        {true, u"a\\b", 1, u"/shop", 0, site + u"/shop/a/b", u"C:\\content"},
        // A child of the root application gives "//parent\child": no configuration path.
        {true, u"parent\\child", 1, u"/", qm::hr::invalid_arg, kAppHost, u"C:\\content"},
    };
    for (const OpenKeyCase& c : cases) {
        backend.m_sParentAppPath = c.parentAppPath;
        backend.PutCommitPath(kAppHost);
        EXPECT_EQ(
            backend.OpenKeyToWebsite(c.website ? &website : nullptr, nullptr,
                                     c.name.empty() ? nullptr : VRoot(c.name, c.itemType).get()),
            c.expected);
        EXPECT_EQ(backend.GetCommitPath(), c.commitPath);
        EXPECT_EQ(backend.m_sPhysicalPath, c.physicalPath);
    }
    EXPECT_TRUE(backend.Logged(
        "put_CommitPath for path 'MACHINE/WEBROOT/APPHOST/Default Web Site//parent/child' failed "
        "with the following HRESULT: -2147024809"));
    // The current path again: nothing is put.
    const size_t lines = backend.log.size();
    std::u16string same = kAppHost;
    EXPECT_EQ(backend.ChangeCommitPath(same), 0);
    EXPECT_EQ(backend.log.size(), lines);
}

struct CommitCase {
    qm::hresult answer;
    bool valueChanged;
    qm::hresult expected;
    std::string line;
};

TEST_F(SessionTest, CommitFailuresAreExcusedOnlyWhereTheyMayBe) {
    const CommitCase cases[] = {
        {qm::hr::not_supported, true, qm::hr::not_supported,
         "CommitChanges failed with the following HRESULT: '-2147024846'. The request is not "
         "supported. Physical path not found. "},
        {qm::hr::already_exists, true, 0,
         "Ignoring error because it indicates that the item already exists."},
        {qm::hr::path_not_found, false, 0,
         "put_Value determined that property is not actually changing, so ignore CommitChanges "
         "failure."},
        // The excuse is spent.
        {qm::hr::path_not_found, true, qm::hr::path_not_found,
         "CommitChanges failed with the following HRESULT: '-2147024893'. The system cannot find "
         "the path specified. Physical path not found. "},
    };
    for (const CommitCase& c : cases) {
        platform.faults.commitAnswers = {c.answer};
        backend.m_sPhysicalPath = u"C:\\nowhere";
        backend.m_bValueChanged = c.valueChanged;
        backend.SetCommitPath(u"Default Web Site", u"");
        EXPECT_EQ(backend.CommitChanges(), c.expected);
        EXPECT_TRUE(backend.Logged(c.line)) << c.line;
        EXPECT_EQ(backend.GetCommitPath(), kAppHost) << "a fresh manager";
    }
}

TEST_F(SessionTest, AManagerThatCannotBeCreatedFailsEveryCallWithItsCode) {
    platform.faults.createManager = qm::hr::class_not_registered;
    EXPECT_EQ(backend.GetAdminSection(u"system.webServer/asp", kAppHost), nullptr);
    EXPECT_EQ(backend.CommitChanges(), qm::hr::class_not_registered);
    EXPECT_TRUE(
        backend.Logged("m_spAppHostAdminManager NULL, CoCreateInstance returned: -2147221164"));
    EXPECT_TRUE(backend.Logged("GetAdminSection returned: -2147221164"));
    platform.faults = {};
    platform.faults.getCommitPath = qm::hr::fail;
    backend.log.clear();
    EXPECT_EQ(backend.GetCommitPath(), u"");
    EXPECT_EQ(backend.log, std::vector<std::string>{"get_CommitPath failed"});
}

TEST_F(SessionTest, ASectionIsRetriedOnceAtTheOldCommitPathInTheMainFile) {
    EXPECT_EQ(backend.GetAdminSection(u"system.webServer/nothing", kAppHost), nullptr);
    EXPECT_TRUE(backend.Logged("Error: already using the main configuration file."));
    EXPECT_EQ(backend.Count("GetAdminSection returned: -2147024846"), 1u);
    // Asked for above the commit path (0x80070057): read at the site, a location of the main file.
    backend.SetCommitPath(u"Default Web Site", u"");
    const auto section = backend.GetAdminSection(u"system.webServer/defaultDocument", kAppHost);
    EXPECT_TRUE(backend.Logged("GetAdminSection returned: -2147024809"));
    EXPECT_EQ(backend.PutPropertyValue(section, u"enabled", u"false", false), 0);
    EXPECT_EQ(backend.CommitChanges(), 0);
    EXPECT_EQ(CountNodes("/configuration/location[@path='Default Web Site']/system.webServer/"
                         "defaultDocument[@enabled='false']"),
              1u);
}

TEST(InitIISObjectTest, ProbesTheMetabaseCompatibilityLayerForTheLogOnly) {
    using Lines = std::vector<std::string>;
    for (const bool compatibility : {false, true}) {
        sim::MachineConfig config;
        if (compatibility) {
            config.iisFeatures = {sim::IisFeature::metabaseCompatibility};
        }
        FaultyPlatform platform(config);
        TestVistaBackend backend(platform);
        EXPECT_EQ(backend.InitIISObject(), 0);
        const Lines with = {"InitIISObject", "Legacy objects are supported"};
        const Lines without = {"InitIISObject",
                               "CoGetClassObject(GETAdminBaseCLSID(TRUE) error: -2147221164",
                               "Legacy objects not supported"};
        EXPECT_EQ(backend.log, compatibility ? with : without);
    }
}

}  // namespace
}  // namespace webrig::testing
