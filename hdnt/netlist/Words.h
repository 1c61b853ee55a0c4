#pragma once

#include "hdnt/model/Words.h"
#include "hdnt/netlist/HDNTExpr.h"
#include "hdnt/netlist/HDNTNetlist.h"

namespace hdnt::words {

inline constexpr WordTable<HDNTNetlist::Section, 4> sections{{{{HDNTNetlist::Section::mapsto, "mapsto"},
                                                               {HDNTNetlist::Section::expandsto, "expandsto"},
                                                               {HDNTNetlist::Section::modifiedby, "modifiedby"},
                                                               {HDNTNetlist::Section::retargetsto, "retargetsto"}}}};

/// "-" stands for two of them; the one of two operands is the value of the word.
inline constexpr WordTable<HDNTExpr::FOPERATOR, 15> operators{{{{HDNTExpr::ADD, "+"},
                                                                {HDNTExpr::SUBTRACT, "-"},
                                                                {HDNTExpr::NEGATE, "-"},
                                                                {HDNTExpr::MULTIPLY, "*"},
                                                                {HDNTExpr::DIVIDE, "/"},
                                                                {HDNTExpr::REMAINDER, "%"},
                                                                {HDNTExpr::AND, "&&"},
                                                                {HDNTExpr::OR, "||"},
                                                                {HDNTExpr::NOT, "!"},
                                                                {HDNTExpr::GREATER, ">"},
                                                                {HDNTExpr::LESS, "<"},
                                                                {HDNTExpr::LESS_EQUAL, "<="},
                                                                {HDNTExpr::GREATER_EQUAL, ">="},
                                                                {HDNTExpr::NOT_EQUAL, "!="},
                                                                {HDNTExpr::EQUAL, "=="}}}};

} // namespace hdnt::words
