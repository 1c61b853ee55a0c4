#pragma once

#include "hdnt/netlist/HDNTNetlistEntity.h"
#include "hdnt/platform/HSTUniqString.h"

#include <string_view>

class HDNTSignal;

/// A reference to a pin in a netlist.
class HDNT_API HDNTPinInst : public HDNTNode {
public:
    HDNTPinInst() = default;
    HDNTPinInst(const HDNTPinInst&) = delete;
    void check() override = 0;
    virtual void accept(HDNTVisitor& visitor) = 0;
    /// As accept(), for a const object; the visitor must change nothing. Any thread, then.
    void acceptOwn(HDNTVisitor& visitor) const;
};

/// A pin of an instance, or of the mapped block itself when the instance name is empty.
class HDNT_API HDNTBlockPinName : public HDNTPinInst {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::BlockPinName, lastKind = firstKind;

    /// A pin name that begins with "~" means the pin inverted.
    HDNTBlockPinName(std::string_view instName, std::string_view pinName);
    void check() override {}
    void accept(HDNTVisitor& visitor) override;

    const std::string& instName() const { return instName_.str(); }
    /// Without "~"; a bit as in `D[3]`.
    const std::string& pinName() const { return pinName_.str(); }
    bool inverted() const { return inverted_; }

private:
    bool inverted_; ///< first, where the node leaves room
    HSTUniqString instName_;
    HSTUniqString pinName_;
};

/// Pins that are connected to a signal: `connect "N1" : "U0" "Q", "O";`.
class HDNT_API HDNTConnect : public HDNTNetlistEntity {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::Connect, lastKind = firstKind;

    /// Takes over the pins and deletes the vector, which may be null.
    HDNTConnect(std::string_view signalName, std::vector<HDNTPinInst*>* pins);
    /// Takes over the pins; the vector stays as it is.
    HDNTConnect(std::string_view signalName, const std::vector<HDNTPinInst*>& pins);
    ~HDNTConnect() override;
    /// Reports a signal that is not declared.
    void check() override;
    void accept(HDNTVisitor& visitor) override;

    const std::string& signalName() const { return signalName_.str(); }
    const std::vector<HDNTPinInst*>& pins() const { return pins_; }
    /// The signal that declared this connect, or the netlist's signal of that name; null when there is none.
    HDNTSignal* getSignal() const;

private:
    HSTUniqString signalName_;
    std::vector<HDNTPinInst*> pins_;
};
