#pragma once

#include "hdnt/model/HDNTNode.h"
#include "hdnt/platform/HATAttrTypes.h"

class HDNTExpr;
class HDNTFunctionCall;
class HDNTVisitor;

/// A function that mapping netlists of the library may call: name, result type and argument types.
class HDNT_API HDNTFunctionDecl : public HDNTDecl {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::FunctionDecl, lastKind = firstKind;

    /// The vector stays the caller's and may be null.
    HDNTFunctionDecl(const std::string& name, HATAttrTypes::AttrType type,
                     const std::vector<HATAttrTypes::AttrType>* formals);

    virtual void accept(HDNTVisitor& visitor);
    /// As accept(), for a const object; the visitor must change nothing. Any thread, then.
    void acceptOwn(HDNTVisitor& visitor) const;

    /// Whether the arguments of a call (null: none) go with this declaration. Reports a wrong number of them once, else
    /// each one of a wrong type, at the call. Types compare with bit vectors taken as strings; an argument whose type
    /// is not known goes with anything.
    bool matchArgs(const std::vector<HDNTExpr*>* actuals, HDNTFunctionCall* call) const;

    const std::string& getName() const { return name_; }
    HATAttrTypes::AttrType getType() const { return type_; }
    size_t getNumFormals() const { return formals_.size(); }
    /// Throws HEXAlgException "Function argument index out of range".
    HATAttrTypes::AttrType getFormal(size_t i) const;

private:
    std::string name_;
    HATAttrTypes::AttrType type_;
    std::vector<HATAttrTypes::AttrType> formals_;
};
