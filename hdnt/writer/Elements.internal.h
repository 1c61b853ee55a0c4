#pragma once

#include "hdnt/netlist/HDNTExpr.h"
#include "hdnt/netlist/HDNTNetlist.h"

#include <string>
#include <string_view>

class HDNTBlock;
class HDNTNetlistEntity;

// What both forms have to know of the model. Internal.
namespace hdnt::writer {

/// The text of a block's primitive group: "GROUP:SUBGROUP, LEGACY:SUBGROUP", as far as there is any.
std::string groupText(const HDNTBlock& block);
/// Whether that text, read again, gives the groups of the block.
bool groupReadsBack(const HDNTBlock& block);

/// Whether an "else" behind this branch would belong to an "if" in it.
bool takesElse(const HDNTNetlistEntity* branch);
/// Whether visitors see nothing of a branch: it is missing, or a statement block that is not enabled.
bool isPassedOver(const HDNTNetlistEntity* branch);

/// How tight an operator binds, as the grammar declares it: from 1 for `||` to 6 for `*`, all grouping to the left.
/// 7 for operators of one operand, which are written with parentheses of their own, as calls are.
int precedenceOf(HDNTExpr::FOPERATOR op);

/// Whether the scanner takes the text for an identifier and delivers it whole.
bool isIdentifier(std::string_view text);

} // namespace hdnt::writer
