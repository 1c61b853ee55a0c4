#include "hdnt/frontend/Keywords.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTPrimGroup.h"
#include "hdnt/netlist/HDNTStmt.h"
#include "hdnt/writer/Elements.internal.h"

#include <algorithm>

namespace hdnt::writer {

static bool equal(const char* a, const char* b) { return a == b || (a && b && std::string_view(a) == b); }

static std::string groupText(const HDNTBlock& block, bool legacy) {
    const char* const group = block.getPrimGroupType(legacy);
    const char* const subGroup = block.getPrimSubGroupType(legacy);
    return std::string(group ? group : "") + (subGroup ? std::string(":") + subGroup : std::string());
}

// A block without a group of the earlier scheme has its group in that, too.
std::string groupText(const HDNTBlock& block) {
    const char* const legacy = block.getPrimGroupType(true);
    const bool differs = legacy && !equal(legacy, block.getPrimGroupType(false));
    std::string text = groupText(block, false);
    return differs || block.getPrimSubGroupType(true) ? text + ", " + groupText(block, true) : text;
}

bool groupReadsBack(const HDNTBlock& block) {
    const char* const group = block.getPrimGroupType(false);
    const char* const subGroup = block.getPrimSubGroupType(false);
    const char* const legacyGroup = block.getPrimGroupType(true);
    const char* const legacySubGroup = block.getPrimSubGroupType(true);
    if (!group) return !subGroup && !legacyGroup && !legacySubGroup;
    const HDNTPrimGroup read(groupText(block));
    const auto optional = [](const std::string& text) { return text.empty() ? nullptr : text.c_str(); };
    const std::string readSub = read.getPrimSubGroupAbbrev();
    const std::string readLegacy = read.getLegacyPrimGroupAbbrev();
    const std::string readLegacySub = read.getLegacyPrimSubGroupAbbrev();
    return read.getPrimGroupAbbrev() == group && equal(subGroup, optional(readSub)) &&
           equal(legacyGroup, readLegacy.empty() ? group : readLegacy.c_str()) &&
           equal(legacySubGroup, optional(readLegacySub));
}

bool takesElse(const HDNTNetlistEntity* branch) {
    while (const auto* const stmt = nodeCast<HDNTIfStmt>(branch)) {
        if (!stmt->elseStmt()) return true;
        branch = stmt->elseStmt();
    }
    return false;
}

bool isPassedOver(const HDNTNetlistEntity* branch) {
    return !branch || (!branch->enabled() && nodeCast<HDNTStmtBlock>(branch));
}

int precedenceOf(HDNTExpr::FOPERATOR op) {
    switch (op) {
    case HDNTExpr::OR: return 1;
    case HDNTExpr::AND: return 2;
    case HDNTExpr::EQUAL:
    case HDNTExpr::NOT_EQUAL: return 3;
    case HDNTExpr::LESS:
    case HDNTExpr::LESS_EQUAL:
    case HDNTExpr::GREATER:
    case HDNTExpr::GREATER_EQUAL: return 4;
    case HDNTExpr::ADD:
    case HDNTExpr::SUBTRACT: return 5;
    case HDNTExpr::MULTIPLY:
    case HDNTExpr::DIVIDE:
    case HDNTExpr::REMAINDER: return 6;
    default: return 7;
    }
}

bool isIdentifier(std::string_view text) {
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; };
    const auto isPart = [&](char c) { return isLetter(c) || (c >= '0' && c <= '9'); };
    return !text.empty() && text.size() < sizeof NtlTokenValue::identifier && isLetter(text.front()) &&
           std::all_of(text.begin(), text.end(), isPart) && !hdnt::frontend::keywordToken(text);
}

} // namespace hdnt::writer
