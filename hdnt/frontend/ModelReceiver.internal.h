#pragma once

#include "hdnt/frontend/ModelBuilder.internal.h"
#include "hdnt/frontend/NtlGrammar.h"
#include "hdnt/frontend/ParserState.internal.h"
#include "hdnt/frontend/PropertyOptions.internal.h"
#include "hdnt/frontend/ScannerState.internal.h"

#include <array>
#include <climits>
#include <string_view>
#include <vector>

namespace hdnt::frontend {

/// The lists that a parse fills. They are kept for the next one, with the room they have: a folder's texts are small,
/// and lists that grow from nothing would be a part of their time.
class ReceiverLists {
protected:
    struct Operand {
        HDNTExpr* expr;
        yyltype place;
    };
    struct Operator {
        HDNTExpr::FOPERATOR op;
        bool isPrefix;
        int rule;
        yyltype place; ///< of a prefix or a parenthesis
    };
    struct Call {
        std::string_view name;
        std::size_t begin; ///< of its arguments
        yyltype place;
    };
    struct Braces {
        std::size_t begin; ///< of the statements in them
        yyltype place;
    };
    struct If {
        yyltype place;
        HDNTNetlistEntity* thenStmt = nullptr; ///< with an "else" behind it
        yyltype elsePlace{};
        bool hasElse = false;
    };

    /// Those kept, or new ones with as much room as most texts need.
    ReceiverLists();
    /// Keeps them, unless they have grown large.
    ~ReceiverLists();
    ReceiverLists(const ReceiverLists&) = delete;
    ReceiverLists& operator=(const ReceiverLists&) = delete;

    std::vector<HDNTDecl*> decls_;
    std::vector<HATAttrTypes::AttrType> formals_;
    std::vector<HDNTBlockEntity*> entities_;
    std::vector<HDNTProperty*> properties_;
    PropertyOptions options_;
    std::vector<HDNTNetlistEntity*> statements_;
    std::vector<Braces> braces_;
    std::vector<If> ifs_;
    std::vector<HDNTPinInst*> pins_;
    std::vector<Operand> operands_;
    std::vector<Operator> operators_;
    std::vector<Call> calls_;
    std::vector<HDNTExpr*> arguments_;

private:
    struct Empty {};
    explicit ReceiverLists(Empty) {}
    static ReceiverLists& kept() noexcept;
    void swap(ReceiverLists& other) noexcept;
    /// Calls act(list, the same of the other) for each.
    template <typename Act>
    void forEach(ReceiverLists& other, Act&& act);
};

/// Receives the parts of a text for the model: has each built as soon as its last token is read. For one parse; stops
/// at the first fault, which it reports. Internal.
///
/// What a generated parser would do is kept, since hosts see it: when it looks ahead, in which order things are built,
/// and how much is on its stack when mappings nest, for which there is a limit.
class ModelReceiver : private ReceiverLists {
public:
    static constexpr bool recovers = false;
    struct Mark {};

    ModelReceiver() = default;
    ~ModelReceiver();
    ModelReceiver(const ModelReceiver&) = delete;
    ModelReceiver& operator=(const ModelReceiver&) = delete;

