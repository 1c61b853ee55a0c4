#include "author/server/Document.internal.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <utility>

namespace hdnt::author::server {

namespace {

using platform::continuesCharacter;

// Of a character that begins with the byte. Beyond the first plane UTF-16 takes two.
std::size_t unitsOf(char first, Encoding encoding) {
    if (encoding == Encoding::utf8) return 1;
    if (continuesCharacter(first)) return 0;
    return static_cast<unsigned char>(first) >= 0xf0 ? 2 : 1;
}

std::size_t unitsOf(std::string_view text, Encoding encoding) {
    if (encoding == Encoding::utf8) return text.size();
    std::size_t units = 0;
    for (const char c : text) units += unitsOf(c, encoding);
    return units;
}

} // namespace

void Document::read(std::string text) {
    tree_.read(std::move(text));
    lines_.read(this->text());
    fileStatements_.reset();
}

void Document::edit(std::size_t offset, std::size_t length, std::string_view replacement) {
    if (tree_.nodes().empty()) { // refused, which only a look at the whole text can end
        std::string whole(text());
        return read(whole.replace(offset, length, replacement));
    }
    tree_.edit(offset, length, replacement);
    lines_.edit(text(), offset, length, replacement.size());
    fileStatements_.reset();
}

const std::vector<std::uint32_t>& Document::fileStatements() const {
    if (fileStatements_) return *fileStatements_;
    const frontend::SourceItems& items = tree_.items();
    fileStatements_.emplace();
    for (std::uint32_t item = 0; item < items.size(); ++item)
        if (items[item].kind == frontend::SourceItem::FileStatement) fileStatements_->push_back(item);
    return *fileStatements_;
}

std::size_t Document::offsetAt(Position position, Encoding encoding) const {
    if (position.line >= lines_.size()) return text().size();
    const std::size_t begin = lines_.begin(position.line);
    const std::string_view line = text().substr(begin, lines_.end(text(), position.line) - begin);
    std::size_t offset = 0;
    if (encoding == Encoding::utf8) {
        offset = std::min(position.character, line.size());
    } else {
        for (std::size_t units = 0; offset < line.size(); ++offset) {
            units += unitsOf(line[offset], encoding);
            if (units > position.character) break;
        }
    }
    while (offset > 0 && offset < line.size() && continuesCharacter(line[offset])) --offset;
    return begin + offset;
}

Position PositionFinder::at(std::size_t offset) {
    const LineIndex& lines = document_.lines();
    const std::size_t line = lines.lineAt(offset);
    const std::size_t end = lines.end(document_.text(), line);
    std::size_t to = std::min(offset, end);
    while (to > lines.begin(line) && to < end && continuesCharacter(document_.text()[to])) ++to;
    if (line != last_.line || to < lastOffset_) {
        last_ = {line, 0};
        lastOffset_ = lines.begin(line);
    }
    last_.character += unitsOf(document_.text().substr(lastOffset_, to - lastOffset_), encoding_);
    lastOffset_ = to;
    return last_;
}

} // namespace hdnt::author::server
