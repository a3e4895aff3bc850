// Elements, collections and properties: the locked-section retry, unchanged values, lookups in
// collections, element paths, and the value conversions.

#include "apphost/vista_backend.h"

namespace webrig::testing {
namespace {

using ElementsTest = VistaFixture;
using B = CIisFunctionsVista;
constexpr char16_t kAnonymous[] =
    u"system.webServer/security/authentication/anonymousAuthentication";

TEST(ValueConversionTest, TextBecomesTheValuesIISTakes) {
    EXPECT_EQ(B::MakePropertyVariant(u"true", false), platform::Variant(true));
    EXPECT_EQ(B::MakePropertyVariant(u"TRUE", true), platform::Variant(qm::wstring(u"/TRUE")));
    EXPECT_EQ(B::FormatTimeSpanFromSeconds(90061), u"25:01:01");
    EXPECT_EQ(B::FormatTimeSpanFromMinutes(1439) + B::FormatTimeSpanFromMinutes(1500),
              u"23:59:001.01:00:00");
    EXPECT_EQ(B::FormatAccessPolicy(0x205) + u"|" + B::FormatAccessPolicy(0x12),
              u"Script, Execute, Read|Source, Write");
}

// The site's web.config may not hold anonymousAuthentication: the write lands in the main file at
// the site's location, and the caller puts its commit path back after committing.
TEST_F(ElementsTest, ALockedSectionIsWrittenAtTheSitesLocationInTheMainFile) {
    ASSERT_EQ(backend.SetCommitPath(u"Default Web Site", u""), 0);
    B::ElementPtr element;
    ASSERT_EQ(backend.GetConfigElement(kAnonymous, u"", element), 0);
    EXPECT_EQ(backend.PutPropertyValue(element, u"enabled", u"false", false), 0);
    EXPECT_EQ(backend.CommitChanges(), 0);
    std::u16string kept = kSitePath;
    EXPECT_EQ(backend.ChangeCommitPath(kept), 0);
    EXPECT_EQ(backend.GetCommitPath(), kSitePath);
    EXPECT_EQ(CountNodes("/configuration/location[@path='Default Web Site']/system.webServer/"
                         "security/authentication/anonymousAuthentication[@enabled='false']"),
              1u);
    EXPECT_FALSE(std::filesystem::exists(Drive("inetpub/wwwroot/web.config")));
}

TEST_F(ElementsTest, AnUnchangedValueIsStillWrittenAndExcusesOneCommitFailure) {
    B::ElementPtr element;
    ASSERT_EQ(backend.GetConfigElement(kAnonymous, u"", element), 0);
    EXPECT_EQ(backend.PutPropertyValue(element, u"userName", u"iusr", false), 0);
    EXPECT_TRUE(backend.Logged("Property value is the same, so no need to change it."));
    // A missing attribute is left alone and counts as written.
    EXPECT_EQ(backend.PutPropertyValue(element, u"noSuchAttribute", u"1", false), 0);
    EXPECT_EQ(backend.CommitChanges(), 0);
    EXPECT_EQ(CountNodes("//anonymousAuthentication[@userName='iusr']"), 1u);
    // A successful commit keeps the excuse; the first failure spends it.
    platform.faults.commitAnswers = {qm::hr::fail, qm::hr::fail};
    EXPECT_EQ(backend.CommitChanges(), 0);
    EXPECT_EQ(backend.CommitChanges(), qm::hr::fail);
}

TEST_F(ElementsTest, EntriesAreFoundIgnoringCaseAndDeletedOrAddedOnce) {
    B::ElementPtr files;
    ASSERT_EQ(backend.GetConfigElement(u"system.webServer/defaultDocument", u"files", files), 0);
    EXPECT_NE(backend.FindElementInCollection(files, u"value", u"INDEX.HTM", u"", u"", false),
              nullptr);
    EXPECT_EQ(backend.FindElementInCollection(files, u"value", u"index.htm", u"", u"", true),
              nullptr);
    EXPECT_TRUE(backend.Logged("DeleteElement returned: 0"));
    const B::CollectionPtr collection = backend.GetElementCollection(files);
    const B::ElementPtr entry = backend.CreateNewElement(collection, u"add");
    ASSERT_EQ(backend.PutPropertyValue(entry, u"value", u"Default.htm", false), 0);
    EXPECT_EQ(backend.AddElement(collection, entry, -1), 0);  // 0x800700B7: there already
    EXPECT_EQ(backend.CommitChanges(), 0);
    EXPECT_EQ(CountNodes("//defaultDocument/files/add[@value='index.htm']"), 0u);
    EXPECT_EQ(CountNodes("//defaultDocument/files/add[@value='Default.htm']"), 1u);
}

TEST_F(ElementsTest, GetConfigElementFollowsTheElementPath) {
    const std::u16string pools = u"system.applicationHost/applicationPools";
    B::ElementPtr element;
    backend.m_sAppPoolName = u"defaultapppool";
    EXPECT_EQ(backend.GetConfigElement(pools, u"recycling/periodicRestart/", element), 0);
    EXPECT_EQ(backend.GetConfigElement(pools, u"recycling//x", element), -2116);
    EXPECT_EQ(backend.GetConfigElement(u"system.webServer/asp", u"/limits", element), -2116);
    EXPECT_TRUE(
        backend.Logged("Element 'system.applicationHost/applicationPools/add "
                       "name=defaultapppool/recycling//x' not found."));
    EXPECT_TRUE(backend.Logged("Element 'system.webServer/asp//limits' not found."));
    B::CollectionPtr collection;
    EXPECT_EQ(backend.GetConfigElementCollection(u"system.webServer/asp", u"limits", nullptr,
                                                 &collection),
              qm::hr::fail);
}

}  // namespace
}  // namespace webrig::testing
