#include "author/lint/nearestNames.h"
#include "author/syntax/Recovery.internal.h"
#include "hdnt/platform/HSTStringUtils.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace hdnt::author {

namespace {

using Kind = Repair::Kind;
constexpr auto firstOf = &frontend::NtlGrammar<Recovery>::firstOf;

struct Alias {
    std::string_view word;
    int token;
};

// What people write who come from other languages.
constexpr Alias aliases[] = {
    {"clk", T_Clock},         {"ck", T_Clock},           {"en", T_Enable},
    {"ce", T_Enable},         {"we", T_WriteEnable},     {"rst", T_Reset},
    {"clr", T_Clear},         {"pre", T_Preset},         {"in", T_Input},
    {"out", T_Output},        {"inout", T_Bidir},        {"io", T_Bidir},
    {"integer", T_Int},       {"boolean", T_Bool},       {"real", T_Double},
    {"float", T_Double},      {"text", T_String},        {"str", T_String},
    {"port", T_Pin},          {"cell", T_Block},         {"module", T_Block},
    {"param", T_Property},    {"parameter", T_Property}, {"attribute", T_Property},
    {"instance", T_Inst},     {"net", T_Signal},         {"wire", T_Signal},
    {"minimum", T_Min},       {"maximum", T_Max},        {"unit", T_Units},
    {"enum", T_Values},       {"value", T_Values},       {"released", T_Production},
    {"stable", T_Production}, {"alpha", T_Early},        {"obsolete", T_Deprecated},
    {"high", T_TieHigh},      {"low", T_TieLow},         {"lib", T_Library},
    {"elsif", T_Else},        {"elseif", T_Else},        {"desc", T_Description},
    {"doc", T_Description},   {"digits", T_Precision},
};

std::string lower(std::string_view text) { return HSTStringUtils::to_lower_copy(std::string(text)); }

std::string quoted(std::string_view text) {
    constexpr std::size_t most = 40;
    return "'" + std::string(text.substr(0, most)) + (text.size() > most ? "...'" : "'");
}

std::string nameOf(int token) {
    switch (token) {
    case 0: return "the end of the text";
    case T_StringConstant: return "a text in quotes";
    case T_Identifier: return "a function";
    case T_IntConstant: return "a whole number";
    case T_DoubleConstant: return "a number with a point";
    case T_BoolConstant: return "true or false";
    case T_HexConstant: return "a hexadecimal such as 8'hFF";
    case T_BinaryConstant: return "a binary such as 4'b1010";
    default: // operators of two characters are expected with all others
        return token < T_Library ? std::string{'\'', static_cast<char>(token), '\''}
                                 : std::string(frontend::spellingOf(token));
    }
}

struct Group {
    TokenSet tokens;
    std::string_view name;
};

const Group groups[] = {
    {firstOf(NtlList::statements), "a statement"},
    {firstOf(NtlList::entities), "a declaration"},
    {frontend::constants | TokenSet{T_Identifier, '(', '-', '!'}, "a value"},
    {frontend::operators, "an operator"},
    {frontend::pinTypes, "a pin type"},
    {frontend::requiredValues, "a required value"},
    {frontend::types, "a type"},
};

// "a, b or c", with sets that belong together by one name.
std::string namesOf(TokenSet expected) {
    std::vector<std::string> names;
    for (const Group& group : groups) {
        if ((expected | group.tokens) != expected) continue;
        names.emplace_back(group.name);
        TokenSet rest;
        expected.forEach([&](int token) {
            if (!group.tokens.contains(token)) rest.add(token);
        });
        expected = rest;
    }
    std::vector<std::string> marks;
    expected.forEach([&](int token) { (token < T_Library ? marks : names).push_back(nameOf(token)); });
    names.insert(names.end(), marks.begin(), marks.end());
    std::string all;
    for (std::size_t i = 0; i < names.size(); ++i)
        all += (i == 0 ? "" : i + 1 == names.size() ? " or " : ", ") + names[i];
    return all;
}

class Wording {
public:
    Wording(const SourceItems& items, const Fault& fault, const Repair& repair)
        : items_(items), fault_(fault), repair_(repair) {}

