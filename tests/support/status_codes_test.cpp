#include "support/status_codes.h"

#include <gtest/gtest.h>

#include <climits>
#include <regex>
#include <set>
#include <string>

namespace {

using qm::status_info;

// The codes webrig may define besides its own negative ones, and the areas those fall into.
bool InADefinedArea(int32_t code) {
    const std::set<int32_t> positive = {0, 2, 183, 1602, static_cast<int32_t>(0x800700B7u)};
    const auto in = [code](int32_t lowest, int32_t highest) {
        return code >= lowest && code <= highest;
    };
    return positive.contains(code) || in(-1108, -1101) || in(-1122, -1121) || in(-1230, -1202) ||
           in(-1325, -1301) || in(-2406, -2005);
}

TEST(StatusTable, CodesAreUniqueAndEachFallsInItsArea) {
    std::set<int32_t> seen;
    for (const status_info& info : qm::all_statuses()) {
        EXPECT_TRUE(seen.insert(info.code).second) << "code " << info.code << " listed twice";
        EXPECT_TRUE(InADefinedArea(info.code)) << info.code;
        EXPECT_EQ(qm::find_status(info.code), &info);
    }
    EXPECT_GE(seen.size(), 100u);
}

TEST(StatusTable, EveryEntryHasASnakeCaseNameAndAMeaning) {
    const std::regex snake_case("[a-z][a-z0-9]*(_[a-z0-9]+)*");
    for (const status_info& info : qm::all_statuses()) {
        SCOPED_TRACE(info.code);
        EXPECT_TRUE(std::regex_match(std::string(info.name), snake_case)) << info.name;
        EXPECT_GE(info.meaning.size(), 10u) << info.meaning;
        EXPECT_FALSE(info.meaning.ends_with('.')) << info.meaning;
    }
}

TEST(StatusTable, NamedAnchorsCarryTheirCodes) {
    EXPECT_EQ(qm::status::success, 0);
    EXPECT_EQ(qm::status::settings_file_unreadable, 2);
    EXPECT_EQ(qm::status::item_already_exists, 183);
    EXPECT_EQ(qm::status::user_cancelled, 1602);
    EXPECT_EQ(static_cast<uint32_t>(qm::status::app_pool_already_exists), 0x800700B7u);
    EXPECT_EQ(qm::status::w3svc_not_running, -1106);
    EXPECT_EQ(qm::status::mime_map_empty, -1230);
    EXPECT_EQ(qm::status::session_timeout_empty, -1306);
    EXPECT_EQ(qm::status::remove_extension_failed, -2406);
    EXPECT_EQ(qm::find_status(-1108)->name, "iis_admin_disabled");
}

// HRESULTs, Win32 codes and the gaps between webrig's own codes have no entry.
TEST(StatusTable, FindStatusKnowsNothingElse) {
    for (const int32_t code : {1, -1, -1107, -1201, -1313, -2006, -2407, 5, 1223, INT32_MIN,
                               INT32_MAX, static_cast<int32_t>(0x80070005u)}) {
        EXPECT_EQ(qm::find_status(code), nullptr) << code;
    }
}

}  // namespace
