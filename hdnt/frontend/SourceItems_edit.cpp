#include "hdnt/diagnostics/LineStore.internal.h"
#include "hdnt/frontend/SourceItems.h"
#include "hdnt/platform/Decoder.internal.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace hdnt::frontend {

namespace {

std::uint8_t newlinesIn(std::string_view gap) {
    const auto count = std::count(gap.begin(), gap.end(), '\n');
    return static_cast<std::uint8_t>(std::min<std::ptrdiff_t>(count, 2));
}

std::size_t endOf(const SourceItem& item) { return std::size_t{item.offset} + item.length; }

bool startsLine(const SourceItem& item, const SourceItem* before) {
    return !before || item.newlines > 0 || before->forcesNewline() || (before->isComment() && before->startsLine);
}

bool endsLine(const SourceItem& item, const SourceItem* after) {
    return !after || item.forcesNewline() || after->newlines > 0 || after->isVerbatim() ||
           (after->isComment() && after->endsLine);
}

template <typename T>
void splice(std::vector<T>& all, std::size_t begin, std::size_t end, const std::vector<T>& other) {
    const std::size_t common = std::min(end - begin, other.size());
    const auto at = std::copy_n(other.begin(), common, all.begin() + static_cast<std::ptrdiff_t>(begin));
    const auto rest = static_cast<std::ptrdiff_t>(common);
    if (other.size() > common) all.insert(at, other.begin() + rest, other.end());
    else all.erase(at, all.begin() + static_cast<std::ptrdiff_t>(end));
}

} // namespace

/// Items in whole lines, and where those lines are.
struct SourceItems::Window {
    std::size_t first;
    std::size_t last;
    std::size_t begin;
    std::size_t end;
};

// From a line that begins with an item to another one, both outside of what is replaced. Where such a line begins, the
// scanner is in one state always.
SourceItems::Window SourceItems::windowAround(std::size_t offset, std::size_t length) const {
    const auto lineOf = [&](std::size_t item) { return bytes_.substr(0, items_[item].offset).rfind('\n') + 1; };
    const auto itemAt = [&](std::size_t at) {
        const auto found = std::partition_point(items_.begin(), items_.end(),
                                                [&](const SourceItem& item) { return item.offset < at; });
        return static_cast<std::size_t>(found - items_.begin());
    };
    std::size_t first = itemAt(offset);
    if (first == items_.size() && first > 0) --first;
    while (first > 0 && (items_[first].newlines == 0 || lineOf(first) > offset)) --first;
    std::size_t last = itemAt(offset + length);
    while (last < items_.size() && (items_[last].newlines == 0 || lineOf(last) <= offset + length)) ++last;
    return {first, last, first == 0 ? 0 : lineOf(first), last == items_.size() ? bytes_.size() : lineOf(last)};
}

// A comment or statement that goes on behind the window.
bool SourceItems::endsInside() const {
    if (refusals_.empty() || items_.empty()) return false;
    const SourceItem& last = items_.back();
    return (last.kind == SourceItem::BlockComment || last.kind == SourceItem::FileStatement) &&
           refusals_.back() == last.offset;
}

// The whole text, when it is changed so.
bool SourceItems::beginsArchive(std::size_t offset, std::size_t length, std::string_view replacement) const {
    constexpr std::size_t archiveHead = 64;
    if (offset >= archiveHead) return false;
    std::string head(bytes_.substr(0, offset));
    head.append(replacement.substr(0, archiveHead)).append(bytes_.substr(offset + length, archiveHead));
    return platform::Decoder::forArchive(head) != nullptr;
}

std::optional<SourceItems::Change> SourceItems::edit(std::size_t offset, std::size_t length,
                                                     std::string_view replacement) {
    const std::size_t size = bytes_.size() - length + replacement.size();
    if (beginsArchive(offset, length, replacement) || size >= std::numeric_limits<std::uint32_t>::max())
        return std::nullopt;
    const Window window = windowAround(offset, length);
    std::string text(bytes_.substr(window.begin, window.end - window.begin));
    text.replace(offset - window.begin, length, replacement);
    SourceItems part;
    SourceProblem problem;
    if (!part.read(std::move(text), problem) && part.refusals_.empty()) return std::nullopt; // as an archive begins
    if (part.endsInside() && window.last < items_.size()) return std::nullopt;

    if (text_.use_count() > 1) text_ = std::make_shared<diagnostics::SourceText>(*text_);
    text_->bytes.replace(offset, length, replacement);
    bytes_ = text_->bytes;
    const bool sameKinds = std::equal(items_.begin() + static_cast<std::ptrdiff_t>(window.first),
                                      items_.begin() + static_cast<std::ptrdiff_t>(window.last), part.items_.begin(),
                                      part.items_.end(), [](const auto& a, const auto& b) { return a.kind == b.kind; });
    const Change change{window.first, window.last, window.first + part.items_.size(), sameKinds};
    // Offsets are modulo 2^32, and so is the way they move.
    lay(part, window, static_cast<std::uint32_t>(replacement.size() - length));
    markLines(change);
    return change;
}

void SourceItems::lay(SourceItems& part, const Window& window, std::uint32_t shift) {
    const auto begin = static_cast<std::uint32_t>(window.begin);
    for (SourceItem& item : part.items_) item.offset += begin;
    for (std::uint32_t& refused : part.refusals_) refused += begin;
    const auto refusalAt = [&](std::size_t at) {
        return static_cast<std::size_t>(std::lower_bound(refusals_.begin(), refusals_.end(), at) - refusals_.begin());
    };
    const std::size_t refused = refusalAt(window.begin);
    splice(refusals_, refused, refusalAt(window.end), part.refusals_);
    splice(items_, window.first, window.last, part.items_);
    if (shift == 0) return;
    for (std::size_t i = refused + part.refusals_.size(); i < refusals_.size(); ++i) refusals_[i] += shift;
    for (std::size_t i = window.first + part.items_.size(); i < items_.size(); ++i) items_[i].offset += shift;
}

// Goes on in both directions as far as something changes.
void SourceItems::markLines(const Change& change) {
    const auto at = [&](std::size_t i) { return i < items_.size() ? &items_[i] : nullptr; };
    for (const std::size_t i : {change.first, change.newEnd}) {
        if (i >= items_.size()) continue;
        const std::size_t gap = i > 0 ? endOf(items_[i - 1]) : 0;
        items_[i].newlines = newlinesIn(bytes_.substr(gap, items_[i].offset - gap));
    }
    for (std::size_t i = change.first; i < items_.size(); ++i) {
        const bool before = items_[i].startsLine;
        items_[i].startsLine = startsLine(items_[i], i > 0 ? &items_[i - 1] : nullptr);
        if (i >= change.newEnd && before == items_[i].startsLine) break;
    }
    for (std::size_t i = std::min(change.newEnd + 1, items_.size()); i-- > 0;) {
        const bool before = items_[i].endsLine;
        items_[i].endsLine = endsLine(items_[i], at(i + 1));
        if (i < change.first && before == items_[i].endsLine) break;
    }
}

} // namespace hdnt::frontend
