// What the tokens of a document are, for editors that show them in colours.
#include "author/server/Stretch.internal.h"
#include "author/server/methods.internal.h"
#include "author/syntax/TokenKinds.h"

#include <algorithm>

namespace hdnt::author::server {

namespace {

/// Tokens as the protocol has them: each as numbers that count from the one before.
class Tokens {
public:
    Tokens(const Session& session, const Document& document)
        : document_(document), positions_(document, session.encoding) {}

    Json in(const Stretch& stretch) {
        for (const KindedToken& token : tokenKinds(document_.tree(), stretch.begin, stretch.end)) addLines(token);
        return {{"data", std::move(data_)}};
    }

private:
    // Not every client takes tokens of several lines.
    void addLines(const KindedToken& token) {
        const std::string_view text = document_.text();
        const std::size_t tokenEnd = std::size_t{token.offset} + token.length;
        for (std::size_t begin = token.offset; begin < tokenEnd;) {
            const std::size_t end = std::min(text.find('\n', begin), tokenEnd);
            if (end > begin) add(begin, end, token.kind);
            begin = end + 1;
        }
    }

    void add(std::size_t begin, std::size_t end, TokenKind kind) {
        const Position from = positions_.at(begin);
        const Position to = positions_.at(end);
        data_.push_back(from.line - last_.line);
        data_.push_back(from.line == last_.line ? from.character - last_.character : from.character);
        data_.push_back(to.character - from.character);
        data_.push_back(static_cast<int>(kind));
        data_.push_back(0); // no modifiers
        last_ = from;
    }

    const Document& document_;
    PositionFinder positions_;
    Position last_;
    Json data_ = Json::array();
};

} // namespace

Json semanticTokensLegend() { return {{"tokenTypes", tokenKindNames}, {"tokenModifiers", Json::array()}}; }

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
