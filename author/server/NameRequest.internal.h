#pragma once

#include "author/server/Mentions.internal.h"

#include <optional>
#include <string>

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
