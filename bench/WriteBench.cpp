// Writing a library back, beside a JSON library that writes the same content, and what it takes in memory.
#include "bench/LibraryText.h"
#include "hdnt/hdnt.h"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <memory>
#include <sstream>

namespace {

using Json = nlohmann::ordered_json;

std::unique_ptr<HDNTLibrary> load(int blocks) {
    NtlFreeScannerMem();
    auto library = std::make_unique<HDNTLibrary>(nullptr);
    if (library->parseString(bench::libraryText(blocks)) != 0) std::abort();
    library->finalize();
    NtlFreeScannerMem();
    return library;
}

Json jsonOf(const HDNTProperty& property) {
    Json json = {{"type", HDNTProperty::getTypeName(property.getType())}, {"name", property.getName()}};
    switch (property.getType()) {
    case HATAttrTypes::TypeInt:
        json["min"] = property.getMinIntValue();
        json["max"] = property.getMaxIntValue();
        json["default"] = property.getDefaultIntValue();
        break;
    case HATAttrTypes::TypeDouble:
        json["min"] = property.getMinDoubleValue();
        json["max"] = property.getMaxDoubleValue();
        json["default"] = property.getDefaultDoubleValue();
        json["precision"] = property.getPrecision();
        json["units"] = property.getAttrSpec()->getUnitDefault();
        break;
    case HATAttrTypes::TypeString:
        json["values"] = property.getAllowedStringValues();
        json["default"] = property.getDefaultStringValue();
        break;
    default:
        json["width"] = property.getBitWidth();
        json["min"] = property.getMinHexValue();
        json["max"] = property.getMaxHexValue();
        json["default"] = property.getDefaultHexValue();
        break;
    }
    return json;
}

// What the printed form of the generated library says.
Json jsonOf(const HDNTLibrary& library) {
    Json blocks = Json::array();
    for (size_t b = 0; b < library.getNumTypeBlocks(false); ++b) {
        const HDNTBlock& block = *library.getTypeBlock(b);
        Json json = {{"name", block.getName()},
                     {"maturityLevel", block.getMaturityLevel()},
                     {"primgroup",
                      {block.getPrimGroupType(false), block.getPrimSubGroupType(false), block.getPrimGroupType(true)}}};
        for (size_t i = 0; i < block.getNumBuses(); ++i) {
            const HDNTBus& bus = *block.getBus(i);
            json["pins"].push_back({{"name", bus.getName()},
                                    {"direction", HDNTPin::getDirectionName(bus.getDirection())},
                                    {"type", HDNTPin::getTypeName(bus.getType())},
                                    {"required", static_cast<int>(bus.getRequiredValue())}});
        }
        for (size_t i = 0; i < block.getNumProperties(); ++i)
            json["properties"].push_back(jsonOf(*block.getProperty(i)));
        blocks.push_back(std::move(json));
    }
    return {{"library", library.getName()}, {"blocks", std::move(blocks)}};
}

constexpr int tenMegabytes = 6600;

template <typename Write>
void writeTo(benchmark::State& state, Write&& write) {
    FILE* const nowhere = std::fopen("/dev/null", "w");
    for (auto _ : state) write(nowhere);
    std::fclose(nowhere);
}

void PrintedForm(benchmark::State& state) {
    const auto library = load(tenMegabytes);
    writeTo(state, [&](FILE* stream) { library->print(stream); });
}
BENCHMARK(PrintedForm)->Unit(benchmark::kMillisecond);

void SourceForm(benchmark::State& state) {
    const auto library = load(tenMegabytes);
    writeTo(state, [&](FILE* stream) { library->printSource(stream, nullptr); });
}
BENCHMARK(SourceForm)->Unit(benchmark::kMillisecond);

void JsonDump(benchmark::State& state) {
    const Json json = jsonOf(*load(tenMegabytes));
    size_t bytes = 0;
    for (auto _ : state) bytes = json.dump().size();
    state.counters["MB"] = static_cast<double>(bytes) / 1e6;
}
BENCHMARK(JsonDump)->Unit(benchmark::kMillisecond);

size_t peakKiB() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmHWM:")) return std::stoul(line.substr(6));
    return 0;
}

// How far the peak of memory rises while a library of a hundred megabytes is written.
void WriteHundredMegabytes(benchmark::State& state) {
    const auto library = load(10 * tenMegabytes);
    std::ofstream("/proc/self/clear_refs") << 5; // the peak starts again at what is in use
    const size_t before = peakKiB();
    writeTo(state, [&](FILE* stream) {
        if (state.range(0)) library->printSource(stream, nullptr);
        else library->print(stream);
    });
    state.counters["peakGrowthKiB"] = static_cast<double>(peakKiB() - before);
}
BENCHMARK(WriteHundredMegabytes)->ArgName("source")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace
