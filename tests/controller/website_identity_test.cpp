// How the controller decides whether a website exists, and the new site numbers it remembers.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

#include "controller/bound_controllers.h"
#include "settings/uninstall_information.h"
#include "testing/case_name.h"
#include "testing/recording_event_sink.h"

namespace webrig::testing {
namespace {

using ::testing::Contains;
using ::testing::Ref;
using ::testing::Return;

enum class Lookup { bySiteNumber, byPort };

struct ExistenceCase {
    const char* what;
    const char16_t* siteNumber;
    const char16_t* port;
    Lookup lookup;
};

class WebsiteExistsTest : public ::testing::TestWithParam<ExistenceCase> {
  protected:
    LegacyBound bound;
};

TEST_P(WebsiteExistsTest, AsksTheBackendTheRightQuestion) {
    auto& website = bound.website;
    website.SiteNumber = GetParam().siteNumber;
    website.Port = GetParam().port;
    if (GetParam().lookup == Lookup::bySiteNumber) {
        EXPECT_CALL(bound.backend(), FindSiteWithId(Ref(website))).WillOnce(Return(true));
    } else {
        EXPECT_CALL(bound.backend(), FindSiteWithPort(Ref(website))).WillOnce(Return(true));
    }
    EXPECT_TRUE(bound.slots().WebsiteExists(website));
}

INSTANTIATE_TEST_SUITE_P(
    Websites, WebsiteExistsTest,
    ::testing::Values(ExistenceCase{"number and port", u"3", u"8080", Lookup::bySiteNumber},
                      ExistenceCase{"number 0", u"0", u"8080", Lookup::byPort},
                      ExistenceCase{"port 0", u"3", u"0", Lookup::byPort},
                      ExistenceCase{"a leading zero is not 0", u"03", u"00", Lookup::bySiteNumber},
                      ExistenceCase{"empty number", u"", u"80", Lookup::bySiteNumber}),
    NameFromWhat());

TEST(WebsiteExistsLogTest, TellsWhatItFoundAndWhere) {
    VistaBound bound;
    RecordingEventSink sink;
    bound.slots().SetEventSink(&sink);
    bound.website.DisplayName = u"Shop";
    bound.website.SiteNumber = u"5";
    bound.website.Port = u"81";
    EXPECT_CALL(bound.backend(), FindSiteWithId(Ref(bound.website))).WillOnce(Return(false));
    EXPECT_FALSE(bound.slots().WebsiteExists(bound.website));
    EXPECT_EQ(sink.logLines.front(),
              u"Quillmark project contains a website with name 'Shop', site number '5', and port "
              u"'81'. Checking if it exists...");
    EXPECT_EQ(sink.logLines.back(),
              u"Website does not exist. Additional info: Site number '5', Port '81', sBasePath "
              u"'/LM/W3SVC/5/Root', DisplayName 'Shop'");
}

// ---- A website that asks for a new site number.

class NewSiteNumberTest : public ::testing::Test {
  protected:
    NewSiteNumberTest() {
        bound.website.SiteNumber = CIISVRootController::kNewSiteNumberMarker;
        EXPECT_CALL(bound.backend(), InitIISObject()).WillOnce(Return(0));
        bound.controller.SetPropertyBag(bag);
    }

    // Gives the website `number` when the backend is asked for the next one.
    void NextNumberIs(const qm::wstring& number) {
        EXPECT_CALL(bound.backend(), GetNextWebsiteId(Ref(bound.website)))
            .WillOnce([number](CIISWebsiteProp& website) { website.SiteNumber = number; });
    }

    std::optional<platform::RegValue> Stored(const qm::wstring& productCode,
                                             const qm::wstring& name) {
        platform::Registry& registry = bound.temp.machine().registry();
        platform::ScopedRegKey key(registry);
        if (registry.OpenKey(platform::kLocalMachine,
                             settings::UninstallInformationKeyOf(productCode),
                             platform::key_access::read, key.receive()) != 0) {
            return std::nullopt;
        }
        platform::RegValue value;
        if (registry.QueryValue(key.get(), name, value) != 0) {
            return std::nullopt;
        }
        return value;
    }

