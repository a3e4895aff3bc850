#include "host/progress.h"

#include <gtest/gtest.h>

#include "testing/recording_event_sink.h"

namespace webrig::host {
namespace {

using Table = std::map<qm::wstring, qm::wstring>;

TEST(ProgressMessageTest, InsertsTheTextIntoTheStoredMessage) {
    testing::RecordingEventSink sink;
    sink.progressAnswer = 7;
    Table table{{u"PROGMSG_IIS_CREATEAPPPOOL", u"Creating application pool %s..."}};
    EXPECT_EQ(ProgressMessage(&sink, table, u"PROGMSG_IIS_CREATEAPPPOOL", u"Orders"), 7);
    EXPECT_EQ(sink.progressTexts, std::vector<qm::wstring>{u"Creating application pool Orders..."});
}

TEST(ProgressMessageTest, AnEmptyInsertionShowsTheEmptyText) {
    testing::RecordingEventSink sink;
    Table table{{u"PROGMSG_IIS_CREATEVROOT", u"Configuring IIS..."}};
    ProgressMessage(&sink, table, u"PROGMSG_IIS_CREATEVROOT", u"");
    EXPECT_EQ(sink.progressTexts, std::vector<qm::wstring>{u""});
}

TEST(ProgressMessageTest, AnUnknownIdentifierIsAddedWithAnEmptyText) {
    testing::RecordingEventSink sink;
    Table table;
    ProgressMessage(&sink, table, u"PROGMSG_NEW", u"x");
    EXPECT_EQ(sink.progressTexts, std::vector<qm::wstring>{u""});
    ASSERT_TRUE(table.contains(u"PROGMSG_NEW"));
    EXPECT_EQ(table.at(u"PROGMSG_NEW"), u"");
}

TEST(ProgressMessageTest, AMessageFromTheSettingsFileCannotBreakTheFormatting) {
    testing::RecordingEventSink sink;
    Table table{{u"ID", u"%d%% of %s and %s %n"}};
    ProgressMessage(&sink, table, u"ID", u"Site");
    EXPECT_EQ(sink.progressTexts, std::vector<qm::wstring>{u"Site% of %s and %s %n"});
}

TEST(ProgressMessageTest, WithoutASinkNothingIsShownOrStored) {
    Table table;
    EXPECT_EQ(ProgressMessage(nullptr, table, u"ID", u"x"), 0);
    EXPECT_TRUE(table.empty());
}

TEST(ProgressMessageTest, AFailureIsLoggedWithTheIdentifierAndTheInsertion) {
    testing::RecordingEventSink sink;
    sink.throwOnProgress = true;
    Table table{{u"PROGMSG_IIS_REMOVESITE", u"Removing %s"}};
    EXPECT_EQ(ProgressMessage(&sink, table, u"PROGMSG_IIS_REMOVESITE", u"Shop"), 0);
    EXPECT_EQ(sink.logLines,
              std::vector<qm::wstring>{
                  u"Exception caught in ProgressMessage for sMessageToFormat "
                  u"'PROGMSG_IIS_REMOVESITE' and the following sStringToInsert: Shop"});
}

TEST(UserCancelledTest, OnlyTheAnswerTwoCancels) {
    for (const int32_t answer : {0, 1, 3, -2}) {
        testing::RecordingEventSink sink;
        sink.cancelAnswer = answer;
        EXPECT_FALSE(UserCancelled(&sink)) << answer;
    }
    testing::RecordingEventSink sink;
    sink.cancelAnswer = 2;
    EXPECT_TRUE(UserCancelled(&sink));
    EXPECT_FALSE(UserCancelled(nullptr));
}

}  // namespace
}  // namespace webrig::host
