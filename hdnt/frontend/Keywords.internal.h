#pragma once

#include "hdnt/frontend/Scanner.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace hdnt::frontend {

struct Keyword {
    std::string_view spelling;
    int token;
};

/// The words of the scanner's own statements, which are no tokens.
enum FileKeyword : int { IncludeKeyword = -2, InlineKeyword = -3 };

/// Every reserved word of the language.
inline constexpr Keyword keywords[] = {
    {"library", T_Library},
    {"block", T_Block},
    {"property", T_Property},
    {"pin", T_Pin},
    {"int", T_Int},
    {"string", T_String},
    {"bool", T_Bool},
    {"end", T_End},
    {"input", T_Input},
    {"output", T_Output},
    {"bidir", T_Bidir},
    {"NULL", T_Null},
    {"double", T_Double},
    {"pinlist", T_PinList},
    {"default", T_Default},
    {"min", T_Min},
    {"max", T_Max},
    {"precision", T_Precision},
    {"mapsto", T_MapTo},
    {"inst", T_Inst},
    {"connect", T_Connect},
    {"assign", T_Assign},
    {"signal", T_Signal},
    {"function", T_Function},
    {"if", T_If},
    {"else", T_Else},
    {"modifiedby", T_ModifiedBy},
    {"description", T_Description},
    {"data", T_Data},
    {"clock", T_Clock},
    {"enable", T_Enable},
    {"reset", T_Reset},
    {"setreset", T_SetReset},
    {"simulation", T_Simulation},
    {"tieLow", T_TieLow},
    {"tieHigh", T_TieHigh},
    {"tieSpecial", T_TieSpecial},
    {"untie", T_Untie},
    {"units", T_Units},
    {"values", T_Values},
    {"internal", T_Internal},
    {"test", T_Test},
    {"primgroup", T_PrimGroup},
    {"constraintsOnly", T_ConstraintsOnly},
    {"maturityLevel", T_MaturityLevel},
    {"early", T_Early},
    {"beta", T_Beta},
    {"production", T_Production},
    {"deprecated", T_Deprecated},
    {"expandsto", T_ExpandTo},
    {"set", T_Set},
    {"clear", T_Clear},
    {"preset", T_Preset},
    {"writeEnable", T_WriteEnable},
    {"retargetsto", T_RetargetTo},
    {"mixed", T_Mixed},
    {"muxControl", T_MuxControl},
    {"mustConnect", T_MustConnect},
    {"active", T_Active},
    {"abstract", T_Abstract},
    {"true", T_BoolConstant},
    {"false", T_BoolConstant},
    {"INCLUDE", IncludeKeyword},
    {"INLINE", InlineKeyword},
};

/// The last eight characters of a word, put together while it is read: what tells words apart in one comparison.
/// A word of up to eight characters is the only one of its length with its key.
using WordKey = std::uint64_t;

/// The key of a word with one character more.
constexpr WordKey keyWith(WordKey key, char c) { return key << 8 | static_cast<unsigned char>(c); }

constexpr WordKey keyOf(std::string_view word) {
    WordKey key = 0;
    for (const char c : word) key = keyWith(key, c);
    return key;
}

namespace detail {

struct KeywordSlot {
    WordKey key = 0;
    char head[sizeof(WordKey)] = {}; ///< the first eight characters
    int token = 0;
    unsigned length = 0;
};

constexpr size_t keywordSlots = 256;

// The factor was found by trial: no two keywords meet in a slot. Another one is due when a new keyword does not
// compile.
constexpr size_t slotOf(WordKey key) { return (key * 0xc4c89b9bdb31f2dfU) >> 56; }

consteval std::array<KeywordSlot, keywordSlots> makeKeywordTable() {
    std::array<KeywordSlot, keywordSlots> table{};
    for (const auto& [spelling, token] : keywords) {
        KeywordSlot& slot = table[slotOf(keyOf(spelling))];
        if (slot.key || spelling.size() > 2 * sizeof slot.key) throw "two keywords in a slot, or one that is too long";
        slot.key = keyOf(spelling);
        slot.token = token;
        slot.length = static_cast<unsigned>(spelling.size());
        std::copy_n(spelling.begin(), std::min(spelling.size(), sizeof slot.head), slot.head);
    }
    return table;
}

inline constexpr auto keywordTable = makeKeywordTable();

} // namespace detail

/// The token of a reserved word, or its FileKeyword; 0 for any other text. `word` is not empty, and `key` is its key.
inline int keywordToken(WordKey key, std::string_view word) {
    const detail::KeywordSlot& slot = detail::keywordTable[detail::slotOf(key)];
    if (slot.key != key || slot.length != word.size()) return 0;
    return word.size() <= sizeof key || std::memcmp(slot.head, word.data(), sizeof key) == 0 ? slot.token : 0;
}

inline int keywordToken(std::string_view word) { return keywordToken(keyOf(word), word); }

} // namespace hdnt::frontend
