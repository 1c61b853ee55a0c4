#pragma once

#include "hdnt/frontend/Scanner.h"

#include <bit>
#include <cstdint>
#include <initializer_list>
#include <string_view>

namespace hdnt::frontend {

namespace detail {

/// The bit of each token in a set; `count` for what is in none.
struct TokenBits {
    static constexpr std::string_view characters{"\0{}();:,=<>+-*/%!", 17};
    static constexpr unsigned count = characters.size() + T_Abstract - T_Library + 1;
    static_assert(count <= 128);

    static constexpr int tokenOf(unsigned bit) {
        return bit < characters.size() ? characters[bit] : static_cast<int>(bit - characters.size()) + T_Library;
    }
    consteval TokenBits() {
        for (std::uint8_t& bit : of) bit = count;
        for (unsigned bit = 0; bit < count; ++bit) of[tokenOf(bit)] = static_cast<std::uint8_t>(bit);
    }
    std::uint8_t of[T_Abstract + 1]{};
};
inline constexpr TokenBits tokenBits;

} // namespace detail

/// A set of the grammar's tokens: token numbers, single characters, and 0 for the end. Any other number is in no set.
class TokenSet {
public:
    constexpr TokenSet() = default;
    constexpr TokenSet(std::initializer_list<int> tokens) {
        for (const int token : tokens) add(token);
    }

    constexpr void add(int token) {
        if (const unsigned bit = bitOf(token); bit < bits) words_[bit / 64] |= std::uint64_t(1) << bit % 64;
    }
    constexpr bool contains(int token) const {
        const unsigned bit = bitOf(token);
        return bit < bits && (words_[bit / 64] >> bit % 64 & 1) != 0;
    }
    constexpr TokenSet& operator|=(const TokenSet& other) {
        words_[0] |= other.words_[0];
        words_[1] |= other.words_[1];
        return *this;
    }
    friend constexpr TokenSet operator|(TokenSet a, const TokenSet& b) { return a |= b; }
    constexpr bool operator==(const TokenSet&) const = default;

    /// Calls with each token: characters first, then by number.
    template <typename Visit>
    void forEach(Visit&& visit) const {
        for (unsigned word = 0; word < 2; ++word)
            for (std::uint64_t left = words_[word]; left; left &= left - 1)
                visit(detail::TokenBits::tokenOf(word * 64 + static_cast<unsigned>(std::countr_zero(left))));
    }

private:
    static constexpr unsigned bits = detail::TokenBits::count;
    static constexpr unsigned bitOf(int token) {
        return static_cast<unsigned>(token) <= T_Abstract ? detail::tokenBits.of[token] : bits;
    }
    std::uint64_t words_[2] = {0, 0};
};

/// The word of a keyword's token; empty for any other, and for "true" and "false", which are one token.
HDNT_API std::string_view spellingOf(int token);

// What may stand in one place of a declaration.
inline constexpr TokenSet types = {T_Int, T_String, T_Double, T_Bool, T_HexConstant, T_BinaryConstant};
inline constexpr TokenSet sections = {T_MapTo, T_ExpandTo, T_ModifiedBy, T_RetargetTo};
inline constexpr TokenSet flags = {T_Internal, T_Test, T_MaturityLevel, T_PrimGroup};
inline constexpr TokenSet maturities = {T_Early, T_Beta, T_Production, T_Deprecated};
inline constexpr TokenSet directions = {T_Input, T_Output, T_Bidir, T_Internal};
inline constexpr TokenSet pinTypes = {T_Data,   T_Clock, T_Clear, T_Enable,   T_Mixed,
                                      T_Preset, T_Reset, T_Set,   T_SetReset, T_WriteEnable};
inline constexpr TokenSet requiredValues = {T_TieLow, T_TieHigh, T_TieSpecial, T_Untie, T_Active, T_MustConnect};
inline constexpr TokenSet constants = {T_IntConstant, T_StringConstant, T_BoolConstant, T_DoubleConstant};
inline constexpr TokenSet operators = {'+',         '-',       '*',        '/',      '%',   '<', '>', T_GreaterEqual,
                                       T_LessEqual, T_EqualTo, T_NotEqual, T_AndAnd, T_OrOr};

/// How strongly a binary operator binds, from 1 (||); 0 for any other token.
constexpr int levelOf(int token) {
    switch (token) {
    case T_OrOr: return 1;
    case T_AndAnd: return 2;
    case T_EqualTo:
    case T_NotEqual: return 3;
    case '<':
    case '>':
    case T_LessEqual:
    case T_GreaterEqual: return 4;
    case '+':
    case '-': return 5;
    case '*':
    case '/':
    case '%': return 6;
    default: return 0;
    }
}
inline constexpr int strongestLevel = 6;

/// The options in the body of a property of one type.
struct PropertyForm {
    int value;        ///< the token of its values
    TokenSet first;   ///< options that may come first
    TokenSet further; ///< those that may follow a comma
    bool descriptionIsLast = false;

    /// What stands behind the "=" of an option.
    constexpr int valueOf(int option) const {
        switch (option) {
        case T_Min:
        case T_Max:
        case T_Default: return value;
        case T_Precision: return T_IntConstant;
        case T_Units:
        case T_Description: return T_StringConstant;
        default: return T_BoolConstant;
        }
    }
};

inline constexpr TokenSet flagOptions = {T_Simulation, T_MuxControl, T_Test, T_ConstraintsOnly};
inline constexpr TokenSet rangeOptions = flagOptions | TokenSet{T_Max, T_Default, T_Units, T_Description};
inline constexpr PropertyForm intForm = {T_IntConstant, flagOptions | TokenSet{T_Values, T_Min, T_Default},
                                         rangeOptions, true};
inline constexpr PropertyForm doubleForm = {
    T_DoubleConstant, {T_Values, T_Min, T_Default, T_Simulation}, rangeOptions | TokenSet{T_Precision}, true};
inline constexpr PropertyForm boolForm = {T_BoolConstant, {T_Default}, flagOptions | TokenSet{T_Description}};
inline constexpr PropertyForm stringForm = {T_StringConstant,
                                            {T_Values, T_Default, T_Simulation, T_MuxControl},
                                            flagOptions | TokenSet{T_Default, T_Description}};
inline constexpr PropertyForm hexForm = {
    T_HexConstant, {T_Values, T_Min, T_Default, T_Simulation, T_MuxControl}, rangeOptions};
inline constexpr PropertyForm binaryForm = {T_BinaryConstant, {T_Values, T_Min, T_Default, T_Simulation}, rangeOptions};

/// By the token of the type; null for any other token.
constexpr const PropertyForm* formOf(int type) {
    switch (type) {
    case T_Int: return &intForm;
    case T_Double: return &doubleForm;
    case T_Bool: return &boolForm;
    case T_String: return &stringForm;
    case T_HexConstant: return &hexForm;
    case T_BinaryConstant: return &binaryForm;
    default: return nullptr;
    }
}

} // namespace hdnt::frontend
