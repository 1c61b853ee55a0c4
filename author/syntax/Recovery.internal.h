#pragma once

#include "author/syntax/SyntaxTree.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace hdnt::author {

using frontend::SourceItem;
using frontend::SourceItems;
using frontend::TokenSet;

/// Where the grammar got stuck, and what would have done.
struct Fault {
    std::size_t item = 0;      ///< what is ahead; the number of items at the end
    std::size_t before = none; ///< the token before it
    int token = 0;             ///< of the item
    NtlPart part = NtlPart::file;
    TokenSet expected;
    TokenSet expectedBefore; ///< what could have stood in place of the token before
    bool tooDeep = false;
    bool behindBrace = false; ///< the token before closes a list
    bool isOneOfMany = false; ///< there were so many that little time is left for each

    /// A brace closed what should go on: what is ahead stands too far outside.
    bool endsTooEarly() const;

    static constexpr std::size_t none = static_cast<std::size_t>(-1);
};

/// A change to the tokens that the grammar sees, at one item.
struct Edit {
    enum class Kind : std::uint8_t { insert, drop, replace };
    std::size_t item;
    Kind kind;
    int token = 0;
};

/// A few edits that make the text parse on, and what is said of it.
struct Repair {
    enum class Kind : std::uint8_t {
        none,
        misspelt,
        misspeltBefore,
        bareName,
        missing,
        extra,
        extraBefore,
        wrong,
        swapped,
        skipped
    };
    Kind kind = Kind::none;
    std::vector<Edit> edits;
    int token = 0; ///< what should stand there
};

/// Receives the parts of a text for a tree, and repairs it where the grammar gets stuck: changes of one token around
/// the place are tried on the grammar itself, and the one that lets it go on furthest is taken. When none does, tokens
/// are skipped up to where a statement ends or begins.
class Recovery : public frontend::GrammarEvents {
public:
    /// Messages come with the item ahead at the fault.
    struct Said {
        std::vector<SyntaxMessage>& messages;
        std::vector<std::uint32_t>& items;
    };
    /// From an item on, before which all is well.
    Recovery(const SourceItems& items, std::vector<SyntaxNode>& nodes, const Said& said, std::size_t begin = 0);

    // What the grammar calls
    static constexpr bool recovers = true;
    struct Start {
        std::size_t item;
        std::size_t edit;
        std::size_t nodes;
        std::size_t around;
        std::size_t taken;
        std::size_t end;
    };
    int token() const { return ahead_; }
    void take(const TokenSet& couldBe);
    void open(NtlPart part);
    void close(NtlPart);
    struct Mark {
        std::size_t node;
        std::size_t item;
    };
    Mark mark() const { return {nodes_.size(), item_}; }
    Mark operandMark() const { return mark(); }
    void openAt(const Mark& mark, NtlPart part);
    bool lacks(const TokenSet& expected);
    Start start();
    template <typename Again>
    bool recover(const Start& begin, Again&& again) {
        return !trial_ && repair(begin, std::ref(again));
    }
    bool deeper();
    void shallower() { --depth_; }
    void noElse() { couldBeElse_ = couldBeElse_ || (ahead_ == horizon && !trial_); }

    /// To be called when the grammar gave up.
    void sayLast();
    /// To be called after the parse, before the nodes are read.
    void layAround();

    /// The text goes on behind its items, nobody knows how: what may stand there is asked for.
    void askAtEnd();
    /// To be called after the parse.
    TokenSet expectedAtEnd() const { return expectedAtEnd_; }

    std::size_t item() const { return item_; }
    /// Nothing is laid over what is ahead.
    bool isClean() const { return edit_ == edits_.size(); }
    /// The items at the faults that had trials, of which there are not too many.
    const std::vector<std::uint32_t>& trials() const { return trials_; }
    static constexpr std::size_t mostTrials = 400; ///< faults with trials; behind them it is only skipped

private:
    static constexpr std::size_t greatestDepth = 4000; ///< no less than the library's parser
    static constexpr int horizon = -1;                 ///< no token: a trial looks no further
    static constexpr std::size_t reach = 7;            ///< tokens that a trial looks at behind the fault
    static constexpr std::size_t enough = 3;
    static constexpr std::size_t mostRetries = 8; ///< of what is one unit of the grammar
    using Again = std::function<bool()>;

