#include "hdnt/frontend/SourceReader.h"

#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/frontend/ArchDirective.h"
#include "hdnt/frontend/Scanner.h"
#include "hdnt/frontend/ScannerState.internal.h"
#include "hdnt/platform/Bytes16.internal.h"
#include "hdnt/platform/Decoder.internal.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <utility>

namespace hdnt::frontend {

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
class SourceReader::Session : private HDNTErrorListener {
public:
    Session(const std::shared_ptr<SourceText>& text, SourceProblem& problem, std::vector<std::uint32_t>* refusals)
        : Session(text->bytes, problem, refusals) {
        scanner_.beginText(text);
        isOpen_ = true;
        scanner_.init();
    }
    ~Session() override {
        if (isOpen_) scanner_.endText();
        scanner_.setPieces(false);
        HDNTError::numErrors = errors_;
        HDNTError::setListener(listener_);
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// False at the end of the text; something may have been appended all the same.
    bool readSome(std::vector<SourceItem>& items) {
        items_ = &items;
        const bool more = scan(items);
        settleComments(true);
        return more;
    }

private:
    // The destructor puts back also when the other constructor throws: this one is done by then.
    Session(const std::string& text, SourceProblem& problem, std::vector<std::uint32_t>* refusals)
        : text_(text), problem_(problem), refusals_(refusals), listener_(HDNTError::setListener(this)),
          errors_(HDNTError::numErrors) {
        scanner_.setPieces(true);
    }

    bool scan(std::vector<SourceItem>& items) {
        const std::size_t begin = items.size();
        Scanner& scanner = scanner_;
        for (int left = 500; const int kind = scanner.scan(); --left) {
            const std::size_t offset = scanner.matchOffset();
            const auto length = static_cast<std::size_t>(scanner.matchLength());
            if (kind > 0 && offset >= directiveEnd_) pushToken(items, kind, offset, length);
            else add(kind, offset, length);
            if (left <= 0 && openComments_ == 0 && items.size() > begin) return true;
        }
        if (scanner.endedInStatement()) {
            push(SourceItem::FileStatement, scanner.pieceOffset(), text_.size() - scanner.pieceOffset());
            refuse(scanner.pieceOffset(),
                   [] { return "file statement without a ';' and the end of its line; add what is missing"; });
        }
        return false;
    }

    // Tells the last items, which are comments of one line, whether it ends behind them.
    void settleComments(bool lineEnds) {
        for (; openComments_ > 0; --openComments_) (*items_)[items_->size() - openComments_].endsLine = lineEnds;
    }

    bool report(const HDNTReport&) override {
        const std::size_t offset = scanner_.matchOffset();
        if (offset < directiveEnd_) return true;
        if (scanner_.matchLength() != 1) // the token comes behind the report
            refuse(offset, [this] {
                return "identifier of " + std::to_string(scanner_.matchLength()) +
                       " characters; shorten it to 31, which is all that is read of it";
            });
        else if (!takeDirective(offset)) takeUnrecognized(offset);
        return true;
    }

    void notice(const HDNTNotice& notice) override {
        const bool comment = notice.kind == HDNTNotice::Kind::UnterminatedComment;
        const std::size_t offset = comment ? scanner_.pieceOffset() : scanner_.matchOffset();
        if (comment) {
            push(SourceItem::BlockComment, offset, text_.size() - offset);
            refuse(offset, [] { return "comment that does not end; add */"; });
        } else if (offset >= directiveEnd_) {
            push(SourceItem::OpenString, offset, static_cast<std::size_t>(scanner_.matchLength()));
            refuse(offset, [] { return "string that does not end in its line; add the quote"; });
        }
    }

    template <typename Reason>
    void refuse(std::size_t offset, Reason reason) {
        if (refusals_) refusals_->push_back(static_cast<std::uint32_t>(offset));
        if (problem_.count++ == 0) problem_ = problemAt(text_, offset, reason());
    }

    // One item for a run of them.
    void takeUnrecognized(std::size_t offset) {
        if (items_->empty() || gapStart_ != offset || items_->back().kind != SourceItem::Unrecognized)
            push(SourceItem::Unrecognized, offset, 0);
        ++items_->back().length;
        gapStart_ = offset + 1;
        refuse(offset, [&] { return unrecognized(text_[offset]); });
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
            if (offset + length > directiveEnd_)
                refuse(offset, [] { return "comment or statement that goes on behind a directive"; });
            return;
        }
        if (kind == Scanner::FileStatement) --length;
        while (kind == Scanner::LineComment &&
               (text_[offset + length - 1] == ' ' || text_[offset + length - 1] == '\t'))
            --length;
        const std::string_view text = std::string_view(text_).substr(offset, length);
        const bool multiLine = kind != Scanner::LineComment && text.find('\n') != text.npos;
        push(kind, offset, length, multiLine);
        if (multiLine) checkLines(text, offset);
    }

