// How the controller decides whether a website exists, and the new site numbers it remembers.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <optional>

#include "controller/bound_controllers.h"
#include "controller/controller_factory.h"
#include "settings/iis_pro_ini_loader.h"
#include "settings/uninstall_information.h"
#include "testing/case_name.h"
#include "testing/file_bytes.h"
#include "testing/recording_event_sink.h"
#include "testing/settings_file_builder.h"

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
        if (registry.OpenKey(platform::kLocalMachine, settings::UninstallInfoKeyPath(productCode),
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

// The loader looks a stored number up under the property's text as written and the bag's own
// product code; a new number is stored without brackets, under the marker for an unnamed
// property and under the fixed code for an empty product code. Where the two differ a later run
// does not find the number (the settings check warns about such projects).
struct RoundTripCase {
    const char* what;
    const char16_t* productCode;
    const char16_t* property;
    bool foundAgain;
};

class SiteNumberRoundTripTest : public ::testing::TestWithParam<RoundTripCase> {};

TEST_P(SiteNumberRoundTripTest, ALaterRunFindsTheNumberOnlyWhereBothRulesMeet) {
    const RoundTripCase& c = GetParam();
    SettingsFileBuilder file;
    file.Section("GlobalOptions").Entry(u"ProductCode", c.productCode);
    file.Section("Components").Entry("Count", 1).Entry("c1", "Web");
    file.Section("Web_WebSites")
        .Entry("ActionState", 3)
        .Entry("Count", 1)
        .Entry("ws1", "Website_S");
    file.Section("Website_S").Entry("QMIISCommon", "S").Entry("ItemType", 0).Entry("Port", "80");
    file.Entry("RootDir", "C:\\inetpub\\s");
    file.Entry(u"SiteNumber", CIISVRootController::kNewSiteNumberMarker);
    file.Entry(u"SiteNumberProperty", c.property);

    VistaBound bound;
    std::filesystem::create_directories(bound.temp.path() / "drive_c" / "Setup");
    WriteBytes(bound.temp.path() / "drive_c" / "Setup" / "site.ini",
               file.Bytes(SettingsEncoding::Utf16LeWithBom));
    const auto load = [&bound](CIISPropertyBag& bag) {
        CIISProIniLoader loader(bound.temp.machine(), u"C:\\Setup\\site.ini", platform::kNoModule,
                                0);
        ASSERT_EQ(loader.Load(bag), 0);
    };
    CIISPropertyBag first;
    load(first);
    CIISWebsiteProp& website = *first.websites.at(u"S");
    EXPECT_CALL(bound.backend(), InitIISObject()).WillOnce(Return(0));
    bound.controller.SetPropertyBag(first);
    EXPECT_CALL(bound.backend(), GetNextWebsiteId(Ref(website))).WillOnce([](CIISWebsiteProp& w) {
        w.SiteNumber = u"12";
    });
    EXPECT_FALSE(bound.slots().WebsiteExists(website));

    CIISPropertyBag later;
    load(later);
    EXPECT_EQ(later.websites.at(u"S")->SiteNumber,
              c.foundAgain ? u"12" : CIISVRootController::kNewSiteNumberMarker);
}

INSTANTIATE_TEST_SUITE_P(
    Projects, SiteNumberRoundTripTest,
    ::testing::Values(RoundTripCase{"plain property", u"{P}", u"SITE_NO", true},
                      RoundTripCase{"bracketed property", u"{P}", u"[SITE_NO]", false},
                      RoundTripCase{"no property", u"{P}", u"", false},
                      RoundTripCase{"no product code", u"", u"SITE_NO", false}),
    NameFromWhat());

// The value is REG_SZ without a terminating NUL, which regedit writes as hex(1).
TEST(SiteNumberOnIis10Test, TheConfigurationSystemGivesTheNextFreeNumber) {
    TempMachine temp;  // IIS 10 with the Default Web Site as site 1
    const auto controller = controller::BuildController(true, temp.machine());
    CIISPropertyBag bag;
    bag.productCode = u"{P}";
    ASSERT_EQ(controller->SetPropertyBag(bag), 0);
    CIISWebsiteProp website;
    website.SiteNumber = CIISVRootController::kNewSiteNumberMarker;
    website.SiteNumberProperty = u"[SITE]";
    EXPECT_FALSE(controller->WebsiteExists(website));
    EXPECT_EQ(website.SiteNumber, u"2");
    // A 32-bit module on a 64-bit machine writes SOFTWARE in its WOW64 view, as Windows keeps it.
    const std::vector<std::byte> bytes = ReadBytes(temp.path() / "registry" / "HKLM.reg");
    const std::u16string_view text(reinterpret_cast<const char16_t*>(bytes.data()),
                                   bytes.size() / sizeof(char16_t));
    EXPECT_NE(text.find(u"[HKEY_LOCAL_MACHINE\\SOFTWARE\\WOW6432Node\\Microsoft\\Windows\\"
                        u"CurrentVersion\\Uninstall\\Quillmark Uninstall Information\\{P}]\r\n"
                        u"\"SITE\"=hex(1):32,00\r\n"),
              std::u16string_view::npos);
}

TEST(UninstallInfoKeyTest, IsCreatedOnlyWhenMissing) {
    TempMachine temp;
    platform::Registry& registry = temp.machine().registry();
    EXPECT_EQ(settings::EnsureUninstallInfoKey(registry, u"{P}"), 0u);
    platform::ScopedRegKey key(registry);
    EXPECT_EQ(registry.OpenKey(platform::kLocalMachine, settings::UninstallInfoKeyPath(u"{P}"),
                               platform::key_access::read, key.receive()),
              0u);
    ASSERT_TRUE(settings::WriteSiteNumberValue(registry, u"{P}", u"SITE", u"4"));
    EXPECT_EQ(settings::EnsureUninstallInfoKey(registry, u"{P}"), 0u);
    qm::wstring stored;
    EXPECT_TRUE(settings::ReadSiteNumberValue(registry, u"{P}", u"SITE", stored));
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
