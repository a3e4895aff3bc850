#include "platform/sim/services/service_script.h"

#include <vector>

#include "platform/sim/machine/json_file.h"

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

class ServicesReader {
  public:
    explicit ServicesReader(const JsonFile& file) : m_file(file) {}

    // A duration, or null for "never ends".
    std::optional<uint32_t> ReadDuration(const JsonMember& member) const {
        if (member.value.is_null()) {
            return std::nullopt;
        }
        return m_file.ReadCount(member);
    }

    template <typename Table>
    auto ReadName(const JsonMember& member, const Table& table) const {
        m_file.ExpectType(member, Json::value_t::string);
        const auto& text = member.value.get_ref<const std::string&>();
        std::string names;
        for (const auto& entry : table) {
            if (entry.name == text) {
                return entry;
            }
            names += names.empty() ? "" : ", ";
            names += entry.name;
        }
        m_file.Fail(member.at, member.name + " must be one of " + names + ", not \"" + text + "\"");
    }

    ServiceScript ReadService(const JsonMember& service) const {
        m_file.ExpectType(service, Json::value_t::object);
        ServiceScript script;
        const std::string context = " in service \"" + service.key + "\"";
        for (const JsonMember& member : m_file.Members(service.at, service.name, context)) {
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
                script.waitHintMs = m_file.ReadCount(member, kMaxWaitHintMs);
            } else if (key == "checkPointEveryMs") {
                script.checkPointEveryMs = m_file.ReadCount(member);
            } else if (key == "openError") {
                script.openError = m_file.ReadCount(member);
            } else if (key == "queryError") {
                script.queryError = m_file.ReadCount(member);
            } else if (key == "startError") {
                script.startError = m_file.ReadCount(member);
            } else if (key == "stopError") {
                script.stopError = m_file.ReadCount(member);
            } else if (key == "ignoresStop") {
                m_file.ExpectType(member, Json::value_t::boolean);
                script.ignoresStop = member.value.get<bool>();
            } else {
                m_file.Fail(member.at, "unknown key " + member.name);
            }
        }
        return script;
    }

  private:
    const JsonFile& m_file;
};

Json Duration(const std::optional<uint32_t>& duration) {
    return duration ? Json(*duration) : Json();
}

}  // namespace

ServicesFile ParseServicesFile(std::string_view json, const std::filesystem::path& file) {
    const JsonFile document(json, file);
    const ServicesReader reader(document);
    ServicesFile services;
    for (const JsonMember& member : document.Members(Json::json_pointer(), "services.json")) {
        if (member.key == "managerError") {
            services.managerError = document.ReadCount(member);
        } else if (member.key == "services") {
            document.ExpectType(member, Json::value_t::object);
            for (const JsonMember& service : document.Members(member.at, member.name)) {
                const qm::wstring name = qm::from_utf8(service.key);
                if (name.empty() || name.find_first_of(u"/\\") != qm::wstring::npos) {
                    document.Fail(service.at, service.name + " is not a service name");
                }
                if (!services.services.emplace(name, reader.ReadService(service)).second) {
                    document.Fail(service.at, "the service " + service.name +
                                                  " is listed twice (names ignore case)");
                }
            }
        } else {
            document.Fail(member.at, "unknown key " + member.name);
        }
    }
    return services;
}

std::string FormatServicesFile(const ServicesFile& services) {
    Json list = Json::object();
    for (const auto& [name, script] : services.services) {
        Json& service = list[qm::to_utf8(name)] = Json::object();
        for (const auto& state : kStates) {
            if (state.state == script.state) {
                service["state"] = state.name;
            }
        }
        for (const auto& type : kStartTypes) {
            if (type.type == script.startType) {
                service["startType"] = type.name;
            }
        }
        service["startPendingMs"] = Duration(script.startPendingMs);
        service["stopPendingMs"] = Duration(script.stopPendingMs);
        service["waitHintMs"] = script.waitHintMs;
        service["checkPointEveryMs"] = script.checkPointEveryMs;
        service["openError"] = script.openError;
        service["queryError"] = script.queryError;
        service["startError"] = script.startError;
        service["stopError"] = script.stopError;
        service["ignoresStop"] = script.ignoresStop;
    }
    Json document = Json::object();
    document["managerError"] = services.managerError;
    document["services"] = std::move(list);
    return FormatJson(document);
}

}  // namespace webrig::sim
