#include "author/syntax/SoundTexts.h"

#include "hdnt/platform/HSTStringUtils.h"

#include <algorithm>
#include <array>
#include <functional>
#include <utility>

namespace hdnt::author {

namespace {

using frontend::SourceItem;
using frontend::SourceItems;

// What leaves no node behind, and is in the part that it is said of.
bool isInWholeNodes(SyntaxCode code) {
    return code == SyntaxCode::longWord || code == SyntaxCode::openString || code == SyntaxCode::strayBrace ||
           code == SyntaxCode::nestedTooDeep;
}

bool isName(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }

/// A text in which items become blank.
class Blanks {
public:
    explicit Blanks(const SourceItems& items) : items_(items), text_(items.text()) {}

    void blank(std::size_t item) {
        const SourceItem& gone = items_[item];
        for (std::size_t at = gone.offset; at < gone.offset + gone.length; ++at)
            if (text_[at] != '\n') text_[at] = ' ';
    }
    // Comments stay, as far as they end: what stands behind them in their line is found by its column.
    void blankCode(std::size_t begin, std::size_t end) {
        for (std::size_t item = begin; item < end; ++item)
            if (!items_[item].isComment()) blank(item);
    }
    void blankStrays() {
        for (std::size_t item = 0; item < items_.size(); ++item)
            if (items_[item].kind <= SourceItem::Directive) blank(item);
        std::size_t item = 0;
        for (const std::uint32_t refused : items_.refusals()) {
            while (item < items_.size() && items_[item].offset < refused) ++item;
            if (item < items_.size() && items_[item].offset == refused) blank(item);
        }
    }
    /// Puts the head of a library in front of an item. False when there is no room for it in a line.
    bool putHead(std::size_t item) {
        constexpr std::string_view head = "library\"L\"{";
        for (std::size_t i = 0; i < item; ++i) blank(i);
        const std::size_t end = item < items_.size() ? items_[item].offset : text_.size();
        for (std::size_t begin = 0; begin + head.size() <= end; ++begin) {
            const std::size_t newline = text_.find('\n', begin);
            if (std::min(newline, end) - begin >= head.size()) return text_.replace(begin, head.size(), head), true;
            begin = newline;
        }
        return false;
    }
    void close() { text_ += "\n}"; }

