#include "support/status_codes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace {

using qm::status_info;

// Every code webrig's behaviour defines: its own negative codes by area, the unreadable settings
// file, "already exists" for virtual directories and for application pools, and user cancel.
const std::vector<int32_t>& DefinedCodes() {
    static const std::vector<int32_t> codes = [] {
        std::vector<int32_t> all = {0, 2, 183, 1602, static_cast<int32_t>(0x800700B7u)};
        const std::vector<int32_t> negative = {
            // service control and initialization
            -1101, -1102, -1103, -1104, -1105, -1106, -1108,
            // metabase not available
            -1121, -1122,
            // record setters
            -1202, -1203, -1204, -1206, -1207, -1208, -1209, -1210, -1212, -1213, -1214, -1215,
            -1216, -1217, -1218, -1223, -1224, -1225, -1226, -1227, -1228, -1229, -1230,
            // settings loader
            -1301, -1302, -1303, -1304, -1305, -1306, -1307, -1308, -1309, -1310, -1311, -1312,
            -1314, -1315, -1316, -1317, -1318, -1319, -1320, -1321, -1322, -1323, -1324, -1325,
            // controller and backends
            -2005, -2007, -2008, -2009, -2102, -2103, -2104, -2105, -2106, -2109, -2110, -2112,
            -2113, -2115, -2116, -2160, -2162, -2164, -2165, -2166, -2167, -2168, -2169, -2170,
            -2171, -2172, -2174, -2175, -2176, -2177, -2201, -2252, -2253, -2303, -2309, -2313,
            -2352, -2353, -2401, -2405, -2406};
        all.insert(all.end(), negative.begin(), negative.end());
        return all;
    }();
    return codes;
}

TEST(StatusTable, ListsExactlyTheDefinedCodes) {
    std::vector<int32_t> listed;
    for (const status_info& info : qm::all_statuses()) {
        listed.push_back(info.code);
    }
    std::vector<int32_t> expected = DefinedCodes();
    std::sort(listed.begin(), listed.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(listed, expected);
}

TEST(StatusTable, CodesAreUnique) {
    std::set<int32_t> seen;
    for (const status_info& info : qm::all_statuses()) {
        EXPECT_TRUE(seen.insert(info.code).second) << "code " << info.code << " listed twice";
    }
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

TEST(StatusTable, FindStatusFindsEveryEntry) {
    for (const status_info& info : qm::all_statuses()) {
        const status_info* found = qm::find_status(info.code);
        ASSERT_NE(found, nullptr) << info.code;
        EXPECT_EQ(found, &info);
    }
}

TEST(StatusTable, FindStatusKnowsNothingElse) {
    const int32_t unknown[] = {1,
                               -1,
                               -1107,
                               -1201,
                               -1313,
                               -2006,
                               -2407,
                               5,
                               1223,
                               static_cast<int32_t>(0x80070005u),
                               static_cast<int32_t>(0x80004005u),
                               static_cast<int32_t>(0x8007000Eu),
                               INT32_MIN,
                               INT32_MAX};
    for (const int32_t code : unknown) {
        EXPECT_EQ(qm::find_status(code), nullptr) << code;
    }
}

TEST(StatusTable, NamedConstantsCarryTheirCodes) {
    EXPECT_EQ(qm::status::success, 0);
    EXPECT_EQ(qm::status::settings_file_unreadable, 2);
    EXPECT_EQ(qm::status::item_already_exists, 183);
    EXPECT_EQ(qm::status::user_cancelled, 1602);
    EXPECT_EQ(static_cast<uint32_t>(qm::status::app_pool_already_exists), 0x800700B7u);
    const status_info* pool = qm::find_status(qm::status::app_pool_already_exists);
    ASSERT_NE(pool, nullptr);
    EXPECT_EQ(pool->name, "app_pool_already_exists");
}

}  // namespace
