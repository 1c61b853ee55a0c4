#pragma once

#include "hdnt/diagnostics/yyltype.h"
#include "hdnt/frontend/PropertyOptions.internal.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTConnect.h"
#include "hdnt/netlist/HDNTExpr.h"
#include "hdnt/netlist/HDNTNetlist.h"

#include <string_view>
#include <vector>

class HDNTBlock;
class HDNTBlockEntity;
class HDNTBus;
class HDNTDecl;
class HDNTFunctionCall;
class HDNTFunctionDecl;

/// What the model is made by, a part of the text at a time. Internal.
///
/// Every function owns the pointers it is given, also when it throws: model objects go into the result or are deleted.
/// It takes over what is in a list, from `begin` on where there is one, and leaves the list its room; what is still in
/// the list when it throws stays the caller's.
namespace hdnt::frontend::build {

template <typename Node>
Node* placed(Node* node, const yyltype& place) {
    node->setLocation(place);
    return node;
}

HDNTProperty* property(HATAttrTypes::AttrType type, std::string_view name, const PropertyOptions& said,
                       const yyltype& place);
/// A hex or binary property: `width` is the constant in the type position, such as 8'h.
HDNTProperty* bitProperty(HATAttrTypes::AttrType type, std::string_view width, std::string_view name,
                          const PropertyOptions& said, const yyltype& place);
HDNTProperty* shortBoolProperty(std::string_view name, bool value, const yyltype& place);
HDNTBus* bus(std::string_view name, int direction, bool test, bool abstract, int type, int required,
             std::vector<HDNTProperty*>& properties, const yyltype& place);
HDNTBlockEntity* internalFlag(bool value, const yyltype& place);
HDNTBlockEntity* testFlag(bool value, const yyltype& place);
HDNTBlockEntity* maturityLevel(int level, const yyltype& place);
HDNTBlockEntity* primGroup(std::string_view text, const yyltype& place);
/// With the mapping that stands behind the block, or null.
HDNTBlock* block(std::string_view name, std::vector<HDNTBlockEntity*>& entities, HDNTNetlist* netlist,
                 HDNTNetlist::Section section, const yyltype& place);
/// Attaches a mapping that stands by itself to its block, or drops it when the name is not registered or no block of
/// that name was declared before.
void mapping(std::string_view blockName, HDNTNetlist* netlist, HDNTNetlist::Section section, const yyltype& place);
HDNTFunctionDecl* function(int type, std::string_view name, const std::vector<HATAttrTypes::AttrType>& formals,
                           const yyltype& place);
HDNTNetlist* netlist(std::vector<HDNTNetlistEntity*>& entities, const yyltype& place);
HDNTNetlistEntity* inst(std::string_view name, std::string_view type, const yyltype& place);
HDNTNetlistEntity* assignBlockProperty(std::string_view inst, std::string_view property, HDNTExpr* value,
                                       const yyltype& place);
HDNTNetlistEntity* assignPinProperty(HDNTBlockPinName* pin, std::string_view property, HDNTExpr* value,
                                     const yyltype& place);
HDNTNetlistEntity* ifStmt(HDNTExpr* condition, HDNTNetlistEntity* thenStmt, HDNTNetlistEntity* elseStmt,
                          const yyltype& place);
HDNTNetlistEntity* stmtBlock(std::vector<HDNTNetlistEntity*>& statements, std::size_t begin, const yyltype& place);
HDNTNetlistEntity* connect(std::string_view signal, std::vector<HDNTPinInst*>& pins, const yyltype& place);
HDNTNetlistEntity* signal(std::string_view name, std::vector<HDNTPinInst*>& pins, const yyltype& place);
/// A name with brackets declares a list of signals.
HDNTNetlistEntity* signal(std::string_view name, const yyltype& place);
/// A null instance means a pin of the mapped block.
HDNTBlockPinName* pinInst(std::string_view inst, std::string_view pin, const yyltype& place);
HDNTExpr* compound(HDNTExpr* lhs, HDNTExpr::FOPERATOR op, HDNTExpr* rhs, const yyltype& place);
HDNTExpr* constant(int value, const yyltype& place);
HDNTExpr* constant(double value, const yyltype& place);
HDNTExpr* constant(bool value, const yyltype& place);
HDNTExpr* constant(std::string_view value, const yyltype& place);
HDNTFunctionCall* call(std::string_view name, std::vector<HDNTExpr*>& arguments, std::size_t begin,
                       const yyltype& place);

/// Forgets the blocks of the parse before. Those of the parse in progress are found by separate mappings.
void beginParse() noexcept;

/// Hands the declarations to the library that is being parsed into.
void library(std::string_view name, std::vector<HDNTDecl*>& decls, const yyltype& place);

} // namespace hdnt::frontend::build
