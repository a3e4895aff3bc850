// Item settings as metabase properties: the attribute bits, application maps and bindings.

#include <gtest/gtest.h>

#include <algorithm>

#include "controller/flow_fixture.h"
#include "testing/case_name.h"

namespace webrig::testing {
namespace {

using ::testing::_;
using ::testing::Return;

struct AttributeCase {
    const char* what;
    int32_t attributes;
    int32_t itemType;
    const char16_t* defDoc;
    // 6016, 6005, 6000, 2104 (null: not written), 6023; then whether 6020, 6022, 6021 are.
    const char16_t* access;
    const char16_t* browsing;
    const char16_t* authentication;
    const char16_t* protection;
    const char16_t* dontLog;
    bool user, passwordSync, password;
};

class AttributeBitsTest : public FlowTest, public ::testing::WithParamInterface<AttributeCase> {};

TEST_P(AttributeBitsTest, BecomeTheirProperties) {
    const AttributeCase& c = GetParam();
    CIISVRootProp item;
    item.Attributes = c.attributes;
    item.ItemType = c.itemType;
    item.DefDoc = c.defDoc;
    item.AnonyUserName = u"IUSR_SHOP";
    item.AnonyPasswrd = u"secret";
    AcceptWrites();
    ASSERT_EQ(slots().SetCommonProperties({}, item), 0);
    EXPECT_EQ(Written(6016), c.access);
    EXPECT_EQ(Written(6005), c.browsing);
    EXPECT_EQ(Written(6000), c.authentication);
    EXPECT_EQ(Written(2104),
              c.protection ? std::optional<qm::wstring>(c.protection) : std::nullopt);
    EXPECT_EQ(Written(6023), c.dontLog);
    EXPECT_EQ(Written(6020).has_value(), c.user);
    EXPECT_EQ(Written(6022).has_value(), c.passwordSync);
    EXPECT_EQ(Written(6021).has_value(), c.password);
    EXPECT_EQ(Written(7007), u"20");
    EXPECT_EQ(Written(7006), u"90");
}

INSTANTIATE_TEST_SUITE_P(
    Attributes, AttributeBitsTest,
    ::testing::Values(AttributeCase{"read_scripts_anonymous", 0x0811, 1, u"", u"513", u"0", u"1",
                                    u"0", u"1", true, true, true},
                      AttributeCase{"anonymous_without_password", 0x4811, 1, u"", u"513", u"0",
                                    u"1", u"0", u"1", true, false, false},
                      AttributeCase{"execute_and_browse", 0x0028, 1, u"", u"4", u"-2147483586",
                                    u"0", u"0", u"1", false, false, false},
                      AttributeCase{"browse_with_documents", 0x0028, 1, u"default.aspx", u"4",
                                    u"-1073741762", u"0", u"0", u"1", false, false, false},
                      AttributeCase{"write_source_logged_pooled", 0x0186, 1, u"", u"18", u"0", u"0",
                                    u"2", u"0", false, false, false},
                      AttributeCase{"isolated_basic_integrated", 0x3300, 2, u"", u"0", u"0", u"6",
                                    u"1", u"1", false, false, false},
                      AttributeCase{"plain_directory", 0x0200, 3, u"", u"0", u"0", u"0", nullptr,
                                    u"1", false, false, false}),
    NameFromWhat());

TEST_F(FlowTest, AppMapsGoToTheIis7BackendAsOneSemicolonText) {
    CIISVRootProp item;
    item.ItemType = 1;
    auto* star = item.AddAppMap(u"a1").record;
    star->Extension = u".abc";
    star->ExecPath = u"C:\\x\\isapi.dll";
    star->AppMapProps = 5;
    star->Verb = u"GET,POST";
    auto* any = item.AddAppMap(u"a2").record;
    any->Extension = u".def";
    any->ExecPath = u"C:\\y.dll";
    any->AppMapProps = 3;
    any->Verb = u"*";
    EXPECT_CALL(backend(), SetVRtMultiszProperty(6014, 2, _, _, qm::wstring(u"/ROOT")))
        .WillOnce([](uint32_t, uint32_t, const char16_t* data, uint32_t bytes, const qm::wstring&) {
            EXPECT_EQ(qm::wstring(data), u".abc,C:\\x\\isapi.dll,5,GET,POST;.def,C:\\y.dll,3;");
            EXPECT_EQ(bytes, (qm::wstring_view(data).size() + 1) * 2);
            return 0;
        });
    EXPECT_EQ(slots().AddAppMaps({}, item), 0);
    EXPECT_EQ(std::count(sink.logLines.begin(), sink.logLines.end(),
                         u"Error in setting the AppMaps of " + item.DisplayName),
              1);
}

TEST_F(FlowTest, BindingsAreOneEntryOfAtMost255Characters) {
    CIISWebsiteProp website;
    website.DisplayName = u"Shop";
    website.IPAddress = u"*";
    website.Port = u"80";
    website.HostHeaderName = qm::wstring(251, u'h');  // 256 characters in all
    EXPECT_EQ(slots().SetWebSiteProperties(website), qm::status::binding_too_long);
    EXPECT_NE(sink.logLines.back().find(u"of website 'Shop' are longer than 255"),
              qm::wstring::npos);
    website.HostHeaderName = u"shop.example.com";
    AcceptWrites();
    ASSERT_EQ(slots().SetWebSiteProperties(website), 0);
    EXPECT_EQ(Written(1023), qm::wstring(u"*:80:shop.example.com\0\0", 23));
    EXPECT_EQ(Written(2102), u"Default Application");
}

}  // namespace
}  // namespace webrig::testing
