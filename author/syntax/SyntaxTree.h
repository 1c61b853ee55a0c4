#pragma once

#include "author/syntax/SyntaxCode.h"
#include "hdnt/diagnostics/Diagnostic.h"
#include "hdnt/frontend/NtlGrammar.h"
#include "hdnt/frontend/SourceItems.h"
#include "hdnt/platform/Export.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace hdnt::author {

using frontend::NtlList;
using frontend::NtlPart;

/// A stretch of a text. Nodes stand in the order of their beginnings, each before what is inside it.
struct SyntaxNode {
    std::uint32_t begin = 0; ///< index of its first item
    std::uint32_t end = 0;   ///< index of the item behind its last one; as `begin` for what is missing
    std::uint32_t next = 0;  ///< index of the node behind it and all that is inside it
    std::int16_t token = 0;  ///< of a missing or unexpected part: what should stand here; 0 when nothing should
    NtlPart part = NtlPart::file;

    /// What is missing, or does not belong where it stands.
    bool isFault() const { return part == NtlPart::missing || part == NtlPart::unexpected; }
};

/// What to write instead of a stretch of a text, so that a fault is gone.
struct SyntaxMend {
    std::uint32_t offset = 0;
    std::uint32_t length = 0; ///< 0: something is put in
    std::string text;         ///< empty: the stretch goes
};

/// What a message is about, in bytes of the text.
struct SyntaxMessage {
    SyntaxCode code = SyntaxCode::unexpectedToken;
    std::uint32_t offset = 0;
    std::uint32_t length = 0; ///< 0: the place behind a token, where something is missing
    std::string text;
    std::uint32_t relatedOffset = 0;
    std::string relatedText;             ///< empty: no related place
    std::optional<SyntaxMend> mend = {}; ///< when there is one that is as good as certain
};

/// A text as a tree that keeps every byte of it and survives faults: what is missing is a node without items, what does
/// not belong is in a node of its own, and all else stands where it would stand without the fault. Comments, INCLUDE
/// and INLINE statements and directives are items between those of the nodes; no file is opened.
///
/// Without a message, the library's parser accepts the text (as far as its includes go); with one, it refuses it or
/// complains of it.
///
/// Uses the scanner, which is process-wide: read on the loading thread, not during a parse. Reads of the result: any
/// thread.
class HDNT_API SyntaxTree {
public:
    /// A text whose first token is "library", or begins nothing, is a library; others are what an included file holds.
    /// False, and nothing is there, for an archive or a text of 4 GiB: `refusal` says so.
    bool read(std::string text);
    /// Replaces a stretch of the text; all is then as if the new text had been read. A change within a block is read
    /// with that block alone, what goes further with the whole text.
    bool edit(std::size_t offset, std::size_t length, std::string_view replacement);
    /// What an included file holds: elements, entities or statements. `none`: the text was read as a library.
    NtlList content() const { return content_; }
    const frontend::SourceProblem& refusal() const { return refusal_; }

    const frontend::SourceItems& items() const { return items_; }
    /// The first node is the file; never empty after a read.
    const std::vector<SyntaxNode>& nodes() const { return nodes_; }
    /// The last outermost part that begins before an offset; 0 when there is none. What is missing or does not belong
    /// there counts as if it were of the part before.
    std::uint32_t elementBefore(std::size_t offset) const;
    /// In the order of the text.
    const std::vector<SyntaxMessage>& messages() const { return messages_; }
    /// The messages, with places in the file of that name.
    std::vector<Diagnostic> diagnostics(const std::string& file) const;

    /// The text, put together from nodes, items and the blanks between them.
    std::string text() const;

private:
    struct Patch;
    HDNT_LOCAL void parse();
    HDNT_LOCAL bool parseChanged(const frontend::SourceItems::Change& change, std::ptrdiff_t shift);
    HDNT_LOCAL bool isWhole(std::uint32_t node) const;
    HDNT_LOCAL std::uint32_t startOf(std::size_t item) const;
    HDNT_LOCAL bool parsePatch(Patch& patch, const frontend::SourceItems::Change& change) const;
    HDNT_LOCAL void layFaults(const Patch& patch, std::ptrdiff_t items, std::ptrdiff_t bytes);
    HDNT_LOCAL void lay(const Patch& patch, std::ptrdiff_t items, std::ptrdiff_t bytes);
    HDNT_LOCAL void collectMessages();

    frontend::SourceItems items_;
    std::vector<SyntaxNode> nodes_;
    std::vector<SyntaxMessage> messages_;
    std::vector<SyntaxMessage> faults_;     ///< the messages of the grammar, in its order
    std::vector<std::uint32_t> faultItems_; ///< the item that was ahead at each
    std::vector<std::uint32_t> trials_;     ///< the item at each fault that repairs were tried for
    NtlList content_ = NtlList::none;
    frontend::SourceProblem refusal_;
};

} // namespace hdnt::author
