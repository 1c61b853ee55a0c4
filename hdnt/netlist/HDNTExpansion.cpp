#include "hdnt/netlist/HDNTExpansion.h"

#include "hdnt/diagnostics/HDNTLimits.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/model/ManagerState.internal.h"
#include "hdnt/netlist/ExpansionBuilder.internal.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/platform/HSTStringUtils.h"

#include <algorithm>
#include <charconv>
#include <cmath>

HDNTExpansion::HDNTExpansion(HDNTBlock& block, std::string architecture)
    : block_(block), architecture_(std::move(architecture)) {
    if (architecture_.empty()) architecture_ = hdnt::model::currentArchitecture();
}

HDNTExpansion::~HDNTExpansion() = default;

bool HDNTExpansion::setProperty(const std::string& name, const Value& value, std::string& reason) {
    const HDNTProperty* const property = block_.getPropertyByName(name);
    if (!property) {
        reason = "Block " + block_.getName() + " has no property " + name + ".";
        return false;
    }
    if (std::string refusal = property->refusalOf(value); !refusal.empty()) {
        reason = std::move(refusal);
        return false;
    }
    properties_[HSTStringUtils::to_upper_copy(name)] = value;
    return true;
}

static bool read(const std::string& text, bool& value) {
    value = text == "true";
    return value || text == "false";
}

static bool read(const std::string& text, std::string& value) {
    value = text;
    return true;
}

template <typename Number>
static bool read(const std::string& text, Number& value) {
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, value);
    return result.ec == std::errc() && result.ptr == end && std::isfinite(static_cast<double>(value));
}

bool HDNTExpansion::setPropertyText(const std::string& name, const std::string& text, std::string& reason) {
    const HDNTProperty* const property = block_.getPropertyByName(name);
    Value value = property ? property->getDefaultValue() : text; // has the type
    const bool readable = std::visit([&](auto& plain) { return read(text, plain); }, value);
    return setProperty(name, readable ? value : Value(text), reason);
}

bool HDNTExpansion::connect(const std::string& pin, std::string& reason) {
    const std::vector<HDNTPin*> pins = hdnt::netlist::pinsNamed(block_, pin);
    for (const HDNTPin* found : pins) connectedPins_.insert(found->getName(false));
    if (pins.empty()) reason = "Block " + block_.getName() + " has no pin " + pin + ".";
    return !pins.empty();
}

bool HDNTExpansion::expand(bool deep) {
    levels_.clear();
    problems_.clear();
    numInstances_ = 0;
    tooMany_ = false;
    const HDNTNetlist* const netlist = block_.getNetlist(architecture_);
    if (!netlist) return false;
    Level outermost;
    outermost.block = &block_;
    addLevel(std::move(outermost), *netlist, {properties_, connectedPins_});
    for (size_t level = 0; deep && level < levels_.size(); ++level)
        for (size_t i = 0; i < levels_[level].instances.size(); ++i) enterInstance(level, i);
    return problems_.empty();
}

// Nothing is loaded while a netlist is read, which a load could replace; afterwards it is not referred to.
void HDNTExpansion::addLevel(Level level, const HDNTNetlist& netlist, const hdnt::netlist::MappedValues& values) {
    level.section = netlist.section();
    if (const auto location = netlist.copyOfLocation()) level.location = *location;
    levels_.push_back(std::move(level));
    const auto before = static_cast<std::ptrdiff_t>(problems_.size());
    hdnt::netlist::ExpansionBuilder(levels_.back(), values, problems_).build(netlist);
    std::for_each(problems_.begin() + before, problems_.end(), [&](Problem& one) { one.level = levels_.size() - 1; });
    countInstances(levels_.back());
}

// Adds the level of an instance, if it has a mapping of its own and may be entered.
void HDNTExpansion::enterInstance(size_t level, size_t index) {
    const Instance& instance = levels_[level].instances[index];
    const HDNTNetlist* const netlist = instance.block ? instance.block->getNetlist(architecture_) : nullptr;
    if (!netlist || tooMany_ || isOnPath(level, instance)) return;
    Level inner;
    inner.block = instance.block;
    inner.outer = level;
    inner.path = levels_[level].path.empty() ? instance.name : levels_[level].path + '/' + instance.name;
    const hdnt::netlist::MappedValues values = hdnt::netlist::valuesOf(levels_[level], index);
    levels_[level].instances[index].level = levels_.size();
    addLevel(std::move(inner), *netlist, values);
}

void HDNTExpansion::countInstances(const Level& level) {
    numInstances_ += level.instances.size();
    const size_t limit = static_cast<size_t>(std::max(HDNTLimits::get().expansionInstances, 0L));
    if (tooMany_ || numInstances_ <= limit) return;
    tooMany_ = true;
    problems_.push_back({"More than " + std::to_string(limit) + " instances (limit expansionInstances).",
                         level.instances.front().origin.location, levels_.size() - 1});
}

// A block on the way to itself would be expanded without end; the whole way is reported.
bool HDNTExpansion::isOnPath(size_t level, const Instance& instance) {
    std::string way = instance.block->getName();
    for (size_t at = level; at != none; at = levels_[at].outer) {
        way.insert(0, levels_[at].block->getName() + " -> ");
        if (levels_[at].block != instance.block) continue;
        problems_.push_back({"Mappings lead in a circle: " + way, instance.origin.location, level});
        return true;
    }
    return false;
}

std::string HDNTExpansion::textOf(const Value& value) { return hdnt::textOf(value); }
