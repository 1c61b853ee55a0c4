#pragma once

#include "hdnt/frontend/TokenSet.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

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

/// The grammar of NTL as a recursive descent that looks one token ahead, over whatever delivers tokens and receives the
/// parts. It accepts what the law of the language accepts (tests/oracle), and stops at the same token where that has
/// its first error. It looks ahead only where it has to, and nests without recursion.
///
/// A Receiver has
///   int token()                     the number of the token ahead; 0 at the end
///   void take(const TokenSet&)      the token ahead, one of these, becomes part of what is open; the next one is ahead
///   void open(NtlPart), void close(NtlPart)   also where a parse ends in the middle
///   Mark mark(), void openAt(Mark, NtlPart)   opens a part that began at the mark: its kind shows only later
///   Mark operandMark()                        the same mark for an operand, which an operator may follow
///   void begin(NtlList), void listed(NtlList), void end(NtlList)
///                                   behind the opening brace, behind each element, behind the closing brace
///   void listed(NtlPart)            behind a formal, a value of a list, or an argument of a call
///   void expressionBegins(), void expressionEnds()            with its first token ahead; behind its last one
///   void callBegins(), void noArguments(), void callEnds()    behind "(", with ")" ahead, behind ")"
///   void elseBegins(), void noElse()                          behind "else"; with what is there instead ahead
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
class NtlGrammar {
public:
    explicit NtlGrammar(Receiver& receiver) : to_(receiver) {}
    NtlGrammar(const NtlGrammar&) = delete;

    /// One library and the end of the text. False: refused.
    bool file() {
        const auto head = [&] { return need(T_Library) && need(T_StringConstant) && need('{'); };
        return within<NtlPart::file>([&] {
            if (!unit(head, [&] { return onward(NtlList::elements); })) return false;
            do // more than once where the library seemed to end too early
                if (!list(NtlList::elements) || !endOfFile()) return false;
            while (to_.token() != 0);
            return true;
        });
    }

    /// What an included file holds: elements, entities or statements, and the end of the text.
    bool fragment(NtlList which) {
        const auto all = [&] {
            while (starts(which))
                if (!element(which)) return false;
            return true;
        };
        const auto end = [&] { return starts(which) || at(0) || lacks(); };
        return within<NtlPart::file>([&] {
            do
                if (!all() || !unit(end, all)) return false;
            while (to_.token() != 0);
            return true;
        });
    }

    /// A step of file() behind the head: the next element, or what is in the way of one. False: the library ends, or
    /// was given up.
    bool nextElement() {
        if (starts(NtlList::elements)) return element(NtlList::elements);
        bool closed = false;
        if (!endOrGoOn(NtlList::elements, closed)) return false;
        return !closed || (endOfFile() && to_.token() != 0);
    }

    /// What the tokens of a list begin with.
    static constexpr TokenSet firstOf(NtlList which) {
        switch (which) {
        case NtlList::elements: return {T_Block, T_Function};
        case NtlList::entities: return flags | TokenSet{T_Property, T_Pin};
        case NtlList::properties: return {T_Property};
        default: return {T_Inst, T_Connect, T_Signal, T_Assign, T_If, T_Identifier, '{'};
        }
    }

private:
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

    bool starts(NtlList which) { return at(firstOf(which)); }

    bool element(NtlList which) {
        switch (which) {
        case NtlList::elements: return at(T_Function) ? function() : block();
        case NtlList::entities: return entity();
        case NtlList::properties: return property(which);
        default: return statement();
        }
    }

    /// What is behind the opening brace: elements, and the closing one.
    bool list(NtlList which) {
        const bool nests = which == NtlList::statements;
        nesting_ += nests ? 1 : 0;
        to_.begin(which);
        const bool done = restOf(which);
        if (done) to_.end(which);
        nesting_ -= nests ? 1 : 0;
        return done;
    }

    bool restOf(NtlList which) {
        for (;;) {
            while (starts(which)) {
                if (!element(which)) return false;
                to_.listed(which);
            }
            bool closed = false;
            if (!endOrGoOn(which, closed)) return false;
            if (closed) return true;
        }
    }

    bool endOfFile() {
        return unit([&] { return at(0) || lacks(); }, [] { return true; });
    }

    bool endOrGoOn(NtlList which, bool& closed) {
        if constexpr (!Receiver::recovers) return closed = need('}');
        const auto end = [&] {
            closed = false;
            return starts(which) || (closed = need('}'));
        };
        return unit(end, [&] { return closed ? behind(which) : onward(which); });
    }

    // What comes of a repair: only ever tried.
    bool onward(NtlList which) { return restOf(which) && behind(which); }

