#include "bindings/shared/Text.h"

#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/netlist/HDNTExpr.h"
#include "hdnt/writer/HDNTPrintVisitor.h"
#include "hdnt/writer/HDNTSourceVisitor.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace hdnt::scripts {

std::string printedForm(HDNTNode& node) {
    return written([&](FILE* stream) {
        if (auto* const library = nodeCast<HDNTLibrary>(&node)) return library->print(stream);
        HDNTPrintVisitor visitor(stream);
        static_cast<HDNTBlock&>(node).accept(visitor);
    });
}

// A block stands by itself here and not in a library: its outermost lines, which have one blank, have none.
static std::string unindented(const std::string& text) {
    std::string result;
    for (size_t at = text.find_first_not_of('\n'); at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size() - 1) + 1;
        const size_t begin = text[at] == ' ' && text[at + 1] != ' ' ? at + 1 : at;
        result.append(text, begin, end - begin);
        at = end;
    }
    while (result.ends_with("\n\n")) result.pop_back();
    return result;
}

std::string sourceForm(HDNTNode& node) {
    std::vector<std::string> problems;
    bool complete = true;
    std::string text = written([&](FILE* stream) {
        if (auto* const library = nodeCast<HDNTLibrary>(&node)) {
            complete = library->printSource(stream, &problems);
            return;
        }
        HDNTSourceVisitor visitor(stream, &problems);
        static_cast<HDNTBlock&>(node).acceptOwn(visitor);
        complete = visitor.isComplete();
    });
    if (!complete) throw std::runtime_error("this cannot be written as source: " + problems.at(0));
    return nodeCast<HDNTBlock>(&node) ? unindented(text) : text;
}

std::vector<HDNTDifference> differencesOf(ScriptLock& lock, const HDNTNode& before, const HDNTNode& after) {
    std::vector<HDNTDifference> found;
    inSection(lock, LoadSection::Quiet, "diff", [&] {
        const auto* const library = nodeCast<HDNTLibrary>(&before);
        found = library ? HDNTComparison::compare(*library, static_cast<const HDNTLibrary&>(after))
                        : HDNTComparison::compare(static_cast<const HDNTBlock&>(before),
                                                  static_cast<const HDNTBlock&>(after));
    });
    return found;
}

std::string textOf(HDNTExpr& expression) {
    return written([&](FILE* stream) {
        HDNTPrintVisitor visitor(stream);
        expression.accept(visitor);
        visitor.print();
    });
}

} // namespace hdnt::scripts
