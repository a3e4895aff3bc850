#include "platform/sim/machine/machine_config.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <vector>

#include "platform/sim/machine/json_file.h"
#include "platform/sim/machine/machine_error.h"
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

// Reads each key of machine.json; a wrong value fails naming the key and its line.
class ConfigReader {
  public:
    explicit ConfigReader(const JsonFile& file) : m_file(file) {}

    const std::string& ReadString(const JsonMember& member) const {
        m_file.ExpectType(member, Json::value_t::string);
        return member.value.get_ref<const std::string&>();
    }

    platform::OsVersion ReadVersion(const JsonMember& member) const {
        const std::string& text = ReadString(member);
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
            m_file.Fail(member.at,
                        "\"osVersion\" must look like \"10.0.17763\" "
                        "(major.minor or major.minor.build), not \"" +
                            text + "\"");
        }
        return {parts[0], parts[1], parts.size() == 3 ? parts[2] : 0};
    }

    ProcessorArchitecture ReadArchitecture(const JsonMember& member) const {
        const std::string& text = ReadString(member);
        const qm::wstring name = qm::from_utf8(text);
        for (const auto& known : kArchitectures) {
            if (qm::iequals(name, qm::widen_ascii(known.name))) {
                return known.architecture;
            }
        }
        m_file.Fail(member.at,
                    "\"processorArchitecture\" must be x86, amd64 or arm64, not \"" + text + "\"");
    }

    uint32_t ReadCodePage(const JsonMember& member) const {
        m_file.ExpectType(member, Json::value_t::number_unsigned);
        const std::optional<uint32_t> codePage = WholeNumber(member.value, 0xFFFF);
        if (!codePage) {
            m_file.Fail(member.at, "\"ansiCodePage\" must be a code page number");
        }
        for (const uint32_t supported : kSupportedCodePages) {
            if (*codePage == supported) {
                return *codePage;
            }
        }
        m_file.Fail(member.at, "ANSI code page " + std::to_string(*codePage) +
                                   " is not supported; the simulated machine knows only 1252");
    }

    qm::wstring ReadWindowsDirectory(const JsonMember& member) const {
        const std::string& text = ReadString(member);
        qm::wstring path = qm::from_utf8(text);
        while (path.size() > 3 && path.back() == u'\\') {
            path.pop_back();
        }
        if (!IsFolderOnDriveC(path)) {
            m_file.Fail(member.at,
                        "\"windowsDirectory\" must be a folder on drive C, such as "
                        "\"C:\\\\Windows\", not \"" +
                            text + "\"");
        }
        return path;
    }

    IisVersion ReadIisVersion(const JsonMember& member) const {
        const std::string& text = ReadString(member);
        for (const auto& known : kIisVersions) {
            if (text == known.name) {
                return known.version;
            }
        }
        std::string names;
        for (const auto& known : kIisVersions) {
            names += names.empty() ? "" : ", ";
            names += known.name;
        }
        m_file.Fail(member.at, "\"iisVersion\" must be one of " + names + ", not \"" + text + "\"");
    }

    std::vector<IisFeature> ReadIisFeatures(const JsonMember& member) const {
        m_file.ExpectType(member, Json::value_t::array);
        std::vector<IisFeature> features;
        for (const Json& item : member.value) {
            const KnownIisFeature* found = nullptr;
            for (const auto& known : kIisFeatures) {
                if (item.is_string() && item.get_ref<const std::string&>() == known.name) {
                    found = &known;
                }
            }
            if (found == nullptr) {
                m_file.Fail(member.at, "\"iisFeatures\" may hold only \"metabaseCompatibility\"");
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

    const JsonFile& m_file;
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
    const JsonFile document(json, file);
    const ConfigReader reader(document);
    MachineConfig config;
    bool hasVersion = false;
    bool hasArchitecture = false;
    bool hasCodePage = false;
    for (const JsonMember& member : document.Members(Json::json_pointer(), "machine.json")) {
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
            document.Fail(member.at, "unknown key " + member.name);
        }
    }
    const auto requireKey = [&](bool present, const char* key) {
        if (!present) {
            document.Fail(Json::json_pointer(), std::string("the key \"") + key + "\" is missing");
        }
    };
    requireKey(hasVersion, "osVersion");
    requireKey(hasArchitecture, "processorArchitecture");
    requireKey(hasCodePage, "ansiCodePage");
    return config;
}

std::string FormatMachineConfig(const MachineConfig& config) {
    const auto& version = config.osVersion;
    Json document = Json::object();
    document["osVersion"] = std::to_string(version.major) + "." + std::to_string(version.minor) +
                            "." + std::to_string(version.build);
    document["processorArchitecture"] = ArchitectureName(config.architecture);
    document["ansiCodePage"] = config.ansiCodePage;
    document["windowsDirectory"] = qm::to_utf8(config.windowsDirectory);
    for (const auto& known : kIisVersions) {
        if (known.version == config.iisVersion) {
            document["iisVersion"] = known.name;
        }
    }
    Json& features = document["iisFeatures"] = Json::array();
    for (const auto& known : kIisFeatures) {
        if (std::find(config.iisFeatures.begin(), config.iisFeatures.end(), known.feature) !=
            config.iisFeatures.end()) {
            features.push_back(known.name);
        }
    }
    return FormatJson(document);
}

}  // namespace webrig::sim
