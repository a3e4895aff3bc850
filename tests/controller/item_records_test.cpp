// The records of created items that the controller sends to the host, and the host's say on
// whether a component's items are recorded at all.

#include <gtest/gtest.h>

#include "controller/bound_controllers.h"
#include "support/com_exception.h"
#include "testing/case_name.h"
#include "testing/test_host.h"

namespace webrig::testing {
namespace {

struct RecordCase {
    const char* what;
    void (CIISVRootController::*record)(const qm::wstring&);
    const char16_t* eventName;
};

class ItemRecordTest : public ::testing::TestWithParam<RecordCase> {};

TEST_P(ItemRecordTest, RecordsTheEventNameAndTheItemNameUnlessSuppressed) {
    VistaBound bound;
    EXPECT_NO_THROW((bound.slots().*GetParam().record)(u"Website_Shop"));  // no recorder yet
    const auto recorder = std::make_shared<RecordingOperationSource::Recorder>();
    bound.controller.operationRecorder = recorder;
    (bound.slots().*GetParam().record)(u"Website_Shop");
    bound.controller.suppressEvents = true;
    (bound.slots().*GetParam().record)(u"Website_Other");
    EXPECT_EQ(recorder->records,
              (std::vector<std::vector<qm::wstring>>{{GetParam().eventName, u"Website_Shop"}}));
}

INSTANTIATE_TEST_SUITE_P(
    Operations, ItemRecordTest,
    ::testing::Values(
        RecordCase{"VRootCreated", &CIISVRootController::VRootCreated, u"IIS VRoot Created"},
        RecordCase{"AppPoolCreated", &CIISVRootController::AppPoolCreated, u"IIS AppPool Created"},
        RecordCase{"WebServiceExtensionCreated", &CIISVRootController::WebServiceExtensionCreated,
                   u"IIS WebServiceExtension Created"},
        RecordCase{"WebSiteCreated", &CIISVRootController::WebSiteCreated, u"IIS WebSite Created"}),
    NameFromWhat());

TEST(ItemRecordFailureTest, ARefusedRecordRaisesTheRecordersError) {
    LegacyBound bound;
    const auto recorder = std::make_shared<RecordingOperationSource::Recorder>();
    recorder->failWith = qm::hr::fail;
    bound.controller.operationRecorder = recorder;
    EXPECT_THROW(bound.slots().AppPoolCreated(u"Pool"), qm::com_exception);
}

TEST(ComponentFileInfoTest, TheHostsFlagSuppressesTheRecordsOfThatComponentOnly) {
    LegacyBound bound;
    TestHost host{bound.temp.machine()};
    host.componentFlags[u"Web"] = 0x40;
    host.componentFlags[u"Docs"] = 0x3F;
    bound.slots().ComponentFileInfo(host.context(), u"Main", u"Web");
    EXPECT_TRUE(bound.controller.suppressEvents);
    ASSERT_EQ(host.fileInfoCalls.size(), 1u);
    EXPECT_EQ(host.fileInfoCalls[0].feature, u"Main");
    EXPECT_EQ(host.fileInfoCalls[0].component, u"Web");
    bound.slots().ComponentFileInfo(host.context(), u"Main", u"Docs");
    EXPECT_FALSE(bound.controller.suppressEvents);
    // A failed host call leaves the component recorded.
    bound.controller.suppressEvents = true;
    host.fileInfoResult = 1;
    bound.slots().ComponentFileInfo(host.context(), u"Main", u"Web");
    EXPECT_FALSE(bound.controller.suppressEvents);
}

}  // namespace
}  // namespace webrig::testing
