// What the words of the language say.
#include "author/server/keywords.internal.h"

#include <algorithm>
#include <iterator>

namespace hdnt::author::server {

namespace {

struct Meaning {
    std::string_view word;
    std::string_view sentence;
};

constexpr Meaning meanings[] = {
    // Structure
    {"library", "Names the library that a file holds: blocks and functions, in braces."},
    {"block", "Declares a cell with its flags, pins and properties, or names the one that a mapping by itself is of."},
    {"pin", "Declares a pin or a bus of a block: name, direction, marks, type and required value, in this order."},
    {"property", "Declares what can be set of a block or a pin: type, name, and its range, values and default."},
    {"function", "Declares a function that mappings may call, with the types of its result and arguments."},
    {"pinlist", "Is reserved and has no use."},
    {"end", "Is reserved and has no use."},
    {"NULL", "Is reserved and has no use."},
    {"INCLUDE", "Reads a file here, unless the library has read it before."},
    {"INLINE", "Reads a file here, also one that was read before."},
    // Types and constants
    {"int", "The type of whole numbers of 32 bits."},
    {"double", "The type of real numbers, which are written with a point and without an exponent."},
    {"bool", "The type of `true` and `false`."},
    {"string", "The type of texts in double quotes; without a list of values every text is allowed."},
    {"true", "The boolean that holds."},
    {"false", "The boolean that does not hold."},
    // Directions
    {"input", "The direction of a pin that a signal goes into."},
    {"output", "The direction of a pin that a signal comes out of; it has no required value."},
    {"bidir", "The direction of a pin that signals go into and come out of."},
    {"internal", "Of a pin: it lies inside the cell, and is declared behind all others. Of a block: it is for mappings "
                 "and tools, not for designs."},
    // Types of pins
    {"data", "The type of pins for data, and of those without a type."},
    {"clock", "The type of pins for a clock."},
    {"clear", "The type of pins that set the cell to zero at once."},
    {"preset", "The type of pins that set the cell to one at once."},
    {"reset", "The type of pins that set the cell to zero with the clock, or as a property says."},
    {"set", "The type of pins that set the cell to one with the clock, or as a property says."},
    {"setreset", "The type of pins that set the cell to one or zero with the clock, or as a property says."},
    {"enable", "The type of pins that enable the cell."},
    {"writeEnable", "The type of pins that enable writing."},
    {"mixed", "The type of a bus whose bits differ; the configuration says the type of each."},
    // Required values
    {"tieLow", "A pin that a design leaves open is to get a constant low."},
    {"tieHigh", "A pin that a design leaves open is to get a constant high."},
    {"tieSpecial", "A pin that a design leaves open is to get what the cell prescribes."},
    {"untie", "A pin that has to stay open."},
    {"active", "A pin that needs a signal that can change."},
    {"mustConnect", "A pin that a design may not leave open."},
    // Marks and flags
    {"test", "Marks what is for testing; a block with it is left out unless the host enables features for tests."},
    {"abstract", "Marks a pin that stands for something that is not a signal, such as a supply."},
    {"primgroup", "Classifies a block by group and subgroup, and behind a comma by an older group."},
    {"maturityLevel", "Says how mature a block is: early, beta, production or deprecated."},
    {"early", "The maturity of a block that is new, and of one that says nothing of it."},
    {"beta", "The maturity of a block that is on trial."},
    {"production", "The maturity of a block that is ready for use."},
    {"deprecated", "The maturity of a block that new designs should not use."},
    // Options of properties
    {"values", "Lists the values that a property may have, as its first option."},
    {"min", "The least value of a property, as its first option."},
    {"max", "The greatest value of a property, behind another option."},
    {"default", "The value of a property that is not set."},
    {"precision", "The number of digits behind the point of a double, 6 when it is left out."},
    {"units", "The unit of a property's value, for display."},
    {"description", "A sentence on a property for the user; that of the configuration comes before it."},
    {"simulation", "Says whether the property matters to the simulation model only."},
    {"constraintsOnly", "Says whether the property is set by constraints, and hidden elsewhere."},
    {"muxControl", "Says whether the property sets a multiplexer inside the cell."},
    // Mappings
    {"mapsto", "The block is carried out by the netlist that follows, and never placed itself."},
    {"expandsto",
     "The block is a larger form, and becomes the narrower or simpler blocks of the netlist that follows."},
    {"retargetsto",
     "The block is of other devices, or a special case, and becomes the general block that does the same."},
    {"modifiedby", "The block stays as it is, and the netlist that follows is added to it."},
    {"inst", "Puts an instance of a block into the mapping: its name, and the name of the block."},
    {"signal", "Declares a signal, and joins the pins behind the colon."},
    {"connect", "Joins more pins to a signal that is declared at the top level of the mapping."},
    {"assign", "Gives a property of an instance or of a pin a value."},
    {"if", "The statement that follows counts when the condition holds."},
    {"else", "The statement that follows counts when the condition of the nearest `if` does not hold."},
};

constexpr StandardFunction standardFunctions[] = {
    {"intProperty", "int", false, "The value of a property of the block, of type int."},
    {"doubleProperty", "double", false, "The value of a property of the block, of type double."},
    {"boolProperty", "bool", false, "The value of a property of the block, of type bool."},
    {"stringProperty", "string", false, "The value of a property of the block, of type string or of bits."},
    {"isConnected", "bool", true, "Whether the pin of that name of the block is connected."},
};

} // namespace

const StandardFunction* findStandardFunction(std::string_view name) {
    const auto* const found = std::ranges::find(standardFunctions, name, &StandardFunction::name);
    return found == std::end(standardFunctions) ? nullptr : found;
}

std::string_view meaningOf(std::string_view word) {
    const auto found = std::ranges::find(meanings, word, &Meaning::word);
    return found == std::end(meanings) ? std::string_view() : found->sentence;
}

} // namespace hdnt::author::server
