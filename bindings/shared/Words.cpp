#include "bindings/shared/Words.h"

#include <array>

namespace hdnt::scripts {

const char* requiredWord(HDNT_PIN_REQUIREDVALUE value) {
    static const std::array<const char*, 7> words = {nullptr,   "active",     "mustConnect", "tieLow",
                                                     "tieHigh", "tieSpecial", "untie"};
    return words.at(static_cast<size_t>(value));
}

const char* maturityWord(int level) {
    static const std::array<const char*, 4> words = {"early", "beta", "production", "deprecated"};
    return words.at(static_cast<size_t>(level));
}

const char* sectionWord(HDNTNetlist::Section section) {
    static const std::array<const char*, 4> words = {"mapsto", "expandsto", "modifiedby", "retargetsto"};
    return words.at(static_cast<size_t>(section));
}

const char* operatorWord(HDNTExpr::FOPERATOR sign) {
    static const std::array<const char*, 15> words = {"+", "-", "-", "*",  "/",  "%",  "&&", "||",
                                                      "!", ">", "<", "<=", ">=", "!=", "=="};
    return words.at(sign);
}

} // namespace hdnt::scripts
