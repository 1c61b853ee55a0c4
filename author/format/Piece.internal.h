#pragma once

#include "hdnt/frontend/SourceItems.h"

#include <cstdint>

namespace hdnt::author {

/// An item as a part of a statement. Small: a statement may have millions.
struct Piece {
    enum class Break : std::uint8_t { None, Operator, Comma };
    static constexpr std::uint8_t widest = 255;

    Piece() = default;
    /// Of ASCII, and nothing of the rest.
    explicit Piece(const frontend::SourceItem& item)
        : offset(item.offset), length(item.length), kind(item.kind),
          width(static_cast<std::uint8_t>(item.length < widest ? item.length : widest)) {}

    std::uint32_t offset = 0; ///< in the text that is laid out
    std::uint32_t length = 0;
    std::int16_t kind = 0;
    std::uint8_t width = 0; ///< in characters; of wider ones, which no line has room for, `widest`
    bool blankBefore : 1 = false;
    bool isForced : 1 = false;   ///< something that is no token, and the end of its line
    bool isTrailing : 1 = false; ///< a comment like that which goes behind what stands before it
    bool follows : 1 = false;    ///< any comment that does
    bool isAscii : 1 = true;
    Break after : 2 = Break::None; ///< whether a line may be broken behind it

    bool isToken() const { return kind > 0; }
    bool isComment() const {
        return kind == frontend::SourceItem::LineComment || kind == frontend::SourceItem::BlockComment;
    }
    std::size_t widthBehind() const { return std::size_t{width} + blankBefore; }
};

} // namespace hdnt::author