    // What the grammar calls
    int token() {
        if (token_ == none) scan();
        return token_;
    }
    void take(const TokenSet&) {
        taken_[count_++ % taken_.size()] = {scanner_.tokenText(), token_, scanner_.tokenNumber()};
        token_ = none;
        deepen();
    }
    [[gnu::always_inline]] bool takes(int mark) {
        if (mark == T_StringConstant) return takesString();
        if (mark >= T_Library || token_ != none || !scanner_.scanExpected(static_cast<char>(mark))) return false;
        if (HDNTParserdebug != 0) [[unlikely]]
            traceToken(mark);
        taken_[count_++ % taken_.size()].token = mark; // nobody reads its text
        deepen();
        return true;
    }
    bool lacks(const TokenSet&) {
        if (!hasFailed()) fail("syntax error", true);
        return false;
    }
    Mark mark() {
        count_ = 0;
        place_ = scanner_.tokenPlace();
        return {};
    }
    Mark operandMark() const { return {}; }
    // Here, since the part is known where they are called.
    [[gnu::always_inline]] void open(NtlPart part) {
        token(); // a part begins at it
        switch (part) {
        case NtlPart::file: libraryPlace_ = scanner_.tokenPlace(); break;
        case NtlPart::section: return openSection();
        case NtlPart::pin:
            count_ = 0;
            pinPlace_ = scanner_.tokenPlace();
            break;
        case NtlPart::property: return openProperty();
        case NtlPart::option: return openOption();
        case NtlPart::function:
        case NtlPart::flag:
        case NtlPart::inst:
        case NtlPart::connect:
        case NtlPart::signal: mark(); break;
        case NtlPart::pinRef:
            count_ = 3;
            pinRefPlace_ = scanner_.tokenPlace();
            break;
        case NtlPart::constant:
            constantPlace_ = scanner_.tokenPlace();
            count_ = operandBegin_;
            break;
        default: return openInMapping(part);
        }
    }
    void openAt(Mark, NtlPart part);
    [[gnu::always_inline]] void close(NtlPart part) {
        if (hasFailed()) return;
        switch (part) {
        case NtlPart::function: return closeFunction();
        case NtlPart::flag: return closeFlag();
        case NtlPart::pin: return closePin();
        case NtlPart::property: return closeProperty();
        case NtlPart::option: return closeOption();
        case NtlPart::block: return closeBlock();
        case NtlPart::mapping: return closeMapping();
        case NtlPart::inst: return closeInst();
        case NtlPart::connect: return closeConnect();
        case NtlPart::signal: return closeSignal();
        case NtlPart::assignBlockProperty: return closeAssignBlock();
        case NtlPart::assignPinProperty: return closeAssignPin();
        case NtlPart::ifStatement: return closeIf();
        case NtlPart::statements: return closeStatements();
        case NtlPart::pinRef: return closePinRef();
        case NtlPart::constant: return closeConstant();
        case NtlPart::operation: return closeOperation();
        case NtlPart::parentheses: return closeParentheses();
        case NtlPart::call:
            if (lastTaken().token == ';') closeCallStatement();
            break;
        default: break;
        }
    }
    void begin(NtlList which);
    void listed(NtlList which);
    void end(NtlList which);
    void listed(NtlPart part);
    void expressionBegins();
    void expressionEnds() { inExpression_ = false; }
    void callBegins();
    void noArguments() {
        if (!hasFailed()) deepen();
    }
    void callEnds();
    void elseBegins();
    void noElse() {
        if (!hasFailed()) deepen();
    }

private:
    static constexpr int none = -2;    ///< no token is ahead
    static constexpr int stopped = -3; ///< none will be
    bool hasFailed() const { return token_ == stopped; }

    struct Taken {
        std::string_view text; ///< as written
        int token = 0;
        Scanner::Number number{};
        bool isTrue() const { return text.front() == 't'; }
    };
    // Tokens
    void scan();
    bool takesString();
    [[gnu::noinline]] void fail(const char* message, bool isSyntax);
    [[gnu::noinline]] void stop();
    /// Runs the builder's step of a numbered rule of the language; what it throws ends the parse.
    template <typename Step>
    void build(int rule, Step&& step) {
        if (hasFailed()) return;
        if (HDNTParserdebug != 0) [[unlikely]]
            traceRule(rule);
        if (!ParserState::instance().guard(std::forward<Step>(step))) stop();
    }
    [[gnu::noinline]] void traceRule(int rule) const;
    [[gnu::noinline]] void traceToken(int token) const;
    const Taken& taken(std::size_t index) const { return taken_[index]; }
    const Taken& lastTaken() const { return taken_[(count_ - 1) % taken_.size()]; }
    std::string_view textOf(std::size_t index) const { return unquoted(taken_[index]); }
    static std::string_view unquoted(const Taken& string) { return string.text.substr(1, string.text.size() - 2); }
    /// An identifier is told apart by its first characters.
    static std::string_view shortened(std::string_view word) {
        return word.substr(0, sizeof(NtlTokenValue::identifier) - 1);
    }
    /// A part's place begins at its first token. It ends at its last one when both stand on one line of one file. For
    /// when that was taken and none is ahead.
    yyltype upToLast(yyltype place) const {
        if (scanner_.tokenLine() == place.first_line && scanner_.fileName() == place.fileName)
            place.last_column = scanner_.tokenLastColumn();
        return place;
    }

