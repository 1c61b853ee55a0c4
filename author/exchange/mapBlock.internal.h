#pragma once

#include "author/exchange/hdlShape.internal.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

class HDNTBlock;
class HDNTProperty;

// What the parts of a mapping are in Verilog.
namespace hdnt::author {

struct PortBit {
    const HdlPort* port = nullptr;
    int bit = -1; ///< -1: the port has no range
    bool operator<(const PortBit& other) const { return std::pair(port, bit) < std::pair(other.port, other.bit); }
    bool operator==(const PortBit& other) const = default;
};
/// Throws HEXDataException for a name that techmap keeps for itself.
void requireFree(const std::string& name);
/// "D[3]"
std::string nameOf(const PortBit& pin);

/// A block as mappings refer to it: pins by the port that holds them, properties by name.
class MapBlock {
public:
    MapBlock(const HDNTBlock& model, Json json);
    MapBlock(const MapBlock&) = delete;

    /// Throws HEXDataException for a name of block, ports or properties that techmap takes for something else, or that
    /// another one may have in Verilog, too.
    void requireNames() const;
    const HDNTBlock& model() const { return model_; }
    const HdlShape& shape() const { return shape_; }
    /// The bits that a name means, as NamedPins has it. Throws HEXDataException when there are none, or no port for
    /// them.
    std::vector<PortBit> bitsOf(const std::string& pin) const;
    /// From the first bit of the range to the last.
    static std::vector<PortBit> bitsOf(const HdlPort& port);
    /// Of a property that is found by its name.
    const Json& jsonOf(const HDNTProperty& property) const;

private:
    const HDNTBlock& model_;
    Json json_;
    HdlShape shape_;
    std::map<std::size_t, PortBit> bits_; ///< by position in the block's list of all pins
};

/// One bit, as something to connect.
struct MapNet {
    std::string name; ///< as Verilog has it
    int bit = -1;     ///< of a vector
    std::pair<int, int> range = {};
    bool isInverted = false;
};
std::string textOf(const MapNet& net);
/// A concatenation, in which bits of a vector that stand side by side are a part of it.
std::string textOf(const std::vector<MapNet>& nets);

} // namespace hdnt::author
