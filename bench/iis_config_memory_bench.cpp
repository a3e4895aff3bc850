// How much memory a loaded configuration file takes, against the file's size: the real IIS 10
// file grown to many sites and pools, read by a process's first manager, its sites and pools
// collections merged. Every allocation of this program is counted (operator new is replaced
// here), so the figures are the heap bytes the configuration system asked for. See README.md.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <new>
#include <string>

#include "grown_app_host.h"

namespace {

std::atomic<size_t> g_live{0};
std::atomic<size_t> g_peak{0};

void Count(void* block) {
    const size_t live = g_live.fetch_add(malloc_usable_size(block), std::memory_order_relaxed) +
                        malloc_usable_size(block);
    size_t peak = g_peak.load(std::memory_order_relaxed);
    while (live > peak && !g_peak.compare_exchange_weak(peak, live, std::memory_order_relaxed)) {
    }
}

void* Allocate(size_t size, size_t alignment) {
    void* block =
        alignment <= alignof(std::max_align_t)
            ? std::malloc(size ? size : 1)
            : std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
    if (!block) {
        throw std::bad_alloc();
    }
    Count(block);
    return block;
}

void Release(void* block) noexcept {
    if (block) {
        g_live.fetch_sub(malloc_usable_size(block), std::memory_order_relaxed);
        std::free(block);
    }
}

// Kilobytes of a "VmRSS:" or "VmHWM:" line of /proc/self/status.
double StatusKb(const std::string& key) {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind(key, 0) == 0) {
            return std::stod(line.substr(key.size()));
        }
    }
    return 0;
}

}  // namespace

void* operator new(size_t size) {
    return Allocate(size, 0);
}
void* operator new[](size_t size) {
    return Allocate(size, 0);
}
void* operator new(size_t size, std::align_val_t alignment) {
    return Allocate(size, static_cast<size_t>(alignment));
}
void* operator new[](size_t size, std::align_val_t alignment) {
    return Allocate(size, static_cast<size_t>(alignment));
}
void operator delete(void* block) noexcept {
    Release(block);
}
void operator delete[](void* block) noexcept {
    Release(block);
}
void operator delete(void* block, size_t) noexcept {
    Release(block);
}
void operator delete[](void* block, size_t) noexcept {
    Release(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
    Release(block);
}
void operator delete[](void* block, std::align_val_t) noexcept {
    Release(block);
}
void operator delete(void* block, size_t, std::align_val_t) noexcept {
    Release(block);
}
void operator delete[](void* block, size_t, std::align_val_t) noexcept {
    Release(block);
}

namespace {

using webrig::bench::GrownMachine;
using webrig::platform::ConfigElement;
using webrig::platform::ElementCollection;

uint32_t CountEntries(webrig::platform::AdminManager& manager, std::u16string_view section) {
    std::shared_ptr<ConfigElement> element;
    std::shared_ptr<ElementCollection> collection;
    uint32_t count = 0;
    if (manager.GetAdminSection(section, u"MACHINE/WEBROOT/APPHOST", element) != 0 ||
        element->GetCollection(collection) != 0 || collection->Count(count) != 0) {
        return 0;
    }
    return count;
}

// peak: the most the heap held above where it started, while the file was read and both
// collections merged; held: what stays once the manager is gone (the cached document and what
// is kept with it). Resident figures are the process's, from /proc: peak resident set growth.
void BM_LoadedFileMemory(benchmark::State& state) {
    const auto sites = static_cast<uint32_t>(state.range(0));
    GrownMachine machine(static_cast<int>(sites));
    const double file = static_cast<double>(machine.text().size());
    double peak = 0;
    double held = 0;
    double residentPeak = 0;
    for (auto _ : state) {
        malloc_trim(0);
        std::ofstream("/proc/self/clear_refs") << "5";  // resets VmHWM to the current VmRSS
        const double residentBefore = StatusKb("VmRSS:");
        const size_t before = g_live.load();
        g_peak.store(before);
        {
            webrig::sim::iis7::ConfigFileCache cache;
            {
                auto configuration = machine.NewConfiguration(cache);
                auto manager = webrig::bench::NewManager(*configuration);
                if (CountEntries(*manager, u"system.applicationHost/sites") != sites ||
                    CountEntries(*manager, u"system.applicationHost/applicationPools") != sites) {
                    state.SkipWithError("the collections cannot be read");
                }
            }
            held = static_cast<double>(g_live.load() - before);
            peak = static_cast<double>(g_peak.load() - before);
            residentPeak = (StatusKb("VmHWM:") - residentBefore) * 1024;
        }
    }
    state.counters["file_MB"] = file / 1e6;
    state.counters["peak_MB"] = peak / 1e6;
    state.counters["held_MB"] = held / 1e6;
    state.counters["peak_per_file"] = peak / file;
    state.counters["held_per_file"] = held / file;
    state.counters["rss_peak_per_file"] = residentPeak / file;
}

}  // namespace

BENCHMARK(BM_LoadedFileMemory)->Arg(10000)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