    struct Candidate {
        Repair repair;
        int cost;
    };

    bool repair(const Start& begin, const Again& again);
    std::vector<Candidate> candidates(const Start& begin) const;
    void addReplacements(std::vector<Candidate>& all, bool hasBefore) const;
    int score(const Start& begin, const Candidate& candidate, const Again& again);
    int misspeltStatement() const;
    Repair skip() const;
    bool beginsBlock(std::size_t item) const;
    bool isInList() const;
    bool skippedStatement(const Repair& repair) const;
    void rewind(const Start& begin);
    void say(const Repair& repair);
    bool isQuiet() const;

    void dropInserted();
    void look();
    bool isToken(std::size_t item) const { return items_[item].kind > 0; }
    std::size_t tokenFrom(std::size_t item) const;
    std::size_t tokenBefore(std::size_t item) const;
    int tokenAt(std::size_t item) const { return item < items_.size() ? items_[item].kind : endToken_; }
    void answerAtEnd(const TokenSet& expected);
    void insertEdits(const std::vector<Edit>& edits, std::size_t from);
    void addMissing(int token);
    void addNode(NtlPart part, std::size_t begin, std::size_t end, int token);
    SyntaxNode& opened() {
        return open_.back().isAround ? around_[open_.back().index].part : nodes_[open_.back().index];
    }

    const SourceItems& items_;
    std::vector<SyntaxNode>& nodes_;
    std::vector<SyntaxMessage>& messages_;
    std::vector<std::uint32_t>& faultItems_;

    // The tokens ahead: items, with the edits laid over them
    std::size_t item_ = 0;
    std::size_t edit_ = 0;
    int ahead_ = 0;
    std::vector<Edit> edits_; ///< by item; those before edit_ are done with

    /// A part that began at a node that was there already. It is laid around that node when all are known, since to put
    /// each in its place at once takes a time that grows with the square of an expression.
    struct Around {
        std::size_t node;
        SyntaxNode part;
    };
    std::vector<Around> around_;
    struct Open {
        std::size_t index;
        bool isAround;
    };
    std::vector<Open> open_;
    TokenSet couldBe_;
    std::size_t taken_ = Fault::none; ///< the item taken last
    std::size_t end_ = 0;             ///< behind what was taken or dropped last
    std::size_t depth_ = 0;
    bool tooDeep_ = false;

    Fault fault_;
    bool forced_ = false; ///< what is lacking is stood in for, until the next unit
    bool trial_ = false;
    std::size_t budget_ = 0;   ///< tokens that the trial may still take
    std::size_t furthest_ = 0; ///< tokens behind the fault that the trial took
    std::vector<std::uint32_t> trials_;
    std::size_t retries_ = 0;
    std::size_t retriedAt_ = Fault::none;
    std::size_t skippedTo_ = Fault::none; ///< what goes wrong there again is no news

    int endToken_ = 0; ///< the horizon until what may stand there is known
    bool couldBeElse_ = false;
    TokenSet expectedAtEnd_;
};

/// What is said of a fault and its repair.
SyntaxMessage messageOf(const SourceItems& items, const Fault& fault, const Repair& repair);

/// What mends the fault that the message is about; none when there is more than one way.
std::optional<SyntaxMend> mendOf(const SourceItems& items, const Fault& fault, const Repair& repair,
                                 const SyntaxMessage& message);

/// What the scanner did not take, in the order of the text.
std::vector<SyntaxMessage> messagesOfItems(const SourceItems& items);

/// Whether it begins as keywords and identifiers do.
bool isWord(std::string_view text);

/// The word of a set that a misspelt one is likely to be; 0: none.
int likelyToken(std::string_view word, const TokenSet& expected);

} // namespace hdnt::author
