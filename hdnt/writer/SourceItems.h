#pragma once

#include "hdnt/frontend/LineStore.h"
#include "hdnt/writer/HDNTFormatter.h"

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace hdnt::writer {

/// A token, comment, file statement or directive of a text, as the scanner sees it. Small: a text has millions.
struct SourceItem {
    enum Kind : std::int16_t { LineComment = -2, BlockComment = -3, FileStatement = -4, Directive = -5 };

    std::uint32_t offset = 0;
    std::uint32_t length = 0;
    std::int16_t kind = 0;       ///< one of the above, or a token number
    std::uint8_t newlines = 0;   ///< between the item before and this one; 2 for more
    bool multiLine : 1 = false;  ///< a block comment of several lines
    bool startsLine : 1 = false; ///< nothing but comments that do so before it in its line
    bool endsLine : 1 = false;   ///< nothing but comments that do so behind it in its line

    bool isToken() const { return kind > 0; }
    bool isComment() const { return kind == LineComment || kind == BlockComment; }
    /// In a line of its own, whatever stands around it.
    bool isVerbatim() const { return kind == FileStatement || kind == Directive; }
    /// A new line has to begin behind it.
    bool forcesNewline() const { return kind == LineComment || multiLine || isVerbatim(); }
};

/// A text taken apart. What is in no item is blanks, tabs and newlines.
class SourceItems {
public:
    /// False when the text cannot be formatted.
    bool read(std::string text, HDNTFormatProblem& problem);

    const std::string& text() const { return text_->bytes; }
    std::size_t size() const { return items_.size(); }
    const SourceItem& operator[](std::size_t i) const { return items_[i]; }
    std::string_view textOf(const SourceItem& item) const {
        return std::string_view(text()).substr(item.offset, item.length);
    }
    std::string_view textOf(std::size_t i) const { return textOf(items_[i]); }

    /// The same items with the same texts, blank space aside that a layout may change: behind a line comment, and
    /// before the further lines of a block comment. Else the index of the first that differs.
    bool equals(const SourceItems& other, std::size_t& difference) const;

private:
    friend class ItemReader;

    std::shared_ptr<frontend::SourceText> text_;
    std::vector<SourceItem> items_;
};

/// Whether files with these bytes are taken for compressed ones.
bool looksCompressed(std::string_view bytes);

/// A problem at an offset of a text.
HDNTFormatProblem problemAt(std::string_view text, std::size_t offset, std::string reason);

/// Characters of a text as a terminal counts them, a tab as one.
std::size_t widthOf(std::string_view text);

} // namespace hdnt::writer
