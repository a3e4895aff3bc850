#include "platform/sim/machine/machine_config.h"

#include <algorithm>
#include <charconv>
#include <vector>

#include "platform/sim/machine/json_file_reader.h"
#include "support/case_insensitive.h"

namespace webrig::sim {
namespace {

using platform::ProcessorArchitecture;

struct KnownArchitecture {
    std::string_view name;
    ProcessorArchitecture architecture;
};

constexpr KnownArchitecture kArchitectures[] = {
    {"x86", ProcessorArchitecture::intel},
    {"amd64", ProcessorArchitecture::amd64},
    {"arm64", ProcessorArchitecture::arm64},
};

struct KnownIisVersion {
    std::string_view name;
    IisVersion version;
};

// The IIS releases there are; "none" is a machine without IIS.
constexpr KnownIisVersion kIisVersions[] = {
    {"none", {0, 0}}, {"4.0", {4, 0}}, {"5.0", {5, 0}}, {"5.1", {5, 1}}, {"6.0", {6, 0}},
    {"7.0", {7, 0}},  {"7.5", {7, 5}}, {"8.0", {8, 0}}, {"8.5", {8, 5}}, {"10.0", {10, 0}},
};

struct KnownIisFeature {
    std::string_view name;
    IisFeature feature;
};

constexpr KnownIisFeature kIisFeatures[] = {
    {"metabaseCompatibility", IisFeature::metabaseCompatibility},
};

// Code pages whose table the simulated process has.
constexpr uint32_t kSupportedCodePages[] = {1252};

class ConfigReader : public JsonFileReader {
  public:
    using JsonFileReader::JsonFileReader;

    platform::OsVersion ReadVersion(const JsonMember& member) const {
        ExpectKind(member, JsonValue::Kind::string);
        const std::string& text = member.value.AsString();
        std::vector<uint32_t> parts;
        size_t start = 0;
        while (true) {
            const size_t dot = text.find('.', start);
            const std::string_view part =
                std::string_view(text).substr(start, dot == std::string::npos ? dot : dot - start);
            uint32_t number = 0;
            const auto [end, error] =
                std::from_chars(part.data(), part.data() + part.size(), number);
            if (part.empty() || error != std::errc{} || end != part.data() + part.size()) {
                parts.clear();
                break;
            }
            parts.push_back(number);
            if (dot == std::string::npos) {
                break;
            }
            start = dot + 1;
        }
        if (parts.size() != 2 && parts.size() != 3) {
            Fail(member.value.line(),
                 "\"osVersion\" must look like \"10.0.17763\" "
                 "(major.minor or major.minor.build), not \"" +
                     text + "\"");
        }
        return {parts[0], parts[1], parts.size() == 3 ? parts[2] : 0};
    }

    ProcessorArchitecture ReadArchitecture(const JsonMember& member) const {
        ExpectKind(member, JsonValue::Kind::string);
        const qm::wstring name = qm::from_utf8(member.value.AsString());
        for (const auto& known : kArchitectures) {
            if (qm::iequals(name, qm::widen_ascii(known.name))) {
                return known.architecture;
            }
        }
        Fail(member.value.line(), "\"processorArchitecture\" must be x86, amd64 or arm64, not \"" +
                                      member.value.AsString() + "\"");
    }

    uint32_t ReadCodePage(const JsonMember& member) const {
        ExpectKind(member, JsonValue::Kind::number);
        const double number = member.value.AsNumber();
        if (!member.value.IsInteger() || number < 0 || number > 0xFFFF) {
            Fail(member.value.line(), "\"ansiCodePage\" must be a code page number");
        }
        const auto codePage = static_cast<uint32_t>(number);
        for (const uint32_t supported : kSupportedCodePages) {
            if (codePage == supported) {
                return codePage;
            }
        }
        Fail(member.value.line(), "ANSI code page " + std::to_string(codePage) +
                                      " is not supported; the simulated machine knows only 1252");
    }

    qm::wstring ReadWindowsDirectory(const JsonMember& member) const {
        ExpectKind(member, JsonValue::Kind::string);
        qm::wstring path = qm::from_utf8(member.value.AsString());
        while (path.size() > 3 && path.back() == u'\\') {
            path.pop_back();
        }
        if (!IsFolderOnDriveC(path)) {
            Fail(member.value.line(),
                 "\"windowsDirectory\" must be a folder on drive C, such as "
                 "\"C:\\\\Windows\", not \"" +
                     member.value.AsString() + "\"");
        }
        return path;
    }

    IisVersion ReadIisVersion(const JsonMember& member) const {
        ExpectKind(member, JsonValue::Kind::string);
        for (const auto& known : kIisVersions) {
            if (member.value.AsString() == known.name) {
                return known.version;
            }
        }
        std::string names;
        for (const auto& known : kIisVersions) {
            names += names.empty() ? "" : ", ";
            names += known.name;
        }
        Fail(member.value.line(), "\"iisVersion\" must be one of " + names + ", not \"" +
                                      member.value.AsString() + "\"");
    }

