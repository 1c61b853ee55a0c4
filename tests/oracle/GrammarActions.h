#pragma once

// What the law's actions call: the model's builder, with the values of a generated parser's stack.

#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/diagnostics/HDNTLimits.h"
#include "hdnt/frontend/Losses.internal.h"
#include "hdnt/frontend/ModelBuilder.internal.h"
#include "hdnt/frontend/ParserState.internal.h"
#include "hdnt/frontend/PropertyOptions.internal.h"
#include "hdnt/frontend/Scanner.h"
#include "hdnt/frontend/ScannerState.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTBus.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTConnect.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/netlist/HDNTNetlist.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace law {

namespace build = hdnt::frontend::build;
using hdnt::frontend::Option;
using hdnt::frontend::PropertyOptions;
using Section = HDNTNetlist::Section;
using Type = HATAttrTypes::AttrType;
using Text = const std::string*; ///< kept until the next parse

union Value {
    std::int64_t intValue;
    std::int64_t boolValue;
    double doubleValue;
    Text text;
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
    std::vector<Type>* types;
    std::vector<HDNTNetlistEntity*>* statements;
    std::vector<HDNTExpr*>* exprs;
    std::vector<HDNTPinInst*>* pins;
    PropertyOptions* options;
};

inline std::deque<std::string>& texts() {
    static std::deque<std::string> all;
    return all;
}

inline void beginParse() {
    texts().clear();
    build::beginParse();
}

template <typename T>
std::vector<T>* emptyList() {
    return new std::vector<T>;
}
template <typename T>
void deleteList(std::vector<T*>* list) {
    if (!list) return;
    for (const T* item : *list) delete item;
    delete list;
}

/// A list for the builder, which takes it over; null is an empty one.
template <typename T>
class Given {
public:
    explicit Given(std::vector<T*>* list) : list_(list ? list : emptyList<T*>()) {}
    Given(const Given&) = delete;
    Given& operator=(const Given&) = delete;
    ~Given() { deleteList(list_); }
    std::vector<T*>& operator*() const { return *list_; }

private:
    std::vector<T*>* list_;
};
template <typename T>
std::vector<T*>* append(std::type_identity_t<std::vector<T*>>* list, T* item) {
    if (!list) list = emptyList<T*>();
    list->push_back(item);
    return list;
}
inline std::vector<Type>* append(std::vector<Type>* list, std::int64_t type) {
    if (!list) list = emptyList<Type>();
    list->push_back(static_cast<Type>(type));
    return list;
}

inline PropertyOptions* options() { return new PropertyOptions; }
inline PropertyOptions* options(Option said) {
    PropertyOptions* const record = options();
    record->said = PropertyOptions::bitOf(said);
    return record;
}
inline PropertyOptions* say(PropertyOptions* record, Option option, const yyltype& place) {
    if (record->hasSaid(option)) build::noteRepeat(*record, option, place);
    record->said |= PropertyOptions::bitOf(option);
    return record;
}
inline PropertyOptions* value(PropertyOptions* record, int allowed) {
    if (!record) record = options();
    record->ints.values.push_back(allowed);
    return record;
}
inline PropertyOptions* value(PropertyOptions* record, double allowed) {
    if (!record) record = options();
    record->doubles.values.push_back(allowed);
    return record;
}
inline PropertyOptions* value(PropertyOptions* record, Text allowed) {
    if (!record) record = options();
    record->texts.emplace_back(*allowed);
    return record;
}
inline void deleteOptions(PropertyOptions* record) { delete record; }

