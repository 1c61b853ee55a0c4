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

    /// Adds the line that begins at `start` of `text`, and keeps the text alive. It ends where its newline or the text
    /// does.
    void add(const std::shared_ptr<SourceText>& text, size_t start) {
        if (runs_.empty() || runs_.back().text != text) runs_.push_back({starts_.size(), text});
        starts_.push_back(start);
    }
    /// Forgets every line and lets go of the texts.
    void clear();
    size_t size() const { return starts_.size(); }
    /// Line n, counted from 1. The view holds until the store is cleared or the text grows. Past the end: the last
    /// line. "UNKNOWN LINE" for 0 and for an empty store.
    std::string_view line(size_t n) const;

private:
    // Lines of one text that follow each other.
    struct Run {
        size_t firstLine; ///< index
        std::shared_ptr<SourceText> text;
    };
    std::vector<Run> runs_;
    std::vector<size_t> starts_;
};

} // namespace hdnt::frontend
