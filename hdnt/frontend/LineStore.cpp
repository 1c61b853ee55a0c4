#include "hdnt/frontend/LineStore.h"

#include <algorithm>

namespace hdnt::frontend {

LineStore& LineStore::instance() {
    static LineStore* const store = new LineStore; // never destroyed: reports may come as late as process exit
    return *store;
}

void LineStore::clear() {
    starts_ = {};
    runs_ = {};
}

std::string_view LineStore::line(size_t n) const {
    if (n == 0 || starts_.empty()) return "UNKNOWN LINE";
    const size_t index = std::min(n, starts_.size()) - 1;
    const auto after = std::upper_bound(runs_.begin(), runs_.end(), index,
                                        [](size_t line, const Run& run) { return line < run.firstLine; });
    const std::string_view rest = std::string_view(std::prev(after)->text->bytes).substr(starts_[index]);
    return rest.substr(0, rest.find('\n'));
}

} // namespace hdnt::frontend
