#include "author/format/ItemRecord.internal.h"
#include "hdnt/frontend/Scanner.h"
#include "hdnt/frontend/SourceReader.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace hdnt::author {

namespace {

std::string_view trimmedLeft(std::string_view line) {
    return line.substr(std::min(line.find_first_not_of(" \t"), line.size()));
}

bool sameLines(std::string_view a, std::string_view b) {
    for (bool first = true;; first = false) {
        const std::size_t endA = std::min(a.find('\n'), a.size());
        const std::size_t endB = std::min(b.find('\n'), b.size());
        const std::string_view lineA = a.substr(0, endA);
        const std::string_view lineB = b.substr(0, endB);
        if (first ? lineA != lineB : trimmedLeft(lineA) != trimmedLeft(lineB)) return false;
        if (endA == a.size() || endB == b.size()) return endA == a.size() && endB == b.size();
        a.remove_prefix(endA + 1);
        b.remove_prefix(endB + 1);
    }
}

std::uint64_t wordAt(const char* bytes) {
    std::uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

// There are one or more bytes, and eight that may be read.
bool sameBytes(const char* a, const char* b, std::size_t size) {
    for (; size > 8; size -= 8, a += 8, b += 8)
        if (wordAt(a) != wordAt(b)) return false;
    const std::uint64_t difference = wordAt(a) ^ wordAt(b);
    const std::size_t unused = 64 - 8 * size;
    return (std::endian::native == std::endian::little ? difference << unused : difference >> unused) == 0;
}

} // namespace

static_assert(T_Library == 258 && T_Abstract - T_Library + 128 < 256 + SourceItem::OpenString);

void ItemRecord::addLong(const SourceItem& item, unsigned flags, std::uint32_t gap) {
    push(codeOf(item.kind) | tooLong << lengthShift | flags << flagShift);
    push(item.length);
    push(gap);
}

void ItemRecord::addChunk() {
    chunks_.push_back(std::make_unique_for_overwrite<std::uint32_t[]>(chunkSize));
    next_ = chunks_.back().get();
    chunkEnd_ = next_ + chunkSize;
}

/// One walk over what was recorded, with the items of the other text.
class ItemRecord::Comparison {
public:
    Comparison(const ItemRecord& record, std::string_view text)
        : record_(record), oldText_(record.text_.data()), text_(text.data()) {}

    bool isAtEnd() const { return at_ == record_.next_; }
    bool hasSameFlags() const { return hasSameFlags_; }
    std::size_t offset() const { return offset_; }

    bool take(const SourceItem* item, const SourceItem* itemsEnd) {
        while (item != itemsEnd && take(*item)) ++item;
        return item == itemsEnd;
    }

private:
    std::uint32_t next() {
        if (at_ == chunkEnd_) {
            at_ = record_.chunks_[chunk_++].get();
            chunkEnd_ = at_ + chunkSize;
        }
        return *at_++;
    }

    bool take(const SourceItem& item) {
        if (isAtEnd()) return false;
        const std::uint32_t mark = next();
        const std::uint32_t length = mark >> lengthShift & 255;
        const std::uint32_t gap = mark >> gapShift & 255;
        const unsigned flags = item.newlines > 1 ? +BelowBlank : 0;
        if (!item.isToken() || length == tooLong) return takeOther(item, mark, flags);
        mayFollow_ = true;
        if (mark != (markOf(item, flags) | gap << gapShift)) return takeUnlike(item, mark);
        offset_ += gap;
        if (!sameBytes(oldText_ + offset_, text_ + item.offset, length)) return false;
        offset_ += length;
        return true;
    }

    bool takeOther(const SourceItem& item, std::uint32_t mark, unsigned flags) {
        const bool follows = item.isComment() && item.newlines == 0 && mayFollow_;
        if (mark >> flagShift != (flags | flagsOf(item, follows))) hasSameFlags_ = false;
        mayFollow_ = !item.forcesNewline();
        return takeUnlike(item, mark);
    }

    // Of flags that are the same, or not.
    bool takeUnlike(const SourceItem& item, std::uint32_t mark) {
        std::uint32_t length = mark >> lengthShift & 255;
        std::uint32_t gap = mark >> gapShift & 255;
        if (length == tooLong) {
            length = next();
            gap = next();
        }
        offset_ += gap;
        if ((mark & 255) != codeOf(item.kind) || !isSame(item, length)) return false;
        if (item.isToken() && (mark >> flagShift != 0) != (item.newlines > 1)) hasSameFlags_ = false;
        offset_ += length;
        return true;
    }

    bool isSame(const SourceItem& item, std::uint32_t length) const {
        const char* const oldText = oldText_ + offset_;
        const char* const text = text_ + item.offset;
        if (item.kind == SourceItem::BlockComment && item.multiLine)
            return sameLines({oldText, length}, {text, item.length});
        return length == item.length && sameBytes(oldText, text, length);
    }

    const ItemRecord& record_;
    const std::uint32_t* at_ = nullptr;
    const std::uint32_t* chunkEnd_ = nullptr;
    std::size_t chunk_ = 0; ///< the next one
    const char* oldText_;
    const char* text_;
    std::size_t offset_ = 0;
    bool hasSameFlags_ = true;
    bool mayFollow_ = false; ///< nothing does at the beginning
};

ItemRecord::Likeness ItemRecord::likeness(frontend::SourceReader& reader, std::size_t& difference) const {
    Comparison comparison(*this, reader.text());
    std::vector<SourceItem> items;
    bool same = true;
    for (; same && reader.more(items); items.clear()) same = comparison.take(items.data(), items.data() + items.size());
    difference = comparison.offset();
    if (!same || reader.problem().count > 0 || !comparison.isAtEnd()) return Likeness::None;
    return comparison.hasSameFlags() ? Likeness::All : Likeness::Items;
}

} // namespace hdnt::author
