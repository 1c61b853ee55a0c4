#include "author/exchange/mapWiring.internal.h"
#include "hdnt/netlist/HDNTConnect.h"
#include "hdnt/platform/HEX.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

namespace hdnt::author {

namespace {

bool isConstant(const std::string& signal) { return signal == "@0" || signal == "@1"; }

std::string directionOf(const PortBit& pin) { return pin.port->direction(); }

// "a" and 3 of "a[3]"; nothing for a name without index.
std::optional<std::pair<std::string, int>> indexed(const std::string& name) {
    const std::size_t bracket = name.rfind('[');
    if (bracket == name.npos || name.back() != ']') return {};
    int bit = 0;
    const char* const end = name.data() + name.size() - 1;
    const auto read = std::from_chars(name.data() + bracket + 1, end, bit);
    const bool isPlain = read.ec == std::errc() && read.ptr == end && bit >= 0 &&
                         std::to_string(bit).size() == name.size() - bracket - 2;
    if (!isPlain) return {};
    return std::pair(name.substr(0, bracket), bit);
}

} // namespace

MapWiring::MapWiring(const MapBlock& block, bool keepsBlock, const MappingView& view, const std::vector<MapCell>& cells,
                     const std::map<const HdlPort*, std::string>& ports, VerilogNames& names)
    : block_(block), keepsBlock_(keepsBlock), view_(view), ports_(ports), names_(names), ofCells_(cells.size()),
      portUses_(cells.size()) {
    declareSignals();
    collect(cells);
    findPorts();
    for (const auto& [pin, uses] : own_)
        for (const Use& use : uses) connectPort(use);
    for (std::size_t i = 0; i < cells.size(); ++i) connectCell(i, cells[i]);
}

void MapWiring::collect(const std::vector<MapCell>& cells) {
    std::map<std::string, std::vector<std::size_t>> byName;
    for (std::size_t i = 0; i < cells.size(); ++i) byName[cells[i].instance].push_back(i);
    for (const auto& [connect, scope] : view_.connects()) {
        requireSignal(connect->signalName(), scope);
        for (const HDNTPinInst* reference : connect->pins()) {
            const auto* const pin = nodeCast<HDNTBlockPinName>(reference);
            if (!pin) throw HEXDataException("a pin reference of the host's own");
            const Use use{{}, connect->signalName(), pin->inverted(), scope};
            scopes_[use.signal].insert(scope);
            if (pin->instName().empty()) add(own_, block_, pin->pinName(), use);
            for (const std::size_t i : byName[pin->instName()])
                if (!view_.areExclusive(cells[i].scope, scope)) add(ofCells_[i], *cells[i].type, pin->pinName(), use);
        }
    }
}

void MapWiring::add(Pins& pins, const MapBlock& block, const std::string& name, Use use) const {
    for (const PortBit& pin : block.bitsOf(name)) {
        use.pin = pin;
        add(pins, use);
    }
}

// One pin on two signals joins them, which no assignment does, unless the pin drives both.
void MapWiring::add(Pins& pins, const Use& use) const {
    const bool isDriver = directionOf(use.pin) == (&pins == &own_ ? "input" : "output");
    Uses& uses = pins[use.pin];
    for (Use& other : uses) {
        if (view_.areExclusive(other.scope, use.scope)) continue;
        if (other.signal == use.signal && other.isInverted == use.isInverted) {
            if (view_.isWithin(use.scope, other.scope)) return;
            if (!view_.isWithin(other.scope, use.scope)) continue;
            other.scope = use.scope;
            return;
        }
        if (!isDriver) throw HEXDataException("pin " + nameOf(use.pin) + " is connected to two signals");
    }
    uses.push_back(use);
}

void MapWiring::requireSignal(const std::string& name, std::size_t scope) const {
    const auto found = declared_.find(name);
    const auto isAround = [&](std::size_t outer) { return view_.isWithin(scope, outer); };
    if (!isConstant(name) && (found == declared_.end() || std::ranges::none_of(found->second, isAround)))
        throw HEXDataException("there is no signal " + name);
}

void MapWiring::declareSignals() {
    for (const MappingView::Declared& signal : view_.signals()) {
        declared_[signal.name].insert(signal.scope);
        const auto element = indexed(signal.name);
        if (!element) continue;
        const auto [found, isNew] = vectors_.try_emplace(element->first, Vector{{}, element->second, element->second});
        found->second.low = std::min(found->second.low, element->second);
        found->second.high = std::max(found->second.high, element->second);
    }
}

void MapWiring::findPorts() {
    std::map<std::string, Uses> bySignal;
    for (const auto& [pin, uses] : own_) {
        usedPorts_.insert(pin.port);
        for (const Use& use : uses)
            if (!isConstant(use.signal)) bySignal[use.signal].push_back(use);
    }
    for (const auto& [signal, uses] : bySignal) {
        if (const Use* const port = portFor(signal, uses)) portOfSignal_.emplace(signal, *port);
        const auto isOther = [&first = uses.front().pin](const Use& use) {
            return use.isInverted || !(use.pin == first);
        };
        if (keepsBlock_ && (!portOfSignal_.contains(signal) || std::ranges::any_of(uses, isOther)))
            throw HEXDataException("signal " + signal + " does more than go on from one pin of the block that stays");
    }
}

// One whose connection holds wherever the signal is used: best one that takes and gives, then one that drives.
const MapWiring::Use* MapWiring::portFor(const std::string& signal, const Uses& uses) const {
    for (const char* direction : {"bidir", "input", "output"})
        for (const Use& use : uses) {
            const auto isInside = [&](std::size_t scope) { return view_.isWithin(scope, use.scope); };
            if (directionOf(use.pin) == direction && !use.isInverted &&
                std::ranges::all_of(scopes_.at(signal), isInside))
                return &use;
        }
    return nullptr;
}

bool MapWiring::isInput(const PortBit& pin) const { return directionOf(pin) == "input" && !keepsBlock_; }

void MapWiring::connectPort(const Use& use) {
    const auto found = portOfSignal_.find(use.signal);
    if (found != portOfSignal_.end() && found->second.pin == use.pin && !use.isInverted) return;
    const std::string direction = directionOf(use.pin);
    if (isInput(use.pin)) return assign(use.scope, driven(use, true), netOf(use.pin, use.isInverted));
    const bool isTied = isConstant(use.signal) && (!keepsBlock_ || direction == "input");
    if (direction != "output" && !isTied)
        throw HEXDataException("bidirectional pin " + nameOf(use.pin) +
                               " goes to a signal by a condition of its own, or inverted");
    assign(use.scope, netOf(use.pin), netOf(use.signal, use.isInverted));
}

void MapWiring::connectCell(std::size_t cell, const MapCell& made) {
    for (const HdlPort& port : made.type->shape().ports) {
        PortUse used{&port, {}, {}};
        const std::vector<PortBit> bits = MapBlock::bitsOf(port);
        for (const PortBit& pin : bits)
            if (const auto found = ofCells_[cell].find(pin); found != ofCells_[cell].end())
                for (const Use& use : found->second) used.scopes.insert(use.scope);
        if (used.scopes.empty()) continue;
        std::vector<MapNet> nets;
        for (const PortBit& pin : bits) nets.push_back(pinNet(made, pin, ofCells_[cell][pin]));
        used.net = textOf(nets);
        portUses_[cell].push_back(std::move(used));
    }
}

// The signal itself where the cell is never without it; else a wire of the pin's own.
MapNet MapWiring::pinNet(const MapCell& cell, const PortBit& pin, const Uses& uses) {
    const std::string direction = directionOf(pin);
    const bool isDirect = uses.size() == 1 && view_.isWithin(cell.scope, uses.front().scope);
    const bool isTied = !uses.empty() && isConstant(uses.front().signal);
    if (isDirect && (direction == "input" || !uses.front().isInverted) && !(isTied && direction != "input"))
        return direction == "output" ? driven(uses.front(), false)
                                     : netOf(uses.front().signal, uses.front().isInverted);
    const MapNet wire = wireFor(cell, pin);
    for (const Use& use : uses) {
        if (direction == "bidir" && !isConstant(use.signal))
            throw HEXDataException("bidirectional pin " + nameOf(pin) + " of " + cell.instance +
                                   " goes to a signal by a condition of its own, or inverted");
        if (direction == "output") assign(use.scope, driven(use, true), {wire.name, -1, {}, use.isInverted});
        else assign(use.scope, wire, netOf(use.signal, use.isInverted));
    }
    return wire;
}

// Several cells may drive a signal, as those with three states do, but assignments drive it for good.
MapNet MapWiring::driven(const Use& use, bool byAssignment) {
    const auto found = portOfSignal_.find(use.signal);
    const bool isTaken = found != portOfSignal_.end() && isInput(found->second.pin);
    std::vector<Driver>& drivers = drivers_[use.signal];
    const auto isAgainst = [&](const Driver& other) {
        return (byAssignment || other.byAssignment) && !view_.areExclusive(other.scope, use.scope);
    };
    if (isTaken || isConstant(use.signal) || std::ranges::any_of(drivers, isAgainst))
        throw HEXDataException("pin " + nameOf(use.pin) + " drives signal " + use.signal + ", which is driven already");
    drivers.push_back({use.scope, byAssignment});
    return netOf(use.signal);
}

MapNet MapWiring::netOf(const std::string& signal, bool isInverted) {
    if (isConstant(signal)) return {(signal == "@1") != isInverted ? "1'b1" : "1'b0"};
    if (const auto found = portOfSignal_.find(signal); found != portOfSignal_.end())
        return netOf(found->second.pin, isInverted);
    const auto element = indexed(signal);
    if (!element) {
        std::string& name = scalars_[signal];
        if (name.empty()) wires_.push_back(name = names_.add(signal));
        return {name, -1, {}, isInverted};
    }
    Vector& vector = vectors_.at(element->first);
    const std::pair range(vector.high, vector.low);
    if (vector.name.empty()) {
        vector.name = names_.add(element->first);
        wires_.push_back("[" + std::to_string(vector.high) + ":" + std::to_string(vector.low) + "] " + vector.name);
    }
    return {vector.name, element->second, range, isInverted};
}

MapNet MapWiring::netOf(const PortBit& pin, bool isInverted) const {
    return {ports_.at(pin.port), pin.bit, pin.port->range.value_or(std::pair(0, 0)), isInverted};
}

MapNet MapWiring::wireFor(const MapCell& cell, const PortBit& pin) {
    const std::string bit = pin.bit < 0 ? "" : "_" + std::to_string(pin.bit);
    const std::string name = names_.add(cell.instance + "_" + pin.port->name + bit);
    wires_.push_back(name);
    return {name};
}

void MapWiring::assign(std::size_t scope, const MapNet& to, const MapNet& from) {
    assignments_.push_back({scope, textOf(to) + " = " + textOf(from)});
}

} // namespace hdnt::author
