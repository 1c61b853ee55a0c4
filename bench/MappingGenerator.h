#pragma once

#include "bench/Content.h"
#include "bench/Random.h"

namespace bench {

/// Makes up the mapping of one block: instances of the blocks given, signals between their pins and those of the
/// block, each pin on one signal, values that the properties allow, conditions on the properties of the block.
class MappingGenerator {
public:
    /// All three are borrowed; there is at least one leaf.
    MappingGenerator(Random& random, const Block& block, const std::vector<Block>& leaves)
        : random_(random), block_(block), leaves_(leaves) {}

    Mapping make();

private:
    struct Instance {
        std::string name;
        const Block* type;
    };

    void addInstances();
    void collectPins();
    void addSignals();
    void addBusSignals();
    void addAssigns();
    void addConditions();
    std::vector<PinRef> takePins(int count);
    Statement assign(const Instance& instance, const Property& property);
    Statement assignPin(const Instance& instance, const Pin& pin);
    Statement statementInBranch();
    Statement condition();

    const Property* ownProperty(ValueType type);
    std::string valueOf(const Property& property);
    std::string integer();
    std::string comparison();
    std::string truth(int depth);

    Random& random_;
    const Block& block_;
    const std::vector<Block>& leaves_;
    std::vector<Instance> instances_;
    std::vector<PinRef> pins_; ///< not on a signal yet
    std::vector<std::string> signals_;
    std::vector<Statement> statements_;
};

} // namespace bench
