#pragma once

#include "author/server/Mentions.internal.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace hdnt::author::server {

/// What a request with a position asks about.
struct NameRequest {
    /// Throws RequestError for a document that is not open.
    NameRequest(Session& session, const Json& params);

    const Text& text() const { return libraries.current(); }

    Libraries libraries;
    std::size_t offset;
    NameReader reader;
    std::optional<Name> name; ///< none: there is no name
    Place mapping;            ///< around it
};

// hover.cpp
/// What a declaration says before its body, in one line.
std::string lineOfDeclaration(const Place& place);
/// The comment that stands right above a declaration, without its marks.
std::string commentAbove(const Place& place);
/// A declaration as hovering over its name shows it, in Markdown.
std::string sheetOf(const Libraries& libraries, const Place& place);

// expressions.cpp
/// An expression of a mapping.
struct Expression {
    Stretch stretch;
    std::string path;  ///< of the text
    std::string block; ///< that the mapping is of
    std::vector<std::string> searchDirectories;
    std::string library; ///< a text of what counts for the expression, and it itself
};
/// The operation, call or parentheses that the token asked about is of; none: it is of nothing of the kind.
std::optional<Expression> expressionAt(const NameRequest& asked);
/// Type and value while the block's properties have their defaults and no pin is connected, or why there is none; empty
/// when the texts, by path, are not in order. For a process of its own, which it changes for good.
std::string valueOf(const Expression& expression, std::map<std::string, std::string> texts);

/// Places as the protocol has them. Those that come in the order of a text cost one pass over its lines.
class Locations {
public:
    explicit Locations(Encoding encoding) : encoding_(encoding) {}
    Json rangeIn(const Text& text, const Stretch& stretch);
    Json locationIn(const Text& text, const Stretch& stretch) {
        return {{"uri", text.uri}, {"range", rangeIn(text, stretch)}};
    }

private:
    Encoding encoding_;
    const Text* text_ = nullptr;
    std::optional<PositionFinder> positions_;
};

} // namespace hdnt::author::server
