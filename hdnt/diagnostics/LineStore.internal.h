#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace hdnt::diagnostics {

/// A text that is being scanned. Shared by the scanner's buffer and the line store, so that lines can be quoted after
/// the scan without having been copied. Texts that come from a stream grow at the end while they are scanned. The
/// scanner looks past the end: a text without the room for it, platform::hasRoom(), is moved when its scan begins.
struct SourceText {
    std::string bytes;
    /// Of a text among others, SharedTexts: their memory, and its part of it. Then `bytes` is empty.
    std::shared_ptr<const char[]> shared = {};
    std::string_view part = {};

    std::string_view view() const { return shared ? part : std::string_view(bytes); }
};

/// Every source line that was scanned, in reading order over all files: line k is element k - 1.
/// Internal to the library; hosts use NtlGetLineNumbered, NtlPrintLines and NtlFreeScannerMem.
/// Process-wide, used by the loading thread only.
class LineStore {
public:
    static LineStore& instance();

    /// Adds the line from `start` to its end in `text`, where its newline or the end of the text is; nobody has looked
    /// for it yet. `follows`: it is the one behind the line that was added last, in the same text. Keeps the text.
    void add(const std::shared_ptr<SourceText>& text, size_t start, bool follows) {
        if (!follows || size_ % interval == 0) mark(text, start);
        ++size_;
    }
    /// Forgets every line and lets go of the texts.
    void clear();
    size_t size() const { return size_; }
    struct Line {
        std::string_view text;
        size_t start = 0; ///< in its text
    };
    /// Goes up when the store is cleared or a text moves, so that what was found in it can be known to be stale.
    size_t generation() const { return generation_; }
    /// To be called when a text that is still being read has grown out of its memory.
    void textMoved() { ++generation_; }
    /// Line n, counted from 1; the text as in line().
    Line at(size_t n) const;
    /// Line n, counted from 1. The view holds until the store is cleared or the text grows. Past the end: the last
    /// line. "UNKNOWN LINE" for 0 and for an empty store.
    std::string_view line(size_t n) const { return at(n).text; }

private:
    // Lines are many and seldom asked for. So it is kept where every 64th begins, and each that does not follow the one
    // before in its text.
    static constexpr size_t interval = 64;
    struct Mark {
        size_t line; ///< counted from 0
        size_t text;
        size_t start;
    };
    void mark(const std::shared_ptr<SourceText>& text, size_t start);

    std::vector<std::shared_ptr<SourceText>> texts_;
    std::vector<Mark> marks_;
    size_t size_ = 0;
    size_t generation_ = 1;
};

} // namespace hdnt::diagnostics
