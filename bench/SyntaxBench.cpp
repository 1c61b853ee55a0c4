// Text to a tree, and what a key stroke costs.
#include "author/syntax/SyntaxTree.h"
#include "bench/Subject.h"

#include <memory>

namespace bench {

namespace {

using hdnt::author::SyntaxTree;

Work readTree(const Corpus& corpus) {
    auto text = std::make_shared<const std::string>(corpus.text("btl"));
    auto tree = std::make_shared<std::unique_ptr<SyntaxTree>>();
    return {.prepare = [=] { *tree = std::make_unique<SyntaxTree>(); },
            .run =
                [=] {
                    if (!(*tree)->read(*text) || !(*tree)->messages().empty()) fail("the text has faults");
                },
            .drop = [=] { tree->reset(); }};
}

// A line is typed into each of ten places and taken out again, which leaves the text faulty most of the time.
Work editTree(const Corpus& corpus) {
    const std::string line = "pin \"TYPED\" input;";
    constexpr size_t places = 10;
    auto tree = std::make_shared<SyntaxTree>();
    if (!tree->read(corpus.text("btl"))) fail("the text is not read");
    const auto type = [=] {
        const size_t size = tree->items().text().size();
        for (size_t place = 1; place <= places; ++place) {
            const size_t at = size / (places + 1) * place;
            for (size_t i = 0; i < line.size(); ++i) tree->edit(at + i, 0, line.substr(i, 1));
            for (size_t i = line.size(); i-- > 0;) tree->edit(at + i, 1, "");
        }
    };
    return {.run = type, .items = places * line.size() * 2};
}

} // namespace

void addSyntaxSubjects(std::vector<Subject>& subjects) {
    subjects.push_back({"tree", Subject::Sizes::UpToTen, readTree});
    subjects.push_back({"tree-edit", Subject::Sizes::UpToTen, editTree});
}

} // namespace bench
