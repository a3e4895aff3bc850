// How the runtime uses the controller of an export call: which backend it gets, and what happens
// before the install or removal proper.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "controller/bound_controllers.h"
#include "exports/export_calls.h"
#include "exports/iis_pro_runtime.h"
#include "exports/runtime_holder.h"
#include "support/status_codes.h"
#include "testing/recording_event_sink.h"

namespace webrig::testing {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Return;

std::shared_ptr<platform::Platform> Unowned(sim::Machine& machine) {
    return std::shared_ptr<platform::Platform>(std::shared_ptr<void>(), &machine);
}

TEST(RuntimeControllerTest, EachCallGetsTheBackendChosenForIt) {
    struct Case {
        sim::IisVersion machine;
        bool compatibility;
        int32_t bagVersion;
        const char16_t* preference;
        bool vista;
    };
    for (const Case& c :
         {Case{{6, 0}, false, 6, u"", false}, Case{{10, 0}, false, 10, u"1", true},
          Case{{10, 0}, true, 10, u"1", false}, Case{{10, 0}, true, 10, u"", true}}) {
        sim::MachineConfig config;
        config.iisVersion = c.machine;
        if (c.compatibility) {
            config.iisFeatures.push_back(sim::IisFeature::metabaseCompatibility);
        }
        TempMachine temp(config);
        CIISProRuntime runtime(Unowned(temp.machine()));
        runtime.propertyBag.iisMajorVersion = c.bagVersion;
        runtime.propertyBag.preferLegacyObjects = c.preference;
        EXPECT_EQ(runtime.BuildController()->IsVistaBackend(), c.vista) << c.bagVersion;
        // Asked afresh: a change of the bag changes the next controller.
        runtime.propertyBag.iisMajorVersion = 5;
        EXPECT_FALSE(runtime.BuildController()->IsVistaBackend());
    }
}

class RuntimeInstallTest : public ::testing::Test {
  protected:
    RuntimeInstallTest() : runtime(Unowned(bound.temp.machine())) {
        auto owned = std::make_unique<RecordingEventSink>();
        sink = owned.get();
        runtime.eventSink = std::move(owned);
        runtime.propertyBag.GetOrAddComponent(u"Web");
    }

    VistaBound bound;
    CIISProRuntime runtime;
    RecordingEventSink* sink = nullptr;
};

TEST_F(RuntimeInstallTest, InstallOpensTheSessionWithTheRuntimesSinkAndReturnsItsStatus) {
    EXPECT_CALL(bound.backend(), InitIISObject()).WillOnce(Return(-2005));
    EXPECT_EQ(runtime.ComponentInstall(bound.controller, u"Web"), -2005);
    bound.controller.LogMessage(u"through the controller");
    EXPECT_THAT(sink->logLines, Contains(u"through the controller"));
}

TEST_F(RuntimeInstallTest, InstallDoesNothingWhileIisWorkIsOff) {
    runtime.propertyBag.ignoreIIS = 1;
    // The strict double fails the test on any backend call.
    EXPECT_EQ(runtime.ComponentInstall(bound.controller, u"Web"), 0);
}

// One pool, one existing website, two virtual directories and an extension in component "Web".
class ComponentSequenceTest : public RuntimeInstallTest {
  protected:
    ComponentSequenceTest() {
        runtime.propertyBag.iisMajorVersion = 10;
        CIISComponentProp& web = *runtime.propertyBag.components.at(u"Web");
        CIISAppPoolProp& pool = *web.AddAppPool(u"P").record;
        pool.Name = u"P";
        pool.OverwriteExisting = u"0";  // found, and left as it is
        site = web.AddWebsite(u"S").record;
        site->SiteNumber = u"5";
        site->Port = u"80";
        site->Component = u"Web";
        runtime.propertyBag.ReplaceWebsite(u"S", site);
        for (const char16_t* key : {u"V1", u"V2"}) {
            web.AddVRoot(key).record->ParentSite = u"S";
        }
        web.AddWebServiceExtension(u"E").record->File = u"C:\\app\\ext.dll";
        EXPECT_CALL(bound.backend(), InitIISObject()).WillOnce(Return(0));
    }

