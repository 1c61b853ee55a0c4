#include "author/lint/MappingView.internal.h"
#include "author/lint/Wiring.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTPin.h"

#include <algorithm>
#include <tuple>

namespace hdnt::author {

bool WiringFault::operator<(const WiringFault& other) const {
    const auto key = [](const WiringFault& one) {
        return std::tie(one.at.first_line, one.at.first_column, one.at.storeOffset, one.code, one.arguments);
    };
    return key(*this) < key(other);
}

static bool isConstant(std::string_view signal) { return signal == "@0" || signal == "@1"; }

static std::string wordsFor(const HDNTExpansion::Connection& connection) {
    return (connection.instance.empty() ? "" : '"' + connection.instance + "\" ") + '"' + connection.pin + '"';
}

// Asked of the declarations, so that pins need not be made.
static std::size_t pinCountOf(const HDNTBlock& block) {
    std::size_t count = 0;
    for (const HDNTBus& bus : block.buses()) count += bus.pinCount();
    return count;
}

Wiring::Wiring(const HDNTExpansion::Level& level) : level_(level) {
    for (std::size_t i = 0; i < level.instances.size(); ++i) {
        instances_.emplace(level.instances[i].name, i);
        const HDNTBlock* const block = level.instances[i].block;
        connected_.emplace_back(block ? pinCountOf(*block) : 0);
    }
    connected_.emplace_back(pinCountOf(*level.block));
    for (const HDNTExpansion::Signal& signal : level.signals) nets_[signal.name].at = signal.origin.location;
    for (const Connection& connection : level.connections) connect(connection);
}

bool Wiring::joins(const std::string& signal) const {
    const auto found = nets_.find(signal);
    return found != nets_.end() && found->second.pins > 1;
}

void Wiring::connect(const Connection& connection) {
    const auto [at, isNew] = nets_.try_emplace(connection.signal);
    Net& net = at->second;
    if (isNew) net.at = connection.origin.location;
    const auto found = instances_.find(connection.instance);
    const bool isOwn = connection.instance.empty();
    const std::size_t place = isOwn || found == instances_.end() ? level_.instances.size() : found->second;
    const HDNTBlock* const block = isOwn                       ? level_.block
                                   : found == instances_.end() ? nullptr
                                                               : level_.instances[place].block;
    const NamedPins pins = block ? NamedPins(*block, connection.pin) : NamedPins();
    // A name that stands for no pin was meant for one of them, which is not open then.
    if (block && !pins) std::fill(connected_[place].begin(), connected_[place].end(), true);
    std::fill_n(connected_[place].begin() + static_cast<std::ptrdiff_t>(pins.first()), pins.count(), true);
    if (isOwn && pins) used_.insert(pins.declaration());
    // A pin that is not known may be of any direction; those of a block that stays are connected outside, too.
    const bool isEither = !pins || (isOwn && level_.section == HDNTNetlist::Section::modifiedby);
    join(net, connection, isEither ? HDNT_PIN_BIDIR : pins.declaration()->getDirection());
}

// Inside the block its inputs drive and its outputs are driven.
void Wiring::join(Net& net, const Connection& connection, HDNT_PIN_DIRECTION direction) {
    const auto isSame = [&](const Connection* other) {
        return other->instance == connection.instance && other->pin == connection.pin;
    };
    const bool isInside = connection.instance.empty();
    if (direction == (isInside ? HDNT_PIN_INPUT : HDNT_PIN_OUTPUT)) {
        if (std::ranges::any_of(net.drivers, isSame)) return;
        net.drivers.push_back(&connection);
    } else if (direction == (isInside ? HDNT_PIN_OUTPUT : HDNT_PIN_INPUT)) {
        if (!net.load) net.load = &connection;
    } else if (direction == HDNT_PIN_BIDIR) {
        net.mayBeDriven = true;
    }
    ++net.pins;
}

std::vector<WiringFault> Wiring::faults(const std::set<std::string>& openPins) const {
    std::vector<WiringFault> faults;
    addNetFaults(faults);
    addInputFaults(faults);
    if (level_.section != HDNTNetlist::Section::modifiedby) addOutputFaults(openPins, faults);
    return faults;
}

void Wiring::addNetFaults(std::vector<WiringFault>& faults) const {
    for (const auto& [name, net] : nets_) {
        const bool isTied = isConstant(name);
        if (net.drivers.size() + (isTied ? 1 : 0) > 1) {
            const std::string first = isTied ? "the constant" : wordsFor(*net.drivers.front());
            faults.push_back({LintCode::twoDrivers, net.at, {std::string(name), first, wordsFor(*net.drivers.back())}});
        }
        if (net.drivers.empty() && !isTied && !net.mayBeDriven && net.load)
            faults.push_back({LintCode::undrivenSignal, net.at, {std::string(name), wordsFor(*net.load)}});
    }
}

// Open bits of a bus, or the bus when all are.
static std::string openPart(const HDNTBus& bus, const std::vector<bool>& connected) {
    const auto first = connected.begin() + std::max(bus.getFirstPinIndex(), 0);
    const auto last = first + static_cast<std::ptrdiff_t>(bus.pinCount());
    const auto count = static_cast<std::size_t>(std::count(first, last, false));
    if (count == 0 || count == bus.pinCount()) return count == 0 ? "" : bus.getName();
    std::string open;
    std::size_t said = 0;
    for (auto bit = first; bit != last && said < 4; ++bit)
        if (!*bit && ++said > 0)
            open += (said > 1 ? ", " : "") + bus.pins()[static_cast<std::size_t>(bit - first)].getName(false);
    return open + (count > said ? ", ..." : "");
}

static bool mayStayOpen(const HDNTBus& bus) {
    const HDNT_PIN_REQUIREDVALUE required = bus.getRequiredValue();
    const bool isTied = required == HDNT_PIN_TIE_LOW || required == HDNT_PIN_TIE_HIGH ||
                        required == HDNT_PIN_TIE_SPECIAL || required == HDNT_PIN_UNTIE;
    return isTied || bus.isTest() || bus.isAbstract() || bus.getDirection() != HDNT_PIN_INPUT;
}

void Wiring::addInputFaults(std::vector<WiringFault>& faults) const {
    for (std::size_t i = 0; i < level_.instances.size(); ++i) {
        const HDNTExpansion::Instance& inst = level_.instances[i];
        if (!inst.block || instances_.at(inst.name) != i) continue;
        for (const HDNTBus& bus : inst.block->buses()) {
            if (mayStayOpen(bus)) continue;
            const std::string open = openPart(bus, connected_[i]);
            if (!open.empty())
                faults.push_back({LintCode::openInput, inst.origin.location, {open, inst.name, inst.block->getName()}});
        }
    }
}

void Wiring::addOutputFaults(const std::set<std::string>& openPins, std::vector<WiringFault>& faults) const {
    for (const HDNTBus& bus : level_.block->buses()) {
        const bool isWanted = bus.getDirection() == HDNT_PIN_OUTPUT && !bus.isTest() && !bus.isAbstract();
        if (!isWanted || openPins.contains(bus.getBaseName())) continue;
        const std::string open = openPart(bus, connected_.back());
        if (!open.empty())
            faults.push_back({LintCode::undrivenOutput, level_.location, {open, level_.block->getName()}});
    }
}

} // namespace hdnt::author
