#pragma once

#include "hdnt/frontend/TokenSet.h"

#include <cstdint>

// The grammar stands in three headers: its steps from token to token here, expressions in GrammarExpressions.h, and all
// else in NtlGrammar.h, which is the one to include.
namespace hdnt::frontend {

/// What a stretch of text is. The last two are only in faulty texts.
enum class NtlPart : std::uint8_t {
    file,
    function,
    block,   ///< a declaration, with its mapping when it has one
    mapping, ///< the mapping of a block that is declared elsewhere
    section, ///< "mapsto", "expandsto", "modifiedby" or "retargetsto" and the netlist behind it
    pin,
    property,
    option, ///< of a property, such as "min = 0"
    flag,   ///< internal, test, primgroup or maturityLevel
    inst,
    connect,
    signal,
    pinRef, ///< a pin of an instance or of the block, in a list
    assignBlockProperty,
    assignPinProperty,
    ifStatement,
    statements, ///< in braces of their own
    call,
    operation,
    parentheses,
    constant,
    missing,
    unexpected,
};

/// What repeats until a closing brace.
enum class NtlList : std::uint8_t { none, elements, entities, properties, statements };

/// What a receiver may hear beside the parts; here it does nothing with that.
struct GrammarEvents {
    // Of a list: behind the opening brace, behind each element, behind the closing brace.
    void begin(NtlList) {}
    void listed(NtlList) {}
    void end(NtlList) {}
    void listed(NtlPart) {} ///< behind a formal, a value of a list, or an argument of a call
    // With the first token of an expression ahead; behind its last one.
    void expressionBegins() {}
    void expressionEnds() {}
    // Behind "(", with ")" ahead, behind ")".
    void callBegins() {}
    void noArguments() {}
    void callEnds() {}
    // Behind "else"; with what is there instead ahead.
    void elseBegins() {}
    void noElse() {}
};

/// The steps of a descent from token to token, and what is told of them.
///
/// A Receiver has
///   int token()                     the number of the token ahead; 0 at the end
///   void take(const TokenSet&)      the token ahead, one of these, becomes part of what is open; the next one is ahead
///   void open(NtlPart), void close(NtlPart)   closed when it is whole; by one that recovers, whatever comes of it
///   Mark mark(), void openAt(Mark, NtlPart)   opens a part that began at the mark: its kind shows only later
///   Mark operandMark()                        the same mark for an operand, which an operator may follow
///   what GrammarEvents has, which one that looks at parts alone inherits
///   bool lacks(const TokenSet& expected)      one of these should be ahead; true when it stands in for the token
///   static constexpr bool recovers  when false, the sets are empty, there are no units, and the parse ends at a fault
///   bool takes(int token)           such a one: takes the token, if it is seen at once that it is this one
/// and one that recovers
///   Start start(), bool recover(begin, again)      a unit failed that began at start(); true: parse it again
///   bool deeper(), void shallower()           around what nests; false when that is too deep
///
/// A unit is a stretch without a list in it; `again` parses it and goes on behind it, which lets a receiver that
/// recovers try out what would come of a repair.
template <typename Receiver>
class GrammarTokens {
protected:
    enum class Step : std::uint8_t { failed, inside, done };
    static Step stepOf(bool done) { return done ? Step::done : Step::failed; }

    explicit GrammarTokens(Receiver& receiver) : to_(receiver) {}

    /// What the body parses is the part. A parse that ends in it leaves nothing open where that matters.
    template <NtlPart part, typename Body>
    [[gnu::always_inline]] bool within(Body&& body) {
        to_.open(part);
        const bool whole = body();
        if (whole || Receiver::recovers) to_.close(part);
        return whole;
    }

    // What is asked of the token ahead adds up to what may stand there.
    bool at(int token) {
        if constexpr (Receiver::recovers) expected_.add(token);
        return to_.token() == token;
    }
    [[gnu::always_inline]] bool at(const TokenSet& tokens) {
        if constexpr (Receiver::recovers) expected_ |= tokens;
        return tokens.contains(to_.token());
    }
    bool take() {
        to_.take(expected_);
        if constexpr (Receiver::recovers) expected_ = TokenSet();
        return true;
    }
    [[gnu::always_inline]] bool need(int token) { return takes(token) || (at(token) ? take() : lacks()); }
    [[gnu::always_inline]] bool need(const TokenSet& tokens) { return at(tokens) ? take() : lacks(); }
    [[gnu::always_inline]] bool may(int token) { return takes(token) || (at(token) && take()); }
    // What only this token can be need not be told apart from others first.
    [[gnu::always_inline]] bool takes(int token) {
        if constexpr (Receiver::recovers) return false;
        else return to_.takes(token);
    }
    [[gnu::always_inline]] bool may(const TokenSet& tokens) { return at(tokens) && take(); }
    bool lacks() {
        if (!to_.lacks(expected_)) return false;
        expected_ = TokenSet();
        return true;
    }

    template <typename Body, typename Rest>
    bool unit(Body&& body, Rest&& rest) {
        if constexpr (!Receiver::recovers) return body();
        else return repairedUnit(body, rest);
    }
    template <typename Body, typename Rest>
    bool repairedUnit(Body&& body, Rest&& rest) {
        const auto begin = to_.start();
        expected_ = TokenSet();
        while (!body()) {
            const auto again = [&] {
                expected_ = TokenSet();
                return body() && rest();
            };
            if (!to_.recover(begin, again)) return false;
            expected_ = TokenSet();
        }
        return true;
    }

    Receiver& to_;
    TokenSet expected_;
};

} // namespace hdnt::frontend
