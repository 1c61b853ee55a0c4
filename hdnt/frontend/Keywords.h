#pragma once

#include "hdnt/frontend/Scanner.h"

#include <array>
#include <string_view>

namespace hdnt::frontend {

struct Keyword {
    std::string_view spelling;
    int token;
};

/// Every reserved word of the language, "true", "false", INCLUDE and INLINE excepted, which are no tokens of their own.
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
};

namespace detail {

constexpr size_t keywordSlots = 256;

constexpr size_t keywordHash(std::string_view word) {
    return (static_cast<unsigned char>(word.front()) * 7u + static_cast<unsigned char>(word.back()) * 31u +
            word.size() * 5u) %
           keywordSlots;
}

consteval std::array<unsigned char, keywordSlots> makeKeywordIndex() {
    std::array<unsigned char, keywordSlots> index{};
    for (size_t k = 0; k < std::size(keywords); ++k) {
        size_t slot = keywordHash(keywords[k].spelling);
        while (index[slot]) slot = (slot + 1) % keywordSlots;
        index[slot] = static_cast<unsigned char>(k + 1);
    }
    return index;
}

inline constexpr auto keywordIndex = makeKeywordIndex();

} // namespace detail

/// The token of a reserved word, 0 for any other text. `word` is not empty.
inline int keywordToken(std::string_view word) {
    for (size_t slot = detail::keywordHash(word); detail::keywordIndex[slot]; slot = (slot + 1) % detail::keywordSlots)
        if (const Keyword& keyword = keywords[detail::keywordIndex[slot] - 1]; keyword.spelling == word)
            return keyword.token;
    return 0;
}

} // namespace hdnt::frontend
