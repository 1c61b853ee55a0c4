// What mends a finding of a rule, where there is one way to do it.
#include "author/server/methods.internal.h"
#include "hdnt/platform/HSTStringUtils.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace hdnt::author::server {

namespace {

using frontend::SourceItems;

/// A finding in the text that it is about.
struct Case {
    const Document& document;
    const Found& found;

    const SourceItems& items() const { return document.tree().items(); }
    std::string_view text() const { return document.text(); }
    Stretch stretch() const { return *found.spot.bytes; }
    std::uint32_t firstItem() const { return static_cast<std::uint32_t>(itemBehind(items(), stretch().begin)) - 1; }
    /// The one behind an item, comments aside.
    std::uint32_t nextToken(std::uint32_t item) const {
        do ++item;
        while (isInside(item) && !items()[item].isToken());
        return item;
    }
    bool isInside(std::uint32_t item) const { return item < items().size() && items()[item].offset < stretch().end; }
};

SyntaxMend mendAt(std::size_t begin, std::size_t end, std::string text) {
    return {static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(end - begin), std::move(text)};
}

/// An option of a property, such as "min = 0".
struct Option {
    std::uint32_t name; ///< its items
    std::uint32_t value;
};
std::optional<Option> optionOf(const Case& one, int token) {
    for (std::uint32_t item = one.firstItem(); one.isInside(item); ++item) {
        if (one.items()[item].kind != token) continue;
        const std::uint32_t value = one.nextToken(one.nextToken(item));
        if (one.isInside(value)) return Option{item, value};
    }
    return {};
}

std::optional<SyntaxMend> upperCase(const Case& one) {
    for (std::uint32_t item = one.firstItem(); one.isInside(item); ++item) {
        if (one.items()[item].kind != T_StringConstant) continue;
        const Stretch name = stretchOf(one.items()[item]);
        const std::string_view written = one.text().substr(name.begin, name.end - name.begin);
        return mendAt(name.begin, name.end, HSTStringUtils::to_upper_copy(written));
    }
    return {};
}

std::optional<SyntaxMend> swappedBounds(const Case& one) {
    const std::optional<Option> least = optionOf(one, T_Min);
    const std::optional<Option> greatest = optionOf(one, T_Max);
    if (!least || !greatest || least->value > greatest->value) return {};
    const Stretch first = stretchOf(one.items()[least->value]);
    const Stretch second = stretchOf(one.items()[greatest->value]);
    const auto written = [&](std::size_t begin, std::size_t end) {
        return std::string(one.text().substr(begin, end - begin));
    };
    return mendAt(first.begin, second.end,
                  written(second.begin, second.end) + written(first.end, second.begin) +
                      written(first.begin, first.end));
}

// With the comma that parts it from the next option, or from the one before; a maximum does not stay without its
// minimum, and is needless as well then.
std::optional<SyntaxMend> withoutBound(const Case& one) {
    const bool isMinimum = one.found.said.at("message").get_ref<const std::string&>().starts_with("minimum");
    const std::optional<Option> bound = optionOf(one, isMinimum ? T_Min : T_Max);
    if (!bound || bound->name == 0) return {};
    const SourceItems& items = one.items();
    const std::optional<Option> greatest = isMinimum ? optionOf(one, T_Max) : std::nullopt;
    std::uint32_t value = bound->value;
    if (greatest && one.nextToken(one.nextToken(value)) == greatest->name) value = greatest->value;
    const std::uint32_t comma = one.nextToken(value);
    if (one.isInside(comma + 1) && items[comma].kind == ',')
        return mendAt(items[bound->name].offset, items[comma + 1].offset, "");
    if (items[bound->name - 1].kind != ',') return {};
    return mendAt(items[bound->name - 1].offset, stretchOf(items[value]).end, "");
}

std::optional<SyntaxMend> notInverted(const Case& one) {
    for (std::uint32_t item = one.firstItem(); one.isInside(item); ++item)
        if (one.items()[item].kind == T_StringConstant && one.items().textOf(item).starts_with("\"~"))
            return mendAt(one.items()[item].offset + 1, one.items()[item].offset + 2, "");
    return {};
}

// What stands behind a file statement goes to a line of its own.
std::optional<SyntaxMend> nextLine(const Case& one) {
    const std::size_t before = one.text().find_last_not_of(" \t", one.stretch().begin - 1);
    if (one.stretch().begin == 0 || before == std::string_view::npos || one.text()[before] != ';') return {};
    return mendAt(before + 1, one.stretch().begin, "\n");
}

// With its line when nothing else is there.
std::optional<SyntaxMend> withoutComment(const Case& one) {
    const SourceItems& items = one.items();
    const std::uint32_t item = one.firstItem();
    if (item >= items.size() || !items[item].isComment()) return {};
    const Stretch comment = stretchOf(items[item]);
    const bool isLast = item + 1 == items.size() || items[item + 1].newlines > 0;
    const std::size_t before =
        comment.begin == 0 ? std::string_view::npos : one.text().find_last_not_of(" \t", comment.begin - 1);
    const bool isFirst = before == std::string_view::npos || one.text()[before] == '\n';
    const std::size_t begin = before == std::string_view::npos ? 0 : before + 1;
    return mendAt(isLast ? begin : comment.begin, comment.end + (isFirst && isLast && comment.end < one.text().size()),
                  "");
}

struct Row {
    std::string_view code;
    std::optional<SyntaxMend> (*mend)(const Case& one);
};
constexpr Row rows[] = {
    {"include-trailing-text", nextLine}, {"inversion-dropped", notInverted}, {"min-above-max", swappedBounds},
    {"needless-bound", withoutBound},    {"pin-lower-case", upperCase},      {"waiver-unused", withoutComment},
};

} // namespace

std::optional<SyntaxMend> mendOf(const Document& document, const Found& found) {
    if (!found.spot.bytes || found.spot.bytes->end > document.text().size()) return {};
    const auto row = std::ranges::find(rows, found.said.value("code", ""), &Row::code);
    const Case one{document, found};
    if (row == std::end(rows) || itemBehind(one.items(), one.stretch().begin) == 0) return {};
    return row->mend(one);
}

} // namespace hdnt::author::server
