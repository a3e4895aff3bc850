// webrig's settings-file parse against libinih reading the same ANSI bytes, on generated projects
// of 1,000 and 10,000 components. See README.md beside this file.

#include <benchmark/benchmark.h>
#include <ini.h>

#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/sim/text/windows_1252.h"
#include "settings/settings_file.h"
#include "testing/generated_project.h"

namespace {

using webrig::testing::GenerateProject;
using webrig::testing::LineEnding;
using webrig::testing::SettingsEncoding;

// The simulated machine's Windows-1252 code page is not on main yet; until it is, the tests'
// stand-in decodes the ANSI files (a table lookup per byte).
using BenchCodePage = webrig::sim::Windows1252;

struct ProjectFiles {
    std::vector<std::byte> ansi;
    std::vector<std::byte> utf16;
    // The ANSI bytes again, zero-terminated for ini_parse_string.
    std::string ansiString;
};

const ProjectFiles& Files(int componentCount) {
    static std::map<int, ProjectFiles> cache;
    auto [it, added] = cache.try_emplace(componentCount);
    if (added) {
        const auto project = GenerateProject(componentCount);
        it->second.ansi = project.Bytes(SettingsEncoding::Windows1252, LineEnding::CrLf);
        it->second.utf16 = project.Bytes(SettingsEncoding::Utf16LeWithBom, LineEnding::CrLf);
        it->second.ansiString.assign(reinterpret_cast<const char*>(it->second.ansi.data()),
                                     it->second.ansi.size());
    }
    return it->second;
}

void ParseWithWebrig(benchmark::State& state, const std::vector<std::byte>& bytes) {
    BenchCodePage ansi;
    for (auto _ : state) {
        auto file = webrig::settings::SettingsFile::Parse(bytes, ansi);
        benchmark::DoNotOptimize(file);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(bytes.size()));
    state.counters["file_bytes"] = static_cast<double>(bytes.size());
}

void BM_WebrigParseAnsi(benchmark::State& state) {
    ParseWithWebrig(state, Files(static_cast<int>(state.range(0))).ansi);
}

void BM_WebrigParseUtf16(benchmark::State& state) {
    ParseWithWebrig(state, Files(static_cast<int>(state.range(0))).utf16);
}

using InihSections = std::unordered_map<std::string, std::unordered_map<std::string, std::string>>;

int StoreInihEntry(void* user, const char* section, const char* name, const char* value) {
    (*static_cast<InihSections*>(user))[section][name] = value;
    return 1;
}

void BM_InihParseAnsi(benchmark::State& state) {
    const std::string& text = Files(static_cast<int>(state.range(0))).ansiString;
    for (auto _ : state) {
        InihSections sections;
        if (ini_parse_string(text.c_str(), StoreInihEntry, &sections) != 0) {
            state.SkipWithError("inih reported an error");
            break;
        }
        benchmark::DoNotOptimize(sections);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(text.size()));
    state.counters["file_bytes"] = static_cast<double>(text.size());
}

}  // namespace

BENCHMARK(BM_WebrigParseAnsi)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_InihParseAnsi)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WebrigParseUtf16)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