inline HDNTProperty* property(Type type, Text name, PropertyOptions* record, const yyltype& place) {
    const std::unique_ptr<PropertyOptions> owned(record);
    return build::property(type, *name, *record, place);
}
inline HDNTProperty* bitProperty(Type type, Text width, Text name, PropertyOptions* record, const yyltype& place) {
    const std::unique_ptr<PropertyOptions> owned(record);
    return build::bitProperty(type, *width, *name, *record, place);
}
inline HDNTProperty* shortBoolProperty(Text name, std::int64_t value, const yyltype& place) {
    return build::shortBoolProperty(*name, value != 0, place);
}
inline HDNTBus* bus(Text name, std::int64_t direction, std::int64_t test, std::int64_t abstract, std::int64_t type,
                    std::int64_t required, std::vector<HDNTProperty*>* properties, const yyltype& place) {
    return build::bus(*name, static_cast<int>(direction), test != 0, abstract != 0, static_cast<int>(type),
                      static_cast<int>(required), *Given(properties), place);
}
inline HDNTBlockEntity* internalFlag(std::int64_t value, const yyltype& place) {
    return build::internalFlag(value != 0, place);
}
inline HDNTBlockEntity* testFlag(std::int64_t value, const yyltype& place) {
    return build::testFlag(value != 0, place);
}
inline HDNTBlockEntity* maturityLevel(std::int64_t level, const yyltype& place) {
    return build::maturityLevel(static_cast<int>(level), place);
}
inline HDNTBlockEntity* primGroup(Text text, const yyltype& place) { return build::primGroup(*text, place); }
inline HDNTBlock* block(Text name, std::vector<HDNTBlockEntity*>* entities, HDNTNetlist* netlist, Section section,
                        const yyltype& place) {
    return build::block(*name, *Given(entities), netlist, section, place);
}
inline void mapping(Text name, HDNTNetlist* netlist, Section section, const yyltype& place) {
    build::mapping(*name, netlist, section, place);
}
inline HDNTFunctionDecl* function(std::int64_t type, Text name, std::vector<Type>* formals, const yyltype& place) {
    const std::unique_ptr<std::vector<Type>> owned(formals);
    return build::function(static_cast<int>(type), *name, formals ? *formals : std::vector<Type>(), place);
}
using build::assignBlockProperty;
using build::compound;
using build::ifStmt;
inline HDNTNetlist* netlist(std::vector<HDNTNetlistEntity*>* entities, const yyltype& place) {
    return build::netlist(*Given(entities), place);
}
inline HDNTNetlistEntity* stmtBlock(std::vector<HDNTNetlistEntity*>* statements, const yyltype& place) {
    return build::stmtBlock(*Given(statements), 0, place);
}
inline HDNTNetlistEntity* inst(Text name, Text type, const yyltype& place) { return build::inst(*name, *type, place); }
inline HDNTNetlistEntity* assignBlockProperty(Text inst, Text property, HDNTExpr* value, const yyltype& place) {
    return build::assignBlockProperty(*inst, *property, value, place);
}
inline HDNTNetlistEntity* assignPinProperty(HDNTBlockPinName* pin, Text property, HDNTExpr* value,
                                            const yyltype& place) {
    return build::assignPinProperty(pin, *property, value, place);
}
inline HDNTNetlistEntity* connect(Text signal, std::vector<HDNTPinInst*>* pins, const yyltype& place) {
    return build::connect(*signal, *Given(pins), place);
}
inline HDNTNetlistEntity* signal(Text name, std::vector<HDNTPinInst*>* pins, const yyltype& place) {
    return pins ? build::signal(*name, *Given(pins), place) : build::signal(*name, place);
}
inline HDNTBlockPinName* pinInst(Text inst, Text pin, const yyltype& place) {
    return build::pinInst(inst ? std::string_view(*inst) : std::string_view(), *pin, place);
}
inline HDNTExpr* constant(int value, const yyltype& place) { return build::constant(value, place); }
inline HDNTExpr* constant(double value, const yyltype& place) { return build::constant(value, place); }
inline HDNTExpr* constant(bool value, const yyltype& place) { return build::constant(value, place); }
inline HDNTExpr* constant(Text value, const yyltype& place) { return build::constant(std::string_view(*value), place); }
inline HDNTFunctionCall* call(Text name, std::vector<HDNTExpr*>* actuals, const yyltype& place) {
    return build::call(*name, *Given(actuals), 0, place);
}
inline void library(Text name, std::vector<HDNTDecl*>* decls, const yyltype& place) {
    build::library(*name, *Given(decls), place);
}

} // namespace law

using law::Option;
using law::Section;

// A builder call that throws ends the parse. The builder owns what it was given, and bison frees the rest of its stack
// but not the symbols of the rule, so the two together leave nothing behind.
#define BUILD(...)                                                                                                     \
    if (!hdnt::frontend::ParserState::instance().guard([&] { __VA_ARGS__; })) YYABORT

extern law::Value lawValue;

// The token's value as a symbol's.
inline law::Value symbolOf(int token) {
    law::Value value{};
    const NtlTokenValue& scanned = HDNTParserlval;
    switch (token) {
    case T_IntConstant: value.intValue = scanned.intValue; break;
    case T_BoolConstant: value.boolValue = scanned.boolValue; break;
    case T_DoubleConstant: value.doubleValue = scanned.doubleValue; break;
    case T_StringConstant:
    case T_HexConstant:
    case T_BinaryConstant:
        value.text = &law::texts().emplace_back(*scanned.text);
        delete scanned.text;
        break;
    case T_Identifier: value.text = &law::texts().emplace_back(scanned.identifier); break;
    default: break;
    }
    return value;
}

// A scanner that throws ends the parse as a token that is an error.
inline int lexGuarded() noexcept {
    constexpr int errorAlreadyReported = 256;
    int token = errorAlreadyReported;
    hdnt::frontend::ParserState::instance().guard([&] {
        const int scanned = hdnt::frontend::Scanner::instance().next();
        lawValue = symbolOf(scanned);
        token = scanned;
    });
    return token;
}
#define HDNTParserlex lexGuarded
#define HDNTParserlval lawValue

// A rule's place begins at its first token. It ends at its last one when both stand on one line of one file.
inline yyltype placeOf(const yyltype& first, const yyltype& last) {
    yyltype place = first;
    if (last.first_line == first.first_line && last.fileName == first.fileName) place.last_column = last.last_column;
    return place;
}
#define YYLLOC_DEFAULT(current, rhs, count) ((current) = placeOf(YYRHSLOC(rhs, (count) ? 1 : 0), YYRHSLOC(rhs, count)))

#define YYINITDEPTH 200
#define YYMAXDEPTH 4000

// The stacks grow once, to the greatest depth; a second time, "memory exhausted" is reported and all stays as it is.
template <typename StateNumber>
void growStacks(const char* message, StateNumber** states, long, law::Value** values, long, yyltype** places, long,
                long* capacity) {
    static std::vector<StateNumber> grownStates;
    static std::vector<law::Value> grownValues;
    static std::vector<yyltype> grownPlaces;
    const long depth = HDNTLimits::get().parserDepth;
    if (*capacity >= depth) return HDNTParsererror(message);
    const auto grow = [&](auto& grown, auto** current) {
        grown.resize(static_cast<std::size_t>(depth));
        std::copy(*current, *current + *capacity, grown.data());
        *current = grown.data();
    };
    grow(grownStates, states);
    grow(grownValues, values);
    grow(grownPlaces, places);
    *capacity = depth;
}
#define yyoverflow growStacks
