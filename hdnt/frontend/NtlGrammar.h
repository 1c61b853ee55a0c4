#pragma once

#include "hdnt/frontend/TokenSet.h"

#include <cstdint>
#include <utility>

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
/// parts. It accepts what the library's parser accepts, and stops at the same token where that reports its first error.
///
/// A Receiver has
///   int token()                the number of the token ahead; 0 at the end
///   void take(const TokenSet&) the token ahead, one of these, becomes part of what is open; the next one is ahead
///   void open(NtlPart), void close()
///   Mark mark(), void openAt(Mark, NtlPart)   opens a part that began at the mark: an operation is known by its
///   operator bool lacks(const TokenSet& expected)      one of these should be ahead; true when it stands in for the
///   token bool recover(begin, again)                a unit failed that began at start(); true: parse it again Start
///   start() bool deeper(), void shallower()           around what nests; false when that is too deep
///
/// A unit is a stretch without a list in it; `again` parses it and goes on behind it, which lets a receiver that
/// recovers try out what would come of a repair. A receiver that does not recover answers false, and the parse ends.
template <typename Receiver>
class NtlGrammar {
public:
    explicit NtlGrammar(Receiver& receiver) : to_(receiver) {}

    /// One library and the end of the text. False: refused.
    bool file() {
        const Part part(to_, NtlPart::file);
        const auto head = [&] { return need(T_Library) && need(T_StringConstant) && need('{'); };
        if (!unit(head, [&] { return onward(NtlList::elements); })) return false;
        do // more than once where the library seemed to end too early
            if (!list(NtlList::elements) || !endOfFile()) return false;
        while (to_.token() != 0);
        return true;
    }