    VistaBound bound;
    CIISPropertyBag bag;
};

TEST_F(NewSiteNumberTest, IsAllocatedAndStoredUnderThePropertyName) {
    bag.productCode = u"{11111111-2222-3333-4444-555555555555}";
    bound.website.SiteNumberProperty = u"[SHOP_SITE_NUMBER]";
    NextNumberIs(u"12");
    EXPECT_FALSE(bound.slots().WebsiteExists(bound.website));
    EXPECT_EQ(bound.website.SiteNumber, u"12");

    const auto stored = Stored(bag.productCode, u"SHOP_SITE_NUMBER");
    ASSERT_TRUE(stored.has_value());
    EXPECT_EQ(stored->type, platform::reg_type::sz);
    EXPECT_EQ(stored->AsString(), u"12");
    EXPECT_EQ(stored->data.size(), 4u);  // two characters, no terminating NUL
}

TEST_F(NewSiteNumberTest, WithoutAProductCodeTheFixedCodeIsUsed) {
    bound.website.SiteNumberProperty = u"SITE";
    NextNumberIs(u"2");
    bound.slots().WebsiteExists(bound.website);
    const auto stored = Stored(settings::kFallbackProductCode, u"SITE");
    ASSERT_TRUE(stored.has_value());
    EXPECT_EQ(stored->AsString(), u"2");
}

TEST_F(NewSiteNumberTest, WithoutAPropertyTheMarkerNamesTheValue) {
    RecordingEventSink sink;
    bound.slots().SetEventSink(&sink);
    bag.productCode = u"{P}";
    NextNumberIs(u"9");
    bound.slots().WebsiteExists(bound.website);
    const auto stored = Stored(u"{P}", CIISVRootController::kNewSiteNumberMarker);
    ASSERT_TRUE(stored.has_value());
    EXPECT_EQ(stored->AsString(), u"9");
    EXPECT_THAT(sink.logLines,
                Contains(qm::wstring(u"Changing value of 'QUILLMARK_IIS_NEXT_NEW_SITE_NUMBER' in "
                                     u"registry to '9' for future use.")));
}

// ---- Ports and base paths.

struct PortCase {
    const char* what;
    const char16_t* binding;
    const char16_t* port;
};

class PortFromBindingTest : public ::testing::TestWithParam<PortCase> {};

TEST_P(PortFromBindingTest, CutsThePortOut) {
    LegacyBound bound;
    EXPECT_EQ(bound.slots().GetPortFromBindingInfo(GetParam().binding), GetParam().port);
}

INSTANTIATE_TEST_SUITE_P(Bindings, PortFromBindingTest,
                         ::testing::Values(PortCase{"address port and host",
                                                    u"10.0.0.1:80:shop.example", u"80"},
                                           PortCase{"port alone between colons", u":443:", u"443"},
                                           PortCase{"any address", u"*:8080:", u"8080"},
                                           PortCase{"bare port", u"8080", u"8080"},
                                           PortCase{"address and port", u"10.0.0.1:81", u"81"},
                                           PortCase{"empty", u"", u""}),
                         NameFromWhat());

TEST(BasePathTest, IsTheMetabasePathOfTheRoot) {
    LegacyBound bound;
    bound.website.SiteNumber = u"7";
    EXPECT_EQ(bound.slots().GetBasePath(bound.website, u""), u"/LM/W3SVC/7/Root");
    EXPECT_EQ(bound.slots().GetBasePath(bound.website, u"a/b"), u"/LM/W3SVC/7/Root/a/b");
}

TEST(BasePathTest, AnEmptySiteNumberIsWarnedAbout) {
    LegacyBound bound;
    RecordingEventSink sink;
    bound.slots().SetEventSink(&sink);
    EXPECT_EQ(bound.slots().GetBasePath(bound.website, u""), u"/LM/W3SVC//Root");
    EXPECT_EQ(sink.logLines,
              std::vector<qm::wstring>{u"WEBRIG Warning: site number is currently empty."});
}

}  // namespace
}  // namespace webrig::testing
