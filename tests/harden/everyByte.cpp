// Every prefix of a text and every change of one of its bytes is loaded, checked, linted, printed, laid out and read as
// a tree. Whatever comes of it, it is a result or a refusal with a place, and the trees hold the text.
//   every_byte [--stride N] [--seconds N] FILE...      each Nth of the variants, until the time is over
#include "author/author.h"
#include "hdnt/hdnt.h"
#include "tests/support/Tokens.h"
#include "tests/support/Written.h"

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

namespace {

using Clock = std::chrono::steady_clock;
using hdnt::author::SyntaxTree;

const std::string path = "/every/byte.btl"; // nowhere on disk

class Silence : public HDNTErrorListener {
public:
    bool report(const HDNTReport&) override { return true; }
};

void require(bool ok, const char* what, const std::string& text) {
    if (ok) return;
    std::fprintf(stderr, "every_byte: %s\n%s\n", what, text.c_str());
    std::abort();
}

/// What the library makes of a text, which is to be what the tree makes of it. Whether it is a library.
bool judgeLibrary(const std::string& text, const SyntaxTree& tree, HDNTLibrary& root) {
    hdnt::LoadOptions options;
    options.parent = &root;
    options.texts = {{path, text}};
    const hdnt::Loaded loaded = hdnt::load(path, options);
    require(!loaded || tree.messages().empty() || !loaded.diagnostics.empty(), "a faulty tree, and nothing said", text);
    if (!loaded) {
        const auto isError = [](const hdnt::Diagnostic& one) { return one.severity == hdnt::Severity::error; };
        require(std::any_of(loaded.diagnostics.begin(), loaded.diagnostics.end(), isError), "refused silently", text);
        return false;
    }
    hdnt::LintOptions lint;
    lint.isThorough = false;
    lint.texts = options.texts;
    hdnt::lint(*loaded.library, lint);
    const std::string source = support::source(*loaded.library);
    if (source.starts_with("cannot be written")) return true;
    options.texts = {{path, source}};
    const hdnt::Loaded again = hdnt::load(path, options);
    require(again && HDNTComparison::compare(*loaded.library, *again.library).empty(), "does not read back", text);
    return true;
}

void judgeLayout(const std::string& text) {
    std::string laidOut;
    HDNTFormatProblem problem;
    if (HDNTFormatter::format(text, laidOut, problem))
        require(support::tokensOf(text) == support::tokensOf(laidOut), "the layout changed tokens", text);
    else require(problem.line > 0 && problem.column > 0, "no layout, and no place", text);
}

bool judge(const std::string& text, HDNTLibrary& root) {
    SyntaxTree tree;
    require(tree.read(text) ? tree.text() == text : !tree.refusal().reason.empty(), "the tree lost text", text);
    judgeLayout(text);
    return judgeLibrary(text, tree, root);
}

/// Counts variants, and says which of them are due.
class Sweep {
public:
    Sweep(std::size_t stride, std::chrono::seconds time) : stride_(stride), end_(Clock::now() + time) {}
    bool isOver() const { return Clock::now() >= end_; }
    bool isDue() { return seen_++ % stride_ == 0 && !isOver() && ++judged_ > 0; }

    void prefixesOf(const std::string& text, HDNTLibrary& root) {
        for (std::size_t length = 0; length <= text.size(); ++length)
            if (isDue()) accepted_ += judge(text.substr(0, length), root) ? 1 : 0;
    }
    void changesOf(std::string text, HDNTLibrary& root) {
        for (char& byte : text) {
            const char before = byte;
            for (int value = 0; value < 256; ++value) {
                byte = static_cast<char>(value);
                if (byte != before && isDue()) accepted_ += judge(text, root) ? 1 : 0;
            }
            byte = before;
        }
    }
    void say() const {
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        std::printf("every byte: %zu of %zu variants, %zu of them libraries; %ld MB at most%s\n", judged_, seen_,
                    accepted_, usage.ru_maxrss / 1024, isOver() ? "; time was over" : "");
    }
    bool hasJudged() const { return judged_ > 0; }

private:
    std::size_t stride_;
    Clock::time_point end_;
    std::size_t seen_ = 0;
    std::size_t judged_ = 0;
    std::size_t accepted_ = 0;
};

} // namespace

int main(int argc, char** argv) {
    std::size_t stride = 1;
    long seconds = 24 * 3600L;
    int first = 1;
    for (; first + 1 < argc && std::strncmp(argv[first], "--", 2) == 0; first += 2) {
        const long value = std::max(1L, std::atol(argv[first + 1]));
        if (std::strcmp(argv[first], "--stride") == 0) stride = static_cast<std::size_t>(value);
        else seconds = value;
    }
    HDNTLimits limits;
    limits.rootFolder = "/every"; // no file of the machine that a changed name names
    HDNTLimits::set(limits);
    Silence silence;
    HDNTError::setListener(&silence);
    HDNTLibrary root(nullptr);
    Sweep sweep(stride, std::chrono::seconds(seconds));
    for (int i = first; i < argc; ++i) {
        std::ifstream file(argv[i], std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        require(!text.empty(), "cannot read", argv[i]);
        require(judge(text, root), "no library to begin with", argv[i]);
        sweep.prefixesOf(text, root);
        sweep.changesOf(text, root);
    }
    sweep.say();
    return sweep.hasJudged() ? 0 : 1;
}
