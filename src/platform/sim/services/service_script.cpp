#include "platform/sim/services/service_script.h"

#include <vector>

#include "platform/sim/machine/json_file_reader.h"

namespace webrig::sim {
namespace {

struct StateName {
    std::string_view name;
    uint32_t state;
};

constexpr StateName kStates[] = {
    {"stopped", 1},         {"startPending", 2}, {"stopPending", 3}, {"running", 4},
    {"continuePending", 5}, {"pausePending", 6}, {"paused", 7},
};

struct StartTypeName {
    std::string_view name;
    StartType type;
};

constexpr StartTypeName kStartTypes[] = {
    {"auto", StartType::automatic},
    {"demand", StartType::demand},
    {"disabled", StartType::disabled},
};

constexpr uint32_t kMaxWaitHintMs = 86'400'000;

class ServicesReader : public JsonFileReader {
  public:
    using JsonFileReader::JsonFileReader;

    uint32_t ReadCount(const JsonMember& member, uint32_t maximum = 0xFFFFFFFFu) const {
        ExpectKind(member, JsonValue::Kind::number);
        const double number = member.value.AsNumber();
        if (!member.value.IsInteger() || number < 0 || number > maximum) {
            Fail(member.value.line(), "\"" + member.key + "\" must be a whole number from 0 to " +
                                          std::to_string(maximum));
        }
        return static_cast<uint32_t>(number);
    }

    // A duration, or null for "never ends".
    std::optional<uint32_t> ReadDuration(const JsonMember& member) const {
        if (member.value.kind() == JsonValue::Kind::null) {
            return std::nullopt;
        }
        return ReadCount(member);
    }

    template <typename Table>
    auto ReadName(const JsonMember& member, const Table& table) const {
        ExpectKind(member, JsonValue::Kind::string);
        std::string names;
        for (const auto& entry : table) {
            if (entry.name == member.value.AsString()) {
                return entry;
            }
            names += names.empty() ? "" : ", ";
            names += entry.name;
        }
        Fail(member.value.line(), "\"" + member.key + "\" must be one of " + names + ", not \"" +
                                      member.value.AsString() + "\"");
    }

    ServiceScript ReadService(const JsonMember& service) const {
        ExpectKind(service, JsonValue::Kind::object);
        ServiceScript script;
        for (const JsonMember& member : service.value.AsObject()) {
            const std::string& key = member.key;
            if (key == "state") {
                script.state = ReadName(member, kStates).state;
            } else if (key == "startType") {
                script.startType = ReadName(member, kStartTypes).type;
            } else if (key == "startPendingMs") {
                script.startPendingMs = ReadDuration(member);
            } else if (key == "stopPendingMs") {
                script.stopPendingMs = ReadDuration(member);
            } else if (key == "waitHintMs") {
                // A day at most: a caller that waits by the hint must come to an end.
                script.waitHintMs = ReadCount(member, kMaxWaitHintMs);
            } else if (key == "checkPointEveryMs") {
                script.checkPointEveryMs = ReadCount(member);
            } else if (key == "openError") {
                script.openError = ReadCount(member);
            } else if (key == "queryError") {
                script.queryError = ReadCount(member);
            } else if (key == "startError") {
                script.startError = ReadCount(member);
            } else if (key == "stopError") {
                script.stopError = ReadCount(member);
            } else if (key == "ignoresStop") {
                ExpectKind(member, JsonValue::Kind::boolean);
                script.ignoresStop = member.value.AsBool();
            } else {
                Fail(member.line, "unknown key \"" + key + "\" in service \"" + service.key + "\"");
            }
        }
        return script;
    }
};

JsonValue Duration(const std::optional<uint32_t>& duration) {
    return duration ? JsonValue::Number(*duration) : JsonValue();
}

}  // namespace

ServicesFile ParseServicesFile(std::string_view json, const std::filesystem::path& file) {
    JsonValue document;
    try {
        document = ParseJson(json);
    } catch (const JsonError& error) {
        throw MachineError(file, error.line(), error.what());
    }
    const ServicesReader reader(file);
    if (document.kind() != JsonValue::Kind::object) {
        reader.Fail(document.line(), "services.json must hold an object");
    }
    ServicesFile services;
    for (const JsonMember& member : document.AsObject()) {
        if (member.key == "managerError") {
            services.managerError = reader.ReadCount(member);
        } else if (member.key == "services") {
            reader.ExpectKind(member, JsonValue::Kind::object);
            for (const JsonMember& service : member.value.AsObject()) {
                const qm::wstring name = qm::from_utf8(service.key);
                if (name.empty() || name.find_first_of(u"/\\") != qm::wstring::npos) {
                    reader.Fail(service.line, "\"" + service.key + "\" is not a service name");
                }
                if (!services.services.emplace(name, reader.ReadService(service)).second) {
                    reader.Fail(service.line, "the service \"" + service.key +
                                                  "\" is listed twice (names ignore case)");
                }
            }
        } else {
            reader.Fail(member.line, "unknown key \"" + member.key + "\"");
        }
    }
    return services;
}

std::string FormatServicesFile(const ServicesFile& services) {
    std::vector<JsonMember> list;
    for (const auto& [name, script] : services.services) {
        std::vector<JsonMember> members;
        for (const auto& state : kStates) {
            if (state.state == script.state) {
                members.push_back({"state", 0, JsonValue::String(std::string(state.name))});
            }
        }
        for (const auto& type : kStartTypes) {
            if (type.type == script.startType) {
                members.push_back({"startType", 0, JsonValue::String(std::string(type.name))});
            }
        }
        members.push_back({"startPendingMs", 0, Duration(script.startPendingMs)});
        members.push_back({"stopPendingMs", 0, Duration(script.stopPendingMs)});
        members.push_back({"waitHintMs", 0, JsonValue::Number(script.waitHintMs)});
        members.push_back({"checkPointEveryMs", 0, JsonValue::Number(script.checkPointEveryMs)});
        members.push_back({"openError", 0, JsonValue::Number(script.openError)});
        members.push_back({"queryError", 0, JsonValue::Number(script.queryError)});
        members.push_back({"startError", 0, JsonValue::Number(script.startError)});
        members.push_back({"stopError", 0, JsonValue::Number(script.stopError)});
        members.push_back({"ignoresStop", 0, JsonValue::Bool(script.ignoresStop)});
        list.push_back({qm::to_utf8(name), 0, JsonValue::Object(std::move(members))});
    }
    std::vector<JsonMember> top;
    top.push_back({"managerError", 0, JsonValue::Number(services.managerError)});
    top.push_back({"services", 0, JsonValue::Object(std::move(list))});
    return WriteJson(JsonValue::Object(std::move(top)));
}

}  // namespace webrig::sim
