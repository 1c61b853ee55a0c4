#include "hdnt/model/HDNTPrimGroup.h"

HDNTPrimGroup::HDNTPrimGroup(const std::string& declared) {
    setKind(HDNTNodeKind::PrimGroup);
    const std::string text = declared.c_str(); // NOLINT(readability-redundant-string-cstr): up to a NUL
    const size_t comma = text.find(',');
    group_ = text.substr(0, comma);
    if (comma == text.npos) return;
    const size_t legacy = text.find_first_not_of(' ', comma + 1);
    if (legacy != text.npos) legacyGroup_ = text.substr(legacy);
}

static std::string beforeColon(const std::string& text) { return text.substr(0, text.find(':')); }

static std::string afterColon(const std::string& text) {
    const size_t colon = text.find(':');
    return colon == text.npos ? std::string() : text.substr(colon + 1);
}

std::string HDNTPrimGroup::getPrimGroupAbbrev() const { return beforeColon(group_); }
std::string HDNTPrimGroup::getPrimSubGroupAbbrev() const { return afterColon(group_); }
std::string HDNTPrimGroup::getLegacyPrimGroupAbbrev() const { return beforeColon(legacyGroup_); }
std::string HDNTPrimGroup::getLegacyPrimSubGroupAbbrev() const { return afterColon(legacyGroup_); }
