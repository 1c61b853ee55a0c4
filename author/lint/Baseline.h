#pragma once

#include "hdnt/diagnostics/Diagnostic.h"
#include "hdnt/platform/Export.h"

#include <cstddef>
#include <map>
#include <string>
#include <tuple>
#include <vector>

namespace hdnt::author {

/// Fills Diagnostic::element, where it is empty, with the declarations and statements that the place is in, the
/// outermost first: "block GATE/pin I", "block GATE/inst a". Reads and parses the files again, but for those among the
/// texts, by path. The loading thread's, outside of a load.
HDNT_API void nameElements(std::vector<Diagnostic>& findings, const std::map<std::string, std::string>& texts = {});

/// Findings that are known: by rule, file and element and not by line, so that they stay known when text moves; how
/// many there are of each.
///
/// The text has a line for each, sorted, with tabs between code, file, element and count: people read it, and changes
/// merge as changes of lines. Files are relative to the folder of the baseline.
class HDNT_API Baseline {
public:
    /// An empty one, whose file is or will be at the path.
    explicit Baseline(std::string path);
    /// Reads the file. Throws HEXDataException with "file:line: what is wrong".
    void read();
    /// What the file is to hold. Whoever writes it sees to it that an older one is not lost when that fails.
    std::string text() const;

    /// Adds what one library has. What several have, such as findings of a file that they include, counts once.
    void add(const std::vector<Diagnostic>& findings);
    /// Takes out the findings of one library that are known. Of those that are alike, the first are.
    void hide(std::vector<Diagnostic>& findings);

    std::size_t size() const { return entries_.size(); }
    /// How many entries of these files were to be hidden more often than they were there. Thorough rules
    /// (isThoroughRule) count only when they were judged.
    std::size_t missing(const std::vector<std::string>& files, bool isThorough) const;

private:
    using Key = std::tuple<std::string, std::string, std::string>; ///< file, element, code
    struct Entry {
        std::size_t count = 0;
        std::size_t hidden = 0;
    };
    HDNT_LOCAL std::string nameOf(const std::string& file) const;
    HDNT_LOCAL Key keyOf(const Diagnostic& finding) const;

    std::string path_;
    std::map<Key, Entry> entries_;
};

} // namespace hdnt::author
