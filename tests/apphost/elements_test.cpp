// Elements, collections and properties: the locked-section retry, unchanged values, lookups in
// collections, element paths, and the value conversions.

#include "apphost/vista_backend.h"

namespace webrig::testing {
namespace {

using ElementsTest = VistaFixture;
constexpr char16_t kAnonymous[] =
    u"system.webServer/security/authentication/anonymousAuthentication";
const std::string kAnonymousAtSite =
    "/configuration/location[@path='Default Web Site']/system.webServer/security/authentication/"
    "anonymousAuthentication";

TEST(ValueConversionTest, TextBecomesTheValuesIISTakes) {
    using B = CIisFunctionsVista;
    EXPECT_EQ(B::MakePropertyVariant(u"true", false), platform::Variant(true));
    EXPECT_EQ(B::MakePropertyVariant(u"false", true), platform::Variant(false));
    EXPECT_EQ(B::MakePropertyVariant(u"TRUE", false), platform::Variant(qm::wstring(u"TRUE")));
    EXPECT_EQ(B::MakePropertyVariant(u"a\\b", true), platform::Variant(qm::wstring(u"/a/b")));
    EXPECT_EQ(B::NormalizeVirtualPath(u""), u"/");
    EXPECT_EQ(B::NormalizeVirtualPath(u"/a"), u"/a");
    EXPECT_EQ(B::FormatTimeSpanFromSeconds(90061), u"25:01:01");
    const std::pair<int32_t, std::u16string> minutes[] = {{0, u"00:00:00"},
                                                          {90, u"01:30:00"},
                                                          {1439, u"23:59:00"},
                                                          {1440, u"1.00:00:00"},
                                                          {1500, u"1.01:00:00"}};
    for (const auto& [value, text] : minutes) {
        EXPECT_EQ(B::FormatTimeSpanFromMinutes(value), text);
    }
    EXPECT_EQ(B::FormatAccessPolicy(0x205), u"Script, Execute, Read");
    EXPECT_EQ(B::FormatAccessPolicy(0x212), u"Script, Source, Write");
    EXPECT_EQ(B::FormatAccessPolicy(0), u"");
}

// The site's web.config may not hold anonymousAuthentication: the write lands in the main file at
// the site's location, and the caller puts its commit path back after committing.
TEST_F(ElementsTest, ALockedSectionIsWrittenAtTheSitesLocationInTheMainFile) {
    ASSERT_EQ(backend.SetCommitPath(u"Default Web Site", u""), 0);
    CIisFunctionsVista::ElementPtr element;
    ASSERT_EQ(backend.GetConfigElement(kAnonymous, u"", element), 0);
    EXPECT_EQ(backend.PutPropertyValue(element, u"enabled", u"false", false), 0);
    EXPECT_EQ(backend.GetCommitPath(), u"MACHINE/WEBROOT/APPHOST");
    EXPECT_EQ(backend.CommitChanges(), 0);
    std::u16string kept = kSitePath;
    EXPECT_EQ(backend.ChangeCommitPath(kept), 0);
    EXPECT_EQ(backend.GetCommitPath(), kSitePath);
    EXPECT_EQ(CountNodes(kAnonymousAtSite + "[@enabled='false']"), 1u);
    EXPECT_FALSE(std::filesystem::exists(DrivePath("inetpub/wwwroot/web.config")));
    EXPECT_TRUE(backend.Logged(
        "Attempt put_Value with main configuration file because previous call to put_Value failed "
        "with the following HRESULT: -2147024863. The property or section is not allowed to be "
        "overridden at the web.config level. Will try setting at the applicationhost level "
        "instead."));
}

TEST_F(ElementsTest, AnUnchangedValueIsStillWrittenAndExcusesOneCommitFailure) {
    CIisFunctionsVista::ElementPtr element;
    ASSERT_EQ(backend.GetConfigElement(kAnonymous, u"", element), 0);
    EXPECT_EQ(backend.PutPropertyValue(element, u"userName", u"iusr", false), 0);
    EXPECT_TRUE(backend.Logged("Property value is the same, so no need to change it."));
    EXPECT_FALSE(backend.m_bValueChanged);
    EXPECT_EQ(backend.CommitChanges(), 0);
    EXPECT_EQ(CountNodes("//anonymousAuthentication[@userName='iusr']"), 1u);
    // A missing attribute is left alone and counts as written.
    ASSERT_EQ(backend.GetConfigElement(kAnonymous, u"", element), 0);
    EXPECT_EQ(backend.PutPropertyValue(element, u"noSuchAttribute", u"1", false), 0);
    // A successful commit keeps the excuse; the first failure spends it.
    platform.faults.commitAnswers = {qm::hr::fail, qm::hr::fail};
    EXPECT_EQ(backend.CommitChanges(), 0);
    EXPECT_EQ(backend.CommitChanges(), qm::hr::fail);
}

struct FindCase {
    std::u16string value;
    bool deleteIt, found;
    std::string line;
};

TEST_F(ElementsTest, FindElementInCollectionIgnoresCaseAndCanDelete) {
    const FindCase cases[] = {
        {u"INDEX.HTM", false, true, "Found element with property 'value' value of: INDEX.HTM"},
        {u"none.htm", false, false, "No element found with property 'value' value of 'none.htm'."},
        {u"index.htm", true, false, "DeleteElement returned: 0"},
    };
    for (const FindCase& c : cases) {
        CIisFunctionsVista::ElementPtr files;
        ASSERT_EQ(backend.GetConfigElement(u"system.webServer/defaultDocument", u"files", files),
                  0);
        EXPECT_EQ(backend.FindElementInCollection(files, u"value", c.value, u"", u"", c.deleteIt) !=
                      nullptr,
                  c.found);
        EXPECT_TRUE(backend.Logged(c.line)) << c.line;
    }
    EXPECT_EQ(backend.CommitChanges(), 0);
    EXPECT_EQ(CountNodes("//defaultDocument/files/add[@value='index.htm']"), 0u);
    EXPECT_EQ(CountNodes("//defaultDocument/files/add[@value='index.html']"), 1u);
    // Both attributes must match.
    CIisFunctionsVista::ElementPtr handlers;
    ASSERT_EQ(backend.GetConfigElement(u"system.webServer/handlers", u"", handlers), 0);
    EXPECT_NE(
        backend.FindElementInCollection(handlers, u"name", u"staticfile", u"verb", u"*", false),
        nullptr);
    EXPECT_EQ(
        backend.FindElementInCollection(handlers, u"name", u"StaticFile", u"verb", u"GET", false),
        nullptr);
}

struct ElementPathCase {
    std::u16string pool, section, subPath;
    int32_t expected;
    std::string line;
};

TEST_F(ElementsTest, GetConfigElementFollowsTheElementPath) {
    const std::u16string pools = u"system.applicationHost/applicationPools";
    const ElementPathCase cases[] = {
        {u"DefaultAppPool", pools, u"recycling/periodicRestart", 0, ""},
        {u"", pools, u"", -2116,
         "Element 'system.applicationHost/applicationPools/add name=' not found."},
        {u"defaultapppool", pools, u"recycling//x", -2116,
         "Element 'system.applicationHost/applicationPools/add name=defaultapppool/recycling//x' "
         "not found."},
        {u"", u"system.webServer/asp", u"limits/", 0, ""},
        {u"", u"system.webServer/asp", u"/limits", -2116,
         "Element 'system.webServer/asp//limits' not found."},
        {u"", u"system.webServer/none", u"", -2116, "Element 'system.webServer/none' not found."},
    };
    for (const ElementPathCase& c : cases) {
        backend.m_sAppPoolName = c.pool;
        CIisFunctionsVista::ElementPtr element;
        EXPECT_EQ(backend.GetConfigElement(c.section, c.subPath, element), c.expected) << c.line;
        EXPECT_EQ(element != nullptr, c.expected == 0);
        EXPECT_TRUE(c.line.empty() || backend.Logged(c.line)) << c.line;
    }
    CIisFunctionsVista::CollectionPtr collection;
    EXPECT_EQ(backend.GetConfigElementCollection(u"system.webServer/asp", u"limits", nullptr,
                                                 &collection),
              qm::hr::fail);
    EXPECT_EQ(backend.GetConfigElementCollection(u"system.webServer/defaultDocument", u"files",
                                                 nullptr, nullptr),
              qm::hr::pointer);
}

TEST_F(ElementsTest, AddingAnEntryThatExistsCountsAsAdded) {
    CIisFunctionsVista::CollectionPtr files;
    ASSERT_EQ(backend.GetConfigElementCollection(u"system.webServer/defaultDocument", u"files",
                                                 nullptr, &files),
              0);
    const auto entry = backend.CreateNewElement(files, u"add");
    ASSERT_EQ(backend.PutPropertyValue(entry, u"value", u"Default.htm", false), 0);
    EXPECT_EQ(backend.AddElement(files, entry, -1), 0);
    EXPECT_TRUE(backend.Logged("AddElement failed with the following HRESULT: '-2147024713':"));
    EXPECT_EQ(backend.AddElement(files, nullptr, -1), qm::hr::pointer);
}

}  // namespace
}  // namespace webrig::testing
