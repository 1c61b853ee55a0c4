#pragma once

#include "hdnt/model/HDNTNode.h"
#include "hdnt/platform/HATAttrTypes.h"

/// A function that mapping netlists of the library may call: name, result type and argument types.
class HDNT_API HDNTFunctionDecl : public HDNTDecl {
public:
    /// The vector stays the caller's and may be null.
    HDNTFunctionDecl(const std::string& name, HATAttrTypes::AttrType type,
                     const std::vector<HATAttrTypes::AttrType>* formals);

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
