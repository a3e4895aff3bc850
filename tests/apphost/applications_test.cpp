// Applications, virtual directories and pools: where a virtual directory belongs, what each
// creation writes, "already exists", removal with its clean-up of leftovers.

#include "apphost/vista_backend.h"

namespace webrig::testing {
namespace {

using ApplicationsTest = VistaFixture;
const std::string kSite =
    "/configuration/system.applicationHost/sites/site[@name='Default Web Site']";

struct ParentCase {
    std::vector<std::string> applications;
    std::u16string path, containing, relative;
};

TEST(FindParentApplicationTest, TheLastApplicationInCollectionOrderThatHoldsThePathWins) {
    const ParentCase cases[] = {
        {{"/shop"}, u"shop\\images", u"/shop", u"/images"},
        {{"/shop"}, u"shopping", u"/", u"shopping"},
        {{"/a", "/a/b"}, u"a\\b\\c", u"/a/b", u"/c"},
        {{"/a/b", "/a"}, u"a\\b\\c", u"/a", u"/b/c"},
    };
    for (const ParentCase& c : cases) {
        VistaMachine m;
        m.AddApplications(c.applications);
        m.SelectDefaultSite();
        std::u16string path = c.path;
        std::u16string containing;
        const auto application = m.backend.FindParentApplication(path, containing);
        ASSERT_NE(application, nullptr);
        EXPECT_EQ(containing, c.containing);
        EXPECT_EQ(path, c.relative);
        std::shared_ptr<platform::ConfigProperty> property;
        std::u16string applicationPath;
        application->GetPropertyByName(u"path", property);
        property->GetStringValue(applicationPath);
        EXPECT_EQ(applicationPath, c.containing);
    }
}

struct CreateCase {
    std::u16string displayName, appName;
    int32_t itemType;
    int32_t expected;
    std::string written;  // below the site; "" when nothing changes
    std::u16string parentAppPath;
};

TEST_F(ApplicationsTest, EachItemTypeWritesItsShapeAndAnswers183WhenItExists) {
    AddApplications({"/shop"});
    const CreateCase cases[] = {
        {u"docs", u"", 3, 0, "/application[@path='/']/virtualDirectory[@path='/docs']", u"/"},
        {u"docs", u"", 3, 183, "", u"/"},
        {u"shop\\img", u"", 3, 0, "/application[@path='/shop']/virtualDirectory[@path='/img']",
         u"/shop"},
        {u"shop2", u"", 2, 0, "/application[@path='/shop2']/virtualDirectory[@path='/']", u"shop2"},
        {u"shop2", u"", 2, 183, "", u"shop2"},
        {u"", u"", 2, 183, "", u"shop2"},
        {u"app", u"/app", 1, 0, "/application[@path='/app']/virtualDirectory[@path='/app']",
         u"shop2"},
        {u"app\\child", u"", 1, 0,
         "/application[@path='/app']/virtualDirectory[@path='/app/child']", u"/app"},
        {u"nowhere\\child", u"", 1, qm::hr::path_not_found, "", u"/app"},
    };
    for (const CreateCase& c : cases) {
        SelectDefaultSite();
        const auto before = AppHostXml();
        const auto vroot = VRoot(c.displayName, c.itemType, c.appName);
        vroot->AppPool = u"DefaultAppPool";
        const int32_t result = c.itemType == 3   ? backend.CreateVirtualDirectory(website, *vroot)
                               : c.itemType == 2 ? backend.CreateApplication(website, vroot.get())
                                                 : backend.AppCreate(website, vroot.get());
        EXPECT_EQ(result, c.expected) << qm::to_utf8(c.displayName);
        if (c.written.empty()) {
            EXPECT_EQ(
                ElementDifference(before->document_element(), AppHostXml()->document_element()),
                "");
        } else {
            EXPECT_EQ(CountNodes(kSite + c.written + "[@physicalPath='C:\\content']"), 1u)
                << c.written;
        }
        EXPECT_EQ(backend.m_sParentAppPath, c.parentAppPath);
    }
    EXPECT_EQ(
        CountNodes(kSite + "/application[@path='/shop2' and @applicationPool='DefaultAppPool']"),
        1u);
    EXPECT_EQ(CountNodes(kSite + "/application[@path='/app']/virtualDirectory"), 3u);
    EXPECT_TRUE(backend.Logged(
        "Application  has no application name. No virtual directories/websites associated with "
        "this vroot will be installed."));
}

TEST_F(ApplicationsTest, TheRootApplicationIsNeverRemovedButItsLeftoversAre) {
    EditAppHost(
        "<customMetadata />",
        R"(<customMetadata><key path="LM/W3SVC/1/ROOT/docs" /><key path="LM/W3SVC/1" /></customMetadata>)");
    SelectDefaultSite();
    EXPECT_TRUE(backend.CanDeletePath());
    const auto vroot = VRoot(u"docs", 1, u"/");
    EXPECT_EQ(backend.RemoveApplication(website, *vroot), 0);
    EXPECT_TRUE(backend.Logged("Application still appears to exist, it was not removed!"));
    EXPECT_EQ(CountNodes(kSite + "/application[@path='/']"), 1u);
    EXPECT_EQ(CountNodes("//customMetadata/key[@path='LM/W3SVC/1/ROOT/docs']"), 0u);
    EXPECT_EQ(CountNodes("//customMetadata/key[@path='LM/W3SVC/1']"), 1u);
}

TEST_F(ApplicationsTest, RemovalDeletesTheApplicationOrVirtualDirectory) {
    AddApplications({"/shop"});
    EditAppHost(
        "<virtualDirectory path=\"/\" physicalPath=\"C:\\inetpub\" />",
        R"(<virtualDirectory path="/" physicalPath="C:\inetpub" /><virtualDirectory path="/img" physicalPath="C:\img" />)");
    SelectDefaultSite();
    EXPECT_FALSE(backend.CanDeletePath());
    EXPECT_TRUE(backend.Logged(
        "Site still appears to contain application elements so do not remove. Application path "
        "found: /shop"));
    EXPECT_EQ(backend.RemoveVirtualDirectory(website, *VRoot(u"shop\\img", 3)), 0);
    EXPECT_EQ(CountNodes(kSite + "/application[@path='/shop']/virtualDirectory"), 1u);
    SelectDefaultSite();
    EXPECT_EQ(backend.RemoveApplication(website, *VRoot(u"shop", 2)), 0);
    EXPECT_TRUE(backend.Logged("Application does not exist, so it has been removed."));
    EXPECT_EQ(CountNodes(kSite + "/application"), 1u);
    backend.m_spSiteElement.reset();
    EXPECT_EQ(backend.RemoveApplication(website, *VRoot(u"shop", 2)), 0);
    EXPECT_TRUE(backend.Logged("no site found, nothing to remove"));
}

// The count of locations is read once while deletions move later ones down: of three tags for
// the target, the one that moved into a deleted one's place stays.
TEST_F(ApplicationsTest, LocationCleanUpPassesOverALocationThatMovedDown) {
    const std::string tag =
        R"(<location path="%s"><system.webServer><%s /></system.webServer></location>)";
    const auto location = [&](const std::string& path, const std::string& section) {
        std::string text = tag;
        text.replace(text.find("%s"), 2, path);
        text.replace(text.find("%s"), 2, section);
        return text;
    };
    EditAppHost("</configuration>", location("Default Web Site/docs", "asp") +
                                        location("Default Web Site/docs", "defaultDocument") +
                                        location("Other", "asp") +
                                        location("Default Web Site/docs", "directoryBrowse") +
                                        "</configuration>");
    backend.m_sSiteName = u"Default Web Site";
    backend.RemoveApplicationLeftovers(website, VRoot(u"docs", 3).get());
    EXPECT_EQ(backend.CommitChanges(), 0);
    EXPECT_EQ(backend.Count("DeleteLocation returned: 0"), 2u);
    EXPECT_EQ(CountNodes("/configuration/location[@path='Default Web "
                         "Site/docs']/system.webServer/defaultDocument"),
              1u);
    EXPECT_EQ(CountNodes("/configuration/location"), 2u);
    // A way to the locations that fails ends the clean-up with its code.
    platform.faults.getLocations = qm::hr::fail;
    backend.RemoveApplicationLeftovers(website, nullptr);
    EXPECT_TRUE(backend.Logged("get_Locations failed with the following HRESULT: -2147467259"));
}

TEST_F(ApplicationsTest, PoolsAreAddedOnceAndRemovedByName) {
    CIISAppPoolProp pool;
    pool.Name = u"ShopPool";
    EXPECT_EQ(backend.CreateAppPoolFunction(pool), 0);
    EXPECT_EQ(backend.CommitChanges(), 0);
    EXPECT_EQ(CountNodes("//applicationPools/add[@name='ShopPool']"), 1u);
    EXPECT_EQ(backend.CreateAppPoolFunction(pool), qm::hr::already_exists);
    EXPECT_TRUE(backend.Logged("AppPool already exists."));
    EXPECT_EQ(backend.RemoveAppPoolFunction(pool), 0);
    EXPECT_EQ(CountNodes("//applicationPools/add[@name='ShopPool']"), 0u);
}

}  // namespace
}  // namespace webrig::testing
