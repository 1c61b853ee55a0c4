// What the tokens of a document are, for editors that show them in colours.
#include "author/server/Stretch.internal.h"
#include "author/server/methods.internal.h"

#include <algorithm>
#include <vector>

namespace hdnt::author::server {

namespace {

/// In the order of the names that the client is told.
enum Type : int { comment, keyword, string, number, function, type, variable, parameter, property, macro, none = -1 };

/// What the strings of a part name, one after the other; others are texts.
std::vector<Type> namesIn(NtlPart part, std::size_t strings) {
    switch (part) {
    case NtlPart::block:
    case NtlPart::mapping: return {type};
    case NtlPart::pin: return {parameter};
    case NtlPart::property: return {property};
    case NtlPart::inst: return {variable, type};
    case NtlPart::connect:
    case NtlPart::signal: return {variable};
    case NtlPart::pinRef: return strings > 1 ? std::vector{variable, parameter} : std::vector{parameter};
    case NtlPart::assignBlockProperty: return strings > 1 ? std::vector{variable, property} : std::vector{property};
    case NtlPart::assignPinProperty: return {property};
    default: return {};
    }
}

bool isNumber(int token) {
    return token == T_IntConstant || token == T_DoubleConstant || token == T_HexConstant || token == T_BinaryConstant;
}

class Tokens {
public:
    Tokens(const Session& session, const Document& document)
        : tree_(document.tree()), document_(document), positions_(document, session.encoding) {}

    Json in(const Stretch& stretch) {
        const frontend::SourceItems& items = tree_.items();
        const std::uint32_t element = tree_.elementBefore(stretch.begin);
        for (std::size_t item = element == 0 ? 0 : tree_.nodes()[element].begin;
             item < items.size() && items[item].offset < stretch.end; ++item) {
            moveTo(item);
            const Type type = typeOf(item);
            if (type != none && stretchOf(items[item]).end > stretch.begin) addLines(stretchOf(items[item]), type);
        }
        return {{"data", std::move(data_)}};
    }

private:
    struct Open {
        std::uint32_t node;
        std::size_t strings = 0; ///< before the item at hand, in none of the parts inside
    };

    // The parts that are around the item.
    void moveTo(std::size_t item) {
        const auto& nodes = tree_.nodes();
        while (!open_.empty() && nodes[open_.back().node].end <= item) open_.pop_back();
        while (next_ < nodes.size() && nodes[next_].begin <= item) {
            const bool isAround = nodes[next_].end > item;
            if (isAround) open_.push_back({next_});
            next_ = isAround ? next_ + 1 : nodes[next_].next;
        }
    }

    std::size_t stringsOf(const SyntaxNode& node) const {
        std::size_t count = 0;
        for (std::uint32_t item = node.begin; item < node.end; ++item) {
            const int kind = tree_.items()[item].kind;
            if (kind == '{' || kind == ';' || kind == ':') break;
            count += kind == T_StringConstant ? 1 : 0;
        }
        return count;
    }

    Type nameAt() {
        if (open_.empty()) return string;
        const SyntaxNode& node = tree_.nodes()[open_.back().node];
        const std::vector<Type> names = namesIn(node.part, node.part == NtlPart::block ? 1 : stringsOf(node));
        const std::size_t which = open_.back().strings++;
        return which < names.size() ? names[which] : string;
    }

    Type typeOf(std::size_t item) {
        const frontend::SourceItem& each = tree_.items()[item];
        if (each.isComment()) return comment;
        if (each.isVerbatim()) return macro;
        if (each.kind == T_StringConstant) return nameAt();
        if (each.kind == T_Identifier) return function;
        if (isNumber(each.kind)) return number;
        return each.kind >= T_Library && !frontend::operators.contains(each.kind) ? keyword : none;
    }

    // Not every client takes tokens of several lines.
    void addLines(const Stretch& stretch, Type type) {
        const std::string_view text = document_.text();
        for (std::size_t begin = stretch.begin; begin < stretch.end;) {
            const std::size_t end = std::min(text.find('\n', begin), stretch.end);
            if (end > begin) add(begin, end, type);
            begin = end + 1;
        }
    }

    void add(std::size_t begin, std::size_t end, Type type) {
        const Position from = positions_.at(begin);
        const Position to = positions_.at(end);
        data_.push_back(from.line - last_.line);
        data_.push_back(from.line == last_.line ? from.character - last_.character : from.character);
        data_.push_back(to.character - from.character);
        data_.push_back(static_cast<int>(type));
        data_.push_back(0); // no modifiers
        last_ = from;
    }

    const SyntaxTree& tree_;
    const Document& document_;
    PositionFinder positions_;
    std::uint32_t next_ = 0;
    std::vector<Open> open_;
    Position last_;
    Json data_ = Json::array();
};

} // namespace

Json semanticTokensLegend() {
    return {
        {"tokenTypes",
         {"comment", "keyword", "string", "number", "function", "type", "variable", "parameter", "property", "macro"}},
        {"tokenModifiers", Json::array()}};
}

Json semanticTokens(Session& session, const Json& params) {
    const Document& document = session.documentOf(params);
    return Tokens(session, document).in({0, document.text().size()});
}

Json semanticTokensInRange(Session& session, const Json& params) {
    const Document& document = session.documentOf(params);
    const Json& range = params.at("range");
    const std::size_t begin = document.offsetAt(positionOf(range.at("start")), session.encoding);
    const std::size_t end = document.offsetAt(positionOf(range.at("end")), session.encoding);
    return Tokens(session, document).in({begin, std::max(begin, end)});
}

} // namespace hdnt::author::server
