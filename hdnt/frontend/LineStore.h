#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace hdnt::frontend {

/// A text that is being scanned. Shared by the scanner's buffer and the line store, so that lines can be quoted after
/// the scan without having been copied. Texts that come from a stream grow at the end while they are scanned.
struct SourceText {
    std::string bytes;
};

/// Every source line that was scanned, in reading order over all files: line k is element k - 1.
/// Internal to the library; hosts use NtlGetLineNumbered, NtlPrintLines and NtlFreeScannerMem.
/// Process-wide, used by the loading thread only.
class LineStore {
public:
    static LineStore& instance();

    /// Adds the line of `length` bytes at `offset` of `text` (without its newline) and keeps the text alive.
    void add(const std::shared_ptr<SourceText>& text, size_t offset, size_t length);
    /// Forgets every line and lets go of the texts.
    void clear();
    size_t size() const { return lines_.size(); }
    /// Line n, counted from 1. The view holds until the store is cleared or the text grows. Past the end: the last
    /// line. "UNKNOWN LINE" for 0 and for an empty store.
    std::string_view line(size_t n) const;

private:
    struct Line {
        unsigned text;
        unsigned length;
        size_t offset;
    };
    std::vector<std::shared_ptr<SourceText>> texts_;
    std::vector<Line> lines_;
};

} // namespace hdnt::frontend
