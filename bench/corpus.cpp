// Writes a generated library to a file:
//   hdnt_corpus FORM SIZE SEED FILE
// FORM is ntl, lines, one-line, json, config or descriptions; SIZE is in bytes of the NTL text (the form "ntl") that
// has the content, with M for millions: texts of one size and seed have the same blocks in every form.
#include "bench/Generator.h"
#include "bench/Writers.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

namespace {

struct FormName {
    const char* name;
    bench::Form form;
};
constexpr FormName formNames[] = {
    {"ntl", bench::Form::Ntl},   {"lines", bench::Form::NtlLines}, {"one-line", bench::Form::NtlOneLine},
    {"json", bench::Form::Json}, {"config", bench::Form::Config},  {"descriptions", bench::Form::Descriptions}};

/// What a text holds, to hold against a real one.
struct Counts {
    size_t blocks = 0;
    size_t pins = 0;
    size_t bits = 0;
    size_t properties = 0;
    size_t statements = 0;

    void add(const std::vector<bench::Statement>& all) {
        for (const bench::Statement& statement : all) {
            ++statements;
            add(statement.thenPart);
            add(statement.elsePart);
        }
    }
    void add(const bench::Block& block) {
        ++blocks;
        pins += block.pins.size();
        properties += block.properties.size();
        for (const bench::Pin& pin : block.pins) {
            bits += pin.range ? static_cast<size_t>(std::abs(pin.range->first - pin.range->second)) + 1 : 1;
            properties += pin.properties.size();
        }
        if (block.mapping) add(block.mapping->statements);
    }
};

bool writeCorpus(bench::Form form, size_t size, unsigned long long seed, FILE* file) {
    bench::Generator generator(seed);
    const auto writer = bench::makeWriter(form);
    const auto measure = bench::makeWriter(bench::Form::Ntl);
    Counts counts;
    std::string text;
    std::string ntl;
    size_t ntlSize = 0;
    bool good = true;
    const auto flush = [&] {
        if (form == bench::Form::NtlOneLine) std::replace(text.begin(), text.end(), '\n', ' ');
        good = good && std::fwrite(text.data(), 1, text.size(), file) == text.size();
        text.clear();
    };
    writer->begin(text, bench::Generator::functions());
    measure->begin(ntl, bench::Generator::functions());
    while (ntlSize + ntl.size() < size) {
        ntlSize += ntl.size();
        ntl.clear();
        const bench::Block block = generator.next();
        counts.add(block);
        measure->write(ntl, block);
        writer->write(text, block);
        flush();
    }
    writer->end(text);
    measure->end(ntl);
    flush();
    std::printf("%zu bytes of NTL: %zu blocks, %zu pins, %zu pin bits, %zu properties, %zu statements\n",
                ntlSize + ntl.size(), counts.blocks, counts.pins, counts.bits, counts.properties, counts.statements);
    return good;
}

} // namespace

int main(int argc, char** argv) {
    const auto* const form = argc == 5 ? std::find_if(std::begin(formNames), std::end(formNames),
                                                      [&](const FormName& f) { return !std::strcmp(f.name, argv[1]); })
                                       : std::end(formNames);
    char* rest = nullptr;
    size_t size = argc == 5 ? std::strtoull(argv[2], &rest, 10) : 0;
    if (rest && *rest == 'M') {
        size *= 1000000;
        ++rest;
    }
    if (form == std::end(formNames) || *rest || size == 0) {
        std::fputs("usage: hdnt_corpus ntl|lines|one-line|json|config|descriptions SIZE[M] SEED FILE\n", stderr);
        return 2;
    }
    FILE* const file = std::fopen(argv[4], "wb");
    const bool good = file && writeCorpus(form->form, size, std::strtoull(argv[3], nullptr, 10), file);
    if (!file || std::fclose(file) != 0 || !good) {
        std::perror(argv[4]);
        return 1;
    }
    return 0;
}
