// From items to statements.
#include "author/format/HDNTFormatter.h"
#include "author/format/Layout.internal.h"
#include "hdnt/frontend/Scanner.h"

#include <algorithm>

namespace hdnt::author {

// Deeper statements are indented no further, and where no library can be that deep, not at all: the text stays in
// proportion to its tokens.
static constexpr int DeepestLevel = 15;
static constexpr int DeepestIndented = 4000;

static bool isSection(int kind) {
    return kind == T_MapTo || kind == T_ExpandTo || kind == T_ModifiedBy || kind == T_RetargetTo;
}

void Layout::run() {
    while (readMore())
        for (; item_ != itemsEnd_; ++item_) take();
    if (reader_.problem().count > 0) return;
    flush(false);
    lines_.finish();
}

// More items behind those there are; of the others, the one before the item stays.
bool Layout::readMore() {
    const std::ptrdiff_t taken = item_ - items_.data();
    if (taken > 1) items_.erase(items_.begin(), items_.begin() + (taken - 1));
    const bool more = reader_.more(items_);
    item_ = items_.data() + std::min<std::ptrdiff_t>(taken, 1);
    itemsEnd_ = items_.data() + items_.size();
    return more && reader_.problem().count == 0;
}

// The item that is so many behind the one that is taken; null behind the last one.
const SourceItem* Layout::behind(std::ptrdiff_t count) {
    while (itemsEnd_ - item_ <= count)
        if (!readMore()) return nullptr;
    return item_ + count;
}

void Layout::push(Frame frame) {
    frames_.push_back(frame);
    level_ += hasLevel(frame);
}

void Layout::pop() {
    level_ -= hasLevel(frames_.back());
    frames_.pop_back();
}

int Layout::indent() const {
    return level_ > DeepestIndented ? 0 : std::min(level_, DeepestLevel) * HDNTFormatter::Indent;
}

// The token behind the item and its comments; 0 when there is none, or something else comes first.
int Layout::nextToken() {
    std::ptrdiff_t count = 1;
    const SourceItem* next = behind(count);
    while (next && next->isComment()) next = behind(++count);
    return next && next->isToken() ? next->kind : 0;
}

// The token behind the item in its line; 0 when something else comes first.
int Layout::joinedToken() {
    std::ptrdiff_t count = 1;
    const SourceItem* next = behind(count);
    while (next && next->isComment() && !next->endsLine) next = behind(++count);
    return next && next->isToken() ? next->kind : 0;
}

// Whether the item is a comment that goes behind what stands before it in its line.
bool Layout::follows() const {
    return item_ != items_.data() && item_->isComment() && item_->newlines == 0 && !item_[-1].forcesNewline();
}

void Layout::take() {
    if (item_->isToken()) takeToken();
    else if (statement_.lastKind == 0 && (item_->endsLine || item_->isVerbatim())) standAlone();
    else appendOther();
}

void Layout::takeToken() {
    switch (item_->kind) {
    case '{': openBrace(); break;
    case '}': closeBrace(); break;
    case ';':
        appendToken();
        if (!isInline()) closeStatement();
        break;
    case T_If: takeIf(); break;
    case T_Else: takeElse(); break;
    case '(':
        appendToken();
        ++statement_.parentheses;
        break;
    case ')': takeClosingParenthesis(); break;
    default: appendToken();
    }
}

void Layout::takeIf() {
    const bool isStatement = !isInline() && (statement_.tokens == 0 || statement_.lastToken == T_Else);
    appendToken();
    if (!isStatement) return;
    statement_.inCondition = true;
    statement_.parentheses = 0;
}

void Layout::takeElse() {
    const bool goesOn = statement_.goesOn && statement_.lastToken == '}';
    const bool isBranch = !isInline() && (statement_.tokens == 0 || goesOn);
    appendToken();
    if (!isBranch) return;
    const int next = nextToken();
    if (next == T_If || next == '{') return push(Frame::ElseBraced);
    flush(true);
    push(Frame::Else);
}

void Layout::takeClosingParenthesis() {
    appendToken();
    --statement_.parentheses;
    if (!statement_.inCondition || statement_.parentheses > 0) return;
    statement_.inCondition = false;
    if (nextToken() == '{') return push(Frame::ThenBraced);
    flush(true);
    push(Frame::Then);
}

void Layout::openBrace() {
    const bool isProperty = !isInline() && statement_.firstToken == T_Property;
    const bool inside = isInline() || (!isProperty && statement_.lastToken == T_Values);
    appendToken();
    if (isProperty && statement_.isFilled) filler_.openProperty();
    else if (isProperty) statement_.propertyOpen = pieces_.size() - 1;
    if (isProperty || inside) return push(isProperty ? Frame::Property : Frame::Inline);
    const SourceItem* const next = behind(1);
    statement_.closesAtOnce = next && next->kind == '}';
    if (statement_.closesAtOnce) return;
    flush(true);
    push(Frame::Braces);
}

void Layout::closeBrace() {
    if (statement_.closesAtOnce) {
        statement_.closesAtOnce = false;
        appendToken();
        return endBraces();
    }
    if (isInline()) {
        appendToken();
        const bool isProperty = frames_.back() == Frame::Property;
        pop();
        if (isProperty) closeStatement();
        return;
    }
    flush(false);
    while (!frames_.empty() && frames_.back() != Frame::Braces) pop();
    if (!frames_.empty()) pop();
    appendToken();
    endBraces();
}

// The line of a closing brace goes on with the else of its own if, and with the section of its block.
void Layout::endBraces() {
    const bool hasElse = complete();
    const int next = joinedToken();
    statement_.goesOn = next == T_Else ? hasElse : isSection(next);
    if (!statement_.goesOn) flush(false);
}

void Layout::closeStatement() {
    flush(false);
    complete();
}

// A statement ends, and with it those that hang on it, up to an if whose else comes next. True when that is the
// innermost one.
bool Layout::complete() {
    if (frames_.empty() || frames_.back() == Frame::Braces) return false; // as nearly always
    const bool elseFollows = nextToken() == T_Else;
    for (bool innermost = true; !frames_.empty(); innermost = false) {
        const Frame frame = frames_.back();
        const bool isThen = frame == Frame::Then || frame == Frame::ThenBraced;
        if (!isThen && frame != Frame::Else && frame != Frame::ElseBraced) return false;
        pop();
        if (isThen && elseFollows) return innermost;
    }
    return false;
}

// A comment, file statement or directive between statements.
void Layout::standAlone() {
    const bool follows = this->follows();
    const std::size_t number = record_.next();
    record_.add(*item_, ItemRecord::flagsOf(*item_, follows));
    if (follows) return lines_.addComment(item_->offset, item_->length);
    const bool belowBlank = item_->newlines > 1 && !afterOpening_;
    if (belowBlank) record_.setBelowBlank(number);
    lines_.begin(item_->kind == SourceItem::Directive ? 0 : indent(), belowBlank);
    afterOpening_ = false;
    if (item_->isComment()) lines_.addComment(item_->offset, item_->length);
    else lines_.append(item_->offset, item_->length, false);
}

} // namespace hdnt::author
