#include "author/syntax/Recovery.internal.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace hdnt::author {

namespace {

// Where skipping stops: what begins a statement, at the beginning of a line.
constexpr TokenSet beginners = frontend::NtlGrammar<Recovery>::firstOf(NtlList::elements) |
                               frontend::NtlGrammar<Recovery>::firstOf(NtlList::entities) |
                               TokenSet{T_Inst, T_Connect, T_Signal, T_Assign, T_If};

constexpr TokenSet wordLike = {T_Identifier, T_StringConstant};

constexpr TokenSet beginnersOfElements = frontend::NtlGrammar<Recovery>::firstOf(NtlList::elements);

bool isPunctuation(int token) { return token > 0 && token < T_Library; }

} // namespace

bool isWord(std::string_view text) {
    const char first = text.empty() ? ' ' : text.front();
    return (first >= 'a' && first <= 'z') || (first >= 'A' && first <= 'Z') || first == '_';
}

Recovery::Recovery(const SourceItems& items, std::vector<SyntaxNode>& nodes, const Said& said, std::size_t begin)
    : items_(items), nodes_(nodes), messages_(said.messages), faultItems_(said.items), item_(begin),
      taken_(tokenBefore(begin)), end_(taken_ + 1) {
    look();
}

std::size_t Recovery::tokenFrom(std::size_t item) const {
    while (item < items_.size() && !isToken(item)) ++item;
    return item;
}

std::size_t Recovery::tokenBefore(std::size_t item) const {
    while (item > 0)
        if (isToken(--item)) return item;
    return Fault::none;
}

// Finds the token ahead. What is dropped on the way gets its node.
void Recovery::look() {
    for (;;) {
        item_ = tokenFrom(item_);
        while (edit_ < edits_.size() && edits_[edit_].item < item_) ++edit_;
        if (edit_ == edits_.size() || edits_[edit_].item != item_) {
            ahead_ = tokenAt(item_);
            break;
        }
        const Edit& edit = edits_[edit_];
        ahead_ = edit.token;
        if (edit.kind != Edit::Kind::drop) break;
        addNode(NtlPart::unexpected, item_, item_ + 1, 0);
        ++edit_;
        end_ = ++item_;
    }
    if (trial_ && budget_ == 0) ahead_ = horizon;
}

void Recovery::addNode(NtlPart part, std::size_t begin, std::size_t end, int token) {
    if (trial_) return;
    const auto next = static_cast<std::uint32_t>(nodes_.size() + 1);
    nodes_.push_back({static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(end), next,
                      static_cast<std::int16_t>(token), part});
}

// Behind what was taken last, and inside of what is open.
void Recovery::addMissing(int token) {
    if (trial_) return;
    const std::size_t at = std::max<std::size_t>(end_, open_.empty() ? 0 : opened().begin);
    addNode(NtlPart::missing, at, at, token);
}

void Recovery::take(const TokenSet& couldBe) {
    const bool edited = edit_ < edits_.size() && edits_[edit_].item == item_;
    const bool inserted = edited && edits_[edit_].kind == Edit::Kind::insert;
    if (inserted) addMissing(ahead_);
    else if (edited) addNode(NtlPart::unexpected, item_, item_ + 1, ahead_);
    if (edited) ++edit_;
    if (!inserted) {
        if (trial_ && item_ >= fault_.item) {
            ++furthest_;
            --budget_;
        }
        taken_ = item_++;
        end_ = item_;
        couldBe_ = couldBe;
    }
    look();
}

void Recovery::open(NtlPart part) {
    if (trial_) return;
    open_.push_back({nodes_.size(), false});
    addNode(part, item_, item_, 0);
}

void Recovery::close(NtlPart) {
    if (trial_) return;
    SyntaxNode& node = opened();
    open_.pop_back();
    node.end = std::max(node.begin, static_cast<std::uint32_t>(end_));
    end_ = node.end; // an empty part may lie behind a comment
    node.next = static_cast<std::uint32_t>(nodes_.size());
}

void Recovery::openAt(const Mark& mark, NtlPart part) {
    if (trial_) return;
    auto begin = static_cast<std::uint32_t>(mark.item);
    const bool isAround = mark.node < nodes_.size();
    if (isAround) begin = std::min(begin, nodes_[mark.node].begin); // missing, before a comment
    open_.push_back({isAround ? around_.size() : nodes_.size(), isAround});
    if (isAround) around_.push_back({mark.node, {begin, begin, 0, 0, part}});
    else addNode(part, begin, begin, 0);
}

