// Applications and virtual directories: where a virtual directory belongs, what each creation
// writes, "already exists", removal with its clean-up of leftovers.

#include "apphost/vista_backend.h"

namespace webrig::testing {
namespace {

using ApplicationsTest = VistaFixture;
const std::string kSite = "//site[@name='Default Web Site']";

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
        EXPECT_EQ(containing, c.containing);
        EXPECT_EQ(path, c.relative);
        EXPECT_NE(application, nullptr);
    }
}

struct CreateCase {
    std::u16string name, appName;
    int32_t itemType, expected;
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
        {u"shop2", u"", 2, 0,
         "/application[@path='/shop2' and @applicationPool='P']/virtualDirectory[@path='/']",
         u"shop2"},
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
        const std::string before = AppHostElements();
        const auto vroot = VRoot(c.name, c.itemType, c.appName);
        vroot->AppPool = u"P";
        EXPECT_EQ(c.itemType == 3   ? backend.CreateVirtualDirectory(website, *vroot)
                  : c.itemType == 2 ? backend.CreateApplication(website, vroot.get())
                                    : backend.AppCreate(website, vroot.get()),
                  c.expected);
        if (c.written.empty()) {
            EXPECT_EQ(AppHostElements(), before);
        } else {
            EXPECT_EQ(CountNodes(kSite + c.written + "[@physicalPath='C:\\content']"), 1u)
                << c.written;
        }
        EXPECT_EQ(backend.m_sParentAppPath, c.parentAppPath);
    }
    EXPECT_EQ(CountNodes(kSite + "/application[@path='/app']/virtualDirectory"), 3u);
    EXPECT_TRUE(
        backend.Logged("Application  has no application name. No virtual directories/websites "
                       "associated with this vroot will be installed."));
}

TEST_F(ApplicationsTest, TheRootApplicationIsNeverRemovedButItsLeftoversAre) {
    EditAppHost("<customMetadata />",
                R"(<customMetadata><key path="LM/W3SVC/1/ROOT/docs" /></customMetadata>)");
    SelectDefaultSite();
    EXPECT_TRUE(backend.CanDeletePath());
    EXPECT_EQ(backend.RemoveApplication(website, *VRoot(u"docs", 1, u"/")), 0);
    EXPECT_TRUE(backend.Logged("Application still appears to exist, it was not removed!"));
    EXPECT_EQ(CountNodes(kSite + "/application[@path='/']"), 1u);
    EXPECT_EQ(CountNodes("//customMetadata/key"), 0u);
}

// The count of locations is read once while each deletion moves the later ones down: of three
// tags for the target, the one that moved into a deleted one's place stays.
TEST_F(ApplicationsTest, LocationCleanUpPassesOverALocationThatMovedDown) {
    std::string tags;
    for (const std::string path :
         {"Default Web Site/docs", "Default Web Site/docs", "Other", "Default Web Site/docs"}) {
        tags += "<location path=\"" + path +
                "\"><system.webServer><asp /></system.webServer></location>";
    }
    EditAppHost("</configuration>", tags + "</configuration>");
    backend.m_sSiteName = u"Default Web Site";
    backend.RemoveApplicationLeftovers(website, VRoot(u"docs", 3).get());
    EXPECT_EQ(backend.CommitChanges(), 0);
    EXPECT_EQ(backend.Count("DeleteLocation returned: 0"), 2u);
    EXPECT_EQ(CountNodes("/configuration/location[@path='Default Web Site/docs']"), 1u);
    EXPECT_EQ(CountNodes("/configuration/location[@path!='']"), 2u);
    platform.faults.getConfigManager = qm::hr::fail;
    backend.RemoveApplicationLeftovers(website, nullptr);
    EXPECT_TRUE(backend.Logged("get_ConfigManager failed with the following HRESULT: -2147467259"));
}

}  // namespace
}  // namespace webrig::testing
