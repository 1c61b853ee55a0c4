#include "hdnt/diagnostics/FilteredText.internal.h"

#include <algorithm>
#include <deque>
#include <iterator>
#include <mutex>
#include <utility>

namespace hdnt::diagnostics {

namespace {

// Never destroyed. The lock is for places that are asked for in other threads while one loads.
struct Kept {
    std::mutex mutex;
    std::deque<FilteredText> texts;
};

Kept& kept() {
    static auto* const all = new Kept;
    return *all;
}

} // namespace

const FilteredText::Run* FilteredText::runOf(int line) const {
    const auto behind =
        std::upper_bound(runs.begin(), runs.end(), line, [](int wanted, const Run& run) { return wanted < run.line; });
    return behind == runs.begin() ? nullptr : &*std::prev(behind);
}

int FilteredText::keep(FilteredText text) {
    const std::lock_guard lock(kept().mutex);
    std::deque<FilteredText>& texts = kept().texts;
    const auto same = std::find_if(texts.begin(), texts.end(), [&](const FilteredText& other) {
        return other.file == text.file && other.runs == text.runs;
    });
    const auto index = static_cast<int>(same - texts.begin());
    if (same == texts.end()) texts.push_back(std::move(text));
    return -1 - index;
}

const FilteredText* FilteredText::of(const yyltype& location) {
    if (location.fileName || location.storeOffset >= 0) return nullptr;
    const std::lock_guard lock(kept().mutex);
    const auto index = static_cast<std::size_t>(-1 - location.storeOffset);
    return index < kept().texts.size() ? &kept().texts[index] : nullptr;
}

} // namespace hdnt::diagnostics
