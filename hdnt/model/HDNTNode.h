#pragma once

#include "hdnt/diagnostics/yyltype.h"
#include "hdnt/model/NodePlace.h"
#include "hdnt/platform/Export.h"

#include <atomic>
#include <cstddef>
#include <new>
#include <optional>
#include <string>
#include <vector>

/// What a model object is: the class of the model that it belongs to, also when a program derived one of its own from
/// that. Families of classes stand side by side.
enum class HDNTNodeKind : unsigned char {
    Other, ///< of no class below
    Library,
    Block,
    FunctionDecl,
    Bus,
    Pin,
    Property,
    InternalFlag,
    TestFlag,
    MaturityLevel,
    PrimGroup,
    Netlist,
    BlockPinName,
    BlockInst,
    Connect,
    Signal,
    SigList,
    AssignBlockProperty,
    AssignPinProperty,
    IfStmt,
    StmtBlock,
    FunctionCall,
    CompoundExpr,
    IntConstant,
    DoubleConstant,
    BoolConstant,
    StringConstant,
};

/// Base of every model object: who owns it and where it was declared.
///
/// Every object goes through the same life: constructed by the parser, then finalize() (indexes are built, references
/// resolved), then check() (faults are reported), then queries. Ownership is a tree; parent pointers never own.
class HDNT_API HDNTNode {
public:
    HDNTNode() = default;
    /// Copies the parent pointer and the location.
    HDNTNode(const HDNTNode&) = default;
    HDNTNode& operator=(const HDNTNode&) = delete;

    /// Model objects stand side by side in memory of their own. Any thread. The form with std::nothrow gives null when
    /// memory runs out, and the one with an address makes the object there.
    static void* operator new(std::size_t size);
    static void* operator new(std::size_t size, const std::nothrow_t&) noexcept;
    static void* operator new(std::size_t, void* address) noexcept { return address; }
    static void operator delete(void* object, std::size_t size) noexcept;
    /// What happens to the memory when a constructor throws.
    static void operator delete(void* object, const std::nothrow_t&) noexcept;
    static void operator delete(void*, void*) noexcept {}

    // The order of the virtual operations is part of the interface.
    virtual ~HDNTNode();
    /// Reports what is wrong with this object and what it owns, through HDNTError. By default nothing.
    virtual void check();
    /// Completes the object once everything around it is known. By default nothing.
    virtual void finalize();

    HDNTNodeKind getKind() const { return kind_; }
    HDNTNode* getParent() const { return parent_; }
    void setParent(HDNTNode* parent) { parent_ = parent; }
    /// Null when none was set. Owned by the node and valid as long as it, and setLocation() changes what it points to;
    /// takes part in no comparison. A node gets this record when it is first asked for it, in any thread, and keeps it:
    /// 32 bytes, for which std::bad_alloc may come.
    yyltype* getLocation() const { return place_.record(); }
    /// The same as a copy, without a record: what to ask many nodes for.
    std::optional<yyltype> copyOfLocation() const { return place_.read(); }
    bool hasLocation() const { return place_.isSet(); }
    void setLocation(const yyltype& location) { place_.set(location); }
    /// As setLocation() with the other node's; does nothing when that has none.
    void takeLocation(const HDNTNode& other) { place_.take(other.place_); }

    // Names. Faults are reported at this node's location.

    /// Whether the name holds a "[" or a "]".
    bool isMultipleInstances(const std::string& name) const;
    /// Takes `base[m:n]` and `base[n]` apart; for the second, first and second are the same. The base is letters,
    /// digits and underscores, the bounds are decimal digits without a sign (values above INT_MAX become INT_MAX).
    /// False, with a report and the arguments untouched, for any other name.
    bool checkValidMultipleInstFormat(const std::string& name, std::string& baseName, int& first, int& second) const;
    /// Reports what is wrong with a declared name. Does nothing while HDNTLibraryMgr::m_diagnostics is off.
    void checkNames(const std::string& name, bool allowArrayFormat) const;
    /// Appends the elements a name stands for, in the order its range was written: base names to `names`, and for a
    /// bracketed name the bits to `indices`. A plain name appends no index. A malformed name, or a range of more
    /// elements than the limit rangeElements, is reported and appends nothing.
    void expandRangedNameNames(const std::string& name, std::vector<std::string>& names,
                               std::vector<int>& indices) const;
    /// The same without a report: what is wrong with the name comes back, and empty when nothing is.
    std::string unfoldRangedName(const std::string& name, std::vector<std::string>& names,
                                 std::vector<int>& indices) const;
    /// As expandRangedNameNames for each name in order; null is an empty list. With plain names among ranged ones the
    /// two results do not run in step.
    void expandRangedNameVector(const std::vector<std::string>* inNames, std::vector<std::string>& names,
                                std::vector<int>& indices) const;

protected:
    /// For constructors; that of the most derived class of the model comes last.
    void setKind(HDNTNodeKind kind) { kind_ = kind; }
    /// Whether a name without brackets passes checkNames: not empty, of letters, digits, underscores and "@".
    static bool isPlainName(const std::string& name);
    /// What expandRangedNameNames checks first: form and limit. False after a report.
    bool rangeOf(const std::string& name, std::string& baseName, int& first, int& last) const;

private:
    friend class HDNTNodeWatch;

    /// Whether somebody wants to know of the end of this very object; copies begin without.
    class WatchFlag {
    public:
        WatchFlag() = default;
        WatchFlag(const WatchFlag&) noexcept {}
        WatchFlag& operator=(const WatchFlag&) = delete;
        void set() const { on_.store(true, std::memory_order_relaxed); }
        explicit operator bool() const { return on_.load(std::memory_order_relaxed); }

    private:
        mutable std::atomic<bool> on_ = false;
    };
    HDNT_LOCAL void tellOfDeath() const noexcept;

    HDNTNode* parent_ = nullptr;
    [[no_unique_address]] hdnt::model::NodePlace place_; ///< leaves room for what follows
    HDNTNodeKind kind_ = HDNTNodeKind::Other;
    WatchFlag watched_;
};

/// The node as one of a class of the model, or null when it is none or null itself. What dynamic_cast answers, without
/// its search through the bases; Class is a class that has kinds.
template <typename Class>
Class* nodeCast(HDNTNode* node) {
    const bool fits = node && node->getKind() >= Class::firstKind && node->getKind() <= Class::lastKind;
    return fits ? static_cast<Class*>(node) : nullptr;
}
template <typename Class>
const Class* nodeCast(const HDNTNode* node) {
    return nodeCast<Class>(const_cast<HDNTNode*>(node));
}

/// What a library holds: blocks and function declarations.
class HDNT_API HDNTDecl : public HDNTNode {};

/// What a block holds: buses, properties, flags, primitive group.
class HDNT_API HDNTBlockEntity : public HDNTDecl {};
