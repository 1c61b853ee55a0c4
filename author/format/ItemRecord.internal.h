#pragma once

#include "hdnt/frontend/SourceItems.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace hdnt::frontend {
class SourceReader;
}

namespace hdnt::author {

using frontend::SourceItem;

/// What a text was taken apart into, and all that decides how it is laid out: four bytes an item. To be held against
/// the text that was made of it.
class ItemRecord {
public:
    /// How a comment stands in its line, and whether a blank line comes before an item in the new text. No other blank
    /// space decides anything.
    enum Flag : unsigned { EndsLine = 1, Follows = 2, BelowBlank = 4 };

    /// Eight bytes behind the end of the text must be there to be read.
    explicit ItemRecord(std::string_view text) : text_(text) {}

    void add(const SourceItem& item, unsigned flags) {
        const std::uint32_t gap = item.offset - end_;
        end_ = item.offset + item.length;
        if (item.length < tooLong && gap < tooLong) push(markOf(item, flags) | gap << gapShift);
        else addLong(item, flags, gap);
    }
    static unsigned flagsOf(const SourceItem& item, bool follows) {
        return (item.isComment() && item.endsLine ? +EndsLine : 0U) | (follows ? +Follows : 0U);
    }
    /// A number for the item that is added next, to say that a blank line comes before it.
    std::size_t next() const { return chunks_.size() * chunkSize - static_cast<std::size_t>(chunkEnd_ - next_); }
    void setBelowBlank(std::size_t number) {
        chunks_[number / chunkSize][number % chunkSize] |= std::uint32_t{BelowBlank} << flagShift;
    }

    enum class Likeness { None, Items, All };
    /// Holds this against the items of another text, which is read to its end if it has the same: as many, of the same
    /// kinds with the same texts, and if that is All, the same flags. In texts, the blank space before the further
    /// lines of a block comment may differ. `difference` is else where the first that differs stands in this one's.
    Likeness likeness(frontend::SourceReader& reader, std::size_t& difference) const;

private:
    class Comparison;
    static constexpr std::uint32_t tooLong = 255;
    static constexpr unsigned lengthShift = 8;
    static constexpr unsigned gapShift = 16;
    static constexpr unsigned flagShift = 24;

    static std::uint32_t markOf(const SourceItem& item, unsigned flags) {
        return codeOf(item.kind) | item.length << lengthShift | flags << flagShift;
    }
    // Kinds in a byte: characters as they are, words behind them, and what is below 0 at the end.
    static std::uint32_t codeOf(int kind) {
        return static_cast<std::uint32_t>(kind < firstWord ? kind : kind - wordShift) & 255;
    }
    static constexpr int firstWord = 258;
    static constexpr int wordShift = firstWord - 128;

    void push(std::uint32_t mark) {
        if (next_ == chunkEnd_) addChunk();
        *next_++ = mark;
    }
    void addChunk();
    void addLong(const SourceItem& item, unsigned flags, std::uint32_t gap);

    std::string_view text_;
    static constexpr std::size_t chunkSize = 4096;
    using Chunk = std::unique_ptr<std::uint32_t[]>;
    std::vector<Chunk> chunks_;     ///< marks: code, length, gap before it, flags; longer ones are in the two behind
    std::uint32_t* next_ = nullptr; ///< in the last chunk, which may be full
    std::uint32_t* chunkEnd_ = nullptr;
    std::uint32_t end_ = 0;
};

} // namespace hdnt::author