// Of those around one node, the later are outside.
void Recovery::layAround() {
    std::reverse(around_.begin(), around_.end());
    std::stable_sort(around_.begin(), around_.end(), [](const Around& a, const Around& b) { return a.node < b.node; });
    std::vector<SyntaxNode> all;
    all.reserve(nodes_.size() + around_.size());
    std::vector<std::uint32_t> placeOf; // of each node with all that is around it
    placeOf.reserve(nodes_.size() + 1);
    auto next = around_.begin();
    for (std::size_t node = 0; node < nodes_.size(); ++node) {
        placeOf.push_back(static_cast<std::uint32_t>(all.size()));
        for (; next != around_.end() && next->node == node; ++next) all.push_back(next->part);
        all.push_back(nodes_[node]);
    }
    placeOf.push_back(static_cast<std::uint32_t>(all.size()));
    for (SyntaxNode& node : all) node.next = placeOf[node.next];
    nodes_ = std::move(all);
    around_.clear();
}

bool Recovery::deeper() {
    if (depth_ < greatestDepth) return ++depth_ > 0;
    tooDeep_ = true;
    return false;
}

bool Recovery::lacks(const TokenSet& expected) {
    if (forced_) {
        addMissing(0);
        return true;
    }
    const bool atEnd = endToken_ == horizon && item_ == items_.size();
    if (trial_ && atEnd && budget_ > 0) furthest_ = reach; // all that there is fits
    if (trial_) return false;
    if (atEnd) answerAtEnd(expected);
    fault_ = {item_,
              taken_,
              ahead_,
              open_.empty() ? NtlPart::file : opened().part,
              expected,
              couldBe_,
              std::exchange(tooDeep_, false),
              taken_ != Fault::none && tokenAt(taken_) == '}',
              trials_.size() >= mostTrials};
    return false;
}

void Recovery::askAtEnd() {
    endToken_ = horizon;
    look();
}

// What is ahead there from here on is the end of the text, which ends the parse.
void Recovery::answerAtEnd(const TokenSet& expected) {
    expectedAtEnd_ = expected;
    if (couldBeElse_) expectedAtEnd_.add(T_Else);
    endToken_ = 0;
    look();
}

Recovery::Start Recovery::start() {
    forced_ = false;
    return {item_, edit_, nodes_.size(), around_.size(), taken_, end_};
}

void Recovery::rewind(const Start& begin) {
    item_ = begin.item;
    edit_ = begin.edit;
    taken_ = begin.taken;
    end_ = begin.end;
    if (!trial_) {
        nodes_.resize(begin.nodes);
        around_.resize(begin.around);
    }
    look();
}

// By item; what is inserted comes before what becomes of the item itself, which only the last edit says.
void Recovery::insertEdits(const std::vector<Edit>& edits, std::size_t from) {
    for (const Edit& edit : edits) {
        const bool inserts = edit.kind == Edit::Kind::insert;
        const auto place = std::partition_point(
            edits_.begin() + static_cast<std::ptrdiff_t>(from), edits_.end(), [&](const Edit& other) {
                return other.item < edit.item || (other.item == edit.item && other.kind == Edit::Kind::insert);
            });
        if (!inserts && place != edits_.end() && place->item == edit.item) *place = edit;
        else edits_.insert(place, edit);
    }
}

// What was stood in for and does not do, after all, when it is not taken.
void Recovery::dropInserted() {
    while (edit_ < edits_.size() && edits_[edit_].item == fault_.item && edits_[edit_].kind == Edit::Kind::insert)
        edits_.erase(edits_.begin() + static_cast<std::ptrdiff_t>(edit_));
    fault_.token = tokenAt(fault_.item);
}

bool Recovery::repair(const Start& begin, const Again& again) {
    dropInserted();
    retries_ = retriedAt_ == begin.item ? retries_ + 1 : 0;
    retriedAt_ = begin.item;
    Repair best;
    if (!fault_.tooDeep && retries_ < mostRetries && trials_.size() < mostTrials) {
        trials_.push_back(static_cast<std::uint32_t>(fault_.item));
        int bestScore = std::numeric_limits<int>::min();
        for (Candidate& candidate : candidates(begin)) {
            const int worth = score(begin, candidate, again);
            if (worth <= bestScore) continue;
            bestScore = worth;
            best = std::move(candidate.repair);
        }
    }
    const bool skips = best.kind == Repair::Kind::none;
    if (skips) best = skip();
    if (const int meant = skips ? misspeltStatement() : 0; meant != 0) {
        best.kind = Repair::Kind::misspeltBefore;
        best.token = meant;
    }
    say(best);
    insertEdits(best.edits, begin.edit);
    rewind(begin);
    const bool statement = skips && skippedStatement(best);
    forced_ = skips && !statement;
    if (forced_) skippedTo_ = best.edits.empty() ? fault_.item : tokenFrom(best.edits.back().item + 1);
    return true;
}

