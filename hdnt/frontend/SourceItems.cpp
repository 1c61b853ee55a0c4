#include "hdnt/frontend/SourceItems.h"

#include "hdnt/diagnostics/LineStore.internal.h"
#include "hdnt/frontend/Keywords.internal.h"
#include "hdnt/frontend/SourceReader.h"
#include "hdnt/frontend/TokenSet.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <utility>

namespace hdnt::frontend {

SourceProblem problemAt(std::string_view text, std::size_t offset, std::string reason) {
    const std::string_view before = text.substr(0, offset);
    const std::size_t lineStart = before.rfind('\n') + 1;
    SourceProblem problem;
    problem.line = static_cast<int>(std::count(before.begin(), before.end(), '\n')) + 1;
    problem.column = static_cast<int>(platform::characters(before.substr(lineStart))) + 1;
    problem.reason = std::move(reason);
    problem.count = 1;
    return problem;
}

std::string_view spellingOf(int token) {
    for (const Keyword& keyword : keywords)
        if (keyword.token == token && token != T_BoolConstant) return keyword.spelling;
    return {};
}

bool SourceItems::read(std::string text, SourceProblem& problem) {
    items_.clear();
    refusals_.clear();
    SourceReader reader(std::move(text), &refusals_);
    while (reader.more(items_)) continue;
    problem = reader.problem();
    text_ = reader.text_;
    bytes_ = text_->bytes;
    markLines({0, 0, items_.size()});
    return problem.count == 0;
}

} // namespace hdnt::frontend