    bool behind(NtlList which) {
        switch (which) {
        case NtlList::elements: return at(0);
        case NtlList::properties: return onward(NtlList::entities);
        case NtlList::statements:
            if (nesting_ > 1) return may(T_Else) ? onwardFromBranch() : onward(NtlList::statements);
            [[fallthrough]];
        default: return (!at(sections) || section()) && onward(NtlList::elements);
        }
    }

    template <NtlPart kind, typename Body>
    bool leaf(NtlList around, Body&& body) {
        return within<kind>([&] { return unit(body, [&] { return onward(around); }); });
    }

    // Declarations
    bool function() {
        return leaf<NtlPart::function>(NtlList::elements, [&] {
            return need(T_Function) && need(types) && need(T_Identifier) && need('(') && formals() && need(';');
        });
    }

    bool formals() {
        if (may(')')) return true;
        do {
            if (!need(types)) return false;
            to_.listed(NtlPart::function);
        } while (may(','));
        return need(')');
    }

    bool block() {
        const auto begin = to_.mark();
        bool declared = false;
        const auto head = [&] {
            return need(T_Block) && need(T_StringConstant) && ((declared = may('{')) || at(sections) || lacks());
        };
        if (!unit(head, [&] { return declared ? onward(NtlList::entities) : section() && onward(NtlList::elements); }))
            return false;
        const NtlPart part = declared ? NtlPart::block : NtlPart::mapping;
        to_.openAt(begin, part);
        const bool done = declared ? list(NtlList::entities) && optionalSection() : section();
        to_.close(part);
        return done;
    }

    // Without one the block is whole, whatever comes.
    bool optionalSection() {
        if constexpr (!Receiver::recovers) return !at(sections) || section();
        const auto decide = [&] {
            return at(sections) || at(firstOf(NtlList::elements)) || at('}') || at(0) || lacks();
        };
        if (!unit(decide, [&] { return (!at(sections) || section()) && onward(NtlList::elements); })) return false;
        return !at(sections) || section();
    }

    bool section() {
        const auto head = [&] { return need(sections) && need('{'); };
        return within<NtlPart::section>(
            [&] { return unit(head, [&] { return onward(NtlList::statements); }) && list(NtlList::statements); });
    }

    bool entity() {
        if (at(T_Property)) return property(NtlList::entities);
        return at(T_Pin) ? pin() : flag();
    }

    bool flag() {
        return leaf<NtlPart::flag>(NtlList::entities, [&] {
            const int which = to_.token();
            if (!need(flags) || !need('=')) return false;
            if (which == T_MaturityLevel) return need(maturities) && need(';');
            return need(which == T_PrimGroup ? T_StringConstant : T_BoolConstant) && need(';');
        });
    }

    bool pin() {
        bool properties = false;
        const auto head = [&] {
            if (!need(T_Pin) || !need(T_StringConstant) || !need(directions)) return false;
            may(T_Test);
            may(T_Abstract);
            may(pinTypes);
            may(requiredValues);
            return (properties = may('{')) || need(';');
        };
        const auto rest = [&] { return onward(properties ? NtlList::properties : NtlList::entities); };
        return within<NtlPart::pin>([&] { return unit(head, rest) && (!properties || list(NtlList::properties)); });
    }

    bool property(NtlList around) {
        return leaf<NtlPart::property>(around, [&] {
            if (!need(T_Property)) return false;
            const PropertyForm* form = formOf(to_.token());
            if (!need(types) || !need(T_StringConstant)) return false;
            if (!form) form = &intForm; // stood in for: any will do
            if (form->value == T_BoolConstant && may(T_BoolConstant)) return need(';');
            return need('{') && options(*form) && need('}');
        });
    }

    bool options(const PropertyForm& form) {
        if (!option(form, form.first)) return false;
        while (may(',')) {
            const bool last = form.descriptionIsLast && at(T_Description);
            if (!option(form, form.further)) return false;
            if (last) break;
        }
        return true;
    }

    bool option(const PropertyForm& form, const TokenSet& names) {
        return within<NtlPart::option>([&] {
            const int name = to_.token();
            if (!need(names)) return false;
            return name == T_Values ? values(form.value) : need('=') && need(form.valueOf(name));
        });
    }

    bool values(int value) {
        if (!need('{')) return false;
        do {
            if (!need(value)) return false;
            to_.listed(NtlPart::option);
        } while (may(','));
        return need('}');
    }

    // Mappings. Statements nest in braces and branches; what is open around the one at hand is in around_.
    enum class Around : std::uint8_t { braces, condition, thenBranch, elseBranch };
    enum class Step : std::uint8_t { failed, inside, done };

