#include "hdnt/frontend/SourceItems.h"

#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/frontend/ArchDirective.h"
#include "hdnt/frontend/Keywords.internal.h"
#include "hdnt/frontend/Scanner.h"
#include "hdnt/frontend/ScannerState.internal.h"
#include "hdnt/frontend/TokenSet.h"
#include "hdnt/platform/Bytes16.internal.h"
#include "hdnt/platform/Decoder.internal.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <utility>

namespace hdnt::frontend {

SourceProblem problemAt(std::string_view text, std::size_t offset, std::string reason) {
    const std::string_view before = text.substr(0, offset);
    const std::size_t lineStart = before.rfind('\n') + 1;
    SourceProblem problem;
    problem.line = static_cast<int>(std::count(before.begin(), before.end(), '\n')) + 1;
    problem.column = static_cast<int>(platform::characters(before.substr(lineStart))) + 1;
    problem.reason = std::move(reason);
    problem.count = 1;
    return problem;
}

std::string_view spellingOf(int token) {
    for (const Keyword& keyword : keywords)
        if (keyword.token == token && token != T_BoolConstant) return keyword.spelling;
    return {};
}

static std::string unrecognized(char c) {
    if (c == '\r') return "carriage return; end lines with a newline alone";
    char text[8];
    const bool printable = c >= ' ' && c <= '~';
    std::snprintf(text, sizeof text, printable ? "'%c'" : "\\x%02x",
                  static_cast<unsigned>(static_cast<unsigned char>(c)));
    return "unrecognized character " + std::string(text) + "; remove it";
}

static_assert(SourceItem::LineComment == +Scanner::LineComment && SourceItem::BlockComment == +Scanner::BlockComment &&
              SourceItem::FileStatement == +Scanner::FileStatement);

/// Runs the scanner over a text. Listens to it meanwhile, and leaves it and the error count as they were.
class ItemReader : private HDNTErrorListener {
public:
    ItemReader(SourceItems& out, SourceProblem& problem)
        : out_(out), text_(out.text_->bytes), problem_(problem), listener_(HDNTError::setListener(this)),
          errors_(HDNTError::numErrors) {
        scanner_.setPieces(true);
        scanner_.beginText(out.text_);
        scanner_.init();
    }
    ~ItemReader() override {
        scanner_.endText();
        scanner_.setPieces(false);
        HDNTError::numErrors = errors_;
        HDNTError::setListener(listener_);
    }
    ItemReader(const ItemReader&) = delete;
    ItemReader& operator=(const ItemReader&) = delete;

    bool read() {
        while (const int kind = scanner_.scan())
            add(kind, scanner_.matchOffset(), static_cast<std::size_t>(scanner_.matchLength()));
        if (scanner_.endedInStatement()) {
            push(SourceItem::FileStatement, scanner_.pieceOffset(), text_.size() - scanner_.pieceOffset());
            refuse(scanner_.pieceOffset(), "file statement without a ';' and the end of its line; add what is missing");
        }
        out_.markLines({0, 0, out_.items_.size()});
        return problem_.count == 0;
    }

private:
    bool report(const HDNTReport&) override {
        const std::size_t offset = scanner_.matchOffset();
        if (offset < directiveEnd_) return true;
        if (scanner_.matchLength() != 1) // the token comes behind the report
            refuse(offset, "identifier of " + std::to_string(scanner_.matchLength()) +
                               " characters; shorten it to 31, which is all that is read of it");
        else if (!takeDirective(offset)) takeUnrecognized(offset);
        return true;
    }

    void notice(const HDNTNotice& notice) override {
        const bool comment = notice.kind == HDNTNotice::Kind::UnterminatedComment;
        const std::size_t offset = comment ? scanner_.pieceOffset() : scanner_.matchOffset();
        if (comment) {
            push(SourceItem::BlockComment, offset, text_.size() - offset);
            refuse(offset, "comment that does not end; add */");
        } else if (offset >= directiveEnd_) {
            push(SourceItem::OpenString, offset, static_cast<std::size_t>(scanner_.matchLength()));
            refuse(offset, "string that does not end in its line; add the quote");
        }
    }

    void refuse(std::size_t offset, const std::string& reason) {
        out_.refusals_.push_back(static_cast<std::uint32_t>(offset));
        if (problem_.count++ == 0) problem_ = problemAt(text_, offset, reason);
    }

    // One item for a run of them.
    void takeUnrecognized(std::size_t offset) {
        if (out_.items_.empty() || gapStart_ != offset || out_.items_.back().kind != SourceItem::Unrecognized)
            push(SourceItem::Unrecognized, offset, 0);
        ++out_.items_.back().length;
        gapStart_ = offset + 1;
        refuse(offset, unrecognized(text_[offset]));
    }

