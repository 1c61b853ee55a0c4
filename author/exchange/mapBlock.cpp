#include "author/exchange/BlockWords.h"
#include "author/exchange/hdlNames.internal.h"
#include "author/exchange/mapBlock.internal.h"
#include "author/lint/MappingView.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/Text.h"

namespace hdnt::author {

namespace {

bool isFoundByName(const Json& property) { return property["foundByName"]; }

int stepOf(const std::pair<int, int>& range) { return range.first < range.second ? 1 : -1; }

std::string bitText(int bit) { return "[" + std::to_string(bit) + "]"; }

/// Bits of a vector that stand side by side.
struct Run {
    MapNet first;
    int last;

    bool takes(const MapNet& next) {
        const bool isNext = first.bit >= 0 && next.name == first.name && next.isInverted == first.isInverted &&
                            next.bit == last + stepOf(first.range);
        if (isNext) last = next.bit;
        return isNext;
    }
    std::string text() const {
        if (first.bit == last) return textOf(first);
        const bool isWhole = std::pair(first.bit, last) == first.range;
        const std::string part = "[" + std::to_string(first.bit) + ":" + std::to_string(last) + "]";
        return (first.isInverted ? "~" : "") + first.name + (isWhole ? "" : part);
    }
};

} // namespace

void requireFree(const std::string& name) {
    if (name.find("_TECHMAP_") != name.npos) throw HEXDataException(name + ": techmap has such names for itself");
}

std::string nameOf(const PortBit& pin) { return pin.port->name + (pin.bit < 0 ? "" : bitText(pin.bit)); }

MapBlock::MapBlock(const HDNTBlock& model, Json json)
    : model_(model), json_(std::move(json)), shape_(json_, isFoundByName) {
    for (const HdlPort& port : shape_.ports)
        for (const Json* bus : port.buses)
            for (const Json& pin : (*bus)["pins"])
                bits_[pin["index"]] = {&port, port.range ? pin["bit"].get<int>() : -1};
}

void MapBlock::requireNames() const {
    const std::string& name = model_.getName();
    requireFree(name);
    if (name.starts_with('$')) throw HEXDataException(name + ": techmap has blocks of such names for itself");
    VerilogNames names;
    for (const HdlPort& port : shape_.ports) {
        requireFree(port.name);
        if (!names.take(verilogName(port.name)))
            throw HEXDataException(name + " has two ports " + verilogName(port.name));
    }
    for (const Json* property : shape_.parameters) requireFree(words::cell((*property)["name"]));
}

std::vector<PortBit> MapBlock::bitsOf(const std::string& pin) const {
    const std::string shown = model_.getName() + ", pin " + pin;
    const NamedPins named(model_, pin);
    if (!named) throw HEXDataException("Block " + model_.getName() + " has no pin " + pin);
    std::vector<PortBit> bits;
    for (std::size_t i = named.first(); i < named.first() + named.count(); ++i) {
        const auto found = bits_.find(i);
        if (found == bits_.end()) throw HEXDataException("Block " + shown + ": no port");
        bits.push_back(found->second);
    }
    return bits;
}

std::vector<PortBit> MapBlock::bitsOf(const HdlPort& port) {
    if (!port.range) return {{&port, -1}};
    std::vector<PortBit> bits;
    for (int bit = port.range->first;; bit += stepOf(*port.range)) {
        bits.push_back({&port, bit});
        if (bit == port.range->second) return bits;
    }
}

const Json& MapBlock::jsonOf(const HDNTProperty& property) const {
    for (const Json& one : json_["properties"])
        if (isFoundByName(one) && one["name"] == property.getName()) return one;
    throw HEXDataException("Block " + model_.getName() + " has no property " + property.getName());
}

std::string textOf(const MapNet& net) {
    return (net.isInverted ? "~" : "") + net.name + (net.bit < 0 ? "" : bitText(net.bit));
}

std::string textOf(const std::vector<MapNet>& nets) {
    std::vector<Run> runs;
    for (const MapNet& net : nets)
        if (runs.empty() || !runs.back().takes(net)) runs.push_back({net, net.bit});
    std::vector<std::string> parts;
    for (const Run& run : runs) parts.push_back(run.text());
    return parts.size() == 1 ? parts.front() : "{" + platform::joined(parts, ", ") + "}";
}

} // namespace hdnt::author
