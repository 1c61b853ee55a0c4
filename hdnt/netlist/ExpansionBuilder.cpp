#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/Evaluate.internal.h"
#include "hdnt/netlist/ExpansionBuilder.internal.h"
#include "hdnt/netlist/HDNTAssignProperty.h"
#include "hdnt/netlist/HDNTBlockInst.h"
#include "hdnt/netlist/HDNTConnect.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/netlist/HDNTSignal.h"
#include "hdnt/netlist/HDNTStmt.h"
#include "hdnt/netlist/HDNTValue.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/HSTStringUtils.h"

#include <algorithm>

namespace hdnt::netlist {

std::vector<HDNTPin*> pinsNamed(const HDNTBlock& block, const std::string& name) {
    std::vector<HDNTPin*> pins;
    if (HDNTPin* const pin = block.getPinByName(name)) pins.push_back(pin);
    else block.getBusPins(HSTStringUtils::to_upper_copy(name), pins);
    return pins;
}

MappedValues valuesOf(const HDNTExpansion::Level& level, size_t index) {
    const HDNTExpansion::Instance& instance = level.instances[index];
    MappedValues values;
    for (const HDNTExpansion::PropertyValue& property : instance.properties)
        if (property.pin.empty()) values.properties[HSTStringUtils::to_upper_copy(property.name)] = property.value;
    for (const HDNTExpansion::Connection& connection : level.connections)
        if (connection.instance == instance.name)
            for (const HDNTPin* pin : pinsNamed(*instance.block, connection.pin))
                values.connectedPins.insert(pin->getName(false));
    return values;
}

ExpansionBuilder::ExpansionBuilder(HDNTExpansion::Level& level, const MappedValues& values,
                                   std::vector<HDNTExpansion::Problem>& problems)
    : level_(level), values_(values), problems_(problems) {
    addStandardFunctions();
}

void ExpansionBuilder::build(const HDNTNetlist& netlist) {
    const HDNTFunctionTable::Scope scope(functions_);
    const auto all = [this](const auto& entities) {
        for (const auto* entity : entities) statement(*entity, HDNTExpansion::none);
    };
    all(netlist.preInstanceCalls());
    all(netlist.instances());
    all(netlist.signals());
    all(netlist.connects());
    all(netlist.pinPropertyAssigns());
    all(netlist.blockPropertyAssigns());
    all(netlist.ifStmts());
    all(netlist.postInstanceCalls());
    for (const auto& [pins, branch] : connects_) connect(*pins, branch);
    for (const auto& [value, branch] : assigns_) assign(*value, branch);
}

void ExpansionBuilder::statement(const HDNTNetlistEntity& entity, size_t branch) {
    if (const auto* const inst = nodeCast<HDNTBlockInst>(&entity)) return instance(*inst, branch);
    if (const auto* const declared = nodeCast<HDNTSignal>(&entity)) return signal(*declared, branch);
    if (const auto* const pins = nodeCast<HDNTConnect>(&entity)) return connects_.emplace_back(pins, branch), void();
    if (const auto* const value = nodeCast<HDNTAssignProperty>(&entity))
        return assigns_.emplace_back(value, branch), void();
    if (const auto* const choice = nodeCast<HDNTIfStmt>(&entity)) return ifStatement(*choice, branch);
    if (const auto* const made = nodeCast<HDNTFunctionCall>(&entity)) return call(*made, branch);
    const auto* const block = nodeCast<HDNTStmtBlock>(&entity);
    if (!block || !block->enabled()) return;
    for (const HDNTNetlistEntity* inner : block->statements()) statement(*inner, branch);
}

void ExpansionBuilder::ifStatement(const HDNTIfStmt& stmt, size_t branch) {
    if (!stmt.condition()) return problem(stmt, "There is no condition.");
    bool taken = false;
    if (!attempt(stmt, [&] { taken = isTrue(*valueOf(*stmt.condition())); })) return;
    level_.branches.push_back({originOf(stmt, branch), taken});
    const size_t inside = level_.branches.size() - 1;
    if (const HDNTNetlistEntity* const chosen = taken ? stmt.thenStmt() : stmt.elseStmt()) statement(*chosen, inside);
}

void ExpansionBuilder::instance(const HDNTBlockInst& inst, size_t branch) {
    HDNTBlock* type = nullptr; // the search may load the common library, which may fail
    const bool sought = attempt(inst, [&] { type = inst.getTypeBlock(level_.block->getLibrary()); });
    if (sought && !type) problem(inst, "There is no block " + inst.typeName() + ".");
    if (!instanceByName_.emplace(inst.instName(), level_.instances.size()).second)
        problem(inst, "There are two instances " + inst.instName() + ".");
    level_.instances.push_back({inst.instName(), inst.typeName(), type, originOf(inst, branch), {}});
}

void ExpansionBuilder::signal(const HDNTSignal& signal, size_t branch) {
    std::vector<std::string> names;
    std::vector<int> bits;
    // Lists inside statements are not replaced when the netlist is finalized.
    if (!nodeCast<HDNTSigList>(&signal)) names.push_back(signal.name());
    else if (std::string fault = signal.unfoldRangedName(signal.name(), names, bits); !fault.empty())
        problem(signal, std::move(fault));
    for (size_t i = 0; i < names.size(); ++i) {
        const std::string name = bits.empty() ? names[i] : names[i] + '[' + std::to_string(bits[i]) + ']';
        signalBranches_.emplace(name, branch);
        level_.signals.push_back({name, originOf(signal, branch)});
    }
    if (signal.connect()) connects_.emplace_back(signal.connect(), branch);
}

bool ExpansionBuilder::seesSignal(size_t branch, const std::string& name) const {
    const auto [first, last] = signalBranches_.equal_range(name);
    for (;; branch = level_.branches[branch].origin.branch) {
        if (std::any_of(first, last, [branch](const auto& declared) { return declared.second == branch; })) return true;
        if (branch == HDNTExpansion::none) return false;
    }
}

void ExpansionBuilder::connect(const HDNTConnect& connect, size_t branch) {
    const std::string& name = connect.signalName();
    if (!seesSignal(branch, name) && name != "@0" && name != "@1") problem(connect, "There is no signal " + name + ".");
    for (const HDNTPinInst* reference : connect.pins()) {
        if (const auto* const pin = nodeCast<HDNTBlockPinName>(reference)) connectPin(connect, *pin, branch);
        else problem(connect, "A pin reference is of a class that the language does not have.");
    }
}

void ExpansionBuilder::connectPin(const HDNTConnect& connect, const HDNTBlockPinName& pin, size_t branch) {
    const HDNTExpansion::Instance* const inst = pin.instName().empty() ? nullptr : findInstance(pin.instName());
    const HDNTBlock* const block = inst ? inst->block : level_.block;
    if (!inst && !pin.instName().empty()) problem(pin, "There is no instance " + pin.instName() + ".");
    else if (block && pinsNamed(*block, pin.pinName()).empty())
        problem(pin, "Block " + block->getName() + " has no pin " + pin.pinName() + ".");
    const HDNTNode& at = pin.hasLocation() ? static_cast<const HDNTNode&>(pin) : connect;
    level_.connections.push_back(
        {connect.signalName(), pin.instName(), pin.pinName(), pin.inverted(), originOf(at, branch)});
}

// An empty instance name means the mapped block's own pin.
void ExpansionBuilder::assign(const HDNTAssignProperty& assign, size_t branch) {
    const auto* const pinAssign = nodeCast<HDNTAssignPinProperty>(&assign);
    const std::string pin = pinAssign ? pinAssign->pinName() : std::string();
    const bool own = pinAssign && assign.instName().empty();
    HDNTExpansion::Instance* const inst = own ? nullptr : findInstance(assign.instName());
    if (!inst && !own) return problem(assign, "There is no instance " + assign.instName() + ".");
    Value value;
    if (!assign.value() || !attempt(assign, [&] { value = valueOf(*assign.value())->getPlainValue(); })) return;
    if (const HDNTBlock* const block = own ? level_.block : inst->block) {
        const HDNTProperty* const property = findProperty(*block, pin, assign.propName());
        if (!property)
            return problem(assign, assign.propName() + ": Block " + block->getName() +
                                       (pin.empty() ? "" : ", pin " + pin) + " has no property " + assign.propName() +
                                       ".");
        if (std::string refusal = property->refusalOf(value); !refusal.empty()) return problem(assign, refusal);
    }
    std::vector<HDNTExpansion::PropertyValue>& values = own ? level_.pinProperties : inst->properties;
    std::erase_if(values, [&](const HDNTExpansion::PropertyValue& property) {
        return property.pin == pin && HSTStringUtils::iequals(property.name, assign.propName());
    });
    values.push_back({pin, assign.propName(), std::move(value), originOf(assign, branch)});
}

// A call without implementation is for the host to make; it is listed with its arguments.
void ExpansionBuilder::call(const HDNTFunctionCall& call, size_t branch) {
    HDNTExpansion::Call result{call.name(), {}, false, originOf(call, branch)};
    const HDNTFunctionTable::Fn fn = HDNTFunctionTable::findInForce(call.name());
    const bool evaluated = attempt(call, [&] {
        std::vector<std::unique_ptr<HDNTValue>> values;
        std::vector<const HDNTValue*> arguments;
        for (const HDNTExpr* actual : call.actuals()) {
            values.push_back(valueOf(*actual));
            arguments.push_back(values.back().get());
            result.arguments.push_back(values.back()->getPlainValue());
        }
        if (!fn) return;
        fn(call, arguments);
        result.made = true;
    });
    if (evaluated) level_.calls.push_back(std::move(result));
}

template <typename Step>
bool ExpansionBuilder::attempt(const HDNTNode& entity, Step&& step) {
    try {
        step();
        return true;
    } catch (const HEXAll& e) {
        problem(entity, e.what());
        return false;
    }
}

void ExpansionBuilder::problem(const HDNTNode& entity, std::string message) {
    problems_.push_back({std::move(message), originOf(entity, HDNTExpansion::none).location});
}

HDNTExpansion::Origin ExpansionBuilder::originOf(const HDNTNode& entity, size_t branch) const {
    return {entity.copyOfLocation().value_or(yyltype{}), branch};
}

HDNTExpansion::Instance* ExpansionBuilder::findInstance(const std::string& name) {
    const auto found = instanceByName_.find(name);
    return found == instanceByName_.end() ? nullptr : &level_.instances[found->second];
}

const HDNTProperty* ExpansionBuilder::findProperty(const HDNTBlock& block, const std::string& pin,
                                                   const std::string& name) const {
    if (pin.empty()) return block.getPropertyByName(name);
    const std::vector<HDNTPin*> pins = pinsNamed(block, pin);
    return pins.empty() ? nullptr : pins.front()->getPropertyByName(name);
}

void ExpansionBuilder::addStandardFunctions() {
    const auto nameIn = [](const std::vector<const HDNTValue*>& arguments) {
        if (arguments.size() != 1) throw HEXAlgException("The function takes one text");
        return HDNTValue::getStringValue(arguments.front());
    };
    const auto addReader = [this, nameIn]<typename Wanted>(const char* name, Wanted) {
        functions_.add(name,
                       [this, nameIn](const HDNTFunctionCall& call, const std::vector<const HDNTValue*>& arguments) {
                           const std::string property = nameIn(arguments);
                           const Value value = propertyValue(property);
                           if (!std::holds_alternative<Wanted>(value))
                               throw HEXAlgException(call.name() + ": property " + property + " is of another type");
                           return HDNTValue::makeConstant(value);
                       });
    };
    addReader("intProperty", int());
    addReader("doubleProperty", double());
    addReader("boolProperty", bool());
    addReader("stringProperty", std::string());
    functions_.add("isConnected", [this, nameIn](const HDNTFunctionCall&, const auto& arguments) {
        return HDNTValue::makeConstant(isConnected(nameIn(arguments)));
    });
}

Value ExpansionBuilder::propertyValue(const std::string& name) const {
    const auto given = values_.properties.find(HSTStringUtils::to_upper_copy(name));
    if (given != values_.properties.end()) return given->second;
    if (const HDNTProperty* const property = level_.block->getPropertyByName(name)) return property->getDefaultValue();
    throw HEXAlgException("Block " + level_.block->getName() + " has no property " + name);
}

bool ExpansionBuilder::isConnected(const std::string& pin) const {
    const std::vector<HDNTPin*> pins = pinsNamed(*level_.block, pin);
    if (pins.empty()) throw HEXAlgException("Block " + level_.block->getName() + " has no pin " + pin);
    return std::any_of(pins.begin(), pins.end(),
                       [this](const HDNTPin* found) { return values_.connectedPins.contains(found->getName(false)); });
}

} // namespace hdnt::netlist