    void pushToken(std::vector<SourceItem>& items, int kind, std::size_t offset, std::size_t length) {
        // The scanner has counted the newlines; other pieces may have some inside.
        const int line = scanner_.tokenLine();
        const int newlines = line == tokenLine_ ? 0 : tokenLine_ > 0 ? line - tokenLine_ : newlinesBefore(offset);
        tokenLine_ = line;
        gapStart_ = offset + length;
        if (openComments_ > 0) settleComments(newlines > 0);
        SourceItem& item = items.emplace_back();
        item.offset = static_cast<std::uint32_t>(offset);
        item.length = static_cast<std::uint32_t>(length);
        item.kind = static_cast<std::int16_t>(kind);
        item.newlines = static_cast<std::uint8_t>(std::min(newlines, 2));
    }

    void push(int kind, std::size_t offset, std::size_t length, bool multiLine = false) {
        SourceItem item;
        item.offset = static_cast<std::uint32_t>(offset);
        item.length = static_cast<std::uint32_t>(length);
        item.kind = static_cast<std::int16_t>(kind);
        item.newlines = newlinesBefore(offset);
        tokenLine_ = 0;
        gapStart_ = offset + length;
        item.multiLine = multiLine;
        if (item.newlines > 0 || item.forcesNewline()) settleComments(true);
        else if (!item.isComment()) settleComments(false);
        growSlowly();
        items_->push_back(item);
        if (item.isComment() && !item.forcesNewline()) ++openComments_;
        else items_->back().endsLine = item.isComment();
    }

    // A text may be all comments, which are read until something else comes.
    void growSlowly() {
        constexpr std::size_t many = 10000;
        if (items_->size() == items_->capacity() && items_->size() > many)
            items_->reserve(items_->size() + items_->size() / 4);
    }

    std::uint8_t newlinesBefore(std::size_t offset) const {
        std::uint8_t newlines = 0;
        for (std::size_t at = gapStart_; at < offset && newlines < 2; ++at) newlines += text_[at] == '\n';
        return newlines;
    }

    void checkLines(std::string_view text, std::size_t offset) {
        for (std::size_t end = text.find('\n'); end != text.npos; end = text.find('\n', end + 1))
            if (text[end + 1] == '#' && isArchDirective(text.substr(end + 1)))
                refuse(offset + end + 1,
                       [] { return "directive inside a comment or statement; indent it, or move it out"; });
    }

    const std::string& text_;
    SourceProblem& problem_;
    std::vector<std::uint32_t>* refusals_;
    HDNTErrorListener* listener_;
    int errors_;
    Scanner& scanner_ = Scanner::instance();
    bool isOpen_ = false;
    std::vector<SourceItem>* items_ = nullptr; ///< while some are read
    std::size_t directiveEnd_ = 0;
    std::size_t gapStart_ = 0;
    int tokenLine_ = 0;            ///< of the last item; 0 when it is no token
    std::size_t openComments_ = 0; ///< the last items, while it is not known whether they end their line
};

SourceReader::SourceReader(std::string text, std::vector<std::uint32_t>* refusals) {
    platform::makeRoom(text); // the items are views, so that the text must not move any more
    text_ = std::make_shared<SourceText>(SourceText{std::move(text)});
    bytes_ = text_->bytes;
    if (platform::Decoder::forArchive(bytes_)) problem_ = problemAt(bytes_, 0, "compressed; expand it first");
    else if (bytes_.size() >= std::numeric_limits<std::uint32_t>::max())
        problem_ = problemAt(bytes_, 0, "text of 4 GiB or more; split it");
    else session_ = std::make_unique<Session>(text_, problem_, refusals);
}

SourceReader::~SourceReader() = default;

bool SourceReader::more(std::vector<SourceItem>& items) {
    if (!session_) return false;
    const std::size_t begin = items.size();
    if (!session_->readSome(items)) session_.reset();
    return items.size() > begin;
}

std::string SourceReader::takeText() {
    bytes_ = {};
    return std::move(text_->bytes);
}

} // namespace hdnt::frontend
