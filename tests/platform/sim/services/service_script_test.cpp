#include "platform/sim/services/service_script.h"

#include <gtest/gtest.h>

#include <tuple>

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

TEST(ServicesFile, ErrorsNameTheLineAndTheProblem) {
    const std::tuple<const char*, int, const char*> cases[] = {
        {"[]", 1, "services.json must hold an object"},
        {"{\n\"colour\": 1}", 2, "unknown key \"colour\""},
        {"{\n\"services\": []}", 2, "\"services\" must be an object, not an array"},
        {"{\"services\": {\n\"W3SVC\": {\"state\": \"asleep\"}}}", 2,
         "one of stopped, startPending"},
        {"{\"services\": {\n\"W3SVC\": {\"startType\": \"boot\"}}}", 2,
         "one of auto, demand, disabled"},
        {"{\"services\": {\"W3SVC\": {\n\"waitHintMs\": -1}}}", 2,
         "\"waitHintMs\" in service \"W3SVC\" must be a whole number"},
        {"{\"services\": {\n\"W3SVC\": {\"waitHintMs\": 1.5}}}", 2, "whole number"},
        {"{\"services\": {\n\"W3SVC\": {\"waitHintMs\": 86400001}}}", 2, "from 0 to 86400000"},
        {"{\"services\": {\n\"W3SVC\": {\"ignoresStop\": 1}}}", 2, "must be a boolean"},
        {"{\"services\": {\n\"W3SVC\": {\"pendingMs\": 1}}}", 2,
         "unknown key \"pendingMs\" in service \"W3SVC\""},
        {"{\"services\": {\"W3SVC\": {},\n\"w3svc\": {}}}", 2, "listed twice"},
        {"{\"services\": {\n\"a\\\\b\": {}}}", 2, "not a service name"},
        {"{\"services\": {\"W3SVC\": {\n\"state\": ", 2, "not valid JSON"},
    };
    for (const auto& [text, line, message] : cases) {
        try {
            ParseServicesFile(text, "services.json");
            ADD_FAILURE() << "accepted " << text;
        } catch (const MachineError& error) {
            EXPECT_EQ(error.line(), line) << error.what();
            EXPECT_NE(std::string(error.what()).find(message), std::string::npos) << error.what();
        }
    }
}

}  // namespace
}  // namespace webrig::sim
