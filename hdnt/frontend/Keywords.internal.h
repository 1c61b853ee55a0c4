#pragma once

#include "hdnt/frontend/Scanner.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
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

/// The first eight characters of a word in a number, the first one lowest, zeros behind a shorter one: what tells words
/// apart in one comparison.
using WordKey = std::uint64_t;

constexpr WordKey keyOf(std::string_view word) {
    WordKey key = 0;
    for (std::size_t i = 0; i < word.size() && i < sizeof key; ++i)
        key |= static_cast<WordKey>(static_cast<unsigned char>(word[i])) << (8 * i);
    return key;
}

/// The key of eight characters at once.
inline WordKey keyAt(const char* characters) {
    WordKey key = 0;
    std::memcpy(&key, characters, sizeof key);
    return std::endian::native == std::endian::big ? __builtin_bswap64(key) : key;
}

namespace detail {

constexpr std::size_t keywordSlots = 256;
constexpr std::size_t longestKeyword = 2 * sizeof(WordKey) - 1;

struct KeywordSlot {
    WordKey head = 0; ///< key of the word
    int token = 0;
    unsigned length = 0;
};

struct KeywordTable {
    std::array<KeywordSlot, keywordSlots> slots{};
    std::array<WordKey, keywordSlots> tails{};       ///< keys of the last eight characters of words that have more
    std::array<WordKey, longestKeyword + 1> masks{}; ///< what belongs to a word of so many characters in a key
};

// The factor was found by trial: no two keywords meet in a slot. Another one is due when a new keyword does not
// compile.
constexpr std::size_t slotOf(WordKey key) { return (key * 0x5be4667e71e6e809U) >> 56; }

consteval KeywordTable makeKeywordTable() {
    KeywordTable table;
    for (std::size_t length = 1; length < table.masks.size(); ++length)
        table.masks[length] = ~WordKey{0} >> (64 - 8 * std::min(length, sizeof(WordKey)));
    for (const auto& [spelling, token] : keywords) {
        const std::size_t length = spelling.size();
        const WordKey key = keyOf(spelling);
        KeywordSlot& slot = table.slots[slotOf(key)];
        if (slot.head || length > longestKeyword) throw "two keywords in a slot, or one that is too long";
        slot = {key, token, static_cast<unsigned>(length)};
        if (length > sizeof key) table.tails[slotOf(key)] = keyOf(spelling.substr(length - sizeof key));
    }
    return table;
}

inline constexpr KeywordTable keywordTable = makeKeywordTable();

} // namespace detail

/// The token of a reserved word, or its FileKeyword; 0 for any other text. The word has from 1 to 15 characters, and
/// eight bytes may be read from its beginning on, whatever its length is.
inline int keywordTokenAt(const char* word, std::size_t length) {
    const detail::KeywordTable& table = detail::keywordTable;
    const WordKey key = keyAt(word) & table.masks[length];
    const std::size_t slot = detail::slotOf(key);
    if (table.slots[slot].head != key) return 0;
    if (length < sizeof key) return table.slots[slot].token; // no other word has its key
    if (table.slots[slot].length != length) return 0;
    return length == sizeof key || table.tails[slot] == keyAt(word + length - sizeof key) ? table.slots[slot].token : 0;
}

/// The same for a text that has no room behind it.
inline int keywordToken(std::string_view word) {
    char room[detail::longestKeyword + 1] = {};
    if (word.empty() || word.size() > detail::longestKeyword) return 0;
    std::copy(word.begin(), word.end(), room);
    return keywordTokenAt(room, word.size());
}

} // namespace hdnt::frontend
