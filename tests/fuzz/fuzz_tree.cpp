// A text and edits of it: the tree keeps every byte, agrees with the parser, and after each edit is that of the new
// text.
#include "tests/fuzz/quiet.h"
#include "tests/support/SyntaxLaw.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

using fuzz::require;
using hdnt::author::SyntaxTree;

namespace {

// Files are nobody's here, and the parser's depth has an end that the grammar's has not.
bool isJudged(const std::string& text) {
    for (const char* const word : {"INCLUDE", "INLINE", "#"})
        if (text.find(word) != text.npos) return false;
    return text.size() < 3900;
}

void judge(const std::string& text) {
    try {
        const std::string broken = support::brokenVerdict(text);
        require(broken.empty(), broken.c_str(), text);
    } catch (const std::runtime_error&) { // the model's, of what is no syntax
    }
}

} // namespace

/// The text ends at the first zero. Of an edit: three bytes of the offset, one of the length that goes, one of the
/// length that comes, and that.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool isQuiet = (fuzz::beQuiet(), true);
    (void)isQuiet;
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    std::string text(rest.substr(0, rest.find('\0')));
    rest.remove_prefix(std::min(size, text.size() + 1));
    SyntaxTree tree;
    if (!tree.read(text)) return 0;
    require(support::brokenTree(tree, text).empty(), "a broken tree", text);
    if (isJudged(text)) judge(text);
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(rest[i]); };
    while (rest.size() >= 5) {
        const std::size_t offset = ((byte(0) << 16) + (byte(1) << 8) + byte(2)) % (text.size() + 1);
        const std::size_t length = std::min<std::size_t>(byte(3), text.size() - offset);
        const std::string_view piece = rest.substr(5, byte(4));
        rest.remove_prefix(5 + piece.size());
        text.replace(offset, length, piece);
        SyntaxTree fresh;
        const bool isText = fresh.read(text);
        require(tree.edit(offset, length, piece) == isText, "edited and fresh are not refused alike", text);
        if (!isText) return 0;
        const std::string difference = support::difference(tree, fresh);
        require(difference.empty(), difference.c_str(), text);
    }
    return 0;
}
