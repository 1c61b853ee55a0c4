#pragma once

#include "hdnt/model/HDNTNode.h"

class HDNTNetlist;
class HDNTVisitor;

/// What a mapping netlist is made of: instances, signals, connects, property assignments, statements, expressions.
/// Owned by what contains it; the parent is set when the netlist is finalized.
class HDNT_API HDNTNetlistEntity : public HDNTDecl {
public:
    HDNTNetlistEntity() = default;
    HDNTNetlistEntity(const HDNTNetlistEntity&) = delete;

    /// Calls the visitor's operations for this entity and what it holds, in a fixed order.
    virtual void accept(HDNTVisitor& visitor) = 0;
    /// As accept(), for a const object; the visitor must change nothing. Any thread, then.
    void acceptOwn(HDNTVisitor& visitor) const;

    /// The netlist around this entity; null for one that is in none, or whose netlist was not finalized.
    HDNTNetlist* getNetlist();
    /// A number for the host; 0 at first.
    int mark() const { return mark_; }
    void setMark(int mark) { mark_ = mark; }
    /// True at first. Visitors pass over a statement block that is not enabled.
    bool enabled() const { return enabled_; }
    void setEnabled(bool enabled) { enabled_ = enabled; }

private:
    bool enabled_ = true; ///< first, where the node leaves room
    int mark_ = 0;
};
