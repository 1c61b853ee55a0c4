#pragma once

#include "hdnt/model/HDNTBus.h"
#include "hdnt/platform/HATAttrTypes.h"
#include "hdnt/platform/WordTable.h"

/// The words of the model; those of mappings are in hdnt/netlist/Words.h.
namespace hdnt::words {

inline constexpr WordTable<HDNT_PIN_DIRECTION, 4> pinDirections{{{{HDNT_PIN_INPUT, "input"},
                                                                  {HDNT_PIN_OUTPUT, "output"},
                                                                  {HDNT_PIN_BIDIR, "bidir"},
                                                                  {HDNT_PIN_INTERNAL, "internal"}}}};

/// A direction that has no word counts as an internal one.
constexpr std::string_view directionWord(HDNT_PIN_DIRECTION direction) {
    const std::string_view word = pinDirections.wordOf(direction);
    return word.empty() ? pinDirections.wordOf(HDNT_PIN_INTERNAL) : word;
}

inline constexpr WordTable<HDNT_PIN_TYPE, 10> pinTypes{{{{HDNT_PIN_DATA, "data"},
                                                         {HDNT_PIN_CLEAR, "clear"},
                                                         {HDNT_PIN_CLOCK, "clock"},
                                                         {HDNT_PIN_ENABLE, "enable"},
                                                         {HDNT_PIN_MIXED, "mixed"},
                                                         {HDNT_PIN_PRESET, "preset"},
                                                         {HDNT_PIN_RESET, "reset"},
                                                         {HDNT_PIN_SET, "set"},
                                                         {HDNT_PIN_SET_RESET, "setreset"},
                                                         {HDNT_PIN_WRITE_ENABLE, "writeEnable"}}}};

/// HDNT_PIN_NO_VALUE has no word: the declaration says nothing then.
inline constexpr WordTable<HDNT_PIN_REQUIREDVALUE, 6> requiredValues{{{{HDNT_PIN_ACTIVE, "active"},
                                                                       {HDNT_PIN_MUST_CONNECT, "mustConnect"},
                                                                       {HDNT_PIN_TIE_LOW, "tieLow"},
                                                                       {HDNT_PIN_TIE_HIGH, "tieHigh"},
                                                                       {HDNT_PIN_TIE_SPECIAL, "tieSpecial"},
                                                                       {HDNT_PIN_UNTIE, "untie"}}}};

/// Levels as HDNTBlock::getMaturityLevel counts them.
inline constexpr WordTable<int, 4> maturityLevels{{{{0, "early"}, {1, "beta"}, {2, "production"}, {3, "deprecated"}}}};

/// The two of bit vectors are names only: NTL writes a width and a radix, as in 8'h.
inline constexpr WordTable<HATAttrTypes::AttrType, 6> propertyTypes{{{{HATAttrTypes::TypeBool, "bool"},
                                                                      {HATAttrTypes::TypeInt, "int"},
                                                                      {HATAttrTypes::TypeDouble, "double"},
                                                                      {HATAttrTypes::TypeString, "string"},
                                                                      {HATAttrTypes::TypeBitHex, "bithex"},
                                                                      {HATAttrTypes::TypeBitBinary, "bitbinary"}}}};

} // namespace hdnt::words
