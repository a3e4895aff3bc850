// What the controller sends the backend for an application pool's settings.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "controller/bound_controllers.h"
#include "support/format.h"
#include "testing/case_name.h"
#include "testing/recording_event_sink.h"

namespace webrig::testing {
namespace {

using ::testing::_;
using ::testing::Return;

constexpr platform::MetadataHandle kPoolKey{77};

// What the controller writes through the metabase backend, in order: "id=value " for DWORDs,
// "id=attributes:value " for texts. The double refuses a MaxProc (9003) of 7.
void Record(LegacyBound& bound, qm::wstring& writes) {
    EXPECT_CALL(bound.backend(), SetVRtDWProperty(kPoolKey, _, 1u, _))
        .WillRepeatedly([&writes](auto, uint32_t id, auto, uint32_t value) {
            writes += qm::format(u"%d=%d ", id, value);
            return id == 9003 && value == 7 ? -7 : 0;
        });
    EXPECT_CALL(bound.backend(), SetVRtStrProperty(kPoolKey, _, 2u, _, _, qm::wstring(u"/")))
        .WillRepeatedly([&writes](auto, uint32_t id, auto, uint32_t attributes,
                                  const qm::wstring& value, auto&) {
            writes += qm::format(u"%d=%d:%s ", id, attributes, value);
            return 0;
        });
}

// The pool's key opens as kPoolKey and must be closed once.
void OpenPoolKey(LegacyBound& bound) {
    bound.pool.Name = u"Orders";
    EXPECT_CALL(bound.backend(),
                OpenKeyLog(platform::kMasterRootHandle, qm::wstring(u"/LM/W3SVC/AppPools/Orders"),
                           2u, 2000u, _))
        .WillOnce([](auto, auto&, auto, auto, platform::MetadataHandle& handle) {
            handle = kPoolKey;
            return 0;
        });
    EXPECT_CALL(bound.backend(), CloseKey(kPoolKey)).WillOnce(Return(0));
}

TEST(AppPoolSettingsTest, NumbersNotGivenAreWrittenAsDefaultsInOrder) {
    LegacyBound bound;
    bound.pool.RecycleTimes = u"03:00;15:30";
    OpenPoolKey(bound);
    qm::wstring writes;
    Record(bound, writes);
    EXPECT_CALL(bound.backend(),
                SetVRtDelimMultiszProperty(kPoolKey, 9020u, 1u, qm::wstring(u"03:00;15:30")))
        .WillOnce(Return(0));
    EXPECT_EQ(bound.slots().SetAppPoolProperties(bound.pool), 0);
    EXPECT_EQ(writes,
              u"9005=0 9003=0 9002=0 9001=0 9017=65535 9043=0 9023=0 2144=0 9022=0 9021=2 ");
}

TEST(AppPoolSettingsTest, AFailingWriteStopsTheRestButTheKeyIsClosed) {
    LegacyBound bound;
    bound.pool.IdleTimeout = 20;
    bound.pool.MaxProc = 7;
    OpenPoolKey(bound);
    qm::wstring writes;
    Record(bound, writes);
    EXPECT_EQ(bound.slots().SetAppPoolProperties(bound.pool), -7);
    EXPECT_EQ(writes, u"9005=20 9003=7 ");
}

TEST(AppPoolSettingsTest, AKeyThatCannotBeOpenedWritesNothing) {
    LegacyBound bound;  // the strict double refuses any write
    EXPECT_CALL(bound.backend(), OpenKeyLog(_, _, _, _, _)).WillOnce(Return(-1121));
    EXPECT_EQ(bound.slots().SetAppPoolProperties(bound.pool), -1121);
}

TEST(AppPoolSettingsTest, TheBackendsOwnPartComesLastAndAnExceptionIsCaught) {
    VistaBound bound;
    RecordingEventSink sink;
    bound.slots().SetEventSink(&sink);
    EXPECT_CALL(bound.backend(), SetVRtDWProperty(_, 1u, _)).WillRepeatedly(Return(0));
    EXPECT_CALL(bound.backend(), SetVRtDelimMultiszProperty(9020u, 1u, qm::wstring()))
        .WillRepeatedly(Return(0));
    EXPECT_CALL(bound.backend(), SetAppPoolProperties(::testing::Ref(bound.pool)))
        .WillOnce(Return(static_cast<int32_t>(0x80070003u)))
        .WillOnce([](CIISAppPoolProp&) -> int32_t { throw std::runtime_error("boom"); });
    EXPECT_EQ(bound.slots().SetAppPoolProperties(bound.pool), static_cast<int32_t>(0x80070003u));
    EXPECT_EQ(bound.slots().SetAppPoolProperties(bound.pool), -2116);
    EXPECT_EQ(sink.logLines.back(), u"Exception caught in SetAppPoolProperties function");
}

struct PoolCase {
    const char* what;
    const char16_t* text;  // CPUMon, or the User of a pool whose Attributes are `attributes`
    int32_t attributes;
    const char16_t* writes;
};

class CpuMonTest : public ::testing::TestWithParam<PoolCase> {};

TEST_P(CpuMonTest, PiecesBecomeLimitIntervalAndAction) {
    LegacyBound bound;
    bound.pool.CPUMon = GetParam().text;
    qm::wstring writes;
    Record(bound, writes);
    EXPECT_EQ(bound.slots().SetCpuMon(kPoolKey, bound.pool), 0);
    EXPECT_EQ(writes, GetParam().writes);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, CpuMonTest,
    ::testing::Values(PoolCase{"all three", u"80,5,1", 0, u"9023=80000 2144=5 9022=1 "},
                      PoolCase{"all untouched", u"-1,-1,-1", 0, u""},
                      PoolCase{"empty", u"", 0, u"9023=0 2144=0 9022=0 "},
                      PoolCase{"limit alone", u"80", 0, u"9023=80000 2144=0 9022=0 "},
                      PoolCase{"empty middle", u"50,,1", 0, u"9023=50000 2144=0 9022=1 "},
                      PoolCase{"blank and sign", u" +7x,-1,", 0, u"9023=7000 9022=0 "}),
    NameFromWhat());

TEST(CpuMonTest, AFailedWriteIsNamedAndReportedAs2252) {
    LegacyBound bound;
    RecordingEventSink sink;
    bound.slots().SetEventSink(&sink);
    EXPECT_CALL(bound.backend(), SetVRtDWProperty(kPoolKey, 9023u, 1u, 1000u)).WillOnce(Return(0));
    EXPECT_CALL(bound.backend(), SetVRtDWProperty(kPoolKey, 2144u, 1u, 2u)).WillOnce(Return(5));
    EXPECT_EQ(bound.slots().SetCpuMonProperties(kPoolKey, 3, 1000, 2), -2252);
    EXPECT_EQ(sink.logLines,
              std::vector<qm::wstring>{u"Failed to set Recycle Minutes for app pool"});
}

class IdentityTest : public ::testing::TestWithParam<PoolCase> {};

TEST_P(IdentityTest, AttributesSelectTheIdentityOnTheMetabase) {
    LegacyBound bound;
    bound.pool.Attributes = GetParam().attributes;
    bound.pool.User = GetParam().text;
    bound.pool.UserPassword = u"pw";
    qm::wstring writes;
    Record(bound, writes);
    EXPECT_EQ(bound.slots().SetIdentity(kPoolKey, bound.pool), 0);
    EXPECT_EQ(writes, GetParam().writes);
}

INSTANTIATE_TEST_SUITE_P(
    Attributes, IdentityTest,
    ::testing::Values(PoolCase{"specific user", u"svc", 0x18, u"9021=3 7501=1:svc 7502=5:pw "},
                      PoolCase{"network service wins", u"svc", 0x09, u"9021=2 "},
                      PoolCase{"local service", u"svc", 0x0A, u"9021=1 "},
                      PoolCase{"local system", u"svc", 0x0C, u"9021=0 "},
                      PoolCase{"none given", u"svc", 0, u"9021=2 "},
                      PoolCase{"pool identity only on IIS 7", u"svc", 0x10, u"9021=2 "},
                      PoolCase{"password without user", u"", 0x08, u"9021=3 7502=5:pw "}),
    NameFromWhat());

TEST(IdentityTest, TheConfigurationBackendHasThePoolsOwnIdentity) {
    VistaBound bound;  // the strict double refuses user and password
    bound.pool.Attributes = 0x18;
    bound.pool.User = u"svc";
    EXPECT_CALL(bound.backend(), SetVRtDWProperty(9021u, 1u, 4u)).WillOnce(Return(0));
    EXPECT_EQ(bound.slots().SetIdentity(kPoolKey, bound.pool), 0);
}

}  // namespace
}  // namespace webrig::testing
