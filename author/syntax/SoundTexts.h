#pragma once

#include "author/syntax/SyntaxTree.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace hdnt::author {

/// The texts of a library of which some are faulty, with what is faulty left out, so that the rest can be judged all
/// the same. Left out are whole blocks, mappings and functions, and whatever stands wrong outside of them; blanks stand
/// in their place, so that all else stays where it is. A block that a faulty file is included in is left out, too.
///
/// As SyntaxTree.
class HDNT_API SoundTexts {
public:
    /// Reads a text, which an INCLUDE or INLINE statement brings in or which is a library of its own. False when it
    /// cannot be read, and then it is not one of these.
    bool add(const std::string& path, std::string text, bool isIncluded);
    bool has(const std::string& path) const { return files_.contains(path); }
    /// What is wrong with it. Nothing when it was included and is neither elements, entities nor statements: whether it
    /// fits is not known then.
    std::vector<Diagnostic> diagnostics(const std::string& path) const;

    /// Leaves out the block, mapping or function at the place, or of what is only a part of one, all. False when there
    /// is none, or it is left out already.
    bool leaveOut(const std::string& path, std::size_t offset);

    /// The texts that differ from what was read, by path. Null when one of them cannot be mended: without a head of the
    /// library, and room for one.
    std::optional<std::map<std::string, std::string>> texts();
    /// Whether a text speaks of something that was left out of the last texts(), which may be all that is wrong.
    bool speaksOfLeftOut(std::string_view text) const;

private:
    struct Part {
        std::uint32_t node;
        bool isFaulty;
    };
    struct File {
        SyntaxTree tree;
        std::vector<Part> parts; ///< what stands outermost, in the order of the text
        bool isIncluded = false;
        bool isPiece = false;       ///< of a block
        bool isFaulty = false;      ///< somewhere
        bool isFaultyPiece = false; ///< to be left out as a whole
    };

    HDNT_LOCAL static bool isFaulty(const SyntaxTree& tree, std::uint32_t node);
    HDNT_LOCAL static Part* partAt(File& file, std::size_t offset);
    HDNT_LOCAL static bool isUnknown(const File& file);
    HDNT_LOCAL bool leaveOutIncluding();
    HDNT_LOCAL bool bringsInFaulty(std::string_view statement) const;
    HDNT_LOCAL void nameLeftOut(const File& file);

    std::map<std::string, File> files_;
    std::set<std::string, std::less<>> leftOut_; ///< names, in upper case
};

} // namespace hdnt::author
