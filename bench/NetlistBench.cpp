// What mappings cost: elaboration and check of wide netlists, evaluation of long expressions, expansion.
#include "hdnt/hdnt.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>

namespace {

std::unique_ptr<HDNTLibrary> parse(const std::string& text) {
    NtlFreeScannerMem();
    auto library = std::make_unique<HDNTLibrary>(nullptr);
    if (library->parseString(text) != 0) std::abort();
    return library;
}

// As many signals as connects, each connect at the signal furthest from its own place.
void ElaborateAndCheck(benchmark::State& state) {
    HDNTLibraryMgr::m_diagnostics = true;
    const int count = static_cast<int>(state.range(0));
    std::string text = "library \"L\" { block \"HOLD\" { pin \"D\" input; } mapsto { inst \"U\" \"HOLD\";\n";
    for (int i = 0; i < count; ++i) text += "signal \"N" + std::to_string(i) + "\";\n";
    for (int i = count; i-- > 0;) text += "connect \"N" + std::to_string(i) + "\" : \"U\" \"D\";\n";
    text += "} }";
    for (auto _ : state) {
        state.PauseTiming();
        auto library = parse(text);
        state.ResumeTiming();
        library->finalize();
        library->check();
        state.PauseTiming();
        library.reset();
        state.ResumeTiming();
    }
    if (HDNTError::numErrors > 0) std::abort();
    state.SetComplexityN(count);
}
BENCHMARK(ElaborateAndCheck)->Arg(2000)->Arg(20000)->Arg(80000)->Unit(benchmark::kMillisecond)->Complexity();

void EvaluateSum(benchmark::State& state) {
    std::string text = "library \"L\" { block \"HOLD\" { } mapsto { if (1";
    for (int64_t i = 0; i < state.range(0); ++i) text += " + 1";
    const auto library = parse(text + " == 1) { } } }");
    HDNTExpr& condition = *library->getTypeBlock(0)->getNetlist()->ifStmts().at(0)->condition();
    for (auto _ : state) condition.evaluate();
    state.SetComplexityN(state.range(0));
}
BENCHMARK(EvaluateSum)->Arg(3000)->Arg(30000)->Arg(300000)->Unit(benchmark::kMillisecond)->Complexity();

void ExpandDeep(benchmark::State& state) {
    HDNTBlock& block = *HDNTLibraryMgr::getCommonLibrary()->getTypeBlockByName("ADD_CHAIN_16", true);
    for (auto _ : state)
        if (HDNTExpansion expansion(block); !expansion.expand(true)) std::abort();
}
BENCHMARK(ExpandDeep)->Unit(benchmark::kMicrosecond);

} // namespace