    std::string_view lineAt(std::size_t offset) const {
        return std::string_view(text_).substr(offset, std::min(text_.find('\n', offset), text_.size()) - offset);
    }

    // Map libraries have lines that are taken out before the scanner sees them; here it sees their number sign first.
    bool takeDirective(std::size_t offset) {
        if (offset > 0 && text_[offset - 1] != '\n') return false;
        const std::string_view line = lineAt(offset);
        if (!isArchDirective(line)) return false;
        push(SourceItem::Directive, offset, line.size());
        directiveEnd_ = offset + line.size();
        return true;
    }

    void add(int kind, std::size_t offset, std::size_t length) {
        if (offset < directiveEnd_) {
            if (offset + length > directiveEnd_) refuse(offset, "comment or statement that goes on behind a directive");
            return;
        }
        if (kind == Scanner::FileStatement) --length;
        while (kind == Scanner::LineComment &&
               (text_[offset + length - 1] == ' ' || text_[offset + length - 1] == '\t'))
            --length;
        push(kind, offset, length);
        checkLines(out_.items_.back());
    }

    void push(int kind, std::size_t offset, std::size_t length) {
        SourceItem item;
        item.offset = static_cast<std::uint32_t>(offset);
        item.length = static_cast<std::uint32_t>(length);
        item.kind = static_cast<std::int16_t>(kind);
        for (std::size_t at = gapStart_; at < offset && item.newlines < 2; ++at)
            if (text_[at] == '\n') ++item.newlines;
        gapStart_ = offset + length;
        out_.items_.push_back(item);
    }

    void checkLines(SourceItem& item) {
        if (item.kind != SourceItem::BlockComment && item.kind != SourceItem::FileStatement) return;
        const std::string_view text = out_.textOf(item);
        for (std::size_t end = text.find('\n'); end != text.npos; end = text.find('\n', end + 1)) {
            item.multiLine = true;
            if (text[end + 1] == '#' && isArchDirective(text.substr(end + 1)))
                refuse(item.offset + end + 1, "directive inside a comment or statement; indent it, or move it out");
        }
    }

    SourceItems& out_;
    const std::string& text_;
    SourceProblem& problem_;
    HDNTErrorListener* listener_;
    int errors_;
    Scanner& scanner_ = Scanner::instance();
    std::size_t directiveEnd_ = 0;
    std::size_t gapStart_ = 0;
};

bool SourceItems::read(std::string text, SourceProblem& problem) {
    problem = SourceProblem();
    items_.clear();
    refusals_.clear();
    platform::makeRoom(text); // the items are views, so that the text must not move any more
    text_ = std::make_shared<SourceText>(SourceText{std::move(text)});
    bytes_ = text_->bytes;
    if (platform::Decoder::forArchive(bytes_)) problem = problemAt(bytes_, 0, "compressed; expand it first");
    else if (text_->bytes.size() >= std::numeric_limits<std::uint32_t>::max())
        problem = problemAt(bytes_, 0, "text of 4 GiB or more; split it");
    return problem.count == 0 && ItemReader(*this, problem).read();
}

static std::string_view trimmedLeft(std::string_view line) {
    return line.substr(std::min(line.find_first_not_of(" \t"), line.size()));
}

static bool sameLines(std::string_view a, std::string_view b) {
    for (bool first = true;; first = false) {
        const std::size_t endA = std::min(a.find('\n'), a.size());
        const std::size_t endB = std::min(b.find('\n'), b.size());
        const std::string_view lineA = a.substr(0, endA);
        const std::string_view lineB = b.substr(0, endB);
        if (first ? lineA != lineB : trimmedLeft(lineA) != trimmedLeft(lineB)) return false;
        if (endA == a.size() || endB == b.size()) return endA == a.size() && endB == b.size();
        a.remove_prefix(endA + 1);
        b.remove_prefix(endB + 1);
    }
}

bool SourceItems::equals(const SourceItems& other, std::size_t& difference) const {
    const std::size_t common = std::min(size(), other.size());
    for (difference = 0; difference < common; ++difference) {
        const SourceItem& item = items_[difference];
        if (item.kind != other[difference].kind) return false;
        const bool shifted = item.kind == SourceItem::BlockComment && item.multiLine;
        const std::string_view text = textOf(item);
        const std::string_view otherText = other.textOf(difference);
        if (shifted ? !sameLines(text, otherText) : text != otherText) return false;
    }
    return size() == other.size();
}

} // namespace hdnt::frontend
