#pragma once

#include "author/syntax/SyntaxTree.h"
#include "hdnt/platform/Export.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace hdnt::author {

/// What a stretch of a text is, for those who show it in colours.
enum class TokenKind : std::uint8_t {
    comment,
    keyword,
    string,
    number,
    function,
    type, ///< the name of a block
    variable,
    parameter, ///< the name of a pin
    property,
    macro, ///< an INCLUDE or INLINE statement, or a directive
};

/// The names of the kinds, in their order.
inline constexpr std::array<std::string_view, 10> tokenKindNames = {
    "comment", "keyword", "string", "number", "function", "type", "variable", "parameter", "property", "macro"};

/// In bytes of a text.
struct KindedToken {
    std::uint32_t offset = 0;
    std::uint32_t length = 0;
    TokenKind kind = TokenKind::comment;
};

/// The tokens and comments that reach into a stretch of the text, in order; operators and other signs are left out.
HDNT_API std::vector<KindedToken> tokenKinds(const SyntaxTree& tree, std::size_t begin, std::size_t end);

} // namespace hdnt::author
