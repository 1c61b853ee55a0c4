#pragma once

#include "author/exchange/hdlNames.internal.h"
#include "author/exchange/mapBlock.internal.h"
#include "author/lint/MappingView.internal.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace hdnt::author {

/// An instance of a mapping, or several of one name of which no two are there together.
struct MapCell {
    std::string instance;
    std::size_t scope;
    const MapBlock* type;
};

/// The signals of a mapping as nets of a module. A signal is the port that it is connected to wherever it is used, or
/// else a wire. Throws HEXDataException for what no assignment can do.
class MapWiring {
public:
    /// In a module that `keepsBlock`, a port is a pin of the block inside, too, so that cells may drive it.
    MapWiring(const MapBlock& block, bool keepsBlock, const MappingView& view, const std::vector<MapCell>& cells,
              const std::map<const HdlPort*, std::string>& ports, VerilogNames& names);

    /// What a port of a cell is connected to, and the scopes of the statements that say so.
    struct PortUse {
        const HdlPort* port;
        std::string net;
        std::set<std::size_t> scopes;
    };
    const std::vector<PortUse>& portsOf(std::size_t cell) const { return portUses_[cell]; }
    /// Of the mapped block.
    const std::set<const HdlPort*>& usedPorts() const { return usedPorts_; }
    const std::vector<std::string>& wires() const { return wires_; }
    struct Assignment {
        std::size_t scope;
        std::string text;
    };
    const std::vector<Assignment>& assignments() const { return assignments_; }

private:
    struct Use {
        PortBit pin;
        std::string signal;
        bool isInverted;
        std::size_t scope;
    };
    struct Vector {
        std::string name; ///< empty until it is needed
        int low;
        int high;
    };
    struct Driver {
        std::size_t scope;
        bool byAssignment;
    };
    using Uses = std::vector<Use>;
    using Pins = std::map<PortBit, Uses>;

    void collect(const std::vector<MapCell>& cells);
    void add(Pins& pins, const MapBlock& block, const std::string& name, Use use) const;
    void add(Pins& pins, const Use& use) const;
    void declareSignals();
    void findPorts();
    const Use* portFor(const std::string& signal, const Uses& uses) const;
    void requireSignal(const std::string& name, std::size_t scope) const;
    void connectPort(const Use& use);
    void connectCell(std::size_t cell, const MapCell& made);
    MapNet pinNet(const MapCell& cell, const PortBit& pin, const Uses& uses);
    MapNet driven(const Use& use, bool byAssignment);
    MapNet netOf(const std::string& signal, bool isInverted = false);
    MapNet netOf(const PortBit& pin, bool isInverted = false) const;
    MapNet wireFor(const MapCell& cell, const PortBit& pin);
    void assign(std::size_t scope, const MapNet& to, const MapNet& from);
    bool isInput(const PortBit& pin) const;

    const MapBlock& block_;
    bool keepsBlock_;
    const MappingView& view_;
    const std::map<const HdlPort*, std::string>& ports_;
    VerilogNames& names_;
    Pins own_;
    std::vector<Pins> ofCells_;
    std::map<std::string, std::set<std::size_t>> declared_; ///< scopes in which there is a signal of that name
    std::map<std::string, std::set<std::size_t>> scopes_;   ///< in which a signal is used
    std::map<std::string, Use> portOfSignal_;
    std::map<std::string, std::vector<Driver>> drivers_;
    std::map<std::string, Vector> vectors_; ///< of signals with an index, by the name before it
    std::map<std::string, std::string> scalars_;
    std::vector<std::vector<PortUse>> portUses_;
    std::set<const HdlPort*> usedPorts_;
    std::vector<std::string> wires_;
    std::vector<Assignment> assignments_;
};

} // namespace hdnt::author