    /// What an included file holds: elements, entities or statements, and the end of the text.
    bool fragment(NtlList which) {
        const Part part(to_, NtlPart::file);
        const auto all = [&] {
            while (starts(which))
                if (!element(which)) return false;
            return true;
        };
        const auto end = [&] { return starts(which) || at(0) || lacks(); };
        do
            if (!all() || !unit(end, all)) return false;
        while (to_.token() != 0);
        return true;
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
    /// Open as long as it lives: a parse that ends in the middle leaves nothing open.
    struct Part {
        Part(Receiver& to, NtlPart part) : receiver(to) { to.open(part); }
        ~Part() { receiver.close(); }
        Part(const Part&) = delete;
        Part& operator=(const Part&) = delete;
        Receiver& receiver;
    };

    // What is asked of the token ahead adds up to what may stand there.
    bool at(int token) {
        expected_.add(token);
        return to_.token() == token;
    }
    bool at(const TokenSet& tokens) {
        expected_ |= tokens;
        return tokens.contains(to_.token());
    }
    bool take() {
        to_.take(expected_);
        expected_ = TokenSet();
        return true;
    }
    bool need(int token) { return at(token) ? take() : lacks(); }
    bool need(const TokenSet& tokens) { return at(tokens) ? take() : lacks(); }
    bool may(int token) { return at(token) && take(); }
    bool may(const TokenSet& tokens) { return at(tokens) && take(); }
    bool lacks() {
        if (!to_.lacks(expected_)) return false;
        expected_ = TokenSet();
        return true;
    }

    template <typename Body, typename Rest>
    bool unit(Body&& body, Rest&& rest) {
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

    /// The elements that are ahead, and the closing brace.
    bool list(NtlList which) {
        const bool nests = which == NtlList::statements;
        nesting_ += nests ? 1 : 0;
        const bool done = restOf(which);
        nesting_ -= nests ? 1 : 0;
        return done;
    }

    bool restOf(NtlList which) {
        for (;;) {
            while (starts(which))
                if (!element(which)) return false;
            bool closed = false;
            if (!endOrGoOn(which, closed)) return false;
            if (closed) return true;
        }
    }

    bool endOfFile() {
        return unit([&] { return at(0) || lacks(); }, [] { return true; });
    }

    bool endOrGoOn(NtlList which, bool& closed) {
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
            if (nesting_ > 1) return (!may(T_Else) || branch()) && onward(NtlList::statements);
            [[fallthrough]];
        default: return (!at(sections) || section()) && onward(NtlList::elements);
        }
    }

    template <typename Body>
    bool leaf(NtlPart kind, NtlList around, Body&& body) {
        const Part part(to_, kind);
        return unit(std::forward<Body>(body), [&] { return onward(around); });
    }

    // Declarations
    bool function() {
        return leaf(NtlPart::function, NtlList::elements, [&] {
            return need(T_Function) && need(types) && need(T_Identifier) && need('(') && formals() && need(';');
        });
    }

    bool formals() {
        if (may(')')) return true;
        do
            if (!need(types)) return false;
        while (may(','));
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
        to_.openAt(begin, declared ? NtlPart::block : NtlPart::mapping);
        const bool done = declared ? list(NtlList::entities) && optionalSection() : section();
        to_.close();
        return done;
    }

    bool optionalSection() {
        const auto decide = [&] {
            return at(sections) || at(firstOf(NtlList::elements)) || at('}') || at(0) || lacks();
        };
        if (!unit(decide, [&] { return (!at(sections) || section()) && onward(NtlList::elements); })) return false;
        return !at(sections) || section();
    }

    bool section() {
        const Part part(to_, NtlPart::section);
        const auto head = [&] { return need(sections) && need('{'); };
        return unit(head, [&] { return onward(NtlList::statements); }) && list(NtlList::statements);
    }

    bool entity() {
        if (at(T_Property)) return property(NtlList::entities);
        return at(T_Pin) ? pin() : flag();
    }

    bool flag() {
        return leaf(NtlPart::flag, NtlList::entities, [&] {
            const int which = to_.token();
            if (!need(flags) || !need('=')) return false;
            if (which == T_MaturityLevel) return need(maturities) && need(';');
            return need(which == T_PrimGroup ? T_StringConstant : T_BoolConstant) && need(';');
        });
    }

    bool pin() {
        const Part part(to_, NtlPart::pin);
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
        return unit(head, rest) && (!properties || list(NtlList::properties));
    }

    bool property(NtlList around) {
        return leaf(NtlPart::property, around, [&] {
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
        const Part part(to_, NtlPart::option);
        const int name = to_.token();
        if (!need(names)) return false;
        if (name != T_Values) return need('=') && need(form.valueOf(name));
        if (!need('{')) return false;
        do
            if (!need(form.value)) return false;
        while (may(','));
        return need('}');
    }

    // Mappings
    bool statement() {
        if (!to_.deeper()) return lacks();
        const bool done = undeepStatement();
        to_.shallower();
        return done;
    }

    bool undeepStatement() {
        const auto leafOf = [&](NtlPart kind, auto&& body) { return leaf(kind, NtlList::statements, body); };
        switch (to_.token()) {
        case T_If: return ifStatement();
        case '{': return braces();
        case T_Inst:
            return leafOf(NtlPart::inst, [&] {
                return need(T_Inst) && need(T_StringConstant) && need(T_StringConstant) && need(';');
            });
        case T_Connect:
            return leafOf(NtlPart::connect, [&] {
                return need(T_Connect) && need(T_StringConstant) && need(':') && pinRefs() && need(';');
            });
        case T_Signal:
            return leafOf(NtlPart::signal, [&] {
                return need(T_Signal) && need(T_StringConstant) && (!may(':') || pinRefs()) && need(';');
            });
        case T_Assign: return assign();
        default: return leafOf(NtlPart::call, [&] { return call() && need(';'); });
        }
    }

    bool braces() {
        const Part part(to_, NtlPart::statements);
        take();
        return list(NtlList::statements);
    }

    bool ifStatement() {
        const Part part(to_, NtlPart::ifStatement);
        const auto head = [&] {
            return need(T_If) && need('(') && expression() && need(')') && (starts(NtlList::statements) || lacks());
        };
        const auto rest = [&] { return branch() && onward(NtlList::statements); };
        if (!unit(head, rest) || !branch()) return false;
        if (!may(T_Else)) return true;
        const auto begins = [&] { return starts(NtlList::statements) || lacks(); };
        return unit(begins, rest) && branch();
    }

    // Not there when it was stood in for.
    bool branch() { return !starts(NtlList::statements) || statement(); }

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
        to_.close();
        return done;
    }

    bool pinRefs() {
        do
            if (!pinRef()) return false;
        while (may(','));
        return true;
    }

    bool pinRef() {
        const Part part(to_, NtlPart::pinRef);
        if (!need(T_StringConstant)) return false;
        may(T_StringConstant);
        return true;
    }

    // Expressions. Operators bind by level, the weakest is 1, and those of one level from the left.
    bool expression(int level = 1) {
        if (!to_.deeper()) return lacks();
        const bool done = undeepExpression(level);
        to_.shallower();
        return done;
    }

    bool undeepExpression(int level) {
        const auto begin = to_.mark();
        if (!operand()) return false;
        for (;;) {
            const int ahead = levelOf(to_.token());
            expected_ |= operators;
            if (ahead < level) return true;
            to_.openAt(begin, NtlPart::operation);
            take();
            const bool done = expression(ahead + 1);
            to_.close();
            if (!done) return false;
        }
    }

    bool operand() {
        if (at('(')) {
            const Part part(to_, NtlPart::parentheses);
            return take() && expression() && need(')');
        }
        if (at('-') || at('!')) {
            const Part part(to_, NtlPart::operation);
            return take() && expression(strongestLevel + 1);
        }
        if (at(T_Identifier)) {
            const Part part(to_, NtlPart::call);
            return call();
        }
        const Part part(to_, NtlPart::constant);
        return need(constants);
    }

    bool call() {
        if (!need(T_Identifier) || !need('(')) return false;
        if (may(')')) return true;
        do
            if (!expression()) return false;
        while (may(','));
        return need(')');
    }

    Receiver& to_;
    TokenSet expected_;
    int nesting_ = 0; ///< lists of statements in each other
};

} // namespace hdnt::frontend
