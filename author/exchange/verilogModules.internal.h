#pragma once

#include "hdnt/diagnostics/Diagnostic.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

// Heads of modules, as yosys reads them.
namespace hdnt::author {

struct ModulePort {
    std::string name;      ///< without escape
    std::string direction; ///< "input", "output" or "bidir", as pins have it
    std::size_t width = 1;
    std::optional<std::pair<int, int>> range; ///< first and last index as written
    Place place;
};

struct ModuleParameter {
    enum class Kind { Bits, Text, Real };

    std::string name;       ///< without escape
    Kind kind = Kind::Text; ///< of the default
    std::string value;      ///< bits, the highest first and "x" and "z" among them; or the text
    double real = 0;
    bool isExact = true;     ///< else the number has seven digits
    bool isDeclared = false; ///< with a type or a range; else it takes that of its value
    bool isInteger = false;
    Place place;
};

struct Module {
    std::string name;                ///< without escape
    bool isDeferred = false;         ///< a parameter has no default: nothing but the name is known
    bool hasParametricPorts = false; ///< widths are those of the defaults
    std::vector<ModulePort> ports;
    std::vector<ModuleParameter> parameters;
    Place place;
};

struct ModuleFile {
    std::vector<Module> modules;
    std::vector<Diagnostic> refusals; ///< "unreadable-verilog"; there are no modules then
};

/// Why a module that is deferred is not taken.
inline constexpr const char* deferredReason = "the ports are not known, for a parameter has no default";

/// Reads a file, of SystemVerilog when its name ends in .sv or .svh. Those that it includes are sought beside it, then
/// in the directories, then in the working directory. Bodies of modules are not read, see moduleHeads(). Throws
/// HEXDataException when yosys is not installed or nothing can be written for it.
ModuleFile readModules(const std::string& path, const std::vector<std::string>& searchDirectories);

} // namespace hdnt::author