    SyntaxMessage message() {
        if (fault_.tooDeep) return atFault(SyntaxCode::nestedTooDeep, "nested too deep");
        if (fault_.endsTooEarly()) return strayBrace();
        if (const auto known = usualSlip()) return *known;
        switch (repair_.kind) {
        case Kind::misspelt: return misspelt(fault_.item, fault_.expected);
        case Kind::misspeltBefore: return misspelt(fault_.before, fault_.expectedBefore);
        case Kind::bareName:
            return at(fault_.before, SyntaxCode::wrongToken,
                      textOf(fault_.before) + " is no value: texts stand in quotes, functions have parentheses");
        case Kind::missing: return missing();
        case Kind::extra: return extra();
        case Kind::extraBefore:
            return at(fault_.before, SyntaxCode::unexpectedToken,
                      "unexpected " + textOf(fault_.before) + " before " + textOf(fault_.item));
        case Kind::wrong:
            return atFault(SyntaxCode::wrongToken, "expected " + wanted() + " instead of " + textOf(fault_.item));
        case Kind::swapped: return swapped();
        default:
            return atFault(SyntaxCode::unexpectedToken,
                           "expected " + namesOf(fault_.expected) + " instead of " + textOf(fault_.item));
        }
    }

private:
    std::string textOf(std::size_t item) const {
        return item < items_.size() ? quoted(items_.textOf(item)) : nameOf(0);
    }
    bool hasBefore() const { return fault_.before != Fault::none; }
    int tokenBefore() const { return hasBefore() ? items_[fault_.before].kind : 0; }
    bool isTwice() const {
        return hasBefore() && fault_.item < items_.size() && items_.textOf(fault_.before) == items_.textOf(fault_.item);
    }

    SyntaxMessage at(std::size_t item, SyntaxCode code, std::string text) const {
        if (item >= items_.size()) return behind(code, std::move(text));
        return {code, items_[item].offset, items_[item].length, std::move(text), 0, {}};
    }
    SyntaxMessage atFault(SyntaxCode code, std::string text) const { return at(fault_.item, code, std::move(text)); }
    // Behind the token before the fault.
    SyntaxMessage behind(SyntaxCode code, std::string text) const {
        const std::uint32_t offset = hasBefore() ? items_[fault_.before].offset + items_[fault_.before].length : 0;
        return {code, offset, 0, std::move(text), 0, {}};
    }

    SyntaxMessage misspelt(std::size_t item, const TokenSet& expected) const {
        const bool isTrue = lower(items_.textOf(item))[0] == 't';
        const std::string meant = repair_.token != T_BoolConstant ? nameOf(repair_.token) : isTrue ? "true" : "false";
        const std::string names = namesOf(expected);
        return at(item, SyntaxCode::misspeltWord,
                  names == meant ? "expected " + names + " instead of " + textOf(item)
                                 : "expected " + names + "; did you mean " + meant + "?");
    }

    // Which operator or value is meant, where any would do, nobody knows.
    std::string wanted() const {
        const bool isAnyValue =
            frontend::constants.contains(repair_.token) && (fault_.expected | frontend::constants) == fault_.expected;
        const bool isOneOfMany = isAnyValue || frontend::operators.contains(repair_.token);
        return isOneOfMany ? namesOf(fault_.expected) : nameOf(repair_.token);
    }

    // All that would do, when it is one of few words.
    std::string alternatives() const {
        std::size_t number = 0;
        bool words = true;
        fault_.expected.forEach([&](int token) {
            ++number;
            words &= token >= T_Library;
        });
        constexpr std::size_t few = 6;
        return words && number <= few ? namesOf(fault_.expected) : wanted();
    }

    SyntaxMessage missing() const {
        if (repair_.token == '}' && fault_.part != NtlPart::option && fault_.part != NtlPart::property)
            return unclosedBrace();
        constexpr TokenSet closing = {';', ',', ')', '}', ':', '='};
        const bool begins = fault_.item < items_.size() && items_[fault_.item].newlines > 0;
        if (begins && !closing.contains(repair_.token))
            return atFault(SyntaxCode::missingToken, "expected " + wanted() + " before " + textOf(fault_.item));
        const std::string after = hasBefore() ? " after " + textOf(fault_.before) : " at the beginning";
        const std::string missed = repair_.token >= T_Library ? alternatives() : wanted();
        return behind(SyntaxCode::missingToken, "expected " + missed + after);
    }

