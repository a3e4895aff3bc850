// What reading the configuration costs above the parse, on the real IIS 10 file of
// tests/data/iis-samples grown to many sites and pools: the first section read of a process, and
// a fresh manager that enumerates a collection of a file it has cached. See README.md.

#include <benchmark/benchmark.h>

#include <map>

#include "grown_app_host.h"

namespace {

using webrig::bench::GrownMachine;
using webrig::platform::ConfigElement;
using webrig::platform::ConfigProperty;
using webrig::platform::ElementCollection;

constexpr std::u16string_view kAppHost = u"MACHINE/WEBROOT/APPHOST";

GrownMachine& MachineWith(int sites) {
    static std::map<int, std::unique_ptr<GrownMachine>> machines;
    auto& machine = machines[sites];
    if (!machine) {
        machine = std::make_unique<GrownMachine>(sites);
    }
    return *machine;
}

// A process's first GetAdminSection: the file is read, parsed and checked.
void BM_FirstSectionRead(benchmark::State& state) {
    GrownMachine& machine = MachineWith(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        state.PauseTiming();
        auto cache = std::make_unique<webrig::sim::iis7::ConfigFileCache>();
        state.ResumeTiming();
        auto configuration = machine.NewConfiguration(*cache);
        auto manager = webrig::bench::NewManager(*configuration);
        std::shared_ptr<ConfigElement> sites;
        if (manager->GetAdminSection(u"system.applicationHost/sites", kAppHost, sites) != 0) {
            state.SkipWithError("GetAdminSection failed");
        }
        state.PauseTiming();
        sites.reset();
        manager.reset();
        configuration.reset();
        cache.reset();
        state.ResumeTiming();
    }
    state.counters["bytes"] = static_cast<double>(machine.text().size());
}

std::shared_ptr<ElementCollection> Pools(webrig::platform::AdminManager& manager) {
    std::shared_ptr<ConfigElement> section;
    std::shared_ptr<ElementCollection> pools;
    if (manager.GetAdminSection(u"system.applicationHost/applicationPools", kAppHost, section) !=
            0 ||
        section->GetCollection(pools) != 0) {
        return nullptr;
    }
    return pools;
}

// A fresh manager on the cached, unchanged file: how many pools there are.
void BM_FreshManagerCountPools(benchmark::State& state) {
    GrownMachine& machine = MachineWith(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        auto manager = machine.NewManager();
        std::shared_ptr<ElementCollection> pools = Pools(*manager);
        uint32_t count = 0;
        if (!pools || pools->Count(count) != 0 || count != state.range(0)) {
            state.SkipWithError("the pools cannot be counted");
        }
    }
}

// A fresh manager on the cached, unchanged file: every pool's name, as a search for one reads
// them.
void BM_FreshManagerEnumeratePools(benchmark::State& state) {
    GrownMachine& machine = MachineWith(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        auto manager = machine.NewManager();
        std::shared_ptr<ElementCollection> pools = Pools(*manager);
        uint32_t count = 0;
        if (!pools || pools->Count(count) != 0 || count != state.range(0)) {
            state.SkipWithError("the pools cannot be counted");
            break;
        }
        for (uint32_t i = 0; i < count; ++i) {
            std::shared_ptr<ConfigElement> pool;
            std::shared_ptr<ConfigProperty> name;
            std::u16string text;
            if (pools->Item(i, pool) != 0 || pool->GetPropertyByName(u"name", name) != 0 ||
                name->GetStringValue(text) != 0) {
                state.SkipWithError("a pool cannot be read");
                break;
            }
            benchmark::DoNotOptimize(text);
        }
    }
}

}  // namespace

BENCHMARK(BM_FirstSectionRead)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FreshManagerCountPools)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FreshManagerEnumeratePools)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