// A word that nobody knows begins a call; what it is more likely to be when no "(" is behind it, or 0.
int Recovery::misspeltStatement() const {
    const bool isCall = fault_.part == NtlPart::call && fault_.expectedBefore.contains(T_Inst);
    const std::string_view word = isCall ? items_.textOf(fault_.before) : std::string_view();
    return word.size() > 2 ? likelyToken(word, fault_.expectedBefore) : 0;
}

// What a repair brings: how many tokens it lets the grammar take, less what it costs. Nothing when that is too few.
int Recovery::score(const Start& begin, const Candidate& candidate, const Again& again) {
    const auto firstEdit = edits_.begin() + static_cast<std::ptrdiff_t>(begin.edit);
    const std::vector<Edit> edits(firstEdit, edits_.end());
    const TokenSet couldBe = couldBe_;
    const std::size_t depth = depth_;
    insertEdits(candidate.repair.edits, begin.edit);
    trial_ = true;
    budget_ = reach;
    furthest_ = 0;
    rewind(begin);
    const bool whole = again();
    trial_ = false;
    edits_.resize(begin.edit);
    edits_.insert(edits_.end(), edits.begin(), edits.end());
    couldBe_ = couldBe;
    depth_ = depth;
    tooDeep_ = false;
    if (whole) furthest_ = reach + 1;
    constexpr int perToken = 4;
    return furthest_ < enough ? std::numeric_limits<int>::min()
                              : static_cast<int>(furthest_) * perToken - candidate.cost;
}

std::vector<Recovery::Candidate> Recovery::candidates(const Start& begin) const {
    using Kind = Repair::Kind;
    const std::size_t item = fault_.item;
    const std::size_t after = tokenFrom(item + 1);
    const std::size_t before = tokenBefore(item);
    const bool hasBefore = before != Fault::none && before >= begin.item && before == fault_.before;
    const bool hasItem = item < items_.size();
    std::vector<Candidate> all;
    addReplacements(all, hasBefore);
    if (hasItem) {
        const bool twice = before != Fault::none && items_.textOf(before) == items_.textOf(item);
        all.push_back(
            {{Kind::extra, {{item, Edit::Kind::drop}}}, twice ? 0 : 2 + (isPunctuation(fault_.token) ? 0 : 2)});
    }
    fault_.expected.forEach([&](int token) {
        if (token != 0)
            all.push_back({{Kind::missing, {{item, Edit::Kind::insert, token}}, token}, isPunctuation(token) ? 1 : 5});
    });
    if (hasItem && after < items_.size())
        all.push_back(
            {{Kind::swapped, {{item, Edit::Kind::replace, tokenAt(after)}, {after, Edit::Kind::replace, fault_.token}}},
             5});
    if (hasBefore && hasItem)
        all.push_back({{Kind::swapped,
                        {{before, Edit::Kind::replace, fault_.token}, {item, Edit::Kind::replace, tokenAt(before)}}},
                       6});
    if (hasBefore) {
        const bool comma = tokenAt(before) == ',' && isPunctuation(fault_.token);
        all.push_back({{Kind::extraBefore, {{before, Edit::Kind::drop}}}, comma ? 0 : 6});
    }
    return all;
}

void Recovery::addReplacements(std::vector<Candidate>& all, bool hasBefore) const {
    using Kind = Repair::Kind;
    const std::size_t item = fault_.item;
    if (item < items_.size()) {
        const int likely = likelyToken(items_.textOf(item), fault_.expected);
        if (likely != 0) all.push_back({{Kind::misspelt, {{item, Edit::Kind::replace, likely}}, likely}, 0});
        fault_.expected.forEach([&](int token) {
            if (token == 0 || token == likely) return;
            const bool sameClass =
                (frontend::constants.contains(token) && frontend::constants.contains(fault_.token)) ||
                (wordLike.contains(token) && isWord(items_.textOf(item))) ||
                (token == T_EqualTo && fault_.token == '=') || (isPunctuation(token) && isPunctuation(fault_.token));
            all.push_back({{Kind::wrong, {{item, Edit::Kind::replace, token}}, token}, sameClass ? 2 : 6});
        });
    }
    if (!hasBefore) return;
    const int likely = likelyToken(items_.textOf(fault_.before), fault_.expectedBefore);
    if (likely != 0 && likely != tokenAt(fault_.before))
        all.push_back({{Kind::misspeltBefore, {{fault_.before, Edit::Kind::replace, likely}}, likely}, 1});
    if (likely != 0 || tokenAt(fault_.before) != T_Identifier || !fault_.expectedBefore.contains(T_StringConstant))
        return;
    Candidate bare{{Kind::bareName, {{fault_.before, Edit::Kind::replace, T_StringConstant}}}, 1};
    if (fault_.token == '=') bare.repair.edits.push_back({item, Edit::Kind::replace, T_EqualTo});
    all.push_back(std::move(bare));
}

