#pragma once

#include "hdnt/model/HDNTNode.h"

class HDNTBlock;

/// A block's mapping: how it is rebuilt from other blocks. Owned by its block.
class HDNT_API HDNTNetlist : public HDNTDecl {
public:
    enum class Section : unsigned char { mapsto, expandsto, modifiedby, retargetsto };

    Section section() const { return section_; }
    void setSection(Section section) { section_ = section; }
    bool isMapsTo() const { return section_ == Section::mapsto || section_ == Section::retargetsto; }
    bool isExpandsTo() const { return section_ == Section::expandsto; }
    /// Whether the pins of a block with this netlist may be tied, as far as the configuration allows.
    bool isTieCapable() const { return isMapsTo() && !isExpandsTo(); }
    /// The parent; null when it is absent or no block.
    HDNTBlock* getTypeBlock() const;

private:
    Section section_ = Section::mapsto;
};
