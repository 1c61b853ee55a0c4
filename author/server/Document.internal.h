#pragma once

#include "author/server/LineIndex.internal.h"
#include "author/syntax/SyntaxTree.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace hdnt::author::server {

/// How positions count within a line.
enum class Encoding { utf16, utf8 };

/// A position of the protocol.
struct Position {
    std::size_t line = 0;
    std::size_t character = 0;
};

/// A text that an editor has open, as a tree and lines that follow its changes.
class Document {
public:
    void read(std::string text);
    /// The stretch is inside of the text.
    void edit(std::size_t offset, std::size_t length, std::string_view replacement);

    std::string_view text() const { return tree_.items().text(); }
    /// Without nodes when `tree().refusal()` says why the text was not read.
    const SyntaxTree& tree() const { return tree_; }
    const LineIndex& lines() const { return lines_; }
    /// The items that are INCLUDE and INLINE statements.
    const std::vector<std::uint32_t>& fileStatements() const;

    /// As the protocol clamps: to the end of the line, or of the text. Within a character is before it.
    std::size_t offsetAt(Position position, Encoding encoding) const;

    std::optional<std::int64_t> version;

private:
    SyntaxTree tree_;
    LineIndex lines_;
    mutable std::optional<std::vector<std::uint32_t>> fileStatements_; ///< none: not looked for since the last change
};

/// Positions of many offsets: those that grow in one line cost a pass over it together.
class PositionFinder {
public:
    PositionFinder(const Document& document, Encoding encoding) : document_(document), encoding_(encoding) {}
    /// Within a character: behind it.
    Position at(std::size_t offset);

private:
    const Document& document_;
    Encoding encoding_;
    Position last_;
    std::size_t lastOffset_ = 0;
};

} // namespace hdnt::author::server
