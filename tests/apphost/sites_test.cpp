// Sites: creation with binding and root application, lookups by id and port, numbering; the
// site left pending for a website of no component.

#include "apphost/vista_backend.h"

namespace webrig::testing {
namespace {

using SitesTest = VistaFixture;

// A website of no component stays pending, and current, until the session commits (a
// component's website is committed at once: see the cycle test).
TEST_F(SitesTest, ASiteGetsItsBindingAndRootApplication) {
    website.DisplayName = u"Shop";
    website.SiteNumber = u"5";
    website.IPAddress = u"10.0.0.1";
    website.Port = u"443";
    website.HostHeaderName = u"a.example";
    website.SSLCertPath = u"C:\\a.pfx";
    website.AppPool = u"DefaultAppPool";
    EXPECT_EQ(backend.AddWebSiteFunction(website), 0);
    EXPECT_NE(backend.m_spSiteElement, nullptr);
    EXPECT_EQ(CountNodes("//site[@name='Shop']"), 0u);
    EXPECT_EQ(backend.CommitChanges(), 0);
    EXPECT_EQ(CountNodes("//site[@name='Shop' and @id='5']/bindings/binding[@protocol='https' and "
                         "@bindingInformation='10.0.0.1:443:a.example']"),
              1u);
    EXPECT_EQ(CountNodes("//site[@name='Shop']/application[@path='/' and "
                         "@applicationPool='DefaultAppPool']/virtualDirectory[@path='/' and "
                         "@physicalPath='C:\\inetpub\\wwwroot']"),
              1u);
}

// A website of no component is created pending; when its application then answers 183 nothing
// commits, and the site is never written although the install took it as created.
TEST_F(SitesTest, APendingSiteWhoseApplicationExistsIsNeverWritten) {
    website.DisplayName = u"Pending";
    website.SiteNumber = u"9";
    ASSERT_EQ(backend.AddWebSiteFunction(website), 0);
    EXPECT_EQ(backend.CreateApplication(website, VRoot(u"", 2).get()), 183);
    TestVistaBackend next(platform);
    EXPECT_FALSE(next.FindSiteWithId(website));
    EXPECT_EQ(CountNodes("//site[@name='Pending']"), 0u);
}

TEST_F(SitesTest, SitesAreFoundByIdTextOrByPortAndNumberedAfterTheHighestId) {
    EditAppHost("<siteDefaults>",
                R"(<site name="S7" id="7" /><site name="S3" id="3" /><siteDefaults>)");
    website.SiteNumber = u"01";
    EXPECT_FALSE(backend.FindSiteWithId(website));
    website.Port = u"81";
    EXPECT_FALSE(backend.FindSiteWithPort(website));
    website.Port = u"0";
    EXPECT_TRUE(backend.FindSiteWithPort(website));
    EXPECT_EQ(website.SiteNumber, u"1");
    EXPECT_EQ(backend.m_sSiteName, u"Default Web Site");
    backend.GetNextWebsiteId(website);
    EXPECT_EQ(website.SiteNumber, u"8");
    EXPECT_EQ(backend.m_spSiteElement, nullptr);
}

}  // namespace
}  // namespace webrig::testing
