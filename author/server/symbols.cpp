// The outline of a document: what its nodes declare, in each other.
#include "author/server/Stretch.internal.h"
#include "author/server/methods.internal.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace hdnt::author::server {

namespace {

/// As the protocol numbers them; 0: none.
int kindOf(NtlPart part) {
    constexpr int netlist = 2, library = 4, cell = 5, property = 7, field = 8, function = 12, variable = 13,
                  object = 19;
    switch (part) {
    case NtlPart::file: return library;
    case NtlPart::function: return function;
    case NtlPart::block:
    case NtlPart::mapping: return cell;
    case NtlPart::section: return netlist;
    case NtlPart::pin: return field;
    case NtlPart::property: return property;
    case NtlPart::inst: return object;
    case NtlPart::signal: return variable;
    default: return 0;
    }
}

bool isOutermost(NtlPart part) {
    return part == NtlPart::file || part == NtlPart::function || part == NtlPart::block || part == NtlPart::mapping;
}

/// Nobody reads an outline of more, and no editor is fast with it: what is in blocks is left out then.
constexpr std::ptrdiff_t most = 20000;

class Outline {
public:
    Outline(const Document& document, Encoding encoding)
        : tree_(document.tree()), positions_(document, encoding),
          isWhole_(std::ranges::count_if(tree_.nodes(), [](const SyntaxNode& one) { return kindOf(one.part) != 0; }) <=
                   most) {}

    Json list() {
        Json all = Json::array();
        for (std::uint32_t node = 0; node < tree_.nodes().size(); ++node) {
            closeBefore(node, all);
            if (!isWhole_ && !isOutermost(tree_.nodes()[node].part)) continue;
            Json symbol = symbolOf(tree_.nodes()[node]);
            if (!symbol.is_null()) open_.push_back({std::move(symbol), tree_.nodes()[node].next});
        }
        closeBefore(static_cast<std::uint32_t>(tree_.nodes().size()), all);
        return all;
    }

private:
    struct Open {
        Json symbol;
        std::uint32_t next;
    };

    void closeBefore(std::uint32_t node, Json& all) {
        while (!open_.empty() && open_.back().next <= node) {
            Json done = std::move(open_.back().symbol);
            open_.pop_back();
            (open_.empty() ? all : open_.back().symbol["children"]).push_back(std::move(done));
        }
    }

    // The item that names the part; its end when there is none. A section has its keyword.
    std::uint32_t nameOf(const SyntaxNode& node) const {
        const int kind = node.part == NtlPart::function ? T_Identifier : T_StringConstant;
        for (std::uint32_t item = node.begin; item < node.end; ++item) {
            const int found = tree_.items()[item].kind;
            if (found == kind || (node.part == NtlPart::section && found > 0)) return item;
            if (found == '{' || found == ';') break;
        }
        return node.end;
    }

    std::string detailOf(const SyntaxNode& node, std::uint32_t name) const {
        std::string detail;
        const bool isBefore = node.part == NtlPart::property;
        if (!isBefore && node.part != NtlPart::pin && node.part != NtlPart::inst) return detail;
        for (std::uint32_t item = isBefore ? node.begin + 1 : name + 1; item < (isBefore ? name : node.end); ++item) {
            const int kind = tree_.items()[item].kind;
            if (kind == ';' || kind == '{') break;
            if (kind > 0) detail.append(detail.empty() ? "" : " ").append(tree_.items().textOf(item));
        }
        return detail;
    }

    Json symbolOf(const SyntaxNode& node) {
        const int kind = kindOf(node.part);
        if (kind == 0 || node.begin == node.end) return nullptr;
        const std::uint32_t item = nameOf(node);
        if (item == node.end) return nullptr;
        std::string_view name = tree_.items().textOf(item);
        if (tree_.items()[item].kind == T_StringConstant && name.size() > 2) name = name.substr(1, name.size() - 2);
        const Stretch whole = stretchOf(tree_, node);
        const Stretch named = stretchOf(tree_.items()[item]);
        PositionFinder ends = positions_;
        Json symbol = {{"name", name}, {"kind", kind}, {"children", Json::array()}};
        symbol["range"] = rangeOf(ends, whole.begin, whole.end);
        symbol["selectionRange"] = rangeOf(positions_, named.begin, named.end);
        if (std::string detail = detailOf(node, item); !detail.empty()) symbol["detail"] = std::move(detail);
        return symbol;
    }

    const SyntaxTree& tree_;
    PositionFinder positions_;
    bool isWhole_;
    std::vector<Open> open_;
};

} // namespace

Json documentSymbols(Session& session, const Json& params) {
    return Outline(session.documentOf(params), session.encoding).list();
}

} // namespace hdnt::author::server
