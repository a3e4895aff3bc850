#include "host/operation_recording.h"

#include <gtest/gtest.h>

#include "support/com_exception.h"
#include "testing/temp_machine.h"
#include "testing/test_host.h"

namespace webrig::host {
namespace {

class OperationRecordingTest : public ::testing::Test {
  protected:
    testing::TempMachine temp;
    platform::HostObjects& hostObjects = temp.machine().hostObjects();
    testing::RecordingOperationSource source;
};

qm::hresult ErrorOf(const std::function<void()>& work) {
    try {
        work();
    } catch (const qm::com_exception& e) {
        return e.error();
    }
    return qm::hr::ok;
}

TEST_F(OperationRecordingTest, TheGeneralRecorderIsAskedFor) {
    const auto recorder = ObtainOperationRecorder(hostObjects, &source);
    EXPECT_EQ(recorder, source.recorder);
    EXPECT_EQ(source.requestedTypes, std::vector<qm::wstring>{u"OPTYPE_GENERAL"});
}

TEST_F(OperationRecordingTest, FailuresCarryTheirHresult) {
    EXPECT_EQ(ErrorOf([&] { ObtainOperationRecorder(hostObjects, nullptr); }), qm::hr::pointer);
    source.failWith = qm::hr::no_interface;
    EXPECT_EQ(ErrorOf([&] { ObtainOperationRecorder(hostObjects, &source); }),
              qm::hr::no_interface);
}

TEST_F(OperationRecordingTest, ARecordIsTheEventNameAndTheItemName) {
    RecordItemCreated(source.recorder.get(), false, kAppPoolCreated, u"OrdersPool");
    RecordItemCreated(source.recorder.get(), false, kWebSiteCreated, u"Website_Shop");
    EXPECT_EQ(source.recorder->records,
              (std::vector<std::vector<qm::wstring>>{{u"IIS AppPool Created", u"OrdersPool"},
                                                     {u"IIS WebSite Created", u"Website_Shop"}}));
}

TEST_F(OperationRecordingTest, NothingIsRecordedWhenSuppressedOrWithoutARecorder) {
    RecordItemCreated(source.recorder.get(), true, kVRootCreated, u"Root");
    EXPECT_NO_THROW(RecordItemCreated(nullptr, false, kVRootCreated, u"Root"));
    EXPECT_TRUE(source.recorder->records.empty());
}

TEST_F(OperationRecordingTest, ARecorderThatRefusesRaisesItsError) {
    source.recorder->failWith = qm::hr::fail;
    EXPECT_EQ(ErrorOf([&] {
                  RecordItemCreated(source.recorder.get(), false, kWebServiceExtensionCreated,
                                    u"X");
              }),
              qm::hr::fail);
}

}  // namespace
}  // namespace webrig::host