    bool statement() {
        const std::size_t outside = around_.size();
        for (Step step = beginStatement(); step != Step::failed; step = goOn(step))
            if (step == Step::done && around_.size() == outside) return true;
        while (around_.size() > outside) leave();
        return false;
    }

    Step beginStatement() {
        switch (to_.token()) {
        case '{':
            if (!enter(Around::braces, NtlPart::statements)) return stepOf(lacks());
            take();
            ++nesting_;
            to_.begin(NtlList::statements);
            return Step::inside;
        case T_If: return ifHead();
        default: return stepOf(leafStatement());
        }
    }

    /// Inside of what is open, or behind a statement in it.
    Step goOn(Step step) {
        const bool behindStatement = step == Step::done;
        switch (around_.back()) {
        case Around::braces: return restOfBraces(behindStatement);
        case Around::condition: around_.back() = Around::thenBranch; return branch();
        case Around::thenBranch:
            if (at(T_Else)) return elseHead();
            to_.noElse();
            [[fallthrough]];
        default: return leave();
        }
    }

    Step restOfBraces(bool behindStatement) {
        if (behindStatement) to_.listed(NtlList::statements);
        if (starts(NtlList::statements)) return beginStatement();
        bool closed = false;
        if (!endOrGoOn(NtlList::statements, closed)) return Step::failed;
        if (!closed) return Step::inside;
        to_.end(NtlList::statements);
        return leave();
    }

    Step ifHead() {
        if (!enter(Around::condition, NtlPart::ifStatement)) return stepOf(lacks());
        const auto head = [&] {
            return need(T_If) && need('(') && expression() && need(')') && (starts(NtlList::statements) || lacks());
        };
        return unit(head, [&] { return onwardFromBranch(); }) ? Step::inside : Step::failed;
    }

    Step elseHead() {
        take();
        to_.elseBegins();
        around_.back() = Around::elseBranch;
        const auto begins = [&] { return starts(NtlList::statements) || lacks(); };
        return unit(begins, [&] { return onwardFromBranch(); }) ? branch() : Step::failed;
    }

    // Not there when it was stood in for.
    Step branch() { return starts(NtlList::statements) ? beginStatement() : Step::done; }

    bool enter(Around around, NtlPart part) {
        if constexpr (Receiver::recovers)
            if (!to_.deeper()) return false;
        to_.open(part);
        around_.push_back(around);
        return true;
    }

    Step leave() {
        const bool isBraces = around_.back() == Around::braces;
        around_.pop_back();
        if (isBraces) --nesting_;
        to_.close(isBraces ? NtlPart::statements : NtlPart::ifStatement);
        if constexpr (Receiver::recovers) to_.shallower();
        return Step::done;
    }

    static Step stepOf(bool done) { return done ? Step::done : Step::failed; }

    bool onwardFromBranch() { return (!starts(NtlList::statements) || statement()) && onward(NtlList::statements); }

    bool leafStatement() {
        const NtlList around = NtlList::statements;
        switch (to_.token()) {
        case T_Inst:
            return leaf<NtlPart::inst>(
                around, [&] { return need(T_Inst) && need(T_StringConstant) && need(T_StringConstant) && need(';'); });
        case T_Connect:
            return leaf<NtlPart::connect>(around, [&] {
                return need(T_Connect) && need(T_StringConstant) && need(':') && pinRefs() && need(';');
            });
        case T_Signal:
            return leaf<NtlPart::signal>(around, [&] {
                return need(T_Signal) && need(T_StringConstant) && (!may(':') || pinRefs()) && need(';');
            });
        case T_Assign: return assign();
        default: return leaf<NtlPart::call>(around, [&] { return call() && need(';'); });
        }
    }

    bool assign() {
        const auto begin = to_.mark();
        NtlPart kind = NtlPart::assignBlockProperty;
        const auto body = [&] {
            if (!need(T_Assign)) return false;
            if (may(T_Pin)) {
                kind = NtlPart::assignPinProperty;
                return need(T_Property) && pinRef() && need(',') && need(T_StringConstant) && expression() && need(';');
            }
            kind = NtlPart::assignBlockProperty;
            return need(T_Block) && need(T_Property) && need(T_StringConstant) && need(T_StringConstant) &&
                   expression() && need(';');
        };
        const bool done = unit(body, [&] { return onward(NtlList::statements); });
        to_.openAt(begin, kind);
        to_.close(kind);
        return done;
    }

    bool pinRefs() {
        do
            if (!pinRef()) return false;
        while (may(','));
        return true;
    }