    /// The same for one that ends with a part.
    static yyltype extended(yyltype place, const yyltype& last) {
        if (last.first_line == place.first_line && last.fileName == place.fileName)
            place.last_column = last.last_column;
        return place;
    }

    template <typename List, typename Item>
    void add(std::vector<List*>& list, Item*& item) {
        if (!ParserState::instance().guard([&] { list.push_back(item); })) return stop();
        item = nullptr;
    }

    // The stack of a parser with tables: what is on it counts in mappings, elsewhere it is never deep.
    void deepen() {
        if (++depth_ >= capacity_) [[unlikely]]
            grow();
    }
    [[gnu::noinline]] void grow();

    // Declarations
    void openSection();
    void openProperty();
    void closeFunction();
    void closeFlag();
    void closePin();
    void closeProperty();
    void openOption();
    void closeOption();
    void listValue();
    void closeBlock();
    void closeMapping();
    void endLibrary();

    // Mappings
    void openInMapping(NtlPart part);
    void openOperation();
    void listArgument();
    void beginStatements();
    void endNetlist();
    void closeStatements();
    void closeIf();
    void closePinRef();
    void closeConstant();
    void closeOperation();
    void closeParentheses();
    void closeCallStatement();
    void closeInst();
    void closeConnect();
    void closeSignal();
    void closeAssignBlock();
    void closeAssignPin();
    /// A statement that was so many symbols is one.
    void reduce(int symbols) {
        statementPlace_ = upToLast(place_);
        depth_ -= symbols - 1;
    }
    HDNTExpr* takeOperand() {
        HDNTExpr* const operand = operands_.back().expr;
        operands_.pop_back();
        return operand;
    }

    Scanner& scanner_ = Scanner::instance();
    int token_ = none;
    yyltype place_{}; ///< of the flag, function, property or statement being read
    std::array<Taken, 32> taken_;
    std::size_t count_ = 0; ///< of what is being read; operands of expressions count no longer than they are read

    int depth_ = 0; ///< symbols on the stack, and one
    int capacity_ = INT_MAX;
    int capacityOfMappings_ = 200;

    yyltype libraryPlace_{};
    std::string_view libraryName_;
    HDNTDecl* decl_ = nullptr; ///< null for a mapping that stands by itself

    yyltype blockPlace_{};
    yyltype declaredPlace_{}; ///< of the block, without the mapping behind it
    std::string_view blockName_;
    bool isDeclared_ = false; ///< the block; else it is a mapping that stands by itself
    HDNTNetlist::Section section_ = HDNTNetlist::Section::mapsto;
    HDNTBlockEntity* entity_ = nullptr;
    yyltype pinPlace_{};
    std::size_t pinEnd_ = 0; ///< tokens of a pin up to the brace that is open; 0: none is
    HDNTProperty* property_ = nullptr;
    std::size_t propertyBegin_ = 0;
    std::size_t optionBegin_ = 0;

    yyltype netlistPlace_{};
    HDNTNetlist* netlist_ = nullptr;
    HDNTNetlistEntity* statement_ = nullptr;
    yyltype statementPlace_{}; ///< of the statement
    yyltype pinRefPlace_{};
    HDNTBlockPinName* pin_ = nullptr;
    std::string_view assigned_;    ///< property of a pin
    std::size_t operandBegin_ = 0; ///< tokens before an expression
    bool inExpression_ = false;    ///< not in a call that is a statement
    yyltype callPlace_{};
    yyltype constantPlace_{};
};

} // namespace hdnt::frontend
