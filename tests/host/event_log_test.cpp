#include "host/event_log.h"

#include <gtest/gtest.h>

#include "testing/recording_event_sink.h"

namespace webrig::host {
namespace {

TEST(EventLogTest, LinesAndErrorsReachTheSink) {
    testing::RecordingEventSink sink;
    LogLine(&sink, u"one line");
    ReportErrorLine(&sink, u"it failed", -1104);
    EXPECT_EQ(sink.logLines, std::vector<qm::wstring>{u"one line"});
    ASSERT_EQ(sink.errors.size(), 1u);
    EXPECT_EQ(sink.errors[0], (std::pair<qm::wstring, int32_t>{u"it failed", -1104}));
}

TEST(EventLogTest, WithoutASinkNothingHappens) {
    EXPECT_NO_THROW(LogLine(nullptr, u"line"));
    EXPECT_NO_THROW(ReportErrorLine(nullptr, u"error", 1));
}

TEST(EventLogTest, ASinkThatFailsToLogDoesNotEndTheOperationButAFailedReportDoes) {
    testing::RecordingEventSink sink;
    sink.throwOnLog = true;
    sink.throwOnError = true;
    EXPECT_NO_THROW(LogLine(&sink, u"line"));
    EXPECT_THROW(ReportErrorLine(&sink, u"error", 1), std::runtime_error);
}

}  // namespace
}  // namespace webrig::host
