#pragma once

#include "bench/Content.h"
#include "bench/Random.h"

#include <set>
#include <string>
#include <vector>

namespace bench {

/// Makes up the blocks of a library, one by one, in the proportions of a real one: a megabyte of NTL text holds about
/// 310 blocks with 4,400 pin declarations, 31,000 pin bits, 5,400 properties and 4,700 netlist statements. What comes
/// out reads, finalizes and checks without a report, and its mappings can be expanded with a host that supplies the
/// functions without "Property" in their names. The same seed gives the same blocks everywhere.
class Generator {
public:
    explicit Generator(std::uint64_t seed) : random_(seed) {}

    /// What the mappings call.
    static const std::vector<Function>& functions();

    /// The next block. Instances in its mapping are of blocks that came before.
    Block next();

private:
    std::string words(int count);
    void addPins(Block& block);
    Pin makePin(const char* direction, std::set<std::string>& taken);
    void addProperties(std::vector<Property>& properties, int count, const std::vector<Pin>& pins);
    Property makeProperty();
    void fillNumber(Property& property);
    void fillVector(Property& property);
    std::string digits(const Property& property);

    Random random_;
    int count_ = 0;
    std::vector<Block> leaves_; ///< blocks without a mapping, to make instances of
};

} // namespace bench
