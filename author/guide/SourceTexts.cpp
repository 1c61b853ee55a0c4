#include "author/guide/SourceTexts.internal.h"
#include "author/guide/Svg.internal.h"
#include "author/lint/Statements.internal.h"
#include "author/syntax/TokenKinds.h"
#include "hdnt/platform/HSTStringUtils.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <utility>

namespace hdnt::author::guide {

namespace {

using frontend::SourceItem;
using frontend::SourceItems;

constexpr std::size_t mostLines = 5000;

std::size_t endOf(const SourceItem& item) { return std::size_t{item.offset} + item.length; }

// Empty for a node that is no block or mapping, or lacks its name.
std::string_view blockNameOf(const SyntaxTree& tree, const SyntaxNode& node) {
    if (node.part != NtlPart::block && node.part != NtlPart::mapping) return {};
    const SourceItems& items = tree.items();
    std::uint32_t item = std::min(node.begin + 1, node.end);
    while (item < node.end && !items[item].isToken()) ++item;
    if (item == node.end || items[item].kind != T_StringConstant) return {};
    const std::string_view quoted = items.textOf(item);
    return quoted.substr(1, quoted.size() - 2);
}

// Bytes of the node with the comments right above it and the ones behind it in its last line, and the blanks before.
std::pair<std::size_t, std::size_t> stretchOf(const SourceItems& items, const SyntaxNode& node) {
    std::size_t first = node.begin;
    while (first > 0 && items[first - 1].isComment() && items[first - 1].startsLine && items[first].newlines < 2)
        --first;
    std::size_t last = node.end - 1;
    while (last + 1 < items.size() && items[last + 1].isComment() && items[last + 1].newlines == 0) ++last;
    const std::size_t begin = items[first].offset;
    const std::size_t lineBegin = begin == 0 ? 0 : items.text().rfind('\n', begin - 1) + 1;
    return {first > 0 && endOf(items[first - 1]) > lineBegin ? begin : lineBegin, endOf(items[last])};
}

std::string withoutCarriageReturns(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (text[i] != '\r' || (i + 1 < text.size() && text[i + 1] != '\n')) result += text[i];
    return result;
}

/// Text with marked stretches as lines of HTML.
class HtmlLines {
public:
    void add(std::string_view text, std::string_view cssClass) {
        for (std::size_t begin = 0; begin <= text.size();) {
            const std::size_t end = std::min(text.find('\n', begin), text.size());
            if (end > begin) addWithinLine(text.substr(begin, end - begin), cssClass);
            if (end < text.size()) lines.emplace_back();
            begin = end + 1;
        }
    }

    std::vector<std::string> lines = {""};

private:
    void addWithinLine(std::string_view text, std::string_view cssClass) {
        if (cssClass.empty()) lines.back() += escapedLines(text);
        else lines.back().append("<span class=\"k-").append(cssClass).append("\">") += escapedLines(text) + "</span>";
    }
};

// Of a text with enormous lines, less.
std::string_view firstLines(std::string_view text, std::size_t lines) {
    constexpr std::size_t mostBytes = 1 << 20;
    std::size_t end = lines == 0 ? 0 : text.find('\n');
    for (; lines > 1 && end < mostBytes; --lines) end = text.find('\n', end + 1);
    end = std::min({end, mostBytes, text.size()});
    while (end > 0 && end < text.size() && platform::continuesCharacter(text[end])) --end;
    return text.substr(0, end);
}

std::vector<std::string> htmlOf(std::string_view text) {
    if (text.empty()) return {};
    HtmlLines html;
    SyntaxTree tree;
    std::size_t done = 0;
    if (tree.read(std::string(text)))
        for (const KindedToken& token : tokenKinds(tree, 0, text.size())) {
            html.add(text.substr(done, token.offset - done), "");
            html.add(text.substr(token.offset, token.length), tokenKindNames[static_cast<std::size_t>(token.kind)]);
            done = std::size_t{token.offset} + token.length;
        }
    html.add(text.substr(done), "");
    return std::move(html.lines);
}

} // namespace

SourceTexts::SourceTexts(const std::vector<std::string>& files) {
    for (const std::string& file : files)
        if (std::ranges::find(files_, file) == files_.end()) read(file);
}

void SourceTexts::read(const std::string& file) {
    files_.push_back(file);
    SyntaxTree tree;
    if (!tree.read(textOfFile(file, {}))) return;
    const std::string_view text = tree.items().text();
    std::size_t counted = 0, line = 1;
    for (std::uint32_t node = 1; node < tree.nodes().size(); node = tree.nodes()[node].next) {
        const std::string_view name = blockNameOf(tree, tree.nodes()[node]);
        if (name.empty()) continue;
        const auto [begin, end] = stretchOf(tree.items(), tree.nodes()[node]);
        line += static_cast<std::size_t>(std::count(text.begin() + counted, text.begin() + begin, '\n'));
        counted = begin;
        stretches_[HSTStringUtils::to_upper_copy(name)].push_back(
            {files_.size() - 1, line, withoutCarriageReturns(text.substr(begin, end - begin))});
    }
}

Json SourceTexts::of(std::string_view block) const {
    Json all = Json::array();
    const auto found = stretches_.find(HSTStringUtils::to_upper_copy(block));
    if (found == stretches_.end()) return all;
    std::size_t room = mostLines;
    std::size_t files = 0;  // of the block, so far
    std::size_t behind = 0; // the first line that no text before has shown
    for (const Stretch& stretch : found->second) {
        const bool isNewFile = all.empty() || all.back()["file"] != files_[stretch.file];
        files += isNewFile ? 1 : 0;
        if (isNewFile) behind = 0;
        const std::string anchor = files == 1 ? "line-" : "line-" + std::to_string(files) + "-";
        Json& json = all.emplace_back();
        json["file"] = files_[stretch.file];
        json["line"] = stretch.line;
        json["lines"] = Json::array();
        const std::string_view shown = firstLines(stretch.text, room);
        std::size_t line = stretch.line;
        for (const std::string& html : htmlOf(shown)) {
            const std::string id = line < behind ? "" : anchor + std::to_string(line);
            json["lines"].push_back({{"number", line++}, {"anchor", id}, {"html", html}});
        }
        behind = line;
        room -= json["lines"].size();
        const std::string_view rest = std::string_view(stretch.text).substr(shown.size());
        json["leftOut"] = std::ranges::count(rest, '\n') + (rest.empty() || rest[0] == '\n' ? 0 : 1);
    }
    return all;
}

std::string lineAnchor(const Json& source, std::string_view file, std::size_t line) {
    for (const Json& stretch : source) {
        const auto first = stretch["line"].get<std::size_t>();
        if (stretch["file"] == file && line >= first && line - first < stretch["lines"].size())
            return stretch["lines"][line - first]["anchor"];
    }
    return {};
}

std::string escapedLines(std::string_view text) {
    std::string result;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find_first_of("\t\n", begin), text.size());
        result += escaped(text.substr(begin, end - begin));
        if (end < text.size()) result += text[end];
        begin = end + 1;
    }
    return result;
}

} // namespace hdnt::author::guide
