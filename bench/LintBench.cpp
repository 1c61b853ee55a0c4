// What it costs to judge a library that is loaded: with the rules of a check, and with all of them.
#include "author/lint/lint.h"
#include "bench/Libraries.h"
#include "bench/Subject.h"

#include <memory>

namespace bench {

namespace {

Work lintLibrary(const std::shared_ptr<LibraryPointer>& library, bool isThorough, size_t items) {
    hdnt::LintOptions options;
    options.isThorough = isThorough;
    return {.run = [=] { hdnt::lint(**library, options); }, .items = items};
}

/// A block whose mapping has sixteen instances, and conditions on eight properties and a pin.
std::string mappedBlock(int number) {
    const std::string name = std::to_string(number);
    std::string text = "block \"B" + name + "\" { pin \"I[15:0]\" input; pin \"CE\" input; pin \"O[15:0]\" output;\n";
    for (const char digit : std::string("0123"))
        text += std::string("property string \"M") + digit + "\" { values { \"A\", \"B\", \"C\", \"D\" } }\n" +
                "property int \"N" + digit + "\" { min = 0, max = 9 }\n";
    text += "} mapsto {\n";
    for (int i = 0; i < 16; ++i) {
        const std::string bit = std::to_string(i);
        text += "inst \"u" + bit + "\" \"GATE\"; signal \"i" + bit + "\" : \"I[" + bit + "]\", \"u" + bit +
                "\" \"I\"; signal \"o" + bit + "\" : \"u" + bit + "\" \"O\", \"O[" + bit + "]\";\n";
    }
    for (int i = 0; i < 8; ++i) {
        const std::string property = std::to_string(i % 4);
        const std::string limit = std::to_string(1 + (i + number) % 8);
        text += "if (stringProperty(\"M" + property + "\") == \"C\" && intProperty(\"N" + property + "\") > " + limit +
                ") assign block property \"u" + std::to_string(i) + "\" \"DELAY\" intProperty(\"N" + property +
                "\"); else if (isConnected(\"CE\")) assign block property \"u" + std::to_string(i) + "\" \"DELAY\" " +
                limit + ";\n";
    }
    return text + "}\n";
}

std::string mappedBlocks(int count) {
    std::string text =
        "library \"L\" { function int intProperty(string); function string stringProperty(string);\n"
        "function bool isConnected(string);\n"
        "block \"GATE\" { pin \"I\" input; pin \"O\" output; property int \"DELAY\" { min = 0, max = 9 } }\n";
    for (int i = 0; i < count; ++i) text += mappedBlock(i);
    return text + "}";
}

} // namespace

void addLintSubjects(std::vector<Subject>& subjects) {
    using Sizes = Subject::Sizes;
    subjects.push_back({"lint-brief", Sizes::UpToTen, [](const Corpus& corpus) {
                            auto library = std::make_shared<LibraryPointer>(loadFile(corpus.path("btl")));
                            return lintLibrary(library, false, 0);
                        }});
    subjects.push_back({"lint-mapped", Sizes::One, [](const Corpus&) {
                            constexpr int count = 100;
                            auto library = std::make_shared<LibraryPointer>(loadText(mappedBlocks(count)));
                            return lintLibrary(library, true, count);
                        }});
}

} // namespace bench
