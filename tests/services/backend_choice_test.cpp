#include "services/backend_choice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "testing/case_name.h"
#include "testing/recording_event_sink.h"
#include "testing/temp_machine.h"

namespace webrig::services {
namespace {

using ::testing::ElementsAreArray;

constexpr char16_t kPreference[] =
    u"User legacy object preference is the following: %s . This is based on the value of the "
    u"following property: IISPREFERLEGACYOBJECTS";

qm::wstring PreferenceLine(const qm::wstring& text) {
    qm::wstring line = kPreference;
    return line.replace(line.find(u"%s"), 2, text);
}

struct Case {
    const char* what;
    sim::IisVersion machine;     // what the simulated machine has installed
    bool compatibility;          // its IIS 6 metabase compatibility feature
    int32_t iisMajorVersion;     // what the bag says
    const char16_t* preference;  // "IISPREFERLEGACYOBJECTS"
    bool iis7Objects;
    std::vector<qm::wstring> lines;
};

class UseIis7ObjectsTest : public ::testing::TestWithParam<Case> {};

TEST_P(UseIis7ObjectsTest, ChoosesTheBackend) {
    const Case& c = GetParam();
    sim::MachineConfig config;
    config.iisVersion = c.machine;
    if (c.compatibility) {
        config.iisFeatures.push_back(sim::IisFeature::metabaseCompatibility);
    }
    testing::TempMachine machine(config);
    CIISPropertyBag bag;
    bag.iisMajorVersion = c.iisMajorVersion;
    bag.preferLegacyObjects = c.preference;
    testing::RecordingEventSink sink;
    EXPECT_EQ(UseIis7Objects(bag, machine.machine().comClasses(), &sink), c.iis7Objects);
    EXPECT_THAT(sink.logLines, ElementsAreArray(c.lines));
}

const qm::wstring kBelow7 = u"IIS Version is less than 7, so IIS 7 objects are not available.";
const qm::wstring kNoLegacy = u"This machine does not support legacy objects";

INSTANTIATE_TEST_SUITE_P(
    Cases, UseIis7ObjectsTest,
    ::testing::Values(
        Case{"IIS 6", {6, 0}, false, 6, u"", false, {kBelow7}},
        Case{"no version known", {10, 0}, false, 0, u"", false, {kBelow7}},
        Case{"negative version", {10, 0}, true, -7, u"1", false, {kBelow7}},
        Case{"IIS 10 without the feature", {10, 0}, false, 10, u"1", true, {kNoLegacy}},
        Case{"IIS 7.5 without the feature", {7, 5}, false, 7, u"", true, {kNoLegacy}},
        Case{"IIS 8 preferring the metabase", {8, 0}, true, 8, u"1", false, {PreferenceLine(u"1")}},
        Case{"IIS 10, preference text true",
             {10, 0},
             true,
             10,
             u"true",
             true,
             {PreferenceLine(u"true")}},
        Case{"IIS 10, preference 0", {10, 0}, true, 10, u"0", true, {PreferenceLine(u"0")}},
        Case{"IIS 10, no preference", {10, 0}, true, 10, u"", true, {PreferenceLine(u"")}},
        Case{"IIS 10, preference 01", {10, 0}, true, 10, u"01", true, {PreferenceLine(u"01")}},
        // The bag's version decides, not the machine's: a project that says 6 gets the
        // metabase even where only the compatibility layer provides it.
        Case{"bag says 6 on IIS 10", {10, 0}, true, 6, u"", false, {kBelow7}}),
    webrig::testing::NameFromWhat());

}  // namespace
}  // namespace webrig::services
