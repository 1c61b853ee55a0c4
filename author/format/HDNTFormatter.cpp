#include "author/format/HDNTFormatter.h"

#include "author/format/Layout.internal.h"
#include "author/format/LineTable.internal.h"
#include "hdnt/frontend/SourceItems.h"

#include <utility>

namespace hdnt::author {

using frontend::SourceItems;

static std::string layOut(const SourceItems& items) {
    LineTable lines(items);
    Layout(items, lines).run();
    return lines.finish();
}

// Proves that the new text is what the old one was, laid out. A problem here is a fault of this library.
static bool isProven(const SourceItems& items, const std::string& text, HDNTFormatProblem& problem) {
    SourceItems again;
    std::size_t difference = items.size();
    const bool readable = again.read(text, problem);
    const bool same = readable && items.equals(again, difference);
    if (same && layOut(again) == text) return true;
    const std::size_t offset = difference < items.size() ? items[difference].offset : 0;
    problem = frontend::problemAt(items.text(), offset,
                                  same ? "formatting twice would give another text; please report it"
                                       : "formatting would change what is here; please report it");
    return false;
}

} // namespace hdnt::author

bool HDNTFormatter::format(const std::string& text, std::string& out, HDNTFormatProblem& problem) {
    hdnt::frontend::SourceItems items;
    std::string result;
    bool good = items.read(text, problem);
    if (good) {
        result = hdnt::author::layOut(items);
        good = hdnt::author::isProven(items, result, problem);
    }
    out = good ? std::move(result) : std::string();
    return good;
}