    std::shared_ptr<CIISWebsiteProp> site;
    ::testing::InSequence inOrder;
};

TEST_F(ComponentSequenceTest, PoolsComeBeforeWebsitesBeforeDirectoriesBeforeExtensions) {
    using ::testing::_;
    EXPECT_CALL(bound.backend(), CreateAppPoolFunction(_))
        .WillOnce(Return(qm::status::app_pool_already_exists));
    EXPECT_CALL(bound.backend(), FindSiteWithId(_)).WillOnce(Return(true));
    for (int i = 0; i < 2; ++i) {
        EXPECT_CALL(bound.backend(), OpenKeyToWebsite(nullptr, nullptr, nullptr));
        EXPECT_CALL(bound.backend(), FindSiteWithId(_)).WillOnce(Return(true));
        EXPECT_CALL(bound.backend(), AppCreate(_, _)).WillOnce(Return(183));
    }
    // The extension comes last: without the IIS 6 compatibility feature there is no ADSI object.
    EXPECT_EQ(runtime.ComponentInstall(bound.controller, u"Web"),
              platform::adsi_error::bad_pathname);
    EXPECT_THAT(sink->logLines, Contains(u"Perhaps IIS Metabase and IIS 6 configuration "
                                         u"compatibility is required for this action."));
}

TEST_F(ComponentSequenceTest, ACancelStopsAfterTheCurrentItem) {
    using ::testing::_;
    sink->cancelAnswer = IIISEvent::kCancelled;
    EXPECT_CALL(bound.backend(), CreateAppPoolFunction(_))
        .WillOnce(Return(qm::status::app_pool_already_exists));
    EXPECT_EQ(runtime.ComponentInstall(bound.controller, u"Web"), qm::status::user_cancelled);
}

TEST_F(RuntimeInstallTest, UninstallSessionReturnsTheBackendsStatus) {
    EXPECT_CALL(bound.backend(), InitIISObject()).WillOnce(Return(0)).WillOnce(Return(-1121));
    EXPECT_EQ(runtime.OpenUninstallSession(bound.controller), 0);
    EXPECT_EQ(runtime.OpenUninstallSession(bound.controller), -1121);
}

// The exports: which calls build a controller (the backend choice logs one line each time) and
// what an install without the host's recorder does.
class ExportControllerTest : public ::testing::Test {
  protected:
    void SetUp() override {
        exports::ReleaseRuntime();
        sim::MachineConfig config;
        config.iisVersion = {5, 1};
        machine = std::shared_ptr<sim::Machine>(sim::Machine::Open(TempFolderMachine(config)));
        exports::InitializeOn(machine, u"C:\\none.ini", 0);
        auto owned = std::make_unique<RecordingEventSink>();
        sink = owned.get();
        exports::CurrentRuntime()->eventSink = std::move(owned);
    }
    void TearDown() override { exports::ReleaseRuntime(); }

    const std::filesystem::path& TempFolderMachine(const sim::MachineConfig& config) {
        temp = std::make_unique<TempMachine>(config);
        return temp->path();
    }
    size_t ControllersBuilt() const {
        return std::count(sink->logLines.begin(), sink->logLines.end(),
                          u"IIS Version is less than 7, so IIS 7 objects are not available.");
    }

    std::unique_ptr<TempMachine> temp;
    std::shared_ptr<sim::Machine> machine;
    RecordingEventSink* sink = nullptr;
};

TEST_F(ExportControllerTest, UninstallCallsBuildAControllerOnlyWhereTheyApply) {
    CIISPropertyBag& bag = exports::CurrentRuntime()->propertyBag;
    struct Case {
        int32_t ignoreIIS;
        int32_t version;
        size_t controllers;  // of the four calls
    };
    for (const Case& c : {Case{0, 6, 4}, Case{0, 5, 2}, Case{1, 6, 0}, Case{0, -1, 2}}) {
        bag.ignoreIIS = c.ignoreIIS;
        bag.iisMajorVersion = c.version;
        sink->logLines.clear();
        EXPECT_EQ(exports::VRootUninstall(u"Root"), 0);
        EXPECT_EQ(exports::WebSiteUninstall(u"Site"), 0);
        EXPECT_EQ(exports::AppPoolUninstall(u"Pool"), 0);
        EXPECT_EQ(exports::WebServiceExtensionUninstall(u"Ext"), 0);
        EXPECT_EQ(ControllersBuilt(), c.controllers) << c.ignoreIIS << " " << c.version;
    }
}

TEST_F(ExportControllerTest, AnInstallWithoutTheHostsRecorderSaysSoAndGoesOn) {
    EXPECT_EQ(exports::ComponentInstall(u"Web", nullptr), 0);
    EXPECT_THAT(sink->logLines,
                Contains(u"No operation recorder from the host (0x80004003): the items of "
                         u"component Web are not recorded"));
    EXPECT_EQ(ControllersBuilt(), 1u);
    EXPECT_TRUE(exports::CurrentRuntime()->installedComponents.contains(u"Web"));
    // Once per instance: the second call builds nothing.
    EXPECT_EQ(exports::ComponentInstall(u"Web", nullptr), 0);
    EXPECT_EQ(ControllersBuilt(), 1u);
}

}  // namespace
}  // namespace webrig::testing
