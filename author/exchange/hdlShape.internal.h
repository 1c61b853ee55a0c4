#pragma once

#include "author/exchange/BlockJson.h"

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// Blocks, as jsonOf(HDNTBlock&) has them, as modules and components of hardware description languages.
namespace hdnt::author {

/// A line of a list, and what is said of it.
struct HdlLine {
    std::string code;
    std::string comment;
};

/// The comments stand below each other, but for those of very long lines. `separator` is between the lines.
std::string textOf(const std::vector<HdlLine>& lines, const std::string& indent, const std::string& mark,
                   const std::string& separator);
/// Those that are not empty, with commas.
std::string listed(std::vector<std::string> parts);
/// On one line, and not too long.
std::string commentOf(const std::string& text);

bool isPort(const Json& bus);
/// What a pin is for, in a few words.
std::string factsOf(const Json& bus);
/// Whether designs have it to set.
bool isParameter(const Json& property);
/// The same, with those that only simulations and tests set.
bool isSettable(const Json& property);
/// What values it takes.
std::string parameterFactsOf(const Json& property);

/// Pins of one base name.
struct HdlPort {
    std::string name;
    std::vector<const Json*> buses;           ///< at least one
    std::optional<std::pair<int, int>> range; ///< from the lowest bit to the highest, either way

    /// The range with texts around and between; empty when there is none.
    std::string bounds(std::string_view before, std::string_view between, std::string_view behind) const;
    const Json& direction() const { return (*buses.front())["direction"]; }
    /// What all of them say; null when they differ.
    Json common(const char* key) const;
    /// "pins D[7:4] D[0]" of several; empty for one.
    std::string pinsText() const;
    std::string comment(const std::string& direction) const;
};

/// "input [7:0] NAME"
std::string verilogPort(const HdlPort& port, const std::string& name);

/// What of a block languages have ports and parameters for.
struct HdlShape {
    explicit HdlShape(const Json& block, bool (*hasParameter)(const Json& property) = isParameter);

    std::vector<HdlPort> ports;
    std::vector<const Json*> parameters;
    std::vector<std::string> notes; ///< "NAME: why it is left out"

    /// Leaves out what would have the name of another in a language where ports, which come first, and parameters share
    /// one space of names.
    void keepDistinct(const std::function<std::string(const std::string& name)>& nameOf);

private:
    void addPort(const Json& bus);
    void addParameter(const Json& property);
};

/// Why properties that are not settable are left out, as notes.
std::vector<std::string> unsettableNotes(const Json& block);

/// "in std_logic", "out std_logic_vector(7 downto 0)".
std::string vhdlModeAndType(const HdlPort& port);

/// Names of VHDL for all generics and ports of a block: those that differ in case alone are extended.
class VhdlNaming {
public:
    explicit VhdlNaming(const HdlShape& shape);
    std::string of(const std::string& name) const;

private:
    void add(const std::string& name);

    std::map<std::string, std::set<std::string>> names_; ///< by what they are in small letters
};

} // namespace hdnt::author
