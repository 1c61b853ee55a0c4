#pragma once

#include "author/exchange/BlockJson.h"

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace hdnt::author::guide {

/// Where the blocks of a library stand in its files, for pages that show it. Holds the texts of blocks, no trees.
///
/// Uses the scanner, which is process-wide: the loading thread's.
class SourceTexts {
public:
    /// Reads each file once. One that cannot be read, or is no NTL, has no blocks. The files of blocks come before
    /// those of map libraries when they are to be shown first.
    explicit SourceTexts(const std::vector<std::string>& files);

    /// The texts that declare or map the block of that name, case aside, with the comments right above them:
    /// [{"file", "line": of the first, "lines": [{"number", "anchor", "html"}], "leftOut": lines that are not shown to
    /// their end}]. `anchor` is an id for the line, empty when a text before shows a part of the same line. `html` has
    /// spans of the classes "k-comment", "k-keyword" and so on, as tokenKindNames has them. All texts together show
    /// 5,000 lines, each text a million bytes.
    Json of(std::string_view block) const;

private:
    struct Stretch {
        std::size_t file; ///< in files_
        std::size_t line; ///< of the file, from 1
        std::string text; ///< whole lines, but where other blocks share the first or the last one
    };

    void read(const std::string& file);

    std::vector<std::string> files_;
    std::map<std::string, std::vector<Stretch>> stretches_; ///< by names in upper case
};

/// The id of a line that `source`, an answer of SourceTexts::of(), shows: "line-N" for the first of its files,
/// "line-F-N" for others. Empty when it is not shown.
std::string lineAnchor(const Json& source, std::string_view file, std::size_t line);

/// As escaped(), but tabs and line breaks stay.
std::string escapedLines(std::string_view text);

} // namespace hdnt::author::guide
