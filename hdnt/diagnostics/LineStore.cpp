#include "hdnt/diagnostics/LineStore.internal.h"

#include <algorithm>

namespace hdnt::diagnostics {

LineStore& LineStore::instance() {
    static LineStore* const store = new LineStore; // never destroyed: reports may come as late as process exit
    return *store;
}

void LineStore::mark(const std::shared_ptr<SourceText>& text, size_t start) {
    if (texts_.empty() || texts_.back() != text) texts_.push_back(text);
    marks_.push_back({size_, texts_.size() - 1, start});
}

void LineStore::clear() {
    texts_ = {};
    marks_ = {};
    size_ = 0;
}

std::string_view LineStore::line(size_t n) const {
    if (n == 0 || size_ == 0) return "UNKNOWN LINE";
    const size_t index = std::min(n, size_) - 1;
    const Mark& before = *std::prev(std::upper_bound(marks_.begin(), marks_.end(), index,
                                                     [](size_t line, const Mark& mark) { return line < mark.line; }));
    std::string_view rest = std::string_view(texts_[before.text]->bytes).substr(before.start);
    for (size_t line = before.line; line < index; ++line) rest.remove_prefix(rest.find('\n') + 1);
    return rest.substr(0, rest.find('\n'));
}

} // namespace hdnt::diagnostics
