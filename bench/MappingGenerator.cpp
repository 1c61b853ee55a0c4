#include "bench/MappingGenerator.h"

#include <algorithm>

namespace bench {

namespace {

using Kind = Statement::Kind;

const char* const instanceNames[] = {"low", "high", "register", "table", "carry", "select", "pad", "chain", "first"};
const char* const signalNames[] = {"data", "carry", "sum", "enable", "select", "out", "in", "between", "clock"};
const char* const comparators[] = {"==", "!=", "<", ">", "<=", ">="};
const char* const arithmetic[] = {"+", "-", "*", "/", "%"};
constexpr int mostBits = 8; // of a bus, that get signals of their own

std::string quoted(const std::string& text) { return "\"" + text + "\""; }

std::string call(const char* function, const std::string& argument) {
    return std::string(function) + "(" + quoted(argument) + ")";
}

Statement make(Kind kind, std::string name) {
    Statement statement;
    statement.kind = kind;
    statement.name = std::move(name);
    return statement;
}

} // namespace

Mapping MappingGenerator::make() {
    Mapping mapping;
    const int kind = random_.below(100);
    mapping.section = kind < 60 ? "mapsto" : kind < 80 ? "expandsto" : kind < 95 ? "retargetsto" : "modifiedby";
    if (random_.chance(40)) mapping.comment = "How " + block_.name + " is made.";
    if (random_.chance(6)) {
        Statement statement = bench::make(Kind::Call, {});
        statement.text = call("reserveColumn", block_.name);
        statements_.push_back(std::move(statement));
    }
    addInstances();
    collectPins();
    addSignals();
    if (random_.chance(50)) addBusSignals();
    addAssigns();
    addConditions();
    if (instances_.size() > 1 && random_.chance(6)) {
        Statement statement = bench::make(Kind::Call, {});
        statement.text = "makePair(" + quoted(instances_[0].name) + ", " + quoted(instances_[1].name) + ")";
        statements_.push_back(std::move(statement));
    }
    mapping.statements = std::move(statements_);
    return mapping;
}

void MappingGenerator::addInstances() {
    for (int i = 0, count = random_.between(1, 6); i < count; ++i) {
        instances_.push_back(
            {std::string(random_.pick(instanceNames)) + "_" + std::to_string(i), &random_.pick(leaves_)});
        Statement statement = bench::make(Kind::Instance, instances_.back().name);
        statement.text = instances_.back().type->name;
        statements_.push_back(std::move(statement));
    }
}

void MappingGenerator::collectPins() {
    const auto collect = [this](const std::string& instance, const Block& block) {
        for (const Pin& pin : block.pins) {
            if (!pin.range) pins_.push_back({instance, pin.name});
            else
                for (int i = 0, least = std::min(pin.range->first, pin.range->second),
                         most = std::min(std::max(pin.range->first, pin.range->second), least + mostBits - 1);
                     least + i <= most; ++i)
                    pins_.push_back({instance, pin.name + "[" + std::to_string(least + i) + "]"});
        }
    };
    collect({}, block_);
    for (const Instance& instance : instances_) collect(instance.name, *instance.type);
    for (size_t i = pins_.size(); i > 1; --i)
        std::swap(pins_[i - 1], pins_[static_cast<size_t>(random_.below(static_cast<int>(i)))]);
}

std::vector<PinRef> MappingGenerator::takePins(int count) {
    std::vector<PinRef> taken;
    for (; count > 0 && !pins_.empty(); --count) {
        taken.push_back(std::move(pins_.back()));
        taken.back().inverted = random_.chance(4);
        pins_.pop_back();
    }
    return taken;
}

void MappingGenerator::addSignals() {
    for (int i = 0, count = random_.between(5, 18); i < count && !pins_.empty(); ++i) {
        Statement statement =
            bench::make(Kind::Signal, std::string(random_.pick(signalNames)) + "_" + std::to_string(i));
        if (i == 0 && random_.chance(25)) statement.name = random_.chance(50) ? "@0" : "@1";
        signals_.push_back(statement.name);
        if (random_.chance(90)) statement.pins = takePins(random_.between(2, 4));
        statements_.push_back(std::move(statement));
    }
}

void MappingGenerator::addBusSignals() {
    const int width = random_.pick(std::vector<int>{4, 8, 8, 16});
    Statement bus = bench::make(Kind::Signal, "bus");
    bus.range = {width - 1, 0};
    statements_.push_back(std::move(bus));
    for (int bit = width; bit-- > 0 && !pins_.empty();) {
        Statement statement = bench::make(Kind::Connect, "bus[" + std::to_string(bit) + "]");
        statement.pins = takePins(random_.between(1, 3));
        statements_.push_back(std::move(statement));
    }
}

const Property* MappingGenerator::ownProperty(ValueType type) {
    std::vector<const Property*> candidates;
    for (const Property& property : block_.properties)
        if (property.type == type) candidates.push_back(&property);
    return candidates.empty() ? nullptr : random_.pick(candidates);
}

std::string MappingGenerator::valueOf(const Property& property) {
    const std::string value = !property.values.empty() ? random_.pick(property.values) : property.defaultValue;
    const bool free = property.values.empty() && !property.minimum;
    const Property* const own = free ? ownProperty(property.type) : nullptr;
    switch (property.type) {
    case ValueType::Int: return own ? integer() : value;
    case ValueType::Double: return own ? call("doubleProperty", own->name) + " * 0.5" : value;
    case ValueType::Bool: return random_.chance(60) ? value : own ? call("boolProperty", own->name) : truth(1);
    case ValueType::String: return own ? call("stringProperty", own->name) : quoted(value);
    case ValueType::Hex: return quoted(std::to_string(property.width) + "'h" + value);
    case ValueType::Binary: return quoted(std::to_string(property.width) + "'b" + value);
    }
    return {};
}

Statement MappingGenerator::assign(const Instance& instance, const Property& property) {
    Statement statement = bench::make(Kind::AssignBlock, property.name);
    statement.instance = instance.name;
    statement.text = valueOf(property);
    return statement;
}

Statement MappingGenerator::assignPin(const Instance& instance, const Pin& pin) {
    const Property& property = random_.pick(pin.properties);
    Statement statement = assign(instance, property);
    statement.kind = Kind::AssignPin;
    statement.pin = pin.range ? pin.name + "[" + std::to_string(pin.range->first) + "]" : pin.name;
    return statement;
}

void MappingGenerator::addAssigns() {
    for (const Instance& instance : instances_) {
        int count = random_.between(0, 4);
        for (const Property& property : instance.type->properties) {
            if (count == 0) break;
            if (!random_.chance(40)) continue;
            statements_.push_back(assign(instance, property));
            --count;
        }
        for (const Pin& pin : instance.type->pins)
            if (!pin.properties.empty() && random_.chance(50)) statements_.push_back(assignPin(instance, pin));
    }
}

Statement MappingGenerator::statementInBranch() {
    const Instance& instance = random_.pick(instances_);
    if (!pins_.empty() && !signals_.empty() && random_.chance(60)) {
        Statement statement = bench::make(Kind::Connect, random_.pick(signals_));
        statement.pins = takePins(random_.between(1, 2));
        return statement;
    }
    if (!instance.type->properties.empty()) return assign(instance, random_.pick(instance.type->properties));
    Statement statement = bench::make(Kind::Call, {});
    statement.text = call("reserveColumn", instance.name);
    return statement;
}

Statement MappingGenerator::condition() {
    Statement statement = bench::make(Kind::If, {});
    statement.text = truth(random_.between(0, 2));
    for (int i = random_.between(1, 3); i > 0; --i) statement.thenPart.push_back(statementInBranch());
    if (random_.chance(20)) statement.elsePart.push_back(condition());
    else if (random_.chance(40))
        for (int i = random_.between(1, 2); i > 0; --i) statement.elsePart.push_back(statementInBranch());
    return statement;
}

void MappingGenerator::addConditions() {
    for (int count = random_.between(0, 3); count > 0; --count) statements_.push_back(condition());
}

std::string MappingGenerator::integer() {
    const Property* const own = ownProperty(ValueType::Int);
    std::string text = own ? call("intProperty", own->name) : std::to_string(random_.below(100));
    for (int terms = random_.below(3); terms > 0; --terms)
        text.append(" ").append(random_.pick(arithmetic)).append(" ").append(std::to_string(random_.between(1, 16)));
    return text;
}

std::string MappingGenerator::comparison() {
    const Property* own =
        ownProperty(random_.pick(std::vector{ValueType::Int, ValueType::Double, ValueType::Bool, ValueType::String}));
    if (!own) {
        if (random_.chance(70))
            return call("isConnected", block_.pins[0].range ? block_.pins[0].name + "[0]" : block_.pins[0].name);
        if (random_.chance(50)) return "familyCode() != \"NORTH\"";
        return "steps(" + integer() + ", 0.5) > 2";
    }
    switch (own->type) {
    case ValueType::Double: return call("doubleProperty", own->name) + " >= " + own->defaultValue;
    case ValueType::Bool: return call("boolProperty", own->name) + (random_.chance(30) ? " == false" : "");
    case ValueType::String:
        return call("stringProperty", own->name) + (random_.chance(70) ? " == " : " != ") + quoted(own->defaultValue);
    default:
        return integer()
            .append(" ")
            .append(random_.pick(comparators))
            .append(" ")
            .append(std::to_string(random_.below(64)));
    }
}

std::string MappingGenerator::truth(int depth) {
    if (depth == 0) return comparison();
    std::string text = random_.chance(30) ? "(" + truth(depth - 1) + ")" : comparison();
    return text.append(random_.chance(60) ? " && " : " || ").append(comparison());
}

} // namespace bench
