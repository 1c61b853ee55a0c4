#pragma once

#include "hdnt/platform/Export.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace hdnt::diagnostics {
struct SourceText;
}

namespace hdnt::frontend {

/// Why a text was not taken apart: the first reason, and how many there are.
struct SourceProblem {
    int line = 0;          ///< of the text, from 1
    int column = 0;        ///< in characters, from 1; a tab is one
    std::string reason;    ///< what is wrong and what to do, one line
    std::size_t count = 0; ///< 0: nothing is wrong
};

/// A token, comment, file statement or directive of a text, as the scanner sees it, or what it does not take:
/// characters outside the language, a string without its second quote. Small: a text has millions.
struct SourceItem {
    enum Kind : std::int16_t {
        LineComment = -2,
        BlockComment = -3,
        FileStatement = -4,
        Directive = -5,
        Unrecognized = -6,
        OpenString = -7,
    };

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
///
/// Uses the scanner, which is process-wide: read on the loading thread, not during a parse. No file is opened, nothing
/// is printed, HDNTError::numErrors and the stored lines stay as they are, and no listener hears of it.
class HDNT_API SourceItems {
public:
    /// False, with the first reason, when the text holds what the scanner reports or what the items cannot say: an
    /// unrecognized character, an identifier that is too long, a string or comment that does not end, a file statement
    /// without its end of line, an archive. All but an archive is taken apart nevertheless.
    bool read(std::string text, SourceProblem& problem);
    /// The items from `first` on, up to `oldEnd`, gave way to those up to `newEnd`.
    struct Change {
        std::size_t first;
        std::size_t oldEnd;
        std::size_t newEnd;
        bool sameKinds = false; ///< one for one
    };
    /// Replaces a stretch of the text, and takes only the lines apart that it can change; all is then as if the new
    /// text had been read. None when more can change, such as by a comment that does not end there: nothing has changed
    /// then.
    std::optional<Change> edit(std::size_t offset, std::size_t length, std::string_view replacement);
    /// Where something was refused, in order: the offsets, which are of items or within comments and statements.
    const std::vector<std::uint32_t>& refusals() const { return refusals_; }

    std::string_view text() const { return bytes_; }
    std::size_t size() const { return items_.size(); }
    const SourceItem& operator[](std::size_t i) const { return items_[i]; }
    std::string_view textOf(const SourceItem& item) const { return bytes_.substr(item.offset, item.length); }
    std::string_view textOf(std::size_t i) const { return textOf(items_[i]); }

private:
    struct Window;
    HDNT_LOCAL Window windowAround(std::size_t offset, std::size_t length) const;
    HDNT_LOCAL bool endsInside() const;
    HDNT_LOCAL bool beginsArchive(std::size_t offset, std::size_t length, std::string_view replacement) const;
    HDNT_LOCAL void lay(SourceItems& part, const Window& window, std::uint32_t shift);
    HDNT_LOCAL void markLines(const Change& change);

    std::shared_ptr<diagnostics::SourceText> text_;
    std::string_view bytes_; ///< of text_
    std::vector<SourceItem> items_;
    std::vector<std::uint32_t> refusals_;
};

/// A problem at an offset of a text.
HDNT_API SourceProblem problemAt(std::string_view text, std::size_t offset, std::string reason);

} // namespace hdnt::frontend
