#pragma once

#include "hdnt/netlist/HDNTNetlistEntity.h"
#include "hdnt/platform/HSTUniqString.h"

#include <string_view>

class HDNTBlock;
class HDNTLibrary;

/// An instance of another block: `inst "U0" "FLOP_RISE";`, the instance's name first.
class HDNT_API HDNTBlockInst : public HDNTNetlistEntity {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::BlockInst, lastKind = firstKind;

    HDNTBlockInst(std::string_view instName, std::string_view typeName) : instName_(instName), typeName_(typeName) {
        setKind(HDNTNodeKind::BlockInst);
    }
    void accept(HDNTVisitor& visitor) override;

    const std::string& instName() const { return instName_.str(); }
    const std::string& typeName() const { return typeName_.str(); }
    /// The instantiated block in `lib` (null: none) and its parents, else in the common library, which is loaded for
    /// that; null when there is none. Case aside.
    HDNTBlock* getTypeBlock(HDNTLibrary* lib) const;

private:
    HSTUniqString instName_;
    HSTUniqString typeName_;
};
