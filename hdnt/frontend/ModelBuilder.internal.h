#pragma once

#include "hdnt/diagnostics/yyltype.h"
#include "hdnt/frontend/ParserValue.internal.h"
#include "hdnt/frontend/TokenText.internal.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTConnect.h"
#include "hdnt/netlist/HDNTExpr.h"
#include "hdnt/netlist/HDNTNetlist.h"

#include <memory>
#include <type_traits>
#include <utility>

/// What the grammar's actions call. Internal.
///
/// Every function owns the pointers it is given, also when it throws: texts, option records and lists are consumed,
/// model objects go into the result or are deleted.
namespace hdnt::frontend::build {

/// A fresh list, with room for as many items as most have.
template <typename T>
std::vector<T>* emptyList() {
    constexpr size_t usual = std::is_same_v<T, HDNTBlockEntity*> ? 32 : 4;
    auto list = std::make_unique<std::vector<T>>();
    list->reserve(usual);
    return list.release();
}

/// Deletes a list with the objects in it.
template <typename T>
void deleteList(std::vector<T*>* list) noexcept {
    if (!list) return;
    for (const T* item : *list) delete item;
    delete list;
}

/// A list from the parser's stack with the model objects in it; what is taken over is released.
template <typename T>
class OwnedList {
public:
    explicit OwnedList(std::vector<T*>* list) : list_(list) {}
    ~OwnedList() { deleteList(list_); }
    OwnedList(const OwnedList&) = delete;
    OwnedList& operator=(const OwnedList&) = delete;
    std::vector<T*>* get() const { return list_; }
    /// Gives up the list with its items.
    std::vector<T*>* release() { return std::exchange(list_, nullptr); }
    void releaseItems() {
        if (list_) list_->clear();
    }

private:
    std::vector<T*>* list_;
};

/// Appends a model object to a list, to a fresh one when null; deletes both, with the list's items, when that throws.
template <typename T>
std::vector<T*>* append(std::type_identity_t<std::vector<T*>>* list, T* item) {
    std::unique_ptr<T> ownedItem(item);
    OwnedList<T> ownedList(list ? list : emptyList<T*>());
    ownedList.get()->push_back(nullptr);
    ownedList.get()->back() = ownedItem.release();
    return ownedList.release();
}

std::vector<HATAttrTypes::AttrType>* append(std::vector<HATAttrTypes::AttrType>* list, int type);

template <typename Node>
Node* placed(Node* node, const yyltype& place) {
    node->setLocation(place);
    return node;
}

/// A fresh option record.
PropertyOptions* options();
/// The same for a declaration that begins with the option.
PropertyOptions* options(Option said);
/// Notes that the option is given, and where, in case it was given before.
PropertyOptions* say(PropertyOptions* record, Option option, const yyltype& place) noexcept;
/// Adds an allowed value to a record, to a fresh one when null.
PropertyOptions* value(PropertyOptions* record, int allowed);
PropertyOptions* value(PropertyOptions* record, double allowed);
PropertyOptions* value(PropertyOptions* record, std::string* allowed);
/// Takes over a token's text.
inline TokenText take(std::string* text) noexcept { return TokenText(text); }
void deleteOptions(PropertyOptions* record) noexcept;

HDNTProperty* property(HATAttrTypes::AttrType type, std::string* name, PropertyOptions* record, const yyltype& place);
/// A hex or binary property: `width` is the constant in the type position, such as 8'h.
HDNTProperty* bitProperty(HATAttrTypes::AttrType type, std::string* width, std::string* name, PropertyOptions* record,
                          const yyltype& place);
HDNTProperty* shortBoolProperty(std::string* name, bool value, const yyltype& place);
HDNTBus* bus(std::string* name, int direction, bool test, bool abstract, int type, int required,
             std::vector<HDNTProperty*>* properties, const yyltype& place);
HDNTBlockEntity* internalFlag(bool value, const yyltype& place);
HDNTBlockEntity* testFlag(bool value, const yyltype& place);
HDNTBlockEntity* maturityLevel(int level, const yyltype& place);
HDNTBlockEntity* primGroup(std::string* text, const yyltype& place);
/// With the mapping that stands behind the block, or null.
HDNTBlock* block(std::string* name, std::vector<HDNTBlockEntity*>* entities, HDNTNetlist* netlist,
                 HDNTNetlist::Section section, const yyltype& place);
/// Attaches a mapping that stands by itself to its block, or drops it when the name is not registered or no block of
/// that name was declared before.
void mapping(std::string* blockName, HDNTNetlist* netlist, HDNTNetlist::Section section, const yyltype& place);
HDNTFunctionDecl* function(int type, std::string* name, std::vector<HATAttrTypes::AttrType>* formals,
                           const yyltype& place);
HDNTNetlist* netlist(std::vector<HDNTNetlistEntity*>* entities, const yyltype& place);
HDNTNetlistEntity* inst(std::string* name, std::string* type, const yyltype& place);
HDNTNetlistEntity* assignBlockProperty(std::string* inst, std::string* property, HDNTExpr* value, const yyltype& place);
HDNTNetlistEntity* assignPinProperty(HDNTBlockPinName* pin, std::string* property, HDNTExpr* value,
                                     const yyltype& place);
HDNTNetlistEntity* ifStmt(HDNTExpr* condition, HDNTNetlistEntity* thenStmt, HDNTNetlistEntity* elseStmt,
                          const yyltype& place);
HDNTNetlistEntity* stmtBlock(std::vector<HDNTNetlistEntity*>* statements, const yyltype& place);
HDNTNetlistEntity* connect(std::string* signal, std::vector<HDNTPinInst*>* pins, const yyltype& place);
/// Without pins, a name with brackets declares a list of signals.
HDNTNetlistEntity* signal(std::string* name, std::vector<HDNTPinInst*>* pins, const yyltype& place);
/// A null instance means a pin of the mapped block.
HDNTBlockPinName* pinInst(std::string* inst, std::string* pin, const yyltype& place);
HDNTExpr* compound(HDNTExpr* lhs, HDNTExpr::FOPERATOR op, HDNTExpr* rhs, const yyltype& place);
HDNTExpr* constant(int value, const yyltype& place);
HDNTExpr* constant(double value, const yyltype& place);
HDNTExpr* constant(bool value, const yyltype& place);
HDNTExpr* constant(std::string* value, const yyltype& place);
HDNTFunctionCall* call(std::string* name, std::vector<HDNTExpr*>* actuals, const yyltype& place);

/// Forgets the blocks of the parse before. Those of the parse in progress are found by separate mappings.
void beginParse() noexcept;

/// Hands the declarations to the library that is being parsed into.
void library(std::string* name, std::vector<HDNTDecl*>* decls, const yyltype& place);

} // namespace hdnt::frontend::build
