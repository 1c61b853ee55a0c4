#pragma once

#include "author/exchange/hdlNames.internal.h"
#include "author/exchange/mapBlock.internal.h"
#include "hdnt/model/Value.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

class HDNTCompoundExpr;
class HDNTExpr;
class HDNTFunctionCall;

namespace hdnt::author {

/// The value of an expression, in Verilog.
struct MapTerm {
    Value example; ///< of its type; its value, when it is a constant
    bool isConstant = false;
    std::string text = {};
    const HDNTProperty* property = nullptr; ///< when it is the value of one
};

/// Expressions of a mapping as constant expressions of a module whose parameters are the properties of the mapped
/// block. What has no counterpart there, or would have another value, throws HEXDataException.
class MapTerms {
public:
    /// Takes the names of the parameters.
    MapTerms(const MapBlock& block, VerilogNames& names);

    // `guard` is the condition under which the expression is looked at; empty: always.

    /// What a condition comes to, as one bit.
    std::string truthOf(const HDNTExpr& condition, const std::string& guard);
    /// The value for a property of `type`, which takes it whenever the module is used.
    std::string valueFor(const HDNTProperty& target, const MapBlock& type, const HDNTExpr& value,
                         const std::string& guard);

    struct Parameter {
        std::string name; ///< as Verilog has it
        const Json* property;
    };
    const std::vector<Parameter>& parameters() const { return parameters_; }
    /// Throws HEXDataException for one whose value would arrive as another.
    void requireHandedDown(const Parameter& parameter) const;
    /// For ports that a condition asks for: the name of the parameter that techmap sets when they are connected.
    /// Nothing else has such a name, for mappings with one are refused.
    const std::map<const HdlPort*, std::string>& connected() const { return connected_; }
    /// Constants that values go through.
    const std::vector<std::string>& constants() const { return constants_; }
    /// When one of these holds, there is no result: something is divided by zero, or has a value that it may not have.
    std::vector<std::string> refusals() const;
    void refuse(const std::string& guard, const std::string& condition);

private:
    MapTerm termOf(const HDNTExpr& expr, const std::string& guard);
    MapTerm operation(const HDNTCompoundExpr& expr, const std::string& guard);
    MapTerm call(const HDNTFunctionCall& call);
    MapTerm propertyTerm(const std::string& name);
    MapTerm connectionTerm(const std::string& pin);
    /// The two sides of a comparison of texts.
    std::pair<std::string, std::string> compared(const MapTerm& left, const MapTerm& right);
    static std::string bitsOf(const HDNTProperty& property, const Json& json, const std::string& text);
    /// The bits of a text that a vector is compared with. Texts compare as such, bits as numbers: they go together when
    /// each number is written in one way.
    std::string spelled(const HDNTProperty& property, const std::string& text);
    std::string handedDown(const HDNTProperty& target, const Json& json, const MapTerm& source,
                           const std::string& guard);
    std::string computed(const Json& target, const MapTerm& value, const std::string& guard);

    const MapBlock& block_;
    VerilogNames& names_;
    std::vector<Parameter> parameters_;
    std::set<const Json*> asked_;
    std::map<const HdlPort*, std::string> connected_;
    std::vector<std::string> constants_;
    std::vector<std::string> refusals_;
    std::map<const HDNTProperty*, std::map<std::string, std::string>> spellings_; ///< texts by their digits
};

} // namespace hdnt::author
