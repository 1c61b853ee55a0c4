#pragma once

#include "hdnt/frontend/SourceItems.h"

#include <cstdint>

namespace hdnt::author {

/// An item as a part of a statement. Small: a statement may have millions.
struct Piece {
    static constexpr std::uint8_t widest = 255;
    /// What there is to know of it.
    enum Flag : std::uint8_t {
        BlankBefore = 1,
        Forced = 2,  ///< something that is no token, and the end of its line
        Follows = 4, ///< a comment that goes behind what stands before it
        NotAscii = 8,
        BreaksAfter = 16,   ///< a line may be broken behind it
        BreaksAtComma = 32, ///< and first of all there
    };

    std::uint32_t offset = 0; ///< in the text that is laid out
    std::uint32_t length = 0;
    std::int16_t kind = 0;
    std::uint8_t width = 0; ///< in characters; of wider ones, which no line has room for, `widest`
    std::uint8_t flags = 0;

    bool is(Flag flag) const { return (flags & flag) != 0; }
    bool isTrailing() const { return is(Forced) && is(Follows); }
    bool isToken() const { return kind > 0; }
    bool isComment() const {
        return kind == frontend::SourceItem::LineComment || kind == frontend::SourceItem::BlockComment;
    }
    std::size_t widthBehind() const { return std::size_t{width} + is(BlankBefore); }
};

} // namespace hdnt::author
