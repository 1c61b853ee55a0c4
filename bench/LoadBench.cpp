// What a load and a look-up cost, and how that grows.
#include "bench/LibraryText.h"
#include "hdnt/hdnt.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>
#include <memory>

namespace {

std::unique_ptr<HDNTLibrary> load(const std::string& text) {
    NtlFreeScannerMem();
    auto library = std::make_unique<HDNTLibrary>(nullptr);
    if (library->parseString(text) != 0) std::abort();
    library->finalize();
    return library;
}

void report(benchmark::State& state, const std::string& text) {
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
    state.counters["lines"] = static_cast<double>(std::count(text.begin(), text.end(), '\n'));
}

// Text to finalized library. The argument is the number of blocks, at 39 lines each.
void Load(benchmark::State& state) {
    const std::string text = bench::libraryText(static_cast<int>(state.range(0)));
    for (auto _ : state) load(text);
    report(state, text);
    state.SetComplexityN(state.range(0));
}
BENCHMARK(Load)->Arg(256)->Arg(1024)->Arg(2564)->Arg(10256)->Unit(benchmark::kMillisecond)->Complexity();

// The same ten megabytes in lines and in one line.
void LoadTenMegabytes(benchmark::State& state) {
    const std::string text = bench::libraryText(6600, state.range(0) != 0);
    for (auto _ : state) load(text);
    report(state, text);
}
BENCHMARK(LoadTenMegabytes)->ArgName("oneLine")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void Check(benchmark::State& state) {
    HDNTLibraryMgr::m_diagnostics = true;
    const std::string text = bench::libraryText(1024);
    const auto library = load(text);
    for (auto _ : state) library->check();
    report(state, text);
}
BENCHMARK(Check)->Unit(benchmark::kMillisecond);

void Scan(benchmark::State& state) {
    const std::string text = bench::libraryText(2564);
    for (auto _ : state) {
        NtlFreeScannerMem();
        YY_BUFFER_STATE const buffer = yy_scan_bytes(text.data(), static_cast<int>(text.size()));
        NtlInitScanner();
        while (const int token = HDNTParserlex())
            if (token == T_StringConstant || token == T_HexConstant || token == T_BinaryConstant)
                delete HDNTParserlval.text;
        yy_delete_buffer(buffer);
    }
    report(state, text);
}
BENCHMARK(Scan)->Unit(benchmark::kMillisecond);

constexpr int blockCount = 30000;

std::string nameOf(int i) { return "cell_" + std::to_string((i * 7919) % blockCount); }

void LookUp(benchmark::State& state) {
    std::string text = "library \"L\" {\n";
    for (int b = 0; b < blockCount; ++b) text += "block \"CELL_" + std::to_string(b) + "\" { }\n";
    const auto library = load(text + "}\n");
    std::vector<std::string> names;
    for (int i = 0; i < blockCount; ++i) names.push_back(nameOf(i));
    size_t i = 0;
    for (auto _ : state) benchmark::DoNotOptimize(library->getTypeBlockByName(names[i++ % blockCount], true));
}
BENCHMARK(LookUp);

// What a look-up may cost: an ordered map with an upper-cased key.
void LookUpInMap(benchmark::State& state) {
    std::map<std::string, int> map;
    for (int b = 0; b < blockCount; ++b) map["CELL_" + std::to_string(b)] = b;
    std::vector<std::string> names;
    for (int i = 0; i < blockCount; ++i) names.push_back(nameOf(i));
    size_t i = 0;
    for (auto _ : state) {
        std::string key = names[i++ % blockCount];
        HSTStringUtils::to_upper(key);
        benchmark::DoNotOptimize(map.find(key));
    }
}
BENCHMARK(LookUpInMap);

} // namespace

BENCHMARK_MAIN();
