#include "hdnt/frontend/LineStore.h"

namespace hdnt::frontend {

LineStore& LineStore::instance() {
    static LineStore* const store = new LineStore; // never destroyed: reports may come as late as process exit
    return *store;
}

void LineStore::add(const std::shared_ptr<SourceText>& text, size_t offset, size_t length) {
    if (texts_.empty() || texts_.back() != text) texts_.push_back(text);
    lines_.push_back({static_cast<unsigned>(texts_.size() - 1), static_cast<unsigned>(length), offset});
}

void LineStore::clear() {
    lines_ = {};
    texts_ = {};
}

std::string_view LineStore::line(size_t n) const {
    if (n == 0 || lines_.empty()) return "UNKNOWN LINE";
    const Line& line = lines_[n > lines_.size() ? lines_.size() - 1 : n - 1];
    return std::string_view(texts_[line.text]->bytes).substr(line.offset, line.length);
}

} // namespace hdnt::frontend
