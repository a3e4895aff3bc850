// Loads arbitrary bytes as the settings file of an installation, on a simulated machine with a
// host engine that resolves values, and checks that the load ends with a status webrig defines
// and leaves a bag whose records agree with the maps that hold them.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>

#include "settings/iis_pro_ini_loader.h"
#include "settings/uninstall_information.h"
#include "support/status_codes.h"
#include "testing/temp_machine.h"
#include "testing/test_host.h"

namespace {

using namespace webrig;

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

struct World {
    World() : host(temp.machine()) {
        host.recordCalls = false;  // a log of every call of every run would grow without end
        host.strings[u"IDS_SITE"] = u"Shop";
        host.strings[u"IDS_DIR"] = u"C:\\inetpub\\";
        host.strings[u"IDS_EMPTY"] = u"";
        host.strings[u"IDS_LONG"] = qm::wstring(700, u'L');
        host.substitutions[u"[INSTALLDIR]"] = u"C:\\Program Files\\Shop";
        host.substitutions[u"[PORT]"] = u"8080";
        host.substituteToNull.insert(u"[NOTHING]");
        auto& registry = temp.machine().registry();
        platform::ScopedRegKey key(registry);
        registry.CreateKey(platform::kLocalMachine, settings::UninstallInfoKeyPath(u"{P}"),
                           platform::key_access::all_access, key.receive());
        registry.SetValue(key.get(), u"SiteNo", platform::RegValue::String(u"42"));
        std::filesystem::create_directories(temp.path() / "drive_c" / "Temp");
    }
    testing::TempMachine temp;
    testing::TestHost host;
};

World& TheWorld() {
    static World world;
    return world;
}

void CheckBag(const CIISPropertyBag& bag) {
    for (const auto& [name, component] : bag.components) {
        Require(component->Name == name);
        for (const auto& [key, vroot] : component->vroots) {
            Require(vroot->Key == key);
            // Only a vroot whose key was refused stops before it learns its component.
            Require(vroot->Component == name || key.empty());
        }
        for (const auto& [key, website] : component->componentWebsites) {
            Require(website != nullptr && website->Key == key);
        }
    }
    for (const auto& [key, website] : bag.websites) {
        Require(website != nullptr && website->Key == key);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    World& world = TheWorld();
    std::ofstream(world.temp.path() / "drive_c" / "Temp" / "setup.ini", std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));

    CIISPropertyBag bag;
    CIISProIniLoader loader(world.temp.machine(), u"C:\\Temp\\setup.ini", world.host.module(),
                            world.host.context());
    const int32_t status = loader.Load(bag);
    Require(status == 0 || qm::find_status(status) != nullptr);
    Require(status != qm::status::settings_file_unreadable);  // the file is always there
    CheckBag(bag);
    return 0;
}
