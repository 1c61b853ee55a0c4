// Writes a generated library to a file:
//   hdnt_corpus FORM SIZE SEED FILE
//   hdnt_corpus parts|files SIZE SEED FOLDER
// FORM is ntl, lines, one-line, json, config or descriptions; SIZE is in bytes of the NTL text (the form "ntl") that
// has the content, with M for millions: texts of one size and seed have the same blocks in every form. A folder gets a
// thousand files of that size together.
#include "bench/Generator.h"
#include "bench/Writers.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

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

/// Blocks of one library after another. Their size is that of the NTL text, whatever is written.
class Composer {
public:
    explicit Composer(bench::Form form)
        : form_(form), writer_(bench::makeWriter(form)), measure_(bench::makeWriter(bench::Form::Ntl)) {}

    /// A library, or a part of one, with the next blocks: as many as are needed to have composed `size` bytes.
    bool compose(bench::Generator& generator, const std::vector<bench::Function>& functions, size_t size, FILE* file) {
        writer_->begin(text_, functions);
        measure_->begin(measured_, functions);
        while (size_ + measured_.size() < size) {
            size_ += measured_.size();
            measured_.clear();
            const bench::Block block = generator.next();
            counts_.add(block);
            measure_->write(measured_, block);
            writer_->write(text_, block);
            flush(file);
        }
        writer_->end(text_);
        measure_->end(measured_);
        flush(file);
        size_ += measured_.size();
        measured_.clear();
        return good_;
    }
    void tell() const {
        std::printf("%zu bytes of NTL: %zu blocks, %zu pins, %zu pin bits, %zu properties, %zu statements\n", size_,
                    counts_.blocks, counts_.pins, counts_.bits, counts_.properties, counts_.statements);
    }

private:
    void flush(FILE* file) {
        if (form_ == bench::Form::NtlOneLine) std::replace(text_.begin(), text_.end(), '\n', ' ');
        good_ = good_ && std::fwrite(text_.data(), 1, text_.size(), file) == text_.size();
        text_.clear();
    }

    bench::Form form_;
    std::unique_ptr<bench::Writer> writer_;
    std::unique_ptr<bench::Writer> measure_;
    Counts counts_;
    std::string text_;
    std::string measured_;
    size_t size_ = 0;
    bool good_ = true;
};

template <typename Write>
bool writeFile(const std::string& path, const Write& write) {
    FILE* const file = std::fopen(path.c_str(), "wb");
    const bool good = file && write(file);
    if (file && std::fclose(file) == 0 && good) return true;
    std::perror(path.c_str());
    return false;
}

bool writeCorpus(bench::Form form, size_t size, unsigned long long seed, const std::string& path) {
    bench::Generator generator(seed);
    Composer composer(form);
    const auto compose = [&](FILE* file) {
        return composer.compose(generator, bench::Generator::functions(), size, file);
    };
    const bool good = writeFile(path, compose);
    composer.tell();
    return good;
}

/// A thousand files in a folder. In parts, they are one library together, with its functions in the first file; else
/// each is a library by itself.
bool writeFolder(bool inParts, size_t size, unsigned long long seed, const std::string& folder) {
    constexpr size_t files = 1000;
    bench::Generator whole(seed);
    Composer composer(bench::Form::Ntl);
    for (size_t i = 0; i < files; ++i) {
        bench::Generator own(seed + i);
        const bool declares = !inParts || i == 0;
        const auto compose = [&](FILE* file) {
            return composer.compose(inParts ? whole : own,
                                    declares ? bench::Generator::functions() : std::vector<bench::Function>(),
                                    size / files * (i + 1), file);
        };
        char name[16];
        std::snprintf(name, sizeof name, "/%03zu.btl", i);
        if (!writeFile(folder + name, compose)) return false;
    }
    composer.tell();
    return true;
}

} // namespace

int main(int argc, char** argv) {
    const std::string form = argc == 5 ? argv[1] : "";
    const auto* const known = std::find_if(std::begin(formNames), std::end(formNames),
                                           [&](const FormName& name) { return form == name.name; });
    const bool isFolder = form == "parts" || form == "files";
    char* rest = nullptr;
    size_t size = argc == 5 ? std::strtoull(argv[2], &rest, 10) : 0;
    if (rest && *rest == 'M') {
        size *= 1000000;
        ++rest;
    }
    if ((known == std::end(formNames) && !isFolder) || *rest || size == 0) {
        std::fputs("usage: hdnt_corpus ntl|lines|one-line|json|config|descriptions SIZE[M] SEED FILE\n"
                   "       hdnt_corpus parts|files SIZE[M] SEED FOLDER\n",
                   stderr);
        return 2;
    }
    const unsigned long long seed = std::strtoull(argv[3], nullptr, 10);
    const bool good =
        isFolder ? writeFolder(form == "parts", size, seed, argv[4]) : writeCorpus(known->form, size, seed, argv[4]);
    return good ? 0 : 1;
}
