#include "platform/sim/programs/command_line.h"

#include <gtest/gtest.h>

namespace webrig::sim {
namespace {

using Strings = std::vector<qm::wstring>;

TEST(CommandLine, ExecutableCandidatesFollowCreateProcess) {
    struct Case {
        const char16_t* line;
        Strings candidates;
    };
    const Case cases[] = {
        {u"\"C:\\Program Files\\a b.exe\" x", {u"C:\\Program Files\\a b.exe"}},
        {u"\"C:\\dir\\netsh\" http", {u"C:\\dir\\netsh.exe"}},
        {u"\"C:\\unclosed", {u"C:\\unclosed.exe"}},
        {u"C:\\Program Files\\sub dir\\program name",
         {u"C:\\Program.exe", u"C:\\Program Files\\sub.exe",
          u"C:\\Program Files\\sub dir\\program.exe",
          u"C:\\Program Files\\sub dir\\program name.exe"}},
        {u"  netsh  http", {u"netsh.exe", u"netsh  http.exe"}},
        {u"C:\\v4.0\\aspnet_regiis.exe -ir",
         {u"C:\\v4.0\\aspnet_regiis.exe", u"C:\\v4.0\\aspnet_regiis.exe -ir"}},
        {u"C:\\v4.0\\tool", {u"C:\\v4.0\\tool.exe"}},
        {u"   ", {}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(ExecutableCandidates(c.line), c.candidates) << qm::to_utf8(c.line);
    }
}

TEST(CommandLine, ArgumentsAreSplitAsTheCRuntimeSplitsThem) {
    struct Case {
        const char16_t* line;
        Strings arguments;
    };
    const Case cases[] = {
        {u"\"C:\\a b\\netsh.exe\" http add sslcert certhash=\"AB CD\" appid={1}",
         {u"http", u"add", u"sslcert", u"certhash=AB CD", u"appid={1}"}},
        {u"tool a\\\\\\\"b \"c\"\"d\" e\\f\\\\", {u"a\\\"b", u"c\"d", u"e\\f\\\\"}},
        {u"tool \"x\\\\\" y", {u"x\\", u"y"}},
        {u"tool \t ", {}},
        {u"tool \"\"", {u""}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(ProgramArguments(c.line), c.arguments) << qm::to_utf8(c.line);
    }
}

}  // namespace
}  // namespace webrig::sim
