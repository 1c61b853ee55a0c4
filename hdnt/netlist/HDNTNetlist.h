#pragma once

#include "hdnt/model/HDNTNode.h"
#include "hdnt/platform/NameIndex.h"

#include <string_view>

class HDNTAssignBlockProperty;
class HDNTAssignPinProperty;
class HDNTBlock;
class HDNTBlockInst;
class HDNTConnect;
class HDNTFunctionCall;
class HDNTIfStmt;
class HDNTNetlistEntity;
class HDNTSignal;
class HDNTVisitor;

/// A block's mapping: how it is rebuilt from other blocks. Owned by its block.
class HDNT_API HDNTNetlist : public HDNTDecl {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::Netlist, lastKind = firstKind;

    enum class Section : unsigned char { mapsto, expandsto, modifiedby, retargetsto };

    /// Sorts the entities by kind, in their order, and takes them over; null entries are skipped. Calls before the
    /// first instance are kept apart from those behind it. What no list is for (a statement block, a bare expression)
    /// stays the caller's, as does the vector, which may be null. The section is mapsto.
    explicit HDNTNetlist(std::vector<HDNTNetlistEntity*>* entities = nullptr);
    ~HDNTNetlist() override;
    HDNTNetlist(const HDNTNetlist&) = delete;

    /// Checks all but signals and pin property assignments.
    void check() override;
    /// Replaces ranged signals by their elements, sets parents, and finalizes the entities. Pin property assignments
    /// and the values in calls before the first instance are left as they are. May run again.
    void finalize() override;
    virtual void accept(HDNTVisitor& visitor);
    /// As accept(), for a const object; the visitor must change nothing. Any thread, then.
    void acceptOwn(HDNTVisitor& visitor) const;

    Section section() const { return section_; }
    void setSection(Section section) { section_ = section; }
    bool isMapsTo() const { return section_ == Section::mapsto || section_ == Section::retargetsto; }
    bool isExpandsTo() const { return section_ == Section::expandsto; }
    /// Whether the pins of a block with this netlist may be tied, as far as the configuration allows.
    bool isTieCapable() const { return isMapsTo() && !isExpandsTo(); }

    /// The parent; null when it is absent or no block.
    HDNTBlock* getTypeBlock() const;
    /// The first signal of exactly that name; null when there is none.
    HDNTSignal* getSignal(std::string name) const;
    /// The same without a copy of the name.
    HDNTSignal* findSignal(std::string_view name) const;
    /// Name of the first instance at the top level; without one, of the instance that the statements lead to. Empty
    /// when there is none.
    std::string getReferencedInstanceName();

    // In source order, at the top level. Signals are declared ones before finalize(), elements after it.
    const std::vector<HDNTSignal*>& signals() const { return signals_; }
    const std::vector<HDNTConnect*>& connects() const { return connects_; }
    const std::vector<HDNTBlockInst*>& instances() const { return instances_; }
    const std::vector<HDNTAssignBlockProperty*>& blockPropertyAssigns() const { return blockPropertyAssigns_; }
    const std::vector<HDNTAssignPinProperty*>& pinPropertyAssigns() const { return pinPropertyAssigns_; }
    const std::vector<HDNTIfStmt*>& ifStmts() const { return ifStmts_; }
    const std::vector<HDNTFunctionCall*>& preInstanceCalls() const { return preInstanceCalls_; }
    const std::vector<HDNTFunctionCall*>& postInstanceCalls() const { return postInstanceCalls_; }

private:
    HDNT_LOCAL void expandSignals();

    std::vector<HDNTSignal*> signals_;
    hdnt::platform::NameIndex signalsByName_; ///< of a finalized netlist
    std::vector<HDNTConnect*> connects_;
    std::vector<HDNTBlockInst*> instances_;
    std::vector<HDNTAssignBlockProperty*> blockPropertyAssigns_;
    std::vector<HDNTAssignPinProperty*> pinPropertyAssigns_;
    std::vector<HDNTIfStmt*> ifStmts_;
    std::vector<HDNTFunctionCall*> preInstanceCalls_;
    std::vector<HDNTFunctionCall*> postInstanceCalls_;
    Section section_ = Section::mapsto;
};
