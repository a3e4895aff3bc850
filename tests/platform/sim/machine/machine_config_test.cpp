#include "platform/sim/machine/machine_config.h"

#include <gtest/gtest.h>

#include "platform/sim/machine/machine_error.h"

namespace webrig::sim {
namespace {

using platform::ProcessorArchitecture;

TEST(MachineConfig, DefaultsAreWindowsServer2019OnAmd64) {
    const MachineConfig config;
    EXPECT_EQ(config.osVersion.major, 10u);
    EXPECT_EQ(config.osVersion.minor, 0u);
    EXPECT_EQ(config.osVersion.build, 17763u);
    EXPECT_EQ(config.architecture, ProcessorArchitecture::amd64);
    EXPECT_EQ(config.ansiCodePage, 1252u);
    EXPECT_EQ(config.windowsDirectory, u"C:\\Windows");
    EXPECT_TRUE(config.Is64Bit());
}

TEST(MachineConfig, ReadsEveryKey) {
    const MachineConfig config = ParseMachineConfig(R"({
        "osVersion": "6.1",
        "processorArchitecture": "X86",
        "ansiCodePage": 1252,
        "windowsDirectory": "C:\\WINNT\\"
    })",
                                                    "machine.json");
    EXPECT_EQ(config.osVersion.major, 6u);
    EXPECT_EQ(config.osVersion.minor, 1u);
    EXPECT_EQ(config.osVersion.build, 0u);
    EXPECT_EQ(config.architecture, ProcessorArchitecture::intel);
    EXPECT_FALSE(config.Is64Bit());
    EXPECT_EQ(config.windowsDirectory, u"C:\\WINNT");
}

TEST(MachineConfig, IisVersionAndFeaturesRoundTrip) {
    MachineConfig config;
    config.iisVersion = {7, 5};
    config.iisFeatures = {IisFeature::metabaseCompatibility};
    const MachineConfig read = ParseMachineConfig(FormatMachineConfig(config), "m.json");
    EXPECT_EQ(read.iisVersion, (IisVersion{7, 5}));
    EXPECT_TRUE(read.HasMetabase());
    config.iisVersion = {0, 0};
    EXPECT_FALSE(ParseMachineConfig(FormatMachineConfig(config), "m.json").iisVersion.Installed());
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

TEST(MachineConfig, Arm64IsSixtyFourBit) {
    const MachineConfig config = ParseMachineConfig(
        R"({"osVersion": "10.0.22621", "processorArchitecture": "arm64", "ansiCodePage": 1252})",
        "m.json");
    EXPECT_EQ(config.architecture, ProcessorArchitecture::arm64);
    EXPECT_TRUE(config.Is64Bit());
    EXPECT_EQ(config.windowsDirectory, u"C:\\Windows");
}

TEST(MachineConfig, FormattedTextReadsBackEqual) {
    MachineConfig config;
    config.osVersion = {6, 3, 9600};
    config.architecture = ProcessorArchitecture::intel;
    config.windowsDirectory = u"C:\\Windows Server";
    const MachineConfig read = ParseMachineConfig(FormatMachineConfig(config), "m.json");
    EXPECT_EQ(read.osVersion.major, 6u);
    EXPECT_EQ(read.osVersion.minor, 3u);
    EXPECT_EQ(read.osVersion.build, 9600u);
    EXPECT_EQ(read.architecture, ProcessorArchitecture::intel);
    EXPECT_EQ(read.windowsDirectory, u"C:\\Windows Server");
}

struct BadConfig {
    const char* json;
    int line;
    const char* messagePart;
};

class MachineConfigErrors : public ::testing::TestWithParam<BadConfig> {};

TEST_P(MachineConfigErrors, NameTheFileKeyAndLine) {
    const BadConfig& bad = GetParam();
    try {
        ParseMachineConfig(bad.json, "/m/machine.json");
        FAIL() << "accepted: " << bad.json;
    } catch (const MachineError& error) {
        EXPECT_EQ(error.file(), "/m/machine.json");
        EXPECT_EQ(error.line(), bad.line) << error.what();
        const std::string what = error.what();
        EXPECT_EQ(what.rfind("/m/machine.json:" + std::to_string(bad.line) + ": ", 0), 0u) << what;
        EXPECT_NE(what.find(bad.messagePart), std::string::npos) << what;
    }
}

#define HEAD "{\n\"osVersion\": \"10.0.17763\",\n\"processorArchitecture\": \"amd64\",\n"
INSTANTIATE_TEST_SUITE_P(
    Malformed, MachineConfigErrors,
    ::testing::Values(
        BadConfig{HEAD "\"ansiCodePage\": 1252,\n\"colour\": \"blue\"\n}", 5,
                  "unknown key \"colour\""},
        BadConfig{HEAD "\"ansiCodePage\": \"1252\"\n}", 4,
                  "\"ansiCodePage\" must be a number, not a string"},
        BadConfig{HEAD "\"ansiCodePage\": 932\n}", 4, "932 is not supported"},
        BadConfig{HEAD "\"ansiCodePage\": 1252.5\n}", 4, "code page number"},
        BadConfig{HEAD "\"ansiCodePage\": 1252,\n\"windowsDirectory\": \"D:\\\\Windows\"\n}", 5,
                  "folder on drive C"},
        BadConfig{HEAD "\"ansiCodePage\": 1252,\n\"windowsDirectory\": \"C:\\\\a\\\\..\\\\b\"\n}",
                  5, "folder on drive C"},
        BadConfig{HEAD "\"ansiCodePage\": 1252,\n\"windowsDirectory\": 7\n}", 5,
                  "must be a string"},
        BadConfig{"{\n\"osVersion\": \"10\",\n\"processorArchitecture\": "
                  "\"amd64\",\n\"ansiCodePage\": 1252}",
                  2, "major.minor"},
        BadConfig{"{\n\"osVersion\": \"10.0.1.2\",\n\"processorArchitecture\": "
                  "\"amd64\",\n\"ansiCodePage\": 1252}",
                  2, "major.minor"},
        BadConfig{"{\n\"osVersion\": \"10.x\",\n\"processorArchitecture\": "
                  "\"amd64\",\n\"ansiCodePage\": 1252}",
                  2, "major.minor"},
        BadConfig{"{\n\"osVersion\": \"10.0\",\n\"processorArchitecture\": "
                  "\"ia64\",\n\"ansiCodePage\": 1252}",
                  3, "x86, amd64 or arm64"},
        BadConfig{"{\n\"osVersion\": \"10.0\",\n\"ansiCodePage\": 1252}", 1,
                  "\"processorArchitecture\" is missing"},
        BadConfig{HEAD "\"ansiCodePage\": 1252,\n\"iisVersion\": \"9.0\"\n}", 5,
                  "must be one of none, 4.0"},
        BadConfig{HEAD "\"ansiCodePage\": 1252,\n\"iisFeatures\": [\"ftp\"]\n}", 5,
                  "may hold only"},
        BadConfig{"\n[]", 2, "must hold an object"},
        BadConfig{"{\n\"osVersion\": \"10.0\",\n\"osVersion\": \"6.1\"}", 3, "duplicate key"}));
#undef HEAD

}  // namespace
}  // namespace webrig::sim
