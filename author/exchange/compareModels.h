#pragma once

#include "hdnt/diagnostics/Diagnostic.h"
#include "hdnt/platform/Export.h"

#include <cstddef>
#include <string>
#include <vector>

class HDNTLibrary;

// Simulation models held against the library that they are models of.
namespace hdnt::author {

/// The names of the codes never change and are never used again for something else; the numbers may.
enum class ModelCode : unsigned char {
    unreadableVerilog,
    missingModel,
    extraModule,
    missingPort,
    extraPort,
    portDirection,
    portWidth,
    portRange,
    missingParameter,
    extraParameter,
    parameterType,
    parameterWidth,
    parameterDefault,
};

/// In the order of the enumeration.
HDNT_API const std::vector<DiagnosticRule>& modelRules();
HDNT_API const DiagnosticRule& modelRule(ModelCode code);

struct ModelOptions {
    /// For what files include, behind the folder that they are in.
    std::vector<std::string> searchDirectories = {};
    bool withMissing = false; ///< each own block of the library has to have a model
};

struct ModelFile {
    std::string path;
    bool isReadable = false;
    std::vector<std::string> blocks;  ///< those that it has models of, in its order
    std::vector<Diagnostic> findings; ///< in its order
};

struct ModelComparison {
    std::vector<ModelFile> files;    ///< in the order in which they were named
    std::vector<Diagnostic> missing; ///< blocks without a model, when they were asked for
    std::size_t ownBlocks = 0;       ///< of the library, in the architecture in force
    std::size_t modelled = 0;        ///< how many of them have a model
};

/// Holds ports and parameters of the modules in Verilog files against the blocks of the library and its parents that
/// have their names. What a block has is what its black box is exported with: internal and abstract pins are no ports,
/// read-only and hidden properties are no parameters. Defaults are compared by value. A file that cannot be read has a
/// finding that says so.
///
/// Files are read by yosys, in a process and with a temporary folder of its own, up to a minute each. Throws
/// HEXDataException when it is not installed. The loading thread's.
HDNT_API ModelComparison compareModels(const HDNTLibrary& library, const std::vector<std::string>& files,
                                       const ModelOptions& options = {});

} // namespace hdnt::author