    std::vector<IisFeature> ReadIisFeatures(const JsonMember& member) const {
        ExpectKind(member, JsonValue::Kind::array);
        std::vector<IisFeature> features;
        for (const JsonValue& item : member.value.AsArray()) {
            const KnownIisFeature* found = nullptr;
            for (const auto& known : kIisFeatures) {
                if (item.kind() == JsonValue::Kind::string && item.AsString() == known.name) {
                    found = &known;
                }
            }
            if (found == nullptr) {
                Fail(item.line(), "\"iisFeatures\" may hold only \"metabaseCompatibility\"");
            }
            if (std::find(features.begin(), features.end(), found->feature) == features.end()) {
                features.push_back(found->feature);
            }
        }
        return features;
    }

  private:
    static bool IsFolderOnDriveC(qm::wstring_view path) {
        if (path.size() < 4 || (path[0] != u'C' && path[0] != u'c') || path[1] != u':' ||
            path[2] != u'\\') {
            return false;
        }
        size_t start = 3;
        while (start <= path.size()) {
            size_t end = path.find(u'\\', start);
            end = end == qm::wstring_view::npos ? path.size() : end;
            const qm::wstring_view part = path.substr(start, end - start);
            if (part.empty() || part == u"." || part == u".." ||
                part.find_first_of(u"/:*?\"<>|") != qm::wstring_view::npos) {
                return false;
            }
            start = end + 1;
        }
        return true;
    }
};

std::string ArchitectureName(ProcessorArchitecture architecture) {
    for (const auto& known : kArchitectures) {
        if (known.architecture == architecture) {
            return std::string(known.name);
        }
    }
    return "unknown";
}

}  // namespace

bool MachineConfig::Is64Bit() const noexcept {
    return architecture == ProcessorArchitecture::amd64 ||
           architecture == ProcessorArchitecture::arm64;
}

bool MachineConfig::HasIisFeature(IisFeature feature) const noexcept {
    return iisVersion.major >= 7 &&
           std::find(iisFeatures.begin(), iisFeatures.end(), feature) != iisFeatures.end();
}

bool MachineConfig::HasMetabase() const noexcept {
    return (iisVersion.Installed() && iisVersion.major < 7) ||
           HasIisFeature(IisFeature::metabaseCompatibility);
}

MachineConfig ParseMachineConfig(std::string_view json, const std::filesystem::path& file) {
    JsonValue document;
    try {
        document = ParseJson(json);
    } catch (const JsonError& error) {
        throw MachineError(file, error.line(), error.what());
    }
    const ConfigReader reader(file);
    if (document.kind() != JsonValue::Kind::object) {
        reader.Fail(document.line(), "machine.json must hold an object");
    }
    MachineConfig config;
    bool hasVersion = false;
    bool hasArchitecture = false;
    bool hasCodePage = false;
    for (const JsonMember& member : document.AsObject()) {
        if (member.key == "osVersion") {
            config.osVersion = reader.ReadVersion(member);
            hasVersion = true;
        } else if (member.key == "processorArchitecture") {
            config.architecture = reader.ReadArchitecture(member);
            hasArchitecture = true;
        } else if (member.key == "ansiCodePage") {
            config.ansiCodePage = reader.ReadCodePage(member);
            hasCodePage = true;
        } else if (member.key == "windowsDirectory") {
            config.windowsDirectory = reader.ReadWindowsDirectory(member);
        } else if (member.key == "iisVersion") {
            config.iisVersion = reader.ReadIisVersion(member);
        } else if (member.key == "iisFeatures") {
            config.iisFeatures = reader.ReadIisFeatures(member);
        } else {
            reader.Fail(member.line, "unknown key \"" + member.key + "\"");
        }
    }
    const auto requireKey = [&](bool present, const char* key) {
        if (!present) {
            reader.Fail(document.line(), std::string("the key \"") + key + "\" is missing");
        }
    };
    requireKey(hasVersion, "osVersion");
    requireKey(hasArchitecture, "processorArchitecture");
    requireKey(hasCodePage, "ansiCodePage");
    return config;
}

std::string FormatMachineConfig(const MachineConfig& config) {
    const auto& version = config.osVersion;
    std::vector<JsonMember> members;
    members.push_back(
        {"osVersion", 0,
         JsonValue::String(std::to_string(version.major) + "." + std::to_string(version.minor) +
                           "." + std::to_string(version.build))});
    members.push_back(
        {"processorArchitecture", 0, JsonValue::String(ArchitectureName(config.architecture))});
    members.push_back({"ansiCodePage", 0, JsonValue::Number(config.ansiCodePage)});
    members.push_back(
        {"windowsDirectory", 0, JsonValue::String(qm::to_utf8(config.windowsDirectory))});
    for (const auto& known : kIisVersions) {
        if (known.version == config.iisVersion) {
            members.push_back({"iisVersion", 0, JsonValue::String(std::string(known.name))});
        }
    }
    std::vector<JsonValue> features;
    for (const auto& known : kIisFeatures) {
        if (std::find(config.iisFeatures.begin(), config.iisFeatures.end(), known.feature) !=
            config.iisFeatures.end()) {
            features.push_back(JsonValue::String(std::string(known.name)));
        }
    }
    members.push_back({"iisFeatures", 0, JsonValue::Array(std::move(features))});
    return WriteJson(JsonValue::Object(std::move(members)));
}

}  // namespace webrig::sim
