// A whole settings load, as QMIISInitialize does it: the file read from the simulated machine's
// disk, decoded, parsed and turned into the property bag, for generated projects of 1,000 and
// 10,000 components. See README.md beside this file.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <map>

#include "settings/iis_pro_ini_loader.h"
#include "testing/generated_project.h"
#include "testing/temp_machine.h"
#include "testing/test_host.h"

namespace {

using webrig::testing::GenerateProject;
using webrig::testing::LineEnding;
using webrig::testing::SettingsEncoding;

webrig::testing::TempMachine& Machine() {
    static webrig::testing::TempMachine machine;
    return machine;
}

// Writes the project once and returns its Windows path on the machine.
qm::wstring ProjectFile(int componentCount, SettingsEncoding encoding) {
    static std::map<std::pair<int, int>, qm::wstring> written;
    const auto key = std::make_pair(componentCount, static_cast<int>(encoding));
    if (const auto found = written.find(key); found != written.end()) {
        return found->second;
    }
    const std::string name = "load" + std::to_string(componentCount) + "_" +
                             std::to_string(static_cast<int>(encoding)) + ".ini";
    const auto folder = Machine().path() / "drive_c" / "Temp";
    std::filesystem::create_directories(folder);
    const auto bytes = GenerateProject(componentCount).Bytes(encoding, LineEnding::CrLf);
    std::ofstream(folder / name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    return written[key] = u"C:\\Temp\\" + qm::widen_ascii(name);
}

void Load(benchmark::State& state, SettingsEncoding encoding, bool withHost) {
    const int components = static_cast<int>(state.range(0));
    const qm::wstring path = ProjectFile(components, encoding);
    webrig::sim::Machine& machine = Machine().machine();
    std::unique_ptr<webrig::testing::TestHost> host;
    if (withHost) {
        // Every resolved value goes through the host's string table and substitution.
        host = std::make_unique<webrig::testing::TestHost>(machine);
        host->recordCalls = false;
        host->substitutions[u"[INSTALLDIR]"] = u"C:\\Program Files\\Shop";
        host->strings[u"IDS_SHOP"] = u"Shop";
    }
    for (auto _ : state) {
        CIISPropertyBag bag;
        CIISProIniLoader loader(machine, path, host ? host->module() : webrig::platform::kNoModule,
                                host ? host->context() : 0);
        if (loader.Load(bag) != 0 || bag.components.size() != static_cast<size_t>(components)) {
            state.SkipWithError("the generated project did not load");
            break;
        }
        benchmark::DoNotOptimize(bag);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * components);
    state.counters["file_bytes"] = static_cast<double>(std::filesystem::file_size(
        Machine().path() / "drive_c" / "Temp" / qm::to_utf8(path.substr(8))));
}

void BM_LoadAnsi(benchmark::State& state) {
    Load(state, SettingsEncoding::Windows1252, false);
}
void BM_LoadUtf16(benchmark::State& state) {
    Load(state, SettingsEncoding::Utf16LeWithBom, false);
}
void BM_LoadUtf16WithHost(benchmark::State& state) {
    Load(state, SettingsEncoding::Utf16LeWithBom, true);
}

}  // namespace

BENCHMARK(BM_LoadAnsi)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadUtf16)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadUtf16WithHost)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
