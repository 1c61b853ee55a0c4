// What it costs to hold two libraries against each other.
#include "bench/Libraries.h"
#include "bench/Subject.h"
#include "hdnt/compare/HDNTComparison.h"

namespace bench {

namespace {

/// The text as its author changed it a little: every hundredth block that says "production" says "beta".
std::string changed(std::string text) {
    const std::string before = "maturityLevel = production";
    const std::string after = "maturityLevel = beta";
    int count = 0;
    for (size_t at = 0; (at = text.find(before, at)) != text.npos; at += after.size())
        if (count++ % 100 == 0) text.replace(at, before.size(), after);
    return text;
}

Work compare(const Corpus& corpus) {
    auto before = std::make_shared<LibraryPointer>(loadFile(corpus.path("btl")));
    auto after = std::make_shared<LibraryPointer>(loadText(changed(corpus.text("btl"))));
    return {.run = [=] {
        if (HDNTComparison::compare(**before, **after).empty()) fail("the libraries do not differ");
    }};
}

} // namespace

void addCompareSubjects(std::vector<Subject>& subjects) {
    subjects.push_back({"compare", Subject::Sizes::UpToTen, compare});
}

} // namespace bench
