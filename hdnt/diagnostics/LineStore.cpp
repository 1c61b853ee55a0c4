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
    ++generation_;
}

LineStore::Line LineStore::at(size_t n) const {
    if (n == 0 || size_ == 0) return {"UNKNOWN LINE"};
    const size_t index = std::min(n, size_) - 1;
    const Mark& before = *std::prev(std::upper_bound(marks_.begin(), marks_.end(), index,
                                                     [](size_t line, const Mark& mark) { return line < mark.line; }));
    const std::string_view bytes = texts_[before.text]->view();
    size_t start = before.start;
    for (size_t line = before.line; line < index; ++line) start = bytes.find('\n', start) + 1;
    return {bytes.substr(start, std::min(bytes.find('\n', start), bytes.size()) - start), start};
}

} // namespace hdnt::diagnostics
