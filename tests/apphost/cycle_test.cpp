// A pool, a site with an application, a virtual directory in it and a nested one below that,
// with a setting that only the main file may hold: created, found and removed in the order the
// install and uninstall use, the configuration ends as it began.

#include "apphost/vista_backend.h"

namespace webrig::testing {
namespace {

TEST_F(VistaFixture, CreateFindRemoveLeavesTheStockConfiguration) {
    const std::string stock = AppHostElements();
    std::filesystem::create_directories(Drive("shop/app"));
    CIISAppPoolProp pool;
    pool.Name = u"ShopPool";
    website.DisplayName = u"Shop";
    website.Port = u"8080";
    website.RootDir = u"C:\\shop";
    website.Component = u"Shop";
    const auto app = VRoot(u"app", 2);
    app->RootDir = u"C:\\shop\\app";
    app->AppPool = u"ShopPool";
    const auto docs = VRoot(u"app\\docs", 3);
    const auto images = VRoot(u"docs\\img", 1);

    ASSERT_EQ(backend.CreateAppPoolFunction(pool), 0);
    ASSERT_EQ(backend.CommitChanges(), 0);
    EXPECT_EQ(backend.CreateAppPoolFunction(pool), qm::hr::already_exists);
    ASSERT_FALSE(backend.FindSiteWithPort(website));
    backend.GetNextWebsiteId(website);
    ASSERT_EQ(backend.AddWebSiteFunction(website), 0);
    EXPECT_EQ(backend.m_spSiteElement, nullptr);  // committed
    EXPECT_EQ(CountNodes("//site[@name='Shop']/bindings/binding[@bindingInformation='*:8080:']"),
              1u);
    ASSERT_TRUE(backend.FindSiteWithId(website));
    ASSERT_EQ(backend.CreateApplication(website, app.get()), 0);
    ASSERT_TRUE(backend.FindSiteWithId(website));
    ASSERT_EQ(backend.CreateVirtualDirectory(website, *docs), 0);
    ASSERT_TRUE(backend.FindSiteWithId(website));
    ASSERT_EQ(backend.AppCreate(website, images.get()), 0);
    // The application's web.config may not hold anonymous authentication: a location tag does.
    ASSERT_EQ(backend.OpenKeyToWebsite(&website, nullptr, app.get()), 0);
    CIisFunctionsVista::ElementPtr anonymous;
    ASSERT_EQ(
        backend.GetConfigElement(
            u"system.webServer/security/authentication/anonymousAuthentication", u"", anonymous),
        0);
    ASSERT_EQ(backend.PutPropertyValue(anonymous, u"enabled", u"false", false), 0);
    ASSERT_EQ(backend.CommitChanges(), 0);
    EditAppHost(
        "<customMetadata />",
        R"(<customMetadata><key path="LM/W3SVC/2/ROOT/app" /><key path="LM/W3SVC/2" /></customMetadata>)");
    EXPECT_EQ(CountNodes("//site[@name='Shop' and @id='2']/application[@path='/app' and "
                         "@applicationPool='ShopPool']/virtualDirectory[@path='/docs/img']"),
              1u);
    EXPECT_EQ(CountNodes("/configuration/location[@path='Shop/app']"), 1u);

    ASSERT_TRUE(backend.FindSiteWithPort(website));
    EXPECT_EQ(backend.RemoveLegacyApplication(website, *images), 0);
    ASSERT_TRUE(backend.FindSiteWithId(website));
    EXPECT_EQ(backend.RemoveVirtualDirectory(website, *docs), 0);
    ASSERT_TRUE(backend.FindSiteWithId(website));
    EXPECT_FALSE(backend.CanDeletePath());
    EXPECT_EQ(backend.RemoveApplication(website, *app), 0);
    ASSERT_TRUE(backend.FindSiteWithId(website));
    EXPECT_TRUE(backend.CanDeletePath());
    website.DisplayName = u"SHOP";  // the name compares without regard to case
    EXPECT_EQ(backend.RemoveWebsite(website), 0);
    EXPECT_EQ(backend.RemoveAppPoolFunction(pool), 0);
    EXPECT_EQ(AppHostElements(), stock);
}

}  // namespace
}  // namespace webrig::testing
