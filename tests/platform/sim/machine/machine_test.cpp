#include "platform/sim/machine/machine.h"

#include <gtest/gtest.h>

#include <optional>

#include "platform/sim/machine/machine_error.h"
#include "platform/sim/machine/machine_layout.h"
#include "testing/file_bytes.h"
#include "testing/temp_folder.h"
#include "testing/temp_machine.h"

namespace webrig::sim {
namespace {

using platform::kLocalMachine;
using platform::RegKey;
namespace key_access = platform::key_access;

TEST(Machine, CreateMakesAFreshWindowsServer2019) {
    testing::TempMachine temp;
    Machine& machine = temp.machine();
    EXPECT_TRUE(std::filesystem::is_directory(DriveCPath(temp.path()) / "Windows" / "System32"));
    EXPECT_TRUE(machine.files().PathExists(u"C:\\WINDOWS\\system32"));
    EXPECT_EQ(machine.system().SystemDirectory(), u"C:\\Windows\\system32");
    RegKey key{};
    for (const char16_t* hive : {u"SOFTWARE", u"SYSTEM", u"SOFTWARE\\WOW6432Node"}) {
        EXPECT_EQ(machine.registry().OpenKey(kLocalMachine, hive,
                                             key_access::read | key_access::wow64_64key, key),
                  0u);
    }
    const auto reg = testing::ReadBytes(LocalMachineRegPath(temp.path()));
    ASSERT_GE(reg.size(), 2u);
    EXPECT_EQ(reg[0], std::byte{0xFF});
    EXPECT_EQ(reg[1], std::byte{0xFE});
}

TEST(Machine, CreateFollowsTheConfiguredWindows) {
    MachineConfig config;
    config.osVersion = {5, 2, 3790};
    config.architecture = platform::ProcessorArchitecture::intel;
    config.windowsDirectory = u"C:\\WINNT";
    testing::TempMachine temp(config);
    EXPECT_TRUE(std::filesystem::is_directory(DriveCPath(temp.path()) / "WINNT" / "System32"));
    platform::SystemInfo& system = temp.Reopen().system();
    EXPECT_EQ(system.SystemDirectory(), u"C:\\WINNT\\system32");
    EXPECT_EQ(system.Version().build, 3790u);
    EXPECT_EQ(system.NativeArchitecture(), platform::ProcessorArchitecture::intel);
}

TEST(Machine, CreateRefusesToOverwriteAMachine) {
    testing::TempMachine temp;
    const auto json = testing::ReadBytes(MachineJsonPath(temp.path()));
    EXPECT_THROW(Machine::Create(temp.path(), {}), MachineError);
    EXPECT_EQ(testing::ReadBytes(MachineJsonPath(temp.path())), json);
}

struct BrokenMachine {
    const char* what;
    std::filesystem::path (*file)(const std::filesystem::path&);
    std::optional<std::string> text;  // nullopt: the file or folder is removed
    int line;
};

TEST(Machine, OpenReportsWhatIsWrongAndWritesNothing) {
    const BrokenMachine cases[] = {
        {"no machine.json", &MachineJsonPath, std::nullopt, 0},
        {"malformed machine.json", &MachineJsonPath, "{\n\"osVersion\": \"10.0\",\n\"bogus\": 1\n}",
         3},
        {"malformed services.json", &ServicesJsonPath, "{\"services\": {\n\"W3SVC\": 1}}", 2},
        {"no registry", &LocalMachineRegPath, std::nullopt, 0},
        {"malformed registry", &LocalMachineRegPath,
         "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\SOFTWARE]\n\"a\"=hex:0\n",
         4},
        {"no drive", &DriveCPath, std::nullopt, 0},
    };
    for (const BrokenMachine& broken : cases) {
        const testing::TempFolder folder;
        Machine::Create(folder.path(), {});
        const auto file = broken.file(folder.path());
        if (broken.text) {
            testing::WriteBytes(file, testing::Bytes(*broken.text));
        } else {
            std::filesystem::remove_all(file);
        }
        try {
            Machine::Open(folder.path());
            ADD_FAILURE() << "opened with " << broken.what;
        } catch (const MachineError& error) {
            EXPECT_EQ(error.file(), file) << broken.what;
            EXPECT_EQ(error.line(), broken.line) << broken.what << ": " << error.what();
        }
        EXPECT_EQ(std::filesystem::exists(file), broken.text.has_value()) << broken.what;
        if (broken.text) {
            EXPECT_EQ(testing::ReadBytes(file), testing::Bytes(*broken.text)) << broken.what;
        }
    }
}

}  // namespace
}  // namespace webrig::sim

namespace webrig::sim {
namespace {

// A fresh machine has the IIS services its IIS installs, and its admin base class where the
// metabase is, whichever process opens it later.
TEST(Machine, CreateInstallsTheServicesAndClassesOfItsIis) {
    struct Case {
        IisVersion version;
        bool compatibility;
        bool w3svc;
        bool iisAdmin;
    };
    for (const Case& c : {Case{{0, 0}, false, false, false}, Case{{6, 0}, false, true, true},
                          Case{{7, 5}, false, true, false}, Case{{10, 0}, false, true, false},
                          Case{{10, 0}, true, true, true}}) {
        MachineConfig config;
        config.iisVersion = c.version;
        if (c.compatibility) {
            config.iisFeatures.push_back(IisFeature::metabaseCompatibility);
        }
        testing::TempMachine temp(config);
        Machine& machine = temp.Reopen();
        const ServicesFile services = machine.simServices().Snapshot();
        const std::string what = std::to_string(c.version.major) + (c.compatibility ? "+" : "");
        EXPECT_EQ(services.services.contains(u"W3SVC"), c.w3svc) << what;
        EXPECT_EQ(services.services.contains(u"IISADMIN"), c.iisAdmin) << what;
        if (c.w3svc) {
            EXPECT_EQ(services.services.at(u"W3SVC").state, platform::service_state::running);
        }
        EXPECT_EQ(machine.comClasses().ProbeAdminBaseClassFactory() == 0, c.iisAdmin) << what;
    }
}

}  // namespace
}  // namespace webrig::sim
