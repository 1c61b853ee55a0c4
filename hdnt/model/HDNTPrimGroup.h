#pragma once

#include "hdnt/model/HDNTNode.h"

/// A block's primitive group as declared: "GROUP:SUBGROUP", and after a comma the same in an earlier scheme. The block
/// reads and deletes it when it is constructed.
class HDNT_API HDNTPrimGroup : public HDNTBlockEntity {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::PrimGroup, lastKind = firstKind;

    /// Splits at the first comma; blanks behind it are skipped. Nothing is trimmed around ":". A text with a NUL ends
    /// there, since blocks give their groups out as C strings.
    explicit HDNTPrimGroup(const std::string& declared);

    /// Each part may be empty.
    std::string getPrimGroupAbbrev() const;
    std::string getPrimSubGroupAbbrev() const;
    std::string getLegacyPrimGroupAbbrev() const;
    std::string getLegacyPrimSubGroupAbbrev() const;

private:
    std::string group_;
    std::string legacyGroup_;
};