    std::string take() { return std::move(text_); }

private:
    const SourceItems& items_;
    std::string text_;
};

} // namespace

bool SoundTexts::isFaulty(const SyntaxTree& tree, std::uint32_t node) {
    const std::vector<SyntaxNode>& nodes = tree.nodes();
    return std::any_of(nodes.begin() + node, nodes.begin() + nodes[node].next, std::mem_fn(&SyntaxNode::isFault));
}

bool SoundTexts::isUnknown(const File& file) { return file.isIncluded && file.tree.content() == NtlList::none; }

bool SoundTexts::add(const std::string& path, std::string text, bool isIncluded) {
    File file;
    if (!file.tree.read(std::move(text))) return false;
    file.isIncluded = isIncluded;
    file.isPiece = isIncluded && file.tree.content() != NtlList::elements;
    const std::vector<SyntaxNode>& nodes = file.tree.nodes();
    for (std::uint32_t node = 1; node < nodes.size(); node = nodes[node].next)
        if (nodes[node].part != NtlPart::missing) file.parts.push_back({node, isFaulty(file.tree, node)});
    for (const SyntaxMessage& message : file.tree.messages()) {
        if (!isInWholeNodes(message.code)) continue;
        if (Part* const part = partAt(file, message.offset)) part->isFaulty = true;
    }
    const auto faulty = [](const Part& part) { return part.isFaulty; };
    file.isFaulty = !file.tree.messages().empty();
    file.isFaultyPiece = file.isPiece && !isUnknown(file) && std::any_of(file.parts.begin(), file.parts.end(), faulty);
    files_.insert_or_assign(path, std::move(file));
    return true;
}

SoundTexts::Part* SoundTexts::partAt(File& file, std::size_t offset) {
    const SourceItems& items = file.tree.items();
    const auto nodeOf = [&](const Part& part) { return file.tree.nodes()[part.node]; };
    const auto begins = [&](std::size_t at, const Part& part) {
        const std::uint32_t begin = nodeOf(part).begin;
        return begin >= items.size() || at < items[begin].offset;
    };
    const auto behind = std::upper_bound(file.parts.begin(), file.parts.end(), offset, begins);
    if (behind == file.parts.begin()) return nullptr;
    Part& part = *std::prev(behind);
    const std::uint32_t end = nodeOf(part).end;
    if (end == nodeOf(part).begin || offset >= items[end - 1].offset + items[end - 1].length) return nullptr;
    return &part;
}

std::vector<Diagnostic> SoundTexts::diagnostics(const std::string& path) const {
    const auto found = files_.find(path);
    if (found == files_.end() || isUnknown(found->second)) return {};
    return found->second.tree.diagnostics(path);
}

bool SoundTexts::leaveOut(const std::string& path, std::size_t offset) {
    const auto found = files_.find(path);
    if (found == files_.end()) return false;
    File& file = found->second;
    file.isFaulty = true;
    if (file.isPiece) return !std::exchange(file.isFaultyPiece, true);
    Part* const part = partAt(file, offset);
    return part && !std::exchange(part->isFaulty, true);
}

// By the name, which is the end of a path. The name stands in the line with the semicolon.
bool SoundTexts::bringsInFaulty(std::string_view statement) const {
    std::size_t begin = statement.rfind('\n') + 1;
    if (begin == 0) begin = std::min(statement.find_first_of(" \t"), statement.size());
    begin = std::min(statement.find_first_not_of(" \t", begin), statement.size());
    const std::string_view name = statement.substr(begin, statement.find_first_of(" \t;", begin) - begin);
    return std::any_of(files_.begin(), files_.end(), [&](const auto& file) {
        const std::string_view path = file.first;
        return file.second.isFaultyPiece &&
               (path == name || (path.ends_with(name) && path[path.size() - name.size() - 1] == '/'));
    });
}

// True when something came to it: a file that is included may itself be included.
bool SoundTexts::leaveOutIncluding() {
    bool more = false;
    for (auto& [path, file] : files_) {
        const SourceItems& items = file.tree.items();
        for (std::size_t item = 0; item < items.size(); ++item) {
            if (items[item].kind != SourceItem::FileStatement || !bringsInFaulty(items.textOf(item))) continue;
            Part* const part = file.isPiece ? nullptr : partAt(file, items[item].offset);
            bool& left = part ? part->isFaulty : file.isFaultyPiece;
            if (part || file.isIncluded) more |= !std::exchange(left, true);
            file.isFaulty = true;
        }
    }
    return more;
}

// Of what stands outside, only what may be the name of a block or function.
void SoundTexts::nameLeftOut(const File& file) {
    const SourceItems& items = file.tree.items();
    const auto kindOf = [&](std::uint32_t item) { return item < items.size() ? items[item].kind : 0; };
    for (const Part& part : file.parts) {
        if (!part.isFaulty) continue;
        const SyntaxNode& node = file.tree.nodes()[part.node];
        for (std::uint32_t item = node.begin; item < node.end; ++item) {
            const bool isFunction =
                kindOf(item) == T_Identifier && (node.part == NtlPart::function || kindOf(item + 1) == '(');
            const int before = item > 0 ? kindOf(item - 1) : 0;
            const bool isBlock = kindOf(item) == T_StringConstant && (before == T_Block || before == T_Identifier);
            if (!isFunction && !isBlock) continue;
            std::string name = HSTStringUtils::to_upper_copy(items.textOf(item));
            std::erase(name, '"');
            leftOut_.insert(std::move(name));
            break;
        }
    }
}

namespace {

/// One of the parts that stand outermost.
struct Stretch {
    std::uint32_t begin; ///< items
    std::uint32_t end;
    bool isFaulty;
};

/// What a library has beside its parts: the head, and the brace behind all.
struct Frame {
    std::vector<std::uint32_t> items;
    std::size_t first; ///< of the parts that stay: their first item, and the one behind them
    std::size_t behind = 0;
};

Frame frameOf(const SourceItems& items, const std::vector<Stretch>& parts) {
    Frame frame{{}, items.size()};
    std::uint32_t item = 0;
    const auto addUpTo = [&](std::size_t end) {
        for (; item < end; ++item)
            if (items[item].isToken()) frame.items.push_back(item);
    };
    for (const Stretch& part : parts) {
        addUpTo(part.begin);
        item = part.end;
        if (part.isFaulty) continue;
        frame.first = std::min<std::size_t>(frame.first, part.begin);
        frame.behind = part.end;
    }
    addUpTo(items.size());
    return frame;
}

// False when there is no room for a head.
bool mendFrame(Blanks& blanks, const SourceItems& items, const Frame& frame) {
    constexpr std::array<int, 3> head = {T_Library, T_StringConstant, '{'};
    const std::vector<std::uint32_t>& tokens = frame.items;
    const bool hasHead = tokens.size() >= head.size() &&
                         std::equal(head.begin(), head.end(), tokens.begin(),
                                    [&](int token, std::uint32_t item) { return token == items[item].kind; });
    const std::size_t behindHead = hasHead ? head.size() : 0;
    const bool isClosed =
        tokens.size() > behindHead && items[tokens.back()].kind == '}' && tokens.back() >= frame.behind;
    const std::size_t end = isClosed ? tokens.size() - 1 : tokens.size();
    for (std::size_t i = behindHead; i < end; ++i) blanks.blank(tokens[i]);
    if (!isClosed) blanks.close();
    return hasHead || blanks.putHead(frame.first);
}

} // namespace

std::optional<std::map<std::string, std::string>> SoundTexts::texts() {
    while (leaveOutIncluding()) {
    }
    leftOut_.clear();
    std::map<std::string, std::string> texts;
    for (const auto& [path, file] : files_) {
        if (!file.isFaulty) continue;
        nameLeftOut(file);
        const SourceItems& items = file.tree.items();
        Blanks blanks(items);
        blanks.blankStrays();
        std::vector<Stretch> parts;
        for (const Part& part : file.parts) {
            const SyntaxNode& node = file.tree.nodes()[part.node];
            parts.push_back({node.begin, node.end, part.isFaulty});
            if (part.isFaulty) blanks.blankCode(node.begin, node.end);
        }
        if (file.isFaultyPiece) blanks.blankCode(0, items.size());
        else if (!file.isIncluded && !mendFrame(blanks, items, frameOf(items, parts))) return std::nullopt;
        texts.emplace(path, blanks.take());
    }
    return texts;
}

// Names are in quotes, or behind the word.
bool SoundTexts::speaksOfLeftOut(std::string_view text) const {
    for (std::size_t begin = 0; begin < text.size(); ++begin) {
        std::size_t end = begin;
        while (end < text.size() && isName(text[end])) ++end;
        const std::string_view before = text.substr(0, begin);
        const bool isNamed = end > begin && (before.ends_with('"') || before.ends_with("Function "));
        if (isNamed && leftOut_.contains(HSTStringUtils::to_upper_copy(text.substr(begin, end - begin)))) return true;
        begin = end;
    }
    return false;
}

} // namespace hdnt::author
