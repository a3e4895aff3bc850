#include "platform/sim/services/service_script.h"

#include <gtest/gtest.h>

#include "platform/sim/machine/machine_error.h"

namespace webrig::sim {
namespace {

TEST(ServicesFile, ReadsEveryKeyAndFormatsBackEqual) {
    const ServicesFile read = ParseServicesFile(R"({
        "managerError": 5,
        "services": {
            "W3SVC": {"state": "paused", "startType": "disabled", "startPendingMs": null,
                      "stopPendingMs": 250, "waitHintMs": 3000, "checkPointEveryMs": 100,
                      "openError": 6, "queryError": 1, "startError": 1069, "stopError": 1061,
                      "ignoresStop": true},
            "IISADMIN": {"state": "stopPending"}
        }
    })",
                                                "services.json");
    EXPECT_EQ(read.managerError, 5u);
    const ServiceScript& w3svc = read.services.at(u"w3svc");  // names ignore case
    EXPECT_EQ(w3svc.state, 7u);
    EXPECT_EQ(w3svc.startType, StartType::disabled);
    EXPECT_FALSE(w3svc.startPendingMs.has_value());
    EXPECT_EQ(w3svc.stopPendingMs, 250u);
    EXPECT_EQ(w3svc.waitHintMs, 3000u);
    EXPECT_EQ(w3svc.checkPointEveryMs, 100u);
    EXPECT_EQ(w3svc.openError, 6u);
    EXPECT_EQ(w3svc.queryError, 1u);
    EXPECT_EQ(w3svc.startError, 1069u);
    EXPECT_EQ(w3svc.stopError, 1061u);
    EXPECT_TRUE(w3svc.ignoresStop);
    EXPECT_EQ(read.services.at(u"IISADMIN").state, 3u);
    EXPECT_EQ(ParseServicesFile(FormatServicesFile(read), "again.json"), read);
}

struct BadFile {
    const char* text;
    int line;
    const char* message;
};

class ServicesFileErrors : public ::testing::TestWithParam<BadFile> {};

TEST_P(ServicesFileErrors, NameTheLineAndTheProblem) {
    try {
        ParseServicesFile(GetParam().text, "services.json");
        FAIL() << "accepted " << GetParam().text;
    } catch (const MachineError& error) {
        EXPECT_EQ(error.line(), GetParam().line);
        EXPECT_NE(std::string(error.what()).find(GetParam().message), std::string::npos)
            << error.what();
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ServicesFileErrors,
    ::testing::Values(
        BadFile{"[]", 1, "must hold an object"},
        BadFile{"{\n\"colour\": 1}", 2, "unknown key \"colour\""},
        BadFile{"{\"services\": {\n\"W3SVC\": {\"state\": \"asleep\"}}}", 2,
                "one of stopped, startPending"},
        BadFile{"{\"services\": {\n\"W3SVC\": {\"startType\": \"boot\"}}}", 2,
                "one of auto, demand, disabled"},
        BadFile{"{\"services\": {\n\"W3SVC\": {\"waitHintMs\": -1}}}", 2, "whole number"},
        BadFile{"{\"services\": {\n\"W3SVC\": {\"waitHintMs\": 1.5}}}", 2, "whole number"},
        BadFile{"{\"services\": {\n\"W3SVC\": {\"waitHintMs\": 86400001}}}", 2,
                "from 0 to 86400000"},
        BadFile{"{\"services\": {\n\"W3SVC\": {\"ignoresStop\": 1}}}", 2, "must be a boolean"},
        BadFile{"{\"services\": {\n\"W3SVC\": {\"pendingMs\": 1}}}", 2,
                "unknown key \"pendingMs\" in service \"W3SVC\""},
        BadFile{"{\"services\": {\"W3SVC\": {},\n\"w3svc\": {}}}", 2, "listed twice"},
        BadFile{"{\"services\": {\n\"a\\\\b\": {}}}", 2, "not a service name"},
        BadFile{"{\"services\": {\"W3SVC\": {\n\"state\": ", 2, ""}));

}  // namespace
}  // namespace webrig::sim
