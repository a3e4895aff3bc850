#include "platform/sim/machine/machine_config.h"

#include <gtest/gtest.h>

#include <tuple>

#include "platform/sim/machine/machine_error.h"

namespace webrig::sim {
namespace {

using platform::ProcessorArchitecture;

TEST(MachineConfig, ReadsTheShortFormsAPersonWrites) {
    const MachineConfig config = ParseMachineConfig(R"({
        "osVersion": "6.1",
        "processorArchitecture": "X86",
        "ansiCodePage": 1252.0,
        "windowsDirectory": "C:\\WINNT\\"
    })",
                                                    "machine.json");
    EXPECT_EQ(config.osVersion.major, 6u);
    EXPECT_EQ(config.osVersion.minor, 1u);
    EXPECT_EQ(config.osVersion.build, 0u);
    EXPECT_EQ(config.architecture, ProcessorArchitecture::intel);
    EXPECT_EQ(config.windowsDirectory, u"C:\\WINNT");
    EXPECT_EQ(config.iisVersion, (IisVersion{10, 0}));
}

TEST(MachineConfig, ReadsWhatItWrites) {
    MachineConfig config;
    config.osVersion = {6, 3, 9600};
    config.architecture = ProcessorArchitecture::arm64;
    config.windowsDirectory = u"C:\\Windows Server\\\u00e9";
    for (const IisVersion version : {IisVersion{7, 5}, IisVersion{0, 0}}) {
        config.iisVersion = version;
        config.iisFeatures = {IisFeature::metabaseCompatibility};
        const MachineConfig read = ParseMachineConfig(FormatMachineConfig(config), "m.json");
        EXPECT_EQ(read.osVersion.major, 6u);
        EXPECT_EQ(read.osVersion.minor, 3u);
        EXPECT_EQ(read.osVersion.build, 9600u);
        EXPECT_EQ(read.architecture, ProcessorArchitecture::arm64);
        EXPECT_EQ(read.windowsDirectory, config.windowsDirectory);
        EXPECT_EQ(read.iisVersion, version);
        EXPECT_EQ(read.iisFeatures, config.iisFeatures);
    }
}

// Which machines can create the IIS 6 admin base object.
TEST(MachineConfig, MetabaseExistsBeforeIis7OrWithTheCompatibilityFeature) {
    struct Case {
        IisVersion version;
        bool feature;
        bool metabase;
    };
    for (const Case& c :
         {Case{{0, 0}, true, false}, Case{{5, 1}, false, true}, Case{{6, 0}, false, true},
          Case{{7, 0}, false, false}, Case{{7, 5}, true, true}, Case{{10, 0}, false, false},
          Case{{10, 0}, true, true}}) {
        MachineConfig config;
        config.iisVersion = c.version;
        if (c.feature) {
            config.iisFeatures.push_back(IisFeature::metabaseCompatibility);
        }
        EXPECT_EQ(config.HasMetabase(), c.metabase) << c.version.major << "." << c.version.minor;
    }
}

// A machine.json with osVersion on line 2, processorArchitecture on 3, ansiCodePage on 4, where
// `key` takes `value`; any other key goes on line 5.
std::string ConfigWith(const std::string& key, const std::string& value) {
    std::string text =
        "{\n\"osVersion\": \"10.0\",\n\"processorArchitecture\": \"amd64\",\n"
        "\"ansiCodePage\": 1252";
    const size_t at = text.find("\"" + key + "\"");
    if (at == std::string::npos) {
        return text + ",\n\"" + key + "\": " + value + "\n}";
    }
    const size_t start = text.find(": ", at) + 2;
    return text.replace(start, text.find_first_of(",", start) - start, value) + "\n}";
}

TEST(MachineConfig, ErrorsNameTheFileLineAndKey) {
    const std::string version = "\"osVersion\": \"10.0\",\n";
    const std::tuple<std::string, int, const char*> cases[] = {
        {ConfigWith("colour", "\"blue\""), 5, "unknown key \"colour\""},
        {ConfigWith("ansiCodePage", "\"1252\""), 4,
         "\"ansiCodePage\" must be a number, not a string"},
        {ConfigWith("ansiCodePage", "932"), 4, "932 is not supported"},
        {ConfigWith("ansiCodePage", "1252.5"), 4, "code page number"},
        {ConfigWith("windowsDirectory", "\"D:\\\\Windows\""), 5, "folder on drive C"},
        {ConfigWith("windowsDirectory", "\"C:\\\\a\\\\..\\\\b\""), 5, "folder on drive C"},
        {ConfigWith("osVersion", "\"10\""), 2, "major.minor"},
        {ConfigWith("osVersion", "\"10.0.1.2\""), 2, "major.minor"},
        {ConfigWith("osVersion", "\"10.x\""), 2, "major.minor"},
        {ConfigWith("processorArchitecture", "\"ia64\""), 3, "x86, amd64 or arm64"},
        {ConfigWith("iisVersion", "\"9.0\""), 5, "must be one of none, 4.0"},
        {ConfigWith("iisFeatures", "[\"ftp\"]"), 5, "may hold only"},
        {ConfigWith("iisFeatures", "[],"), 6, "not valid JSON"},
        {"\n{\n" + version + "\"ansiCodePage\": 1252}", 2, "\"processorArchitecture\" is missing"},
        {"\n[]", 2, "machine.json must hold an object"},
    };
    for (const auto& [json, line, messagePart] : cases) {
        try {
            ParseMachineConfig(json, "/m/machine.json");
            ADD_FAILURE() << "accepted: " << json;
        } catch (const MachineError& error) {
            EXPECT_EQ(error.file(), "/m/machine.json");
            const std::string what = error.what();
            EXPECT_EQ(what.rfind("/m/machine.json:" + std::to_string(line) + ": ", 0), 0u) << what;
            EXPECT_NE(what.find(messagePart), std::string::npos) << what;
        }
    }
}

}  // namespace
}  // namespace webrig::sim
