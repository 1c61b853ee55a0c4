// What the receiver does with tokens, and with declarations.
#include "hdnt/diagnostics/HDNTLimits.h"
#include "hdnt/frontend/Losses.internal.h"
#include "hdnt/frontend/ModelReceiver.internal.h"
#include "hdnt/frontend/Scanner.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTBus.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTConnect.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/netlist/HDNTNetlist.h"

#include <cstdio>
#include <utility>

int HDNTParserchar = 0;
int HDNTParsernerrs = 0;
int HDNTParserdebug = 0;
yyltype HDNTParserlloc{};

namespace hdnt::frontend {

using Section = HDNTNetlist::Section;
using Type = HATAttrTypes::AttrType;

namespace {

template <typename T>
void deleteAll(std::vector<T*>& list) noexcept {
    for (const T* item : list) delete item;
}

Type typeOf(int token) {
    switch (token) {
    case T_Int: return Type::TypeInt;
    case T_String: return Type::TypeString;
    case T_Double: return Type::TypeDouble;
    case T_Bool: return Type::TypeBool;
    case T_HexConstant: return Type::TypeBitHex;
    default: return Type::TypeBitBinary;
    }
}

} // namespace

ModelReceiver::~ModelReceiver() {
    deleteAll(decls_);
    deleteAll(entities_);
    deleteAll(properties_);
    deleteAll(statements_);
    deleteAll(pins_);
    deleteAll(arguments_);
    for (const Operand& operand : operands_) delete operand.expr;
    for (const If& one : ifs_) delete one.thenStmt;
    delete decl_;
    delete entity_;
    delete property_;
    delete netlist_;
    delete statement_;
    delete pin_;
}

// --- tokens

void ModelReceiver::scan() {
    token_ = stopped; // in case it throws
    token_ = scanner_.scan();
    if (HDNTParserdebug != 0) [[unlikely]]
        traceToken(token_);
}

bool ModelReceiver::takesString() {
    if (token_ != none || !scanner_.scanExpectedString()) return false;
    if (HDNTParserdebug != 0) [[unlikely]]
        traceToken(T_StringConstant);
    taken_[count_++ % taken_.size()] = {scanner_.tokenText(), T_StringConstant, {}};
    deepen();
    return true;
}

void ModelReceiver::traceToken(int token) const {
    if (token == 0) std::fputs("Reading a token: Now at end of input.\n", stderr);
    else std::fprintf(stderr, "Reading a token: Next token is token %d (line %d)\n", token, scanner_.tokenLine());
}

void ModelReceiver::fail(const char* message, bool isSyntax) {
    if (hasFailed()) return;
    scanner_.syncPlace();
    HDNTParserchar = token_;
    if (isSyntax) ++HDNTParsernerrs;
    ParserState::instance().guard([&] { HDNTParsererror(message); });
    token_ = stopped;
}

// Whoever hears of it may ask where.
void ModelReceiver::stop() {
    scanner_.syncPlace();
    HDNTParserchar = token_;
    token_ = stopped;
}

// The stack is as large as it will be after it has grown once.
void ModelReceiver::grow() {
    const int limit = HDNTLimits::get().parserDepth;
    if (capacity_ < limit && capacity_ == 200) {
        capacity_ = capacityOfMappings_ = limit;
        if (depth_ < capacity_) return;
    }
    fail("memory exhausted", false);
}

void ModelReceiver::traceRule(int rule) const {
    std::fprintf(stderr, "Reducing stack by rule %d (line %d):\nEntering state %d\n", rule - 1, scanner_.tokenLine(),
                 depth_);
}

// --- parts

void ModelReceiver::openSection() {
    section_ = token_ == T_MapTo        ? Section::mapsto
               : token_ == T_ExpandTo   ? Section::expandsto
               : token_ == T_ModifiedBy ? Section::modifiedby
                                        : Section::retargetsto;
}

void ModelReceiver::openProperty() {
    propertyBegin_ = pinEnd_;
    count_ = propertyBegin_;
    place_ = scanner_.tokenPlace();
    options_.reset();
}

void ModelReceiver::openAt(Mark, NtlPart part) {
    if (part == NtlPart::block || part == NtlPart::mapping) {
        blockPlace_ = place_;
        blockName_ = textOf(1);
        isDeclared_ = part == NtlPart::block;
    } else if (part == NtlPart::operation) {
        openOperation();
    }
}

void ModelReceiver::begin(NtlList which) {
    if (which == NtlList::elements) libraryName_ = textOf(1);
    else if (which == NtlList::properties) pinEnd_ = count_;
    else if (which == NtlList::statements) beginStatements();
}

void ModelReceiver::listed(NtlList which) {
    if (hasFailed()) return;
    switch (which) {
    case NtlList::elements:
        depth_ = 0;
        if (decl_) add(decls_, decl_);
        break;
    case NtlList::entities:
        if (property_) add(entities_, property_);
        else add(entities_, entity_);
        break;
    case NtlList::properties: add(properties_, property_); break;
    default:
        add(statements_, statement_);
        --depth_;
        break;
    }
}

void ModelReceiver::end(NtlList which) {
    if (hasFailed()) return;
    if (which == NtlList::elements) endLibrary();
    else if (which == NtlList::entities) declaredPlace_ = upToLast(blockPlace_);
    else if (which == NtlList::properties) pinEnd_ = 0;
    else if (which == NtlList::statements && braces_.empty()) endNetlist();
}

void ModelReceiver::listed(NtlPart part) {
    if (hasFailed()) return;
    if (part == NtlPart::function) {
        build(13, [&] { formals_.push_back(typeOf(lastTaken().token)); });
        count_ = 4;
    } else if (part == NtlPart::option) {
        listValue();
    } else {
        listArgument();
    }
}

// --- declarations

void ModelReceiver::endLibrary() {
    build(3, [&] { build::library(libraryName_, decls_, upToLast(libraryPlace_)); });
}

void ModelReceiver::closeFunction() {
    build(9, [&] {
        decl_ = build::function(typeOf(taken(1).token), shortened(taken(2).text), formals_, upToLast(place_));
        formals_.clear();
    });
}

void ModelReceiver::closeBlock() {
    const bool hasMapping = netlist_ != nullptr;
    const yyltype place = hasMapping ? extended(blockPlace_, netlistPlace_) : declaredPlace_;
    build(hasMapping ? 20 : 24,
          [&] { decl_ = build::block(blockName_, entities_, std::exchange(netlist_, nullptr), section_, place); });
}

void ModelReceiver::closeMapping() {
    const yyltype place = extended(blockPlace_, netlistPlace_);
    build(25, [&] { build::mapping(blockName_, std::exchange(netlist_, nullptr), section_, place); });
}

void ModelReceiver::closeFlag() {
    const yyltype place = upToLast(place_);
    const Taken& value = taken(2);
    switch (taken(0).token) {
    case T_Internal: return build(83, [&] { entity_ = build::internalFlag(value.isTrue(), place); });
    case T_Test: return build(84, [&] { entity_ = build::testFlag(value.isTrue(), place); });
    case T_MaturityLevel: return build(85, [&] { entity_ = build::maturityLevel(value.token - T_Early, place); });
    default: return build(90, [&] { entity_ = build::primGroup(unquoted(value), place); });
    }
}

static int directionOf(int token) {
    switch (token) {
    case T_Input: return HDNT_PIN_INPUT;
    case T_Output: return HDNT_PIN_OUTPUT;
    case T_Bidir: return HDNT_PIN_BIDIR;
    default: return HDNT_PIN_INTERNAL;
    }
}

static int pinTypeOf(int token) {
    switch (token) {
    case T_Clock: return HDNT_PIN_CLOCK;
    case T_Clear: return HDNT_PIN_CLEAR;
    case T_Enable: return HDNT_PIN_ENABLE;
    case T_Mixed: return HDNT_PIN_MIXED;
    case T_Preset: return HDNT_PIN_PRESET;
    case T_Reset: return HDNT_PIN_RESET;
    case T_Set: return HDNT_PIN_SET;
    case T_SetReset: return HDNT_PIN_SET_RESET;
    case T_WriteEnable: return HDNT_PIN_WRITE_ENABLE;
    default: return HDNT_PIN_DATA;
    }
}

static int requiredValueOf(int token) {
    switch (token) {
    case T_TieLow: return HDNT_PIN_TIE_LOW;
    case T_TieHigh: return HDNT_PIN_TIE_HIGH;
    case T_TieSpecial: return HDNT_PIN_TIE_SPECIAL;
    case T_Untie: return HDNT_PIN_UNTIE;
    case T_Active: return HDNT_PIN_ACTIVE;
    case T_MustConnect: return HDNT_PIN_MUST_CONNECT;
    default: return HDNT_PIN_NO_VALUE;
    }
}

// pin NAME DIRECTION, the qualifiers in their order, and what ends them.
void ModelReceiver::closePin() {
    std::size_t at = 3;
    const bool test = taken(at).token == T_Test;
    at += test ? 1 : 0;
    const bool abstract = taken(at).token == T_Abstract;
    at += abstract ? 1 : 0;
    const int type = pinTypeOf(taken(at).token);
    at += pinTypes.contains(taken(at).token) ? 1 : 0;
    const int required = requiredValueOf(taken(at).token);
    const bool hasList = taken(at + (required == HDNT_PIN_NO_VALUE ? 0 : 1)).token == '{';
    build(hasList ? 189 : 188, [&] {
        entity_ = build::bus(textOf(1), directionOf(taken(2).token), test, abstract, type, required, properties_,
                             upToLast(pinPlace_));
    });
}

// property TYPE NAME and options, or true or false.
void ModelReceiver::closeProperty() {
    const yyltype place = upToLast(place_);
    const Taken& type = taken(propertyBegin_ + 1);
    const std::string_view name = textOf(propertyBegin_ + 2);
    const Taken& third = taken(propertyBegin_ + 3);
    if (third.token == T_BoolConstant)
        return build(102, [&] { property_ = build::shortBoolProperty(name, third.isTrue(), place); });
    if (type.token == T_HexConstant || type.token == T_BinaryConstant)
        return build(104,
                     [&] { property_ = build::bitProperty(typeOf(type.token), type.text, name, options_, place); });
    build(99, [&] { property_ = build::property(typeOf(type.token), name, options_, place); });
}

static bool isSaid(int token, Option& option) {
    switch (token) {
    case T_Max: option = Option::max; return true;
    case T_Default: option = Option::byDefault; return true;
    case T_Precision: option = Option::precision; return true;
    case T_Description: option = Option::description; return true;
    case T_Units: option = Option::units; return true;
    case T_Simulation: option = Option::simulation; return true;
    case T_Test: option = Option::test; return true;
    case T_ConstraintsOnly: option = Option::constraintsOnly; return true;
    case T_MuxControl: option = Option::muxControl; return true;
    default: return false;
    }
}

void ModelReceiver::openOption() {
    count_ = optionBegin_ = propertyBegin_ + 4;
    Option option{};
    if (!isSaid(token_, option)) return;
    if (options_.hasSaid(option)) build::noteRepeat(options_, option, scanner_.tokenPlace());
    options_.said |= PropertyOptions::bitOf(option);
}

void ModelReceiver::closeOption() {
    const Taken& value = lastTaken();
    const bool isInt = value.token == T_IntConstant;
    const bool isDouble = value.token == T_DoubleConstant;
    const std::string_view text = value.token == T_StringConstant ? unquoted(value) : value.text;
    switch (taken(optionBegin_).token) {
    case T_Min:
        if (isInt) options_.ints.min = value.number.asInt;
        else if (isDouble) options_.doubles.min = value.number.asDouble;
        else options_.textMin = text;
        break;
    case T_Max:
        if (isInt) options_.ints.max = value.number.asInt;
        else if (isDouble) options_.doubles.max = value.number.asDouble;
        else options_.textMax = text;
        break;
    case T_Default:
        if (isInt) options_.ints.byDefault = value.number.asInt;
        else if (isDouble) options_.doubles.byDefault = value.number.asDouble;
        else if (value.token == T_BoolConstant) options_.boolDefault = value.isTrue();
        else options_.textDefault = text;
        break;
    case T_Precision: options_.precision = value.number.asInt; break;
    case T_Description: options_.description = text; break;
    case T_Units: options_.units = text; break;
    case T_Simulation: options_.simulation = value.isTrue(); break;
    case T_Test: options_.test = value.isTrue(); break;
    case T_ConstraintsOnly: options_.constraintsOnly = value.isTrue(); break;
    case T_MuxControl: options_.muxControl = value.isTrue(); break;
    default: break;
    }
}

void ModelReceiver::listValue() {
    const Taken& value = lastTaken();
    build(125, [&] {
        if (value.token == T_IntConstant) options_.ints.values.push_back(value.number.asInt);
        else if (value.token == T_DoubleConstant) options_.doubles.values.push_back(value.number.asDouble);
        else options_.texts.push_back(value.token == T_StringConstant ? unquoted(value) : value.text);
    });
    count_ = optionBegin_ + 2;
}

} // namespace hdnt::frontend

int HDNTParserparse() {
    using namespace hdnt::frontend;
    build::beginParse();
    HDNTParserchar = -2; // no token is ahead
    if (HDNTParserdebug != 0) std::fputs("Starting parse\n", stderr);
    ModelReceiver receiver;
    bool whole = false;
    if (!ParserState::instance().guard([&] { whole = NtlGrammar(receiver).file(); }))
        HDNTParserchar = 257; // an error that was told of
    if (whole) HDNTParserchar = -2;
    return whole ? 0 : 1;
}
