#pragma once

#include "hdnt/frontend/GrammarExpressions.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace hdnt::frontend {

/// The grammar of NTL as a recursive descent that looks one token ahead, over whatever delivers tokens and receives the
/// parts. It accepts what the law of the language accepts (tests/oracle), and stops at the same token where that has
/// its first error. It looks ahead only where it has to, and nests without recursion.
template <typename Receiver>
class NtlGrammar : private GrammarExpressions<Receiver> {
    using Expressions = GrammarExpressions<Receiver>;

public:
    explicit NtlGrammar(Receiver& receiver) : Expressions(receiver) {}
    NtlGrammar(const NtlGrammar&) = delete;

    /// One library and the end of the text. False: refused.
    bool file() {
        const auto head = [&] { return need(T_Library) && need(T_StringConstant) && need('{'); };
        return this->template within<NtlPart::file>([&] {
            if (!unit(head, [&] { return onward(NtlList::elements); })) return false;
            do // more than once where the library seemed to end too early
                if (!list(NtlList::elements) || !endOfFile()) return false;
            while (to_.token() != 0);
            return true;
        });
    }

    /// What an included file holds: elements, entities or statements, and the end of the text.
    bool fragment(NtlList which) {
        hasLibrary_ = false;
        const auto all = [&] {
            while (starts(which))
                if (!element(which)) return false;
            return true;
        };
        const auto end = [&] { return starts(which) || at(0) || lacks(); };
        return this->template within<NtlPart::file>([&] {
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
    using Tokens = GrammarTokens<Receiver>;
    using Expressions::expression, Expressions::call;
    using Tokens::at, Tokens::need, Tokens::may, Tokens::take, Tokens::lacks, Tokens::unit, Tokens::to_;
    using typename Tokens::Step;

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
        const auto closes = [&] { return hasLibrary_ || which != NtlList::elements ? need('}') : at(0) || lacks(); };
        const auto end = [&] {
            closed = false;
            return starts(which) || (closed = closes());
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
        return this->template within<kind>([&] { return unit(body, [&] { return onward(around); }); });
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
            return at(sections) || at(firstOf(NtlList::elements)) || (hasLibrary_ && at('}')) || at(0) || lacks();
        };
        if (!unit(decide, [&] { return (!at(sections) || section()) && onward(NtlList::elements); })) return false;
        return !at(sections) || section();
    }

    bool section() {
        const auto head = [&] { return need(sections) && need('{'); };
        return this->template within<NtlPart::section>(
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
        return this->template within<NtlPart::pin>(
            [&] { return unit(head, rest) && (!properties || list(NtlList::properties)); });
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
        return this->template within<NtlPart::option>([&] {
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
            if (!enter(Around::braces, NtlPart::statements)) return Tokens::stepOf(lacks());
            take();
            ++nesting_;
            to_.begin(NtlList::statements);
            return Step::inside;
        case T_If: return ifHead();
        default: return Tokens::stepOf(leafStatement());
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
        if (!enter(Around::condition, NtlPart::ifStatement)) return Tokens::stepOf(lacks());
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
        default:
            return leaf<NtlPart::call>(around, [&] {
                if constexpr (Receiver::recovers) this->expected_ |= firstOf(around); // the word may be misspelt
                return call() && need(';');
            });
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
        return this->template within<NtlPart::pinRef>([&] {
            if (!need(T_StringConstant)) return false;
            may(T_StringConstant);
            return true;
        });
    }

    bool hasLibrary_ = true; ///< around the elements
    int nesting_ = 0;        ///< lists of statements in each other
    std::vector<Around> around_;
};

} // namespace hdnt::frontend
