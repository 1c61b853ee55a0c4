#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

/// What a generated library says, whatever it is written in.
namespace bench {

enum class ValueType { Int, Double, Bool, String, Hex, Binary };

/// Values are texts: numbers as written, strings without quotes, vectors by their digits alone.
struct Property {
    ValueType type = ValueType::Int;
    int width = 0; ///< of a vector, in bits
    std::string name;
    std::vector<std::string> values;
    std::optional<std::string> minimum;
    std::optional<std::string> maximum;
    std::string defaultValue;
    int precision = -1; ///< -1: not given
    std::string units;
    bool simulation = false;
    bool muxControl = false;
    bool test = false;
    bool constraintsOnly = false;
    std::string description;
};

/// First and last index, in the order of the declaration.
using IndexRange = std::optional<std::pair<int, int>>;

struct Pin {
    std::string name; ///< without the range
    IndexRange range;
    const char* direction = "input";
    bool test = false;
    bool abstract = false;
    const char* type = "";     ///< empty: not given
    const char* required = ""; ///< empty: none
    std::vector<Property> properties;
    std::string comment;
};

struct PinRef {
    std::string instance; ///< empty: a pin of the block that is mapped
    std::string pin;
    bool inverted = false;
};

struct Statement {
    enum class Kind { Instance, Signal, Connect, AssignBlock, AssignPin, If, Call };

    Kind kind = Kind::Instance;
    std::string name;     ///< of the instance, signal or property
    std::string instance; ///< whose property is assigned
    std::string pin;      ///< whose property is assigned
    std::string text;     ///< block of the instance, value, condition or call
    IndexRange range;     ///< of a signal
    std::vector<PinRef> pins;
    std::vector<Statement> thenPart;
    std::vector<Statement> elsePart;
};

struct Mapping {
    const char* section = "mapsto";
    std::string comment;
    std::vector<Statement> statements;
};

struct Block {
    std::string name;
    std::vector<std::string> comment; ///< in lines
    std::string group;
    std::string subgroup;
    std::string legacyGroup;
    const char* maturity = ""; ///< empty: not given
    bool internal = false;
    std::vector<Pin> pins;
    std::vector<Property> properties;
    std::optional<Mapping> mapping;
};

struct Function {
    const char* type;
    const char* name;
    std::vector<const char*> arguments;
};

} // namespace bench
