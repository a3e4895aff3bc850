// What the controller does itself: the event sink, the bag, install states, the services its
// backend calls back into, and the order in which it is taken apart.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <span>
#include <stdexcept>

#include "controller/bound_controllers.h"
#include "testing/recording_event_sink.h"

namespace webrig::testing {
namespace {

using ::testing::Ref;
using ::testing::Return;

TEST(EventSinkTest, LinesGoToTheSinkWhichMayFailToLogButNotToReport) {
    LegacyBound bound;
    RecordingEventSink sink;
    EXPECT_EQ(bound.slots().SetEventSink(&sink), &sink);
    bound.slots().LogMessage(u"line");
    bound.slots().ReportError(u"DeleteVRoot AppDelete", -2147024894);
    EXPECT_EQ(sink.logLines, std::vector<qm::wstring>{u"line"});
    EXPECT_EQ(
        sink.errors,
        (std::vector<std::pair<qm::wstring, int32_t>>{{u"DeleteVRoot AppDelete", -2147024894}}));
    sink.throwOnLog = sink.throwOnError = true;
    EXPECT_NO_THROW(bound.slots().LogMessage(u"line"));
    EXPECT_THROW(bound.slots().ReportError(u"again", 1), std::runtime_error);
}

TEST(EventSinkTest, WithoutASinkNothingIsShownOrAsked) {
    LegacyBound bound;
    CIISPropertyBag bag;
    bag.progressMessages[u"PROGMSG_IIS_CREATEVROOT"] = u"Creating %s";
    EXPECT_CALL(bound.backend(), InitIISObject()).WillOnce(Return(0));
    ASSERT_EQ(bound.controller.SetPropertyBag(bag), 0);
    EXPECT_NO_THROW(bound.slots().LogMessage(u"line"));
    EXPECT_NO_THROW(bound.slots().ReportError(u"error", -1));
    EXPECT_EQ(bound.controller.ProgressMessage(u"PROGMSG_IIS_CREATEVROOT", u"Shop"), 0);
    EXPECT_FALSE(bound.controller.UserCancelled());
}

TEST(EventSinkTest, ProgressAndCancelGoThroughTheSink) {
    VistaBound bound;
    RecordingEventSink sink;
    sink.progressAnswer = 7;
    sink.cancelAnswer = IIISEvent::kCancelled;
    CIISPropertyBag bag;
    bag.progressMessages[u"PROGMSG_IIS_CREATEVROOT"] = u"Creating %s";
    bound.slots().SetEventSink(&sink);
    EXPECT_CALL(bound.backend(), InitIISObject()).WillOnce(Return(0));
    ASSERT_EQ(bound.controller.SetPropertyBag(bag), 0);
    EXPECT_EQ(bound.controller.ProgressMessage(u"PROGMSG_IIS_CREATEVROOT", u"Shop"), 7);
    EXPECT_EQ(sink.progressTexts, std::vector<qm::wstring>{u"Creating Shop"});
    EXPECT_TRUE(bound.controller.UserCancelled());
}

TEST(PropertyBagTest, SetPropertyBagConnectsTheBackendWithTheBagInPlace) {
    LegacyBound bound;
    CIISPropertyBag bag;
    bag.msiHiddenProperties = u"ShopKey";
    EXPECT_CALL(bound.backend(), InitIISObject()).WillOnce([&] {
        // The backend may mask values from its first log line on.
        EXPECT_EQ(bound.slots().MaskPasswordValue(u"ShopKey", u"abc"), u"********");
        return -1122;
    });
    EXPECT_EQ(bound.controller.SetPropertyBag(bag), -1122);
}

TEST(InstallStateTest, EveryStateInstallsAndRemoves) {
    LegacyBound legacy;
    VistaBound vista;
    for (CIISVRootController* controller : {&legacy.slots(), &vista.slots()}) {
        for (const int32_t state : {0, 3, 5, -1, INT_MIN, INT_MAX}) {
            EXPECT_TRUE(controller->IsInstallState(state)) << state;
            EXPECT_TRUE(controller->IsRemoveState(state)) << state;
        }
    }
}

// ---- The services each backend calls back into are the controller's own.

template <class Bound>
class BackendServiceTest : public ::testing::Test {};

using BothBackends = ::testing::Types<LegacyBound, VistaBound>;
TYPED_TEST_SUITE(BackendServiceTest, BothBackends);

TYPED_TEST(BackendServiceTest, AreTheControllersOwn) {
    TypeParam bound;
    RecordingEventSink sink;
    bound.slots().SetEventSink(&sink);
    auto& backend = bound.backend();
    backend.LogMessage(u"InitIISObject");
    EXPECT_EQ(sink.logLines.front(), u"InitIISObject");
    bound.website.SiteNumber = u"4";
    bound.website.Port = u"8080";
    EXPECT_CALL(backend, FindSiteWithId(Ref(bound.website))).WillOnce(Return(true));
    EXPECT_TRUE(backend.WebsiteExists(bound.website));
    EXPECT_THAT(sink.logLines, ::testing::Contains(qm::wstring(u"Website exists.")));
    EXPECT_EQ(backend.GetPortFromBindingInfo(u"*:8080:shop.example"), u"8080");
    EXPECT_EQ(backend.GetBasePath(bound.website, u"shop"), u"/LM/W3SVC/4/Root/shop");
    EXPECT_EQ(backend.MaskPasswordValue(u"7502", u"secret"), u"********");
    EXPECT_EQ(backend.MaskPasswordValue(u"Path", u"C:\\Shop"), u"C:\\Shop");
}

TEST(LegacyBackendServiceTest, ReportErrorReachesTheSink) {
    LegacyBound bound;
    RecordingEventSink sink;
    bound.slots().SetEventSink(&sink);
    CIisFunctionsLegacy& backend = bound.controller;
    backend.ReportError(u"CompareDirValues OpenKey", -5);
    EXPECT_EQ(sink.errors,
              (std::vector<std::pair<qm::wstring, int32_t>>{{u"CompareDirValues OpenKey", -5}}));
}

// ---- Taking a controller apart: the backend part goes first, then the host's recorder.

class ReleaseWatchingRecorder final : public platform::IOperationRecorder {
  public:
    ReleaseWatchingRecorder(const bool& backendDestroyed, int& releasedAfterBackend)
        : m_backendDestroyed(backendDestroyed), m_releasedAfterBackend(releasedAfterBackend) {}
    ~ReleaseWatchingRecorder() override { m_releasedAfterBackend = m_backendDestroyed ? 1 : 0; }
    qm::hresult RecordOperation(std::span<const qm::wstring>) override { return qm::hr::ok; }

  private:
    const bool& m_backendDestroyed;
    int& m_releasedAfterBackend;
};

TYPED_TEST(BackendServiceTest, TheBackendGoesBeforeTheRecorder) {
    bool backendDestroyed = false;
    int releasedAfterBackend = -1;  // -1: not released
    {
        TypeParam bound;
        bound.backend().onDestroyed = [&] { backendDestroyed = true; };
        bound.controller.operationRecorder =
            std::make_shared<ReleaseWatchingRecorder>(backendDestroyed, releasedAfterBackend);
    }
    EXPECT_EQ(releasedAfterBackend, 1);
}

}  // namespace
}  // namespace webrig::testing
