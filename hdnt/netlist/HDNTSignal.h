#pragma once

#include "hdnt/netlist/HDNTNetlistEntity.h"
#include "hdnt/platform/HSTUniqString.h"

#include <cstddef>
#include <memory>
#include <string_view>

class HDNTBlock;
class HDNTConnect;
class HDNTPinInst;
class HDNTSigList;

/// A signal of a netlist. The names "@1" and "@0" mean the constants.
class HDNT_API HDNTSignal : public HDNTNetlistEntity {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::Signal, lastKind = HDNTNodeKind::SigList;

    /// A declaration with pins makes a connect of its own. Takes over the pins and deletes the vector; null: no
    /// connect.
    HDNTSignal(std::string_view name, std::vector<HDNTPinInst*>* pins);
    HDNTSignal(std::string_view name, std::nullptr_t);
    /// As with a pointer; the vector stays as it is.
    HDNTSignal(std::string_view name, const std::vector<HDNTPinInst*>& pins);
    /// One of the signals that a list stands for; the list is not owned and may be null.
    HDNTSignal(std::string_view name, HDNTSigList* sigList);
    ~HDNTSignal() override;
    /// Recognises the constants.
    void finalize() override;
    void accept(HDNTVisitor& visitor) override;

    const std::string& name() const { return name_.str(); }
    /// The pins declared with the signal; null when there are none.
    HDNTConnect* connect() const { return connect_.get(); }
    HDNTSigList* sigList() const { return sigList_; }
    /// False before finalize().
    bool isOne() const { return isOne_; }
    bool isZero() const { return isZero_; }
    /// The block that is mapped; null outside a block.
    HDNTBlock* getBlock();

private:
    bool isOne_ = false; ///< first, where the entity leaves room
    bool isZero_ = false;
    HSTUniqString name_;
    std::unique_ptr<HDNTConnect> connect_;
    HDNTSigList* sigList_ = nullptr;
};

/// A declaration of several signals by one ranged name, as in `signal "N[3:0]";`. Finalizing the netlist replaces it by
/// the signals; from then on it lives as long as the process, since they refer to it.
class HDNT_API HDNTSigList : public HDNTSignal {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::SigList, lastKind = firstKind;

    explicit HDNTSigList(std::string_view name) : HDNTSignal(name, nullptr) { setKind(HDNTNodeKind::SigList); }
    /// Appends a new signal for each element of the name, owned by the caller. False when the name has no brackets:
    /// then it is one signal, and the list is the caller's to delete. A malformed name is reported and appends nothing.
    bool expand(std::vector<HDNTSignal*>& out);
    /// The first signal that expand() made of a ranged name; null before. Not owned.
    HDNTSignal* firstExpanded() const { return firstExpanded_; }

private:
    HDNTSignal* firstExpanded_ = nullptr;
};
