// The ASP.NET registration commands on a simulated 64-bit machine.

#include <gtest/gtest.h>

#include <fstream>

#include "controller/flow_fixture.h"
#include "platform/sim/machine/machine_layout.h"
#include "testing/case_name.h"

namespace webrig::testing {
namespace {

using ::testing::Return;

constexpr char16_t kPrefix[] = u"Configuring ASP .NET version: ";

struct AspCase {
    const char* what;
    const char16_t* version;
    const char16_t* registration;
    bool bitnessSafe;
    const char16_t* path;
    int32_t result;
    const char16_t* commands;  // the options after the tool path, one run each, "|" between
    const char16_t* lastLine;  // when no command ends the log
};

const qm::wstring kTool4 =
    u"C:\\Windows\\Microsoft.NET\\Framework64\\v4.0.30319\\aspnet_regiis.exe";

class AspVersionTest : public FlowTest, public ::testing::WithParamInterface<AspCase> {};

TEST_P(AspVersionTest, RunsTheRegistrationToolOfTheRightFramework) {
    const AspCase& c = GetParam();
    EXPECT_CALL(backend(), CheckAspNetBitness(qm::wstring(u"Pool"), qm::wstring(u"64")))
        .WillOnce(Return(c.bitnessSafe));
    EXPECT_EQ(slots().SetAspversion(c.path, c.version, u"64", u"Pool", c.registration), c.result);
    std::vector<qm::wstring> commands;
    for (const qm::wstring& line : sink.logLines) {
        if (line.starts_with(kPrefix)) {
            commands.push_back(line.substr(std::size(kPrefix) - 1));
        }
    }
    std::vector<qm::wstring> expected;
    for (qm::wstring_view rest = c.commands; !rest.empty();) {
        const size_t bar = std::min(rest.find(u'|'), rest.size());
        expected.push_back(kTool4 + qm::wstring(rest.substr(0, bar)));
        rest.remove_prefix(std::min(bar + 1, rest.size()));
    }
    EXPECT_EQ(commands, expected);
    std::ifstream journal(sim::ProcessJournalPath(temp.path()));
    const auto started = std::count(std::istreambuf_iterator<char>(journal), {}, '\n');
    EXPECT_EQ(started, static_cast<ptrdiff_t>(expected.size()));
    if (c.lastLine != nullptr) {
        EXPECT_EQ(sink.logLines.back(), c.lastLine);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Versions, AspVersionTest,
    ::testing::Values(
        AspCase{"recursive", u"4.0.30319", u"1", true, u"/LM/W3SVC/1/Root/shop", 0,
                u" -ir| -k W3SVC/1/Root/shop| -s W3SVC/1/Root/shop", nullptr},
        AspCase{"non_recursive", u"4.0.30319", u"NonRecursive", true, u"/LM/W3SVC/1/Root", 0,
                u" -ir| -k W3SVC/1/Root| -sn W3SVC/1/Root", nullptr},
        AspCase{"bitness_refused", u"2.0.50727", u"", false, u"/LM/W3SVC/1/Root",
                qm::status::asp_net_version_failed, u"",
                u"SetAspversion: machine is 64-bit and IIS running in a bit mode other than the "
                u"currently selected mode"},
        AspCase{"one_one_keeps_the_32_bit_framework", u"1.1.4322", u"", false, u"/LM/W3SVC/1/Root",
                qm::status::asp_net_version_failed, u"",
                u"Could not find path while setting ASP .NET version: "
                u"C:\\Windows\\Microsoft.NET\\Framework\\v1.1.4322\\aspnet_regiis.exe"},
        AspCase{"path_without_target", u"4.0.30319", u"", true, u"/LM/Other/1",
                qm::status::asp_net_version_failed, u" -ir",
                u"SetAspversion had an exception with the path '/LM/Other/1' and the following "
                u"version: 4.0.30319"}),
    NameFromWhat());

}  // namespace
}  // namespace webrig::testing