    bool pinRef() {
        return within<NtlPart::pinRef>([&] {
            if (!need(T_StringConstant)) return false;
            may(T_StringConstant);
            return true;
        });
    }

    // Expressions. Operators bind by level, the weakest is 1, and those of one level from the left. What is open around
    // the operand at hand is in operations_.
    struct Operation {
        enum Kind : std::uint8_t { parentheses, call, operation } kind;
        int level;                     ///< 0 for what ends at a parenthesis
        typename Receiver::Mark begin; ///< of its first operand
        bool isPart = true;            ///< not the call that is a statement
    };

    bool expression() {
        to_.expressionBegins();
        const std::size_t outside = operations_.size();
        if (operands(outside, false)) {
            to_.expressionEnds();
            return true;
        }
        while (operations_.size() > outside) leaveOperation();
        return false;
    }

    /// A call that is a statement, which the statement's part has.
    bool call() {
        const std::size_t outside = operations_.size();
        if (operands(outside, true)) return true;
        while (operations_.size() > outside) leaveOperation();
        return false;
    }

    bool operands(std::size_t outside, bool isStatement) {
        for (;;) {
            typename Receiver::Mark begin = to_.operandMark();
            bool whole = true;
            if (!operand(begin, isStatement && operations_.size() == outside, whole)) return false;
            if (!whole) continue;
            if (isStatement && operations_.size() == outside) return true;
            const Step step = behindOperand(begin, outside, isStatement);
            if (step != Step::inside) return step == Step::done;
        }
    }

    /// An operand, or what stands before one: that is not whole.
    bool operand(typename Receiver::Mark& begin, bool isStatement, bool& whole) {
        if (!isStatement) {
            if (at('(')) return opens({Operation::parentheses, 0, begin}, NtlPart::parentheses, whole);
            if (at('-') || at('!'))
                return opens({Operation::operation, strongestLevel + 1, begin}, NtlPart::operation, whole);
            if (!at(T_Identifier)) return within<NtlPart::constant>([&] { return need(constants); });
        }
        if (!enterOperation({Operation::call, 0, begin, !isStatement}, NtlPart::call)) return lacks();
        if (!need(T_Identifier) || !need('(')) return false;
        to_.callBegins();
        if (!at(')')) return !(whole = false);
        to_.noArguments();
        if (!need(')')) return false; // too deep
        to_.callEnds();
        begin = leaveOperation();
        return true;
    }

    bool opens(Operation&& operation, NtlPart part, bool& whole) {
        if (!enterOperation(std::move(operation), part)) return lacks();
        whole = false;
        return take();
    }

    /// Done: the expression ends. Inside: an operand comes.
    Step behindOperand(typename Receiver::Mark begin, std::size_t outside, bool isStatement) {
        for (;;) {
            const int level = levelOf(to_.token());
            if constexpr (Receiver::recovers) expected_ |= operators;
            while (operations_.size() > outside && operations_.back().level >= std::max(level, 1))
                begin = leaveOperation();
            if (level > 0) {
                if (!enterOperation({Operation::operation, level, begin}, NtlPart::operation)) return stepOf(lacks());
                take();
                return Step::inside;
            }
            if (operations_.size() == outside) return Step::done;
            if (operations_.back().kind == Operation::call) {
                to_.listed(NtlPart::call);
                if (may(',')) return Step::inside;
            }
            if (!need(')')) return Step::failed;
            if (operations_.back().kind == Operation::call) to_.callEnds();
            begin = leaveOperation();
            if (isStatement && operations_.size() == outside) return Step::done;
        }
    }

    bool enterOperation(Operation&& operation, NtlPart part) {
        if constexpr (Receiver::recovers)
            if (!to_.deeper()) return false;
        const bool isBehindOperand = operation.level > 0 && operation.level <= strongestLevel;
        if (isBehindOperand) to_.openAt(operation.begin, part);
        else if (operation.isPart) to_.open(part);
        operations_.push_back(operation);
        return true;
    }

    typename Receiver::Mark leaveOperation() {
        constexpr NtlPart parts[] = {NtlPart::parentheses, NtlPart::call, NtlPart::operation};
        const Operation done = operations_.back();
        operations_.pop_back();
        if (done.isPart) to_.close(parts[done.kind]);
        if constexpr (Receiver::recovers) to_.shallower();
        return done.begin;
    }

    Receiver& to_;
    TokenSet expected_;
    int nesting_ = 0; ///< lists of statements in each other
    std::vector<Around> around_;
    std::vector<Operation> operations_;
};

} // namespace hdnt::frontend
