#pragma once

#include "hdnt/platform/HATAttrTypes.h"

#include <cstdint>
#include <string>
#include <vector>

class HDNTBlock;
class HDNTBlockEntity;
class HDNTBus;
class HDNTBlockPinName;
class HDNTDecl;
class HDNTExpr;
class HDNTFunctionCall;
class HDNTFunctionDecl;
class HDNTNetlist;
class HDNTNetlistEntity;
class HDNTPinInst;
class HDNTProperty;

namespace hdnt::frontend {

struct PropertyOptions;
enum class Option : unsigned char;

/// What a symbol on the parser's stack stands for: a token's value (an identifier as a text, too) or what a rule built.
///
/// The parser moves values about more than anything else. All members have the size of the whole, so that what is
/// written is moved in one piece; a value of 32 bytes, of which an action wrote four, has the processor wait each time.
union ParserValue {
    std::int64_t intValue;  ///< also the enumerations of the grammar
    std::int64_t boolValue; ///< 0 or 1
    double doubleValue;
    std::string* text;
    HDNTDecl* decl;
    HDNTBlock* block;
    HDNTFunctionDecl* function;
    HDNTBlockEntity* entity;
    HDNTBus* bus;
    HDNTProperty* property;
    HDNTNetlist* netlist;
    HDNTNetlistEntity* statement;
    HDNTExpr* expr;
    HDNTFunctionCall* call;
    HDNTBlockPinName* pin;
    std::vector<HDNTDecl*>* decls;
    std::vector<HDNTBlockEntity*>* entities;
    std::vector<HDNTProperty*>* properties;
    std::vector<HATAttrTypes::AttrType>* types;
    std::vector<HDNTNetlistEntity*>* statements;
    std::vector<HDNTExpr*>* exprs;
    std::vector<HDNTPinInst*>* pins;
    PropertyOptions* options;
};
static_assert(sizeof(ParserValue) == 8);

} // namespace hdnt::frontend
