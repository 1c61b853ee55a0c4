#pragma once

#include "hdnt/model/HDNTNode.h"

// Declarations that only set an attribute of their block, which reads and deletes them when it is constructed.

class HDNT_API HDNTInternalFlag : public HDNTBlockEntity {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::InternalFlag, lastKind = firstKind;

    explicit HDNTInternalFlag(bool value) : value_(value) { setKind(HDNTNodeKind::InternalFlag); }
    bool getValue() const { return value_; }

private:
    bool value_;
};

class HDNT_API HDNTTestFlag : public HDNTBlockEntity {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::TestFlag, lastKind = firstKind;

    explicit HDNTTestFlag(bool value) : value_(value) { setKind(HDNTNodeKind::TestFlag); }
    bool getValue() const { return value_; }

private:
    bool value_;
};

/// 0 early, 1 beta, 2 production, 3 deprecated.
class HDNT_API HDNTMaturityLevel : public HDNTBlockEntity {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::MaturityLevel, lastKind = firstKind;

    explicit HDNTMaturityLevel(int value) : value_(value) { setKind(HDNTNodeKind::MaturityLevel); }
    int getValue() const { return value_; }

private:
    int value_;
};
