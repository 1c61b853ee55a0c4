#include "author/format/HDNTFormatter.h"
#include "author/format/Layout.internal.h"
#include "hdnt/frontend/Scanner.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <string_view>

namespace hdnt::author {

// Deeper statements are indented no further, so that the text stays in proportion to its tokens.
static constexpr int DeepestLevel = 15;

static bool isSection(int kind) {
    return kind == T_MapTo || kind == T_ExpandTo || kind == T_ModifiedBy || kind == T_RetargetTo;
}

static bool isLogical(int kind) { return kind == T_AndAnd || kind == T_OrOr; }

static bool isOperator(int kind) {
    constexpr std::string_view single = "=:+-*/%<>";
    if (kind > 0 && kind < T_Library) return single.find(static_cast<char>(kind)) != single.npos;
    return kind == T_GreaterEqual || kind == T_LessEqual || kind == T_EqualTo || kind == T_NotEqual || isLogical(kind);
}

void Layout::run() {
    for (std::size_t i = 0; i < items_.size(); ++i) {
        const SourceItem& item = items_[i];
        if (item.isToken()) take(i);
        else if (pieces_.empty() && (item.endsLine || item.isVerbatim())) standAlone(i);
        else append(i);
    }
    flush(false);
}

void Layout::push(Frame frame) {
    frames_.push_back(frame);
    level_ += hasLevel(frame);
}

void Layout::pop() {
    level_ -= hasLevel(frames_.back());
    frames_.pop_back();
}

int Layout::indent() const { return std::min(level_, DeepestLevel) * HDNTFormatter::Indent; }

// Of the token behind item i and its comments; 0 when there is none, or something else comes first.
int Layout::nextToken(std::size_t i) const {
    do ++i;
    while (i < items_.size() && items_[i].isComment());
    return i < items_.size() && items_[i].isToken() ? items_[i].kind : 0;
}

// Of the token behind item i in its line; 0 when something else comes first.
int Layout::joinedToken(std::size_t i) const {
    do ++i;
    while (i < items_.size() && items_[i].isComment() && !items_[i].endsLine);
    return i < items_.size() && items_[i].isToken() ? items_[i].kind : 0;
}

void Layout::take(std::size_t& i) {
    switch (items_[i].kind) {
    case '{': openBrace(i); break;
    case '}': closeBrace(i); break;
    case ';':
        append(i);
        if (!isInline()) closeStatement(i);
        break;
    case T_If: takeIf(i); break;
    case T_Else: takeElse(i); break;
    case '(':
        append(i);
        ++parentheses_;
        break;
    case ')': takeClosingParenthesis(i); break;
    default: append(i);
    }
}

void Layout::takeIf(std::size_t i) {
    const bool isStatement = !isInline() && (tokens_ == 0 || lastToken_ == T_Else);
    append(i);
    if (!isStatement) return;
    inCondition_ = true;
    parentheses_ = 0;
}

void Layout::takeElse(std::size_t i) {
    const bool isBranch = !isInline() && (tokens_ == 0 || (goesOn_ && lastToken_ == '}'));
    append(i);
    if (!isBranch) return;
    const int next = nextToken(i);
    if (next == T_If || next == '{') return push(Frame::ElseBraced);
    flush(true);
    push(Frame::Else);
}

void Layout::takeClosingParenthesis(std::size_t i) {
    append(i);
    --parentheses_;
    if (!inCondition_ || parentheses_ > 0) return;
    inCondition_ = false;
    if (nextToken(i) == '{') return push(Frame::ThenBraced);
    flush(true);
    push(Frame::Then);
}

void Layout::openBrace(std::size_t& i) {
    const bool isProperty = !isInline() && firstToken_ == T_Property;
    const bool inside = isInline() || (!isProperty && lastToken_ == T_Values);
    append(i);
    if (isProperty) propertyOpen_ = pieces_.size() - 1;
    if (isProperty || inside) return push(isProperty ? Frame::Property : Frame::Inline);
    if (i + 1 < items_.size() && items_[i + 1].kind == '}') {
        append(++i);
        return endBraces(i);
    }
    flush(true);
    push(Frame::Braces);
}

void Layout::closeBrace(std::size_t i) {
    if (isInline()) {
        append(i);
        const bool isProperty = frames_.back() == Frame::Property;
        pop();
        if (isProperty) closeStatement(i);
        return;
    }
    flush(false);
    while (!frames_.empty() && frames_.back() != Frame::Braces) pop();
    if (!frames_.empty()) pop();
    append(i);
    endBraces(i);
}

// The line of a closing brace goes on with the else of its own if, and with the section of its block.
void Layout::endBraces(std::size_t i) {
    const bool hasElse = complete(i);
    const int next = joinedToken(i);
    goesOn_ = next == T_Else ? hasElse : isSection(next);
    if (!goesOn_) flush(false);
}

void Layout::closeStatement(std::size_t i) {
    flush(false);
    complete(i);
}

// A statement ends, and with it those that hang on it, up to an if whose else comes next. True when that is the
// innermost one.
bool Layout::complete(std::size_t i) {
    const bool elseFollows = nextToken(i) == T_Else;
    for (bool innermost = true; !frames_.empty(); innermost = false) {
        const Frame frame = frames_.back();
        const bool isThen = frame == Frame::Then || frame == Frame::ThenBraced;
        if (!isThen && frame != Frame::Else && frame != Frame::ElseBraced) return false;
        pop();
        if (isThen && elseFollows) return innermost;
    }
    return false;
}

// A minus that has no left operand. The last string of an assign statement's head is none.
bool Layout::isPrefix(std::size_t i) const {
    if (items_[i].kind != '-') return false;
    if (tokens_ == 0 || lastToken_ == '(' || lastToken_ == ',' || isOperator(lastToken_)) return true;
    return firstToken_ == T_Assign && lastToken_ == T_StringConstant &&
           (tokens_ == 5 || (beforeLastToken_ == ',' && parentheses_ == 0));
}

// "- 1" is two tokens and "-1" one, so a minus stands close to names and parentheses only.
bool Layout::needsBlank(std::size_t i) const {
    const int kind = items_[i].kind;
    if (pieces_.empty() || kind == ',' || kind == ';' || kind == ')') return false;
    const int before = kindOf(pieces_.back());
    if (before == '(') return false;
    if (before == '-' && lastIsPrefix_) return kind != '(' && kind != T_Identifier;
    return kind != '(' || before != T_Identifier;
}

Layout::Break Layout::breakAfter(std::size_t i) const {
    const int kind = items_[i].kind;
    if (kind == ',' || isLogical(kind)) return Break::Comma;
    return isOperator(kind) && !isPrefix(i) ? Break::Operator : Break::None;
}

void Layout::append(std::size_t i) {
    if (pieces_.empty()) statementIndent_ = indent();
    pieces_.push_back({static_cast<std::uint32_t>(i), needsBlank(i), breakAfter(i),
                       static_cast<std::uint32_t>(platform::characters(items_.textOf(i)))});
    if (!items_[i].isToken()) return;
    lastIsPrefix_ = isPrefix(i);
    beforeLastToken_ = lastToken_;
    lastToken_ = items_[i].kind;
    if (tokens_++ == 0) firstToken_ = lastToken_;
}

// A comment, file statement or directive between statements.
void Layout::standAlone(std::size_t i) {
    const SourceItem& item = items_[i];
    if (item.isComment() && follows(i)) return lines_.addComment(i);
    FormattedLine& line = lines_.begin(item.kind == SourceItem::Directive ? 0 : indent());
    line.blankBefore = item.newlines > 1 && !afterOpening_;
    afterOpening_ = false;
    if (item.isComment()) lines_.addComment(i);
    else lines_.append(items_.textOf(item));
}

} // namespace hdnt::author