    SyntaxMessage extra() const {
        if (isTwice()) return atFault(SyntaxCode::unexpectedToken, textOf(fault_.item) + " stands twice");
        if (fault_.token == ';' && tokenBefore() == '}')
            return atFault(SyntaxCode::unexpectedToken, "no ';' behind '}'");
        return atFault(SyntaxCode::unexpectedToken,
                       "unexpected " + textOf(fault_.item) + "; expected " + namesOf(fault_.expected));
    }

    SyntaxMessage swapped() const {
        const std::size_t first = repair_.edits.front().item;
        const std::size_t second = repair_.edits.back().item;
        return at(first, SyntaxCode::wrongOrder, textOf(first) + " and " + textOf(second) + " are in the wrong order");
    }

    std::optional<SyntaxMessage> usualSlip() const {
        if (auto slip = number()) return slip;
        if (auto slip = order()) return slip;
        if (fault_.token == T_Identifier &&
            (lower(items_.textOf(fault_.item)) == "include" || lower(items_.textOf(fault_.item)) == "inline"))
            return atFault(SyntaxCode::misspeltWord,
                           "files are brought in by INCLUDE NAME; or INLINE NAME; in capitals, without quotes");
        if (repair_.kind == Kind::extraBefore && tokenBefore() == ',')
            return at(fault_.before, SyntaxCode::trailingComma, "no ',' before " + textOf(fault_.item));
        if (fault_.token == '=' && fault_.expected.contains(T_EqualTo))
            return atFault(SyntaxCode::wrongToken, "'=' does not compare; write '=='");
        return std::nullopt;
    }

    std::optional<SyntaxMessage> number() const {
        if (fault_.item >= items_.size()) return std::nullopt;
        const std::string text(items_.textOf(fault_.item));
        if (fault_.token == T_IntConstant && fault_.expected.contains(T_DoubleConstant) &&
            !fault_.expected.contains(T_IntConstant))
            return atFault(SyntaxCode::numberForm, "expected a number with a point; write " + text + ".0");
        if (fault_.token == T_Identifier && tokenBefore() == T_IntConstant && (text[0] == 'x' || text[0] == 'X') &&
            items_[fault_.before].offset + items_[fault_.before].length == items_[fault_.item].offset)
            return at(fault_.before, SyntaxCode::numberForm,
                      "hexadecimal numbers are written 8'h" + (text.size() > 1 ? text.substr(1) : "00"));
        if (fault_.expected.contains(T_HexConstant) != fault_.expected.contains(T_BinaryConstant) &&
            fault_.token != '}' && repair_.kind != Kind::missing)
            return atFault(SyntaxCode::numberForm,
                           "expected " +
                               nameOf(fault_.expected.contains(T_HexConstant) ? +T_HexConstant : +T_BinaryConstant) +
                               " instead of " + textOf(fault_.item));
        return std::nullopt;
    }

    // Words that may stand there, but not in this order.
    std::optional<SyntaxMessage> order() const {
        if (isTwice() || fault_.expected.contains(fault_.token)) return std::nullopt;
        constexpr TokenSet qualifiers =
            frontend::directions | frontend::pinTypes | frontend::requiredValues | TokenSet{T_Test, T_Abstract};
        constexpr TokenSet options = frontend::rangeOptions | TokenSet{T_Values, T_Min, T_Precision};
        const bool ofPin =
            fault_.part == NtlPart::pin && qualifiers.contains(fault_.token) && tokenBefore() != T_StringConstant;
        if (ofPin)
            return atFault(SyntaxCode::wrongOrder,
                           textOf(fault_.item) +
                               " is out of its order: direction, test, abstract, pin type, required value");
        if (fault_.part != NtlPart::option || !options.contains(fault_.token) || tokenBefore() == '=')
            return std::nullopt;
        const std::string word = textOf(fault_.item);
        if (fault_.token == T_Max && tokenBefore() == '{')
            return atFault(SyntaxCode::wrongOrder, "'max' stands behind 'min': write min = ..., max = ...");
        if (tokenBefore() == '{')
            return atFault(SyntaxCode::wrongOrder,
                           word + " cannot come first here; begin with " + namesOf(fault_.expected));
        if (fault_.token == T_Min || fault_.token == T_Values)
            return atFault(SyntaxCode::wrongOrder, word + " comes first in the braces");
        return atFault(SyntaxCode::wrongOrder, word + " is no option of this property");
    }

