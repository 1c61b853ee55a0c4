#include "author/exchange/BlockWords.h"
#include "author/exchange/hdlValues.internal.h"
#include "author/exchange/mapTerms.internal.h"
#include "author/lint/MappingView.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTCompoundExpr.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTValue.h"
#include "hdnt/platform/HEX.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <memory>

namespace hdnt::author {

namespace {

using words::cell;

// The nought of its type.
Value exampleOf(const Value& value) {
    return std::visit([](const auto& plain) -> Value { return std::decay_t<decltype(plain)>{}; }, value);
}

// One that no division fails by.
Value divisorOf(const Value& value) {
    if (std::holds_alternative<int>(value)) return 1;
    if (std::holds_alternative<double>(value)) return 1.0;
    return exampleOf(value);
}

Value result(const HDNTCompoundExpr& expr, const Value& left, const Value& right) {
    if (left.index() != right.index()) throw HEXDataException("operands of different types");
    const auto operate = [&](const auto& plain) {
        return expr.operate(std::get<std::decay_t<decltype(plain)>>(left), plain);
    };
    return std::unique_ptr<HDNTValue>(std::visit(operate, right))->getPlainValue();
}

// yosys hands real values on with six digits behind the point.
bool isKept(const Value& value) {
    if (!std::holds_alternative<double>(value)) return true;
    std::array<char, 400> digits;
    const auto written =
        std::to_chars(digits.begin(), digits.end(), std::get<double>(value), std::chars_format::fixed, 6);
    double read = 0;
    std::from_chars(digits.begin(), written.ptr, read);
    return read == std::get<double>(value);
}

void requireKept(const std::string& name, const Value& value) {
    if (!isKept(value))
        throw HEXDataException(name + ": " + hdnt::textOf(value) + " has more digits than readers keep");
}

bool isBits(const HDNTProperty* property) { return property && HATAttrTypes::isBitVector(property->getType()); }

bool isSameVector(const HDNTProperty& a, const HDNTProperty& b) {
    return a.getType() == b.getType() && a.getBitWidth() == b.getBitWidth();
}

std::vector<Value> namedValues(const HDNTProperty& property) {
    std::vector<Value> values = property.getAllowedValues();
    const Value byDefault = property.getDefaultValue();
    if (byDefault != Value(std::string())) values.push_back(byDefault);
    return values;
}

// Whether a property allows all that another one does.
bool takesAllOf(const HDNTProperty& target, const HDNTProperty& source) {
    std::vector<Value> values = source.getAllowedValues();
    if (values.empty() && target.getAllowedValues().empty())
        for (const std::optional<Value>& bound : {source.getMinValue(), source.getMaxValue()})
            if (bound) values.push_back(*bound);
    return !values.empty() &&
           std::ranges::all_of(values, [&](const Value& value) { return target.refusalOf(value).empty(); });
}

// All texts of operations are in parentheses.
std::string bare(const std::string& text) { return text[0] == '(' ? text.substr(1, text.size() - 2) : text; }

std::string constantText(const Value& value) {
    if (value == Value(INT_MIN)) return "32'sh80000000";
    const std::string text = verilogPlain(jsonOf(value));
    return text[0] == '-' ? "(" + text + ")" : text;
}

std::string truthText(const MapTerm& term) {
    if (std::holds_alternative<std::string>(term.example)) throw HEXDataException("a text as a condition");
    if (std::holds_alternative<bool>(term.example)) return term.text;
    return "(" + term.text + " != " + constantText(exampleOf(term.example)) + ")";
}

void requireWritable(const HDNTExpr& expr) {
    constexpr std::size_t most = 1000;
    std::size_t count = 0;
    forEachExpr(&expr, [&](const HDNTExpr&) { ++count; });
    if (count > most) throw HEXDataException("an expression of more than " + std::to_string(most) + " parts");
}

} // namespace

MapTerms::MapTerms(const MapBlock& block, VerilogNames& names) : block_(block), names_(names) {
    for (const Json* property : block.shape().parameters) {
        const std::string name = verilogName(cell((*property)["name"]));
        if (names.take(name)) parameters_.push_back({name, property});
    }
}

std::string MapTerms::truthOf(const HDNTExpr& condition, const std::string& guard) {
    requireWritable(condition);
    return bare(truthText(termOf(condition, guard)));
}

std::string MapTerms::valueFor(const HDNTProperty& target, const MapBlock& type, const HDNTExpr& value,
                               const std::string& guard) {
    requireWritable(value);
    const MapTerm term = termOf(value, guard);
    const Json& json = type.jsonOf(target);
    if (term.isConstant) {
        if (const std::string refusal = target.refusalOf(term.example); !refusal.empty())
            throw HEXDataException(refusal);
        if (isBits(&target)) return bitsOf(target, json, std::get<std::string>(term.example));
        requireKept(target.getName(), term.example);
        return bare(constantText(term.example));
    }
    if (term.example.index() != target.getDefaultValue().index())
        throw HEXDataException(target.getName() + ": a value of another type");
    return term.property ? handedDown(target, json, term, guard) : computed(json, term, guard);
}

void MapTerms::refuse(const std::string& guard, const std::string& condition) {
    refusals_.push_back(guard.empty() ? condition : guard + " && " + condition);
}

std::vector<std::string> MapTerms::refusals() const {
    std::vector<std::string> all;
    for (const Parameter& parameter : parameters_) {
        const std::string condition = verilogCondition(*parameter.property, parameter.name);
        if (asked_.contains(parameter.property) && !condition.empty()) all.push_back("!(" + condition + ")");
    }
    all.insert(all.end(), refusals_.begin(), refusals_.end());
    return all;
}

void MapTerms::requireHandedDown(const Parameter& parameter) const {
    const HDNTProperty& property = *block_.model().findProperty(cell((*parameter.property)["name"]));
    for (const Value& value : namedValues(property)) requireKept(property.getName(), value);
}

MapTerm MapTerms::termOf(const HDNTExpr& expr, const std::string& guard) {
    if (const auto* const value = nodeCast<HDNTValue>(&expr))
        return {value->getPlainValue(), true, constantText(value->getPlainValue())};
    if (const auto* const made = nodeCast<HDNTFunctionCall>(&expr)) return call(*made);
    if (const auto* const compound = nodeCast<HDNTCompoundExpr>(&expr)) return operation(*compound, guard);
    throw HEXDataException("an expression of the host's own");
}

MapTerm MapTerms::operation(const HDNTCompoundExpr& expr, const std::string& guard) {
    using Op = HDNTExpr::FOPERATOR;
    const bool isUnary = expr.op() == Op::NEGATE || expr.op() == Op::NOT;
    if (!expr.rhs() || (!expr.lhs() && !isUnary)) throw HEXDataException("an operation without operands");
    const MapTerm right = termOf(*expr.rhs(), guard);
    const MapTerm left = isUnary ? right : termOf(*expr.lhs(), guard);
    if (left.isConstant && right.isConstant) {
        const Value value = result(expr, left.example, right.example);
        return {value, true, constantText(value)};
    }
    const Value divisor = right.isConstant ? right.example : divisorOf(right.example);
    MapTerm term{exampleOf(result(expr, exampleOf(left.example), divisor))};
    const std::string sign = std::string(" ") + HDNTExpr::getStringOperator(expr.op()) + " ";
    std::pair<std::string, std::string> sides(left.text, right.text);
    if (expr.op() == Op::NEGATE) return term.text = "(-" + right.text + ")", term;
    if (expr.op() == Op::NOT) return term.text = "(!" + truthText(right) + ")", term;
    if (expr.op() == Op::AND || expr.op() == Op::OR) sides = {truthText(left), truthText(right)};
    else if (std::holds_alternative<std::string>(left.example)) sides = compared(left, right);
    else if ((expr.op() == Op::DIVIDE || expr.op() == Op::REMAINDER) && !right.isConstant)
        refuse(guard, "(" + right.text + " == " + constantText(exampleOf(right.example)) + ")");
    term.text = "(" + sides.first + sign + sides.second + ")";
    return term;
}

MapTerm MapTerms::call(const HDNTFunctionCall& call) {
    const Question question = questionOf(call);
    if (question.of == Question::Of::connection) return connectionTerm(question.name);
    if (question.of == Question::Of::nothing)
        throw HEXDataException("calls " + call.name() + "(), which only the host can answer");
    MapTerm term = propertyTerm(question.name);
    if (term.example.index() != question.type)
        throw HEXDataException(call.name() + ": property " + question.name + " is of another type");
    return term;
}

MapTerm MapTerms::propertyTerm(const std::string& name) {
    const HDNTProperty* const property = block_.model().findProperty(name);
    if (!property) throw HEXDataException("Block " + block_.model().getName() + " has no property " + name);
    const Json* const json = &block_.jsonOf(*property);
    const auto found = std::ranges::find(parameters_, json, &Parameter::property);
    if (found == parameters_.end())
        throw HEXDataException("asks for " + name + ", which has no default, or the name of a port");
    asked_.insert(json);
    return {exampleOf(property->getDefaultValue()), false, found->name, property};
}

MapTerm MapTerms::connectionTerm(const std::string& pin) {
    const std::vector<PortBit> bits = block_.bitsOf(pin);
    const HdlPort* const port = bits.front().port;
    std::size_t size = 0;
    for (const Json* bus : port->buses) size += (*bus)["pins"].size();
    if (size != bits.size()) throw HEXDataException("asks whether a part of " + port->name + " is connected");
    const auto found = connected_.emplace(port, verilogName("_TECHMAP_CONSTMSK_" + port->name + "_")).first;
    return {false, false, "(" + found->second + "[0] !== 1'bx)"};
}

std::string MapTerms::bitsOf(const HDNTProperty& property, const Json& json, const std::string& text) {
    const char radix = property.getType() == HATAttrTypes::TypeBitHex ? 'h' : 'b';
    const std::size_t quote = text.find('\'');
    if (quote != text.npos && (quote + 1 == text.size() || (text[quote + 1] | ' ') != radix))
        throw HEXDataException(property.getName() + ": " + text + " is of another radix");
    return verilogValue(json, property.formatValue(text, true));
}

std::string MapTerms::spelled(const HDNTProperty& property, const std::string& text) {
    const auto spell = [&](const std::string& one) {
        const std::string bits = bitsOf(property, block_.jsonOf(property), one);
        const std::string& known = spellings_[&property].emplace(bits, one).first->second;
        if (known != one) throw HEXDataException(property.getName() + ": " + one + " is also written " + known);
        return bits;
    };
    if (const std::string refusal = property.refusalOf(text); !refusal.empty()) throw HEXDataException(refusal);
    for (const Value& value : namedValues(property)) spell(std::get<std::string>(value));
    return spell(text);
}

std::pair<std::string, std::string> MapTerms::compared(const MapTerm& left, const MapTerm& right) {
    const auto sideOf = [this](const MapTerm& term, const MapTerm& other) {
        if (!term.isConstant) return term.text;
        const std::string& text = std::get<std::string>(term.example);
        if (isBits(other.property)) return spelled(*other.property, text);
        if (text.find('\0') != text.npos) throw HEXDataException("a text with a zero byte");
        return term.text;
    };
    const bool areProperties = left.property && right.property;
    if (areProperties && (isBits(left.property) || isBits(right.property))) {
        if (!isSameVector(*left.property, *right.property)) throw HEXDataException("compares vectors of two types");
        for (const Value& value : namedValues(*right.property)) spelled(*left.property, std::get<std::string>(value));
    }
    return {sideOf(left, right), sideOf(right, left)};
}

std::string MapTerms::handedDown(const HDNTProperty& target, const Json& json, const MapTerm& source,
                                 const std::string& guard) {
    const HDNTProperty& property = *source.property;
    if ((isBits(&property) || isBits(&target)) && !isSameVector(property, target))
        throw HEXDataException(target.getName() + ": gets " + property.getName() + ", which is of another type");
    for (const Value& value : namedValues(property)) requireKept(property.getName(), value);
    const std::string condition = verilogCondition(json, source.text);
    if (!condition.empty() && !takesAllOf(target, property)) refuse(guard, "!(" + condition + ")");
    return source.text;
}

std::string MapTerms::computed(const Json& target, const MapTerm& value, const std::string& guard) {
    if (std::holds_alternative<double>(value.example))
        throw HEXDataException(cell(target["name"]) +
                               ": a computed real value, which may have more digits than readers keep");
    if (verilogCondition(target, "").empty()) return bare(value.text);
    const std::string name = names_.add("value_" + std::to_string(constants_.size() + 1));
    constants_.push_back("integer " + name + " = " + bare(value.text));
    refuse(guard, "!(" + verilogCondition(target, name) + ")");
    return name;
}

} // namespace hdnt::author
