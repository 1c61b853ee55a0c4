#include "author/syntax/TokenKinds.h"

namespace hdnt::author {

namespace {

using frontend::SourceItem;

std::vector<TokenKind> afterInstance(std::size_t strings, TokenKind last) {
    return strings > 1 ? std::vector{TokenKind::variable, last} : std::vector{last};
}

bool isNumber(int token) {
    return token == T_IntConstant || token == T_DoubleConstant || token == T_HexConstant || token == T_BinaryConstant;
}

class Kinds {
public:
    explicit Kinds(const SyntaxTree& tree) : tree_(tree) {}

    std::vector<KindedToken> in(std::size_t begin, std::size_t end) {
        const frontend::SourceItems& items = tree_.items();
        const std::uint32_t element = tree_.elementBefore(begin);
        for (std::size_t at = element == 0 ? 0 : tree_.nodes()[element].begin;
             at < items.size() && items[at].offset < end; ++at) {
            moveTo(at);
            const std::optional<TokenKind> kind = kindOf(at);
            const SourceItem& item = items[at];
            if (kind && std::size_t{item.offset} + item.length > begin)
                found_.push_back({item.offset, item.length, *kind});
        }
        return std::move(found_);
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

    // What the strings of a part name, one after the other; others are texts.
    std::vector<TokenKind> namesIn(const SyntaxNode& node) const {
        switch (node.part) {
        case NtlPart::block:
        case NtlPart::mapping: return {TokenKind::type};
        case NtlPart::pin: return {TokenKind::parameter};
        case NtlPart::property: return {TokenKind::property};
        case NtlPart::inst: return {TokenKind::variable, TokenKind::type};
        case NtlPart::connect:
        case NtlPart::signal: return {TokenKind::variable};
        case NtlPart::pinRef: return afterInstance(stringsOf(node), TokenKind::parameter);
        case NtlPart::assignBlockProperty: return afterInstance(stringsOf(node), TokenKind::property);
        case NtlPart::assignPinProperty: return {TokenKind::property};
        default: return {};
        }
    }

    TokenKind nameAt() {
        if (open_.empty()) return TokenKind::string;
        const std::vector<TokenKind> names = namesIn(tree_.nodes()[open_.back().node]);
        const std::size_t which = open_.back().strings++;
        return which < names.size() ? names[which] : TokenKind::string;
    }

    std::optional<TokenKind> kindOf(std::size_t at) {
        const SourceItem& item = tree_.items()[at];
        if (item.isComment()) return TokenKind::comment;
        if (item.isVerbatim()) return TokenKind::macro;
        if (item.kind == T_StringConstant) return nameAt();
        if (item.kind == T_Identifier) return TokenKind::function;
        if (isNumber(item.kind)) return TokenKind::number;
        const bool isWord = item.kind >= T_Library && !frontend::operators.contains(item.kind);
        return isWord ? std::optional(TokenKind::keyword) : std::nullopt;
    }

    const SyntaxTree& tree_;
    std::uint32_t next_ = 0;
    std::vector<Open> open_;
    std::vector<KindedToken> found_;
};

} // namespace

std::vector<KindedToken> tokenKinds(const SyntaxTree& tree, std::size_t begin, std::size_t end) {
    return Kinds(tree).in(begin, end);
}

} // namespace hdnt::author
