// Sites: creation with binding and root application, lookups by id and port, numbering and
// removal; the site left pending for a website of no component.

#include "apphost/vista_backend.h"

namespace webrig::testing {
namespace {

using SitesTest = VistaFixture;
const std::string kSites = "/configuration/system.applicationHost/sites";

struct AddSiteCase {
    std::u16string address, port, host, certificate, component;
    std::string binding, protocol;
};

TEST(AddWebSiteTest, ASiteGetsItsBindingAndRootApplicationAndIsCommittedForAComponent) {
    const AddSiteCase cases[] = {
        {u"", u"8080", u"", u"", u"Shop", "*:8080:", "http"},
        {u"10.0.0.1", u"443", u"shop.example", u"C:\\shop.pfx", u"Shop",
         "10.0.0.1:443:shop.example", "https"},
        {u"", u"8081", u"", u"", u"", "*:8081:", "http"},
    };
    for (const AddSiteCase& c : cases) {
        VistaMachine m;
        CIISWebsiteProp& w = m.website;
        w.DisplayName = u"Shop";
        w.SiteNumber = u"5";
        w.IPAddress = c.address;
        w.Port = c.port;
        w.HostHeaderName = c.host;
        w.SSLCertPath = c.certificate;
        w.Component = c.component;
        w.AppPool = u"DefaultAppPool";
        EXPECT_EQ(m.backend.AddWebSiteFunction(w), 0);
        // A website of no component stays pending, and current, until the session commits.
        EXPECT_EQ(m.backend.m_spSiteElement != nullptr, c.component.empty());
        EXPECT_EQ(m.CountNodes(kSites + "/site[@name='Shop']"), c.component.empty() ? 0u : 1u);
        EXPECT_EQ(m.backend.CommitChanges(), 0);
        EXPECT_EQ(
            m.CountNodes(kSites + "/site[@name='Shop' and @id='5']/bindings/binding[@protocol='" +
                         c.protocol + "' and @bindingInformation='" + c.binding + "']"),
            1u);
        EXPECT_EQ(m.CountNodes(kSites +
                               "/site[@name='Shop']/application[@path='/' and "
                               "@applicationPool='DefaultAppPool']/virtualDirectory[@path='/' and "
                               "@physicalPath='C:\\inetpub\\wwwroot']"),
                  1u);
    }
}

// A website of no component is created pending; when its application then answers 183 nothing
// commits, and the site is never written although the install took it as created.
TEST_F(SitesTest, APendingSiteWhoseApplicationExistsIsNeverWritten) {
    website.DisplayName = u"Pending";
    website.SiteNumber = u"9";
    ASSERT_EQ(backend.AddWebSiteFunction(website), 0);
    EXPECT_EQ(backend.CreateApplication(website, VRoot(u"", 2).get()), 183);
    EXPECT_EQ(CountNodes(kSites + "/site[@name='Pending']"), 0u);
    TestVistaBackend next(platform);
    EXPECT_FALSE(next.FindSiteWithId(website));
}

TEST_F(SitesTest, SitesAreFoundByIdTextOrByPort) {
    const std::pair<std::u16string, bool> ids[] = {{u"01", false}, {u"1", true}};
    for (const auto& [id, found] : ids) {
        website.SiteNumber = id;
        EXPECT_EQ(backend.FindSiteWithId(website), found);
        EXPECT_EQ(backend.m_sSiteName, found ? u"Default Web Site" : u"");
    }
    const std::pair<std::u16string, bool> ports[] = {{u"81", false}, {u"80", true}, {u"0", true}};
    for (const auto& [port, found] : ports) {
        website.Port = port;
        website.SiteNumber = u"7";
        EXPECT_EQ(backend.FindSiteWithPort(website), found);
        EXPECT_EQ(website.SiteNumber, found ? u"1" : u"7");
    }
    EXPECT_TRUE(backend.Logged("Found site with a boundingInformation of '*:80:'."));
}

TEST_F(SitesTest, TheNextIdFollowsTheHighestId) {
    const std::string site =
        R"(<site name="S%c" id="%c"><bindings><binding protocol="http" bindingInformation="*:808%c:" /></bindings></site>)";
    std::string sites;
    for (const char id : {'7', '3'}) {
        std::string text = site;
        for (size_t at; (at = text.find("%c")) != std::string::npos;) {
            text.replace(at, 2, 1, id);
        }
        sites += text;
    }
    EditAppHost("<siteDefaults>", sites + "<siteDefaults>");
    website.Component = u"Shop";
    backend.GetNextWebsiteId(website);
    EXPECT_EQ(website.SiteNumber, u"8");
    EXPECT_TRUE(backend.Logged("Found site 'S3' with id '3'"));
    EXPECT_EQ(backend.m_spSiteElement, nullptr);
}

TEST_F(SitesTest, OnlyTheSiteOfTheSameNameIsRemoved) {
    EXPECT_EQ(backend.RemoveWebsite(website), 0);
    EXPECT_TRUE(backend.Logged("no site found, nothing to remove"));
    ASSERT_TRUE(backend.FindSiteWithId(website));
    website.DisplayName = u"Other";
    EXPECT_EQ(backend.RemoveWebsite(website), 0);
    EXPECT_EQ(CountNodes(kSites + "/site"), 1u);
    website.DisplayName = u"DEFAULT WEB SITE";
    EXPECT_EQ(backend.RemoveWebsite(website), 0);
    EXPECT_EQ(CountNodes(kSites + "/site"), 0u);
}

}  // namespace
}  // namespace webrig::testing
