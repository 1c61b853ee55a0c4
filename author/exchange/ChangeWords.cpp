#include "author/exchange/ChangeWords.h"

#include "hdnt/platform/Text.h"

namespace hdnt::author {

using Change = HDNTDifference::Change;
using Effect = HDNTDifference::Effect;
using Facet = HDNTElementFacet;

namespace {

// Bounded, since an expression may be as long as a file.
std::string clipped(const std::string& text) { return platform::clipped(text, 160); }

} // namespace

std::string changeText(const HDNTDifference& item, std::string (*mark)(const std::string&), const std::string& arrow) {
    std::string text = HDNTComparison::nameOf(item.element);
    if (item.facet == Facet::order) text += " order";
    const bool isBelow = item.path != item.block;
    if (isBelow) {
        const size_t skipped = item.block.empty() ? 0 : item.block.size() + 1;
        text += (item.facet == Facet::order ? " of " : " ") + mark(item.path.substr(skipped));
    }
    if (item.change != Change::changed) {
        const std::string& value = item.change == Change::added ? item.newValue : item.oldValue;
        text += std::string(" ") + HDNTComparison::nameOf(item.change);
        return value.empty() ? text : text + ": " + mark(clipped(value));
    }
    if (item.facet != Facet::order) text += std::string(isBelow ? ": " : " ") + HDNTComparison::nameOf(item.facet);
    text += item.facet == Facet::order || !isBelow ? ": " : " ";
    return text + mark(clipped(item.oldValue)) + arrow + mark(clipped(item.newValue));
}

const std::vector<ReleaseChapter>& releaseChapters() {
    static const std::vector<ReleaseChapter> chapters = {
        {"Breaking changes", [](const HDNTDifference& item) { return item.effect == Effect::breaking; }},
        {"New",
         [](const HDNTDifference& item) { return item.effect == Effect::compatible && item.change == Change::added; }},
        {"Changed",
         [](const HDNTDifference& item) { return item.effect == Effect::compatible && item.change != Change::added; }},
        {"Text only", [](const HDNTDifference& item) { return item.effect == Effect::textOnly; }},
    };
    return chapters;
}

} // namespace hdnt::author
