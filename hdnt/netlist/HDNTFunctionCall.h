#pragma once

#include "hdnt/netlist/HDNTExpr.h"
#include "hdnt/platform/HSTUniqString.h"

#include <span>
#include <string_view>

class HDNTFunctionDecl;
class HDNTLibrary;

/// A call of a declared function, in an expression or as a statement of its own.
class HDNT_API HDNTFunctionCall : public HDNTExpr {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::FunctionCall, lastKind = firstKind;

    /// Takes over the arguments, which get this as parent, and deletes the vector, which may be null.
    HDNTFunctionCall(std::string_view name, std::vector<HDNTExpr*>* actuals);
    /// As with a pointer; the list stays as it is.
    HDNTFunctionCall(std::string_view name, std::span<HDNTExpr* const> actuals);
    ~HDNTFunctionCall() override;
    /// Reports a function that the library and its parents do not declare, or arguments that do not match its
    /// declaration; then checks the arguments.
    void check() override;
    /// Finalizes the arguments, and takes the type from the declaration if there is one.
    void finalize() override;
    void accept(HDNTVisitor& visitor) override;
    /// Runs the function's implementation (HDNTFunctionTable) on the values of the arguments.
    void evaluate() override;

    const std::string& name() const { return name_.str(); }
    const std::vector<HDNTExpr*>& actuals() const { return actuals_; }
    size_t getNumActuals() const { return actuals_.size(); }
    /// Throws HEXAlgException "Function argument index out of range".
    HDNTExpr* getActual(size_t i) const;
    /// Whether the call stands as a statement, where it needs no value.
    bool isStatement() const { return statement_; }
    void setStatement(bool statement) { statement_ = statement; }
    /// The declaration in the library around the call, or in its parents; null when there is none.
    HDNTFunctionDecl* getDecl() const;

private:
    HSTUniqString name_;
    std::vector<HDNTExpr*> actuals_;
    bool statement_ = false;
};
