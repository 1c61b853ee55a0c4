#include "author/server/LineIndex.internal.h"

#include <algorithm>

namespace hdnt::author::server {

namespace {

bool beginsLine(std::string_view text, std::size_t at) {
    const char before = text[at - 1];
    return before == '\n' || (before == '\r' && (at == text.size() || text[at] != '\n'));
}

// From `from` to `to`, both included; 0 is not asked for.
std::vector<std::size_t> beginsIn(std::string_view text, std::size_t from, std::size_t to) {
    std::vector<std::size_t> begins;
    for (std::size_t at = std::max<std::size_t>(from, 1); at <= to; ++at)
        if (beginsLine(text, at)) begins.push_back(at);
    return begins;
}

} // namespace

void LineIndex::read(std::string_view text) {
    begins_ = beginsIn(text, 1, text.size());
    begins_.insert(begins_.begin(), 0);
}

// Whether a line begins somewhere depends on the bytes on both sides.
void LineIndex::edit(std::string_view text, std::size_t offset, std::size_t oldLength, std::size_t newLength) {
    const auto first = std::lower_bound(begins_.begin() + 1, begins_.end(), offset);
    const auto last = std::upper_bound(first, begins_.end(), offset + oldLength);
    const std::vector<std::size_t> begins = beginsIn(text, offset, offset + newLength);
    for (auto moved = last; moved != begins_.end(); ++moved) *moved = *moved - oldLength + newLength;
    const auto common = std::min(last - first, static_cast<std::ptrdiff_t>(begins.size()));
    const auto behind = std::copy_n(begins.begin(), common, first);
    if (common < last - first) begins_.erase(behind, last);
    else begins_.insert(behind, begins.begin() + common, begins.end());
}

std::size_t LineIndex::end(std::string_view text, std::size_t line) const {
    if (line + 1 == begins_.size()) return text.size();
    std::size_t end = begins_[line + 1] - 1;
    if (text[end] == '\n' && end > begins_[line] && text[end - 1] == '\r') --end;
    return end;
}

std::size_t LineIndex::lineAt(std::size_t offset) const {
    return static_cast<std::size_t>(std::upper_bound(begins_.begin(), begins_.end(), offset) - begins_.begin()) - 1;
}

} // namespace hdnt::author::server