// Everything up to what would do, to the end of the statement, or to the beginning of the next one. At least one token
// when nothing came of the last time.
Repair Recovery::skip() const {
    Repair repair;
    repair.kind = Repair::Kind::skipped;
    std::size_t item = fault_.item;
    std::size_t braces = 0;
    const bool again = item == skippedTo_;
    if (fault_.endsTooEarly() && !fault_.expected.contains(0)) { // up to the brace that should have closed it
        std::ptrdiff_t depth = 0;
        for (; item < items_.size() && depth >= 0; item = tokenFrom(item + 1)) {
            const int token = tokenAt(item);
            if (beginnersOfElements.contains(token) && items_[item].newlines > 0) break;
            depth += token == '{' ? 1 : token == '}' ? -1 : 0;
            repair.edits.push_back({item, Edit::Kind::drop});
        }
        return repair;
    }
    if (fault_.expected == TokenSet{0}) // braces that close nothing
        for (; tokenAt(item) == '}'; item = tokenFrom(item + 1)) repair.edits.push_back({item, Edit::Kind::drop});
    for (; item < items_.size(); item = tokenFrom(item + 1)) {
        const int token = tokenAt(item);
        const bool first = item == fault_.item;
        if (!first && beginsBlock(item)) break; // however many braces are open
        if (!(first && again) && braces == 0) {
            const bool goesOn = !fault_.tooDeep && fault_.expected.contains(token); // what nests would nest again
            if (goesOn || token == '}' || (token == ';' && !isInList())) break;
            if (beginners.contains(token) && items_[item].newlines > 0) break;
        }
        if (token == '{') ++braces;
        if (token == '}' && braces > 0) --braces;
        repair.edits.push_back({item, Edit::Kind::drop});
        if (token == ';' && braces == 0 && retries_ < mostRetries) break; // each step begins at the list again
    }
    return repair;
}

// Which no braces but those of the library are around.
bool Recovery::beginsBlock(std::size_t item) const {
    return tokenAt(item) == T_Block && items_[item].startsLine && tokenAt(tokenFrom(item + 1)) == T_StringConstant;
}

// Where the next element of a list could stand, or its closing brace.
bool Recovery::isInList() const { return fault_.expected.contains('}') && !fault_.expected.contains(';'); }

// The list goes on behind it.
bool Recovery::skippedStatement(const Repair& repair) const {
    return isInList() && !repair.edits.empty() && tokenAt(repair.edits.back().item) == ';';
}

bool Recovery::isQuiet() const {
    if (fault_.item == skippedTo_) return true;
    // The scanner complained of what stands here.
    const std::size_t before = fault_.before == Fault::none ? 0 : fault_.before;
    const std::size_t after = std::min(tokenFrom(fault_.item + 1), items_.size());
    // What is missing in front of something that closes may be in the file that is brought in there.
    constexpr TokenSet closing = {'}', ')', ',', ';', ':'};
    if (closing.contains(fault_.token))
        for (std::size_t item = before; item < fault_.item; ++item)
            if (items_[item].kind == SourceItem::FileStatement) return true;
    for (std::size_t item = before; item < after; ++item) {
        if (items_[item].kind == SourceItem::OpenString) return true;
        const bool isStray = items_[item].kind == SourceItem::Unrecognized;
        if (isStray && items_.textOf(item).find_first_not_of('\r') != std::string_view::npos) return true;
    }
    return false;
}

void Recovery::say(const Repair& repair) {
    if (isQuiet()) return;
    SyntaxMessage message = messageOf(items_, fault_, repair);
    const SyntaxMessage* const last = messages_.empty() ? nullptr : &messages_.back();
    const bool isSame = last && last->code == message.code;
    const bool follows = isSame && retries_ > 0 && message.code == SyntaxCode::wrongOrder;
    if (follows || (isSame && last->offset == message.offset)) return;
    messages_.push_back(std::move(message));
    faultItems_.push_back(static_cast<std::uint32_t>(fault_.item));
}

void Recovery::sayLast() { say({}); }

} // namespace hdnt::author
