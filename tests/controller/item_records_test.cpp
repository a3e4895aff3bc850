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

class ItemRecordTest : public ::testing::TestWithParam<RecordCase> {
  protected:
    VistaBound bound;
    std::shared_ptr<RecordingOperationSource::Recorder> recorder =
        std::make_shared<RecordingOperationSource::Recorder>();

    void Record(const qm::wstring& name) { (bound.slots().*GetParam().record)(name); }
};

TEST_P(ItemRecordTest, RecordsTheEventNameAndTheItemName) {
    bound.controller.operationRecorder = recorder;
    Record(u"Website_Shop");
    EXPECT_EQ(recorder->records,
              (std::vector<std::vector<qm::wstring>>{{GetParam().eventName, u"Website_Shop"}}));
}

TEST_P(ItemRecordTest, NothingWhileSuppressed) {
    bound.controller.operationRecorder = recorder;
    bound.controller.suppressEvents = true;
    Record(u"Website_Shop");
    EXPECT_TRUE(recorder->records.empty());
}

TEST_P(ItemRecordTest, NothingWithoutARecorder) {
    EXPECT_NO_THROW(Record(u"Website_Shop"));
}

TEST_P(ItemRecordTest, ARefusedRecordRaisesTheRecordersError) {
    recorder->failWith = qm::hr::fail;
    bound.controller.operationRecorder = recorder;
    EXPECT_THROW(Record(u"Website_Shop"), qm::com_exception);
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

class ComponentFileInfoTest : public ::testing::Test {
  protected:
    LegacyBound bound;
    TestHost host{bound.temp.machine()};
};

TEST_F(ComponentFileInfoTest, TheHostsFlagSuppressesTheComponentsRecords) {
    host.componentFlags[u"Web"] = 0x40;
    bound.slots().ComponentFileInfo(host.context(), u"Main", u"Web");
    EXPECT_TRUE(bound.controller.suppressEvents);
    ASSERT_EQ(host.fileInfoCalls.size(), 1u);
    EXPECT_EQ(host.fileInfoCalls[0].feature, u"Main");
    EXPECT_EQ(host.fileInfoCalls[0].component, u"Web");
    EXPECT_EQ(host.fileInfoCalls[0].context, host.context());
}

TEST_F(ComponentFileInfoTest, EachComponentStartsRecordedAgain) {
    host.componentFlags[u"Web"] = 0x40;
    host.componentFlags[u"Docs"] = 0x3F;
    bound.slots().ComponentFileInfo(host.context(), u"Main", u"Web");
    bound.slots().ComponentFileInfo(host.context(), u"Main", u"Docs");
    EXPECT_FALSE(bound.controller.suppressEvents);
}

TEST_F(ComponentFileInfoTest, AFailedHostCallLeavesTheComponentRecorded) {
    host.componentFlags[u"Web"] = 0x40;
    host.fileInfoResult = 1;
    bound.controller.suppressEvents = true;
    bound.slots().ComponentFileInfo(host.context(), u"Main", u"Web");
    EXPECT_FALSE(bound.controller.suppressEvents);
}

}  // namespace
}  // namespace webrig::testing
