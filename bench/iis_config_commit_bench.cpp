// What one setting costs the runtime on IIS 7+: a fresh administration manager, one attribute
// of one site changed, CommitChanges. Side by side with the floor of any store that keeps the
// file as XML: the same document, already parsed, serialised by pugixml and written durably.
// And what a fresh manager costs on an unchanged file, against parsing it. See README.md.

#include <benchmark/benchmark.h>

#include <map>
#include <pugixml.hpp>
#include <sstream>

#include "platform/sim/iis7/xml_reader.h"
#include "platform/sim/machine/atomic_file.h"
#include "testing/iis_config_machine.h"

namespace {

using webrig::platform::AdminManager;
using webrig::platform::ConfigElement;
using webrig::platform::ElementCollection;
using webrig::platform::Variant;
using webrig::testing::IisConfigMachine;

constexpr std::u16string_view kAppHost = u"MACHINE/WEBROOT/APPHOST";

// applicationHost.config with `siteCount` sites, each with a root application, a virtual
// directory and a binding, laid out as IIS writes them.
std::string AppHostWithSites(int siteCount) {
    std::string text = webrig::testing::TestAppHostConfig();
    std::string sites;
    for (int i = 2; i < siteCount + 2; ++i) {
        const std::string n = std::to_string(i);
        sites += "            <site name=\"Site " + n + "\" id=\"" + n +
                 "\" serverAutoStart=\"true\">\r\n"
                 "                <application path=\"/\" applicationPool=\"DefaultAppPool\">\r\n"
                 "                    <virtualDirectory path=\"/\" "
                 "physicalPath=\"C:\\inetpub\\site" +
                 n +
                 "\" />\r\n"
                 "                </application>\r\n"
                 "                <bindings>\r\n"
                 "                    <binding protocol=\"http\" bindingInformation=\"*:" +
                 std::to_string(8000 + i) +
                 ":\" />\r\n"
                 "                </bindings>\r\n"
                 "            </site>\r\n";
    }
    const std::string anchor = "            <siteDefaults";
    text.insert(text.find(anchor), sites);
    return text;
}

IisConfigMachine& MachineWith(int siteCount) {
    static std::map<int, std::unique_ptr<IisConfigMachine>> machines;
    auto& machine = machines[siteCount];
    if (!machine) {
        machine = std::make_unique<IisConfigMachine>(AppHostWithSites(siteCount),
                                                     webrig::testing::SchemaSource::schemaFolder);
    }
    return *machine;
}

void Require(bool condition, benchmark::State& state, const char* what) {
    if (!condition) {
        state.SkipWithError(what);
    }
}

void BM_CommitOneAttribute(benchmark::State& state) {
    const int siteCount = static_cast<int>(state.range(0));
    IisConfigMachine& machine = MachineWith(siteCount);
    // Carried over from earlier runs on the same machine, so that every put changes the value
    // it finds: a put of the value already there commits without writing.
    static std::map<int, uint32_t> rounds;
    uint32_t& round = rounds[siteCount];
    for (auto _ : state) {
        std::unique_ptr<AdminManager> manager = machine.NewManager();
        std::shared_ptr<ConfigElement> sites;
        std::shared_ptr<ElementCollection> collection;
        std::shared_ptr<ConfigElement> site;
        std::shared_ptr<webrig::platform::ConfigProperty> property;
        const bool ok =
            manager->GetAdminSection(u"system.applicationHost/sites", kAppHost, sites) == 0 &&
            sites->GetCollection(collection) == 0 &&
            collection->Item(1 + round % static_cast<uint32_t>(siteCount), site) == 0 &&
            site->GetPropertyByName(u"serverAutoStart", property) == 0 &&
            property->PutValue(Variant{(round / static_cast<uint32_t>(siteCount)) % 2 == 1}) == 0 &&
            manager->CommitChanges() == 0;
        Require(ok, state, "the commit failed");
        ++round;
    }
    state.counters["bytes"] = static_cast<double>(machine.ReadAppHost().size());
}

void BM_FloorPugixmlSerializeAndWrite(benchmark::State& state) {
    const int siteCount = static_cast<int>(state.range(0));
    IisConfigMachine& machine = MachineWith(siteCount);
    const std::string text = machine.ReadAppHost();
    pugi::xml_document document;
    Require(
        document.load_buffer(text.data(), text.size(), pugi::parse_full | pugi::parse_ws_pcdata),
        state, "pugixml cannot parse the file");
    std::vector<pugi::xml_node> sites;
    for (pugi::xml_node site : document.child("configuration")
                                   .child("system.applicationHost")
                                   .child("sites")
                                   .children("site")) {
        sites.push_back(site);
    }
    const auto path = machine.AppHostPath().parent_path() / "floor.config";
    uint32_t round = 0;
    for (auto _ : state) {
        sites[round % sites.size()]
            .attribute("serverAutoStart")
            .set_value((round / sites.size()) % 2 == 1 ? "true" : "false");
        std::ostringstream out;
        document.save(out, "", pugi::format_raw | pugi::format_no_declaration);
        const std::string bytes = out.str();
        Require(webrig::sim::WriteFileAtomically(
                    path, std::as_bytes(std::span(bytes.data(), bytes.size()))),
                state, "the write failed");
        ++round;
    }
}

void BM_FreshManagerOnUnchangedFile(benchmark::State& state) {
    IisConfigMachine& machine = MachineWith(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        std::unique_ptr<AdminManager> manager = machine.NewManager();
        std::shared_ptr<ConfigElement> sites;
        Require(manager->GetAdminSection(u"system.applicationHost/sites", kAppHost, sites) == 0,
                state, "GetAdminSection failed");
        benchmark::DoNotOptimize(sites);
    }
}

void BM_ParseFile(benchmark::State& state) {
    IisConfigMachine& machine = MachineWith(static_cast<int>(state.range(0)));
    const auto text = std::make_shared<const std::string>(machine.ReadAppHost());
    for (auto _ : state) {
        benchmark::DoNotOptimize(webrig::sim::iis7::ReadXml(text));
    }
}

void BM_ParseFilePugixml(benchmark::State& state) {
    IisConfigMachine& machine = MachineWith(static_cast<int>(state.range(0)));
    const std::string text = machine.ReadAppHost();
    for (auto _ : state) {
        pugi::xml_document document;
        benchmark::DoNotOptimize(document.load_buffer(text.data(), text.size(),
                                                      pugi::parse_full | pugi::parse_ws_pcdata));
    }
}

}  // namespace

BENCHMARK(BM_CommitOneAttribute)->Arg(10)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_FloorPugixmlSerializeAndWrite)
    ->Arg(10)
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_FreshManagerOnUnchangedFile)
    ->Arg(10)
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ParseFile)->Arg(10)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ParseFilePugixml)->Arg(10)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);
BENCHMARK_MAIN();
