#include "tools/ntl/DiffResult.h"

#include "author/exchange/ChangeWords.h"
#include "tools/ntl/Json.h"
#include "tools/ntl/Output.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <utility>

namespace ntl {

using Change = HDNTDifference::Change;
using Effect = HDNTDifference::Effect;
using hdnt::author::changeText, hdnt::author::ReleaseChapter, hdnt::author::releaseChapters;

size_t DiffResult::count(Effect effect) const {
    return static_cast<size_t>(std::count_if(differences.begin(), differences.end(),
                                             [&](const HDNTDifference& item) { return item.effect == effect; }));
}

namespace {

constexpr Effect effects[] = {Effect::breaking, Effect::compatible, Effect::textOnly};

std::string summary(const DiffResult& result) {
    if (result.differences.empty()) return "no differences";
    std::vector<std::string> parts;
    for (const Effect effect : effects)
        parts.push_back(std::to_string(result.count(effect)) + " " + HDNTComparison::nameOf(effect));
    return counted(result.differences.size(), "change") + ": " + joined(parts, ", ");
}

std::string plain(const std::string& text) { return printable(text); }

// In backticks, more of them than stand side by side in the text.
std::string code(const std::string& raw) {
    const std::string text = printable(raw);
    size_t longest = 0;
    for (size_t i = 0, run = 0; i < text.size(); ++i) longest = std::max(longest, run = text[i] == '`' ? run + 1 : 0);
    const std::string fence(longest + 1, '`');
    const std::string blank = text.empty() || longest > 0 ? " " : "";
    return fence + blank + text + blank + fence;
}

std::string placeText(const HDNTDifference& item) {
    const HDNTDifference::Place& place = item.change == Change::removed ? item.oldPlace : item.newPlace;
    return place.line > 0 ? "  (" + printable(place.file) + ":" + std::to_string(place.line) + ")" : "";
}

std::string effectText(Effect effect) {
    static const std::map<Effect, Color> colors = {
        {Effect::breaking, Color::Red}, {Effect::compatible, Color::Plain}, {Effect::textOnly, Color::Faint}};
    constexpr size_t width = 12;
    const std::string name = HDNTComparison::nameOf(effect);
    return colored(colors.at(effect), name, 1) + std::string(width - name.size(), ' ');
}

// Those of each block, the library's own first; otherwise in order.
std::vector<std::pair<std::string, std::vector<const HDNTDifference*>>> byBlock(const DiffResult& result) {
    std::vector<std::pair<std::string, std::vector<const HDNTDifference*>>> groups(1);
    for (const HDNTDifference& item : result.differences) {
        const bool isOwn = item.block.empty();
        if (!isOwn && groups.back().first != item.block) groups.push_back({item.block, {}});
        (isOwn ? groups.front() : groups.back()).second.push_back(&item);
    }
    return groups;
}

Json jsonOf(const HDNTDifference::Place& place) {
    if (place.line <= 0) return nullptr;
    Json json;
    json["file"] = orNull(place.file);
    json["line"] = place.line;
    return json;
}

Json jsonOf(const HDNTDifference& item) {
    Json json;
    json["effect"] = HDNTComparison::nameOf(item.effect);
    json["change"] = HDNTComparison::nameOf(item.change);
    json["element"] = HDNTComparison::nameOf(item.element);
    json["facet"] = HDNTComparison::nameOf(item.facet);
    json["block"] = orNull(item.block);
    json["path"] = item.path;
    json["old"] = item.change == Change::added ? Json() : Json(item.oldValue);
    json["new"] = item.change == Change::removed ? Json() : Json(item.newValue);
    json["oldLocation"] = jsonOf(item.oldPlace);
    json["newLocation"] = jsonOf(item.newPlace);
    return json;
}

} // namespace

std::string diffText(const DiffResult& result) {
    std::string text;
    for (const auto& [block, items] : byBlock(result)) {
        if (items.empty()) continue;
        text +=
            colored(Color::Bold, block.empty() ? "library " + printable(result.libraries[1]) : printable(block), 1) +
            "\n";
        for (const HDNTDifference* item : items)
            text += "  " + effectText(item->effect) + changeText(*item, plain, " -> ") + placeText(*item) + "\n";
        text += "\n";
    }
    return text + summary(result) + "\n";
}

std::string diffJson(const DiffResult& result, int exitStatus) {
    Json json = jsonHead("diff");
    json["exitStatus"] = exitStatus;
    for (const size_t i : {0, 1}) {
        Json& side = json[i == 0 ? "old" : "new"];
        side["path"] = result.paths[i];
        side["library"] = result.libraries[i];
    }
    for (const Effect effect : effects) json["counts"][HDNTComparison::nameOf(effect)] = result.count(effect);
    json["differences"] = Json::array();
    for (const HDNTDifference& item : result.differences) json["differences"].push_back(jsonOf(item));
    return jsonText(json);
}

std::string diffMarkdown(const DiffResult& result) {
    std::string text = "# Changes in " + code(result.libraries[1]) + "\n\n" + summary(result) + "\n";
    const auto groups = byBlock(result);
    for (const ReleaseChapter& chapter : releaseChapters()) {
        std::string lines;
        for (const auto& [block, items] : groups)
            for (const HDNTDifference* item : items)
                if (chapter.holds(*item))
                    lines += "- " + (block.empty() ? "" : code(block) + ": ") + changeText(*item, code, " → ") + "\n";
        if (!lines.empty()) text += "\n## " + std::string(chapter.title) + "\n\n" + lines;
    }
    return text;
}

} // namespace ntl