    std::size_t indentOf(std::size_t item) const {
        const std::string_view text = items_.text();
        const std::size_t line = text.substr(0, items_[item].offset).rfind('\n') + 1;
        return std::min(text.find_first_not_of(" \t", line), text.size()) - line;
    }

    struct Braces {
        std::size_t unclosed = Fault::none; ///< an opening brace
        std::size_t stray = Fault::none;    ///< a closing one
    };
    // By the indents of their lines, from the last block at the edge up to the fault.
    Braces judgeBraces() const {
        if (fault_.isOneOfMany) return {};
        std::size_t begin = std::min(fault_.item, items_.size());
        while (begin > 0 && !(items_[--begin].kind == T_Block && items_[begin].startsLine && begin + 1 < fault_.item &&
                              items_[begin + 1].kind == T_StringConstant)) {
        }
        Braces found;
        std::vector<std::pair<std::size_t, std::size_t>> open;
        for (std::size_t item = begin; item < std::min(fault_.item, items_.size()); ++item) {
            const int token = items_[item].kind;
            if (token == '{') open.emplace_back(item, indentOf(item));
            if (token != '}') continue;
            const bool beginsLine = items_[item].newlines > 0;
            if (open.empty()) {
                if (found.stray == Fault::none) found.stray = item;
                continue;
            }
            if (beginsLine && indentOf(item) < open.back().second && found.unclosed == Fault::none)
                found.unclosed = open.back().first;
            if (beginsLine && indentOf(item) > open.back().second && found.stray == Fault::none) found.stray = item;
            open.pop_back();
        }
        if (found.unclosed == Fault::none && !open.empty()) found.unclosed = open.back().first;
        return found;
    }

    SyntaxMessage unclosedBrace() const {
        const std::size_t opening = judgeBraces().unclosed;
        if (opening == Fault::none)
            return behind(SyntaxCode::unclosedBrace, "expected '}' after " + textOf(fault_.before));
        SyntaxMessage message =
            at(opening, SyntaxCode::unclosedBrace, "this '{' is not closed before " + textOf(fault_.item));
        const SyntaxMessage place = behind(SyntaxCode::unclosedBrace, "expected '}' here");
        message.relatedOffset = place.offset;
        message.relatedText = place.text;
        return message;
    }

    SyntaxMessage strayBrace() const {
        const std::size_t stray = judgeBraces().stray;
        SyntaxMessage message = at(stray == Fault::none ? fault_.before : stray, SyntaxCode::strayBrace,
                                   "this '}' has no '{', so that " + textOf(fault_.item) + " stands outside");
        const SyntaxMessage place = atFault(SyntaxCode::strayBrace, "what stands outside");
        message.relatedOffset = place.offset;
        message.relatedText = place.text;
        return message;
    }

    const SourceItems& items_;
    const Fault& fault_;
    const Repair& repair_;
};

} // namespace

bool Fault::endsTooEarly() const {
    if (!behindBrace) return false;
    const TokenSet inside = firstOf(NtlList::entities) | TokenSet{T_Inst, T_Connect, T_Signal, T_Assign, T_If};
    return expected == TokenSet{0} || (expected.contains(T_Function) && inside.contains(token));
}

int likelyToken(std::string_view word, const TokenSet& expected) {
    if (!isWord(word)) return 0;
    const std::string small = lower(word);
    for (const Alias& alias : aliases)
        if (alias.word == small && expected.contains(alias.token)) return alias.token;
    constexpr std::size_t shortWord = 4;
    std::size_t nearest = small.size() <= shortWord ? 2 : 3;
    int best = 0;
    expected.forEach([&](int token) {
        const std::string_view spelling =
            token == T_BoolConstant ? (small[0] == 't' ? "true" : "false") : frontend::spellingOf(token);
        if (spelling.empty()) return;
        const std::size_t far = editDistance(small, lower(spelling));
        if (far >= nearest || far * 2 >= spelling.size() + 1) return;
        nearest = far;
        best = token;
    });
    return best;
}

SyntaxMessage messageOf(const SourceItems& items, const Fault& fault, const Repair& repair) {
    SyntaxMessage message = Wording(items, fault, repair).message();
    message.mend = mendOf(items, fault, repair, message);
    return message;
}

} // namespace hdnt::author
