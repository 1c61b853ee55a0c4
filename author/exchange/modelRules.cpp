#include "author/exchange/compareModels.h"

namespace hdnt::author {

const std::vector<DiagnosticRule>& modelRules() {
    constexpr Severity error = Severity::error;
    static const std::vector<DiagnosticRule> rules = {
        {"unreadable-verilog", error, "%",
         "The file of Verilog cannot be opened, or yosys refuses it; nothing is known of its modules then. Or a "
         "parameter of a module has no default, and so its ports are not known."},
        {"missing-model", error, "block % has no model",
         "None of the files has a module of the block's name. Said when a model of each block is asked for."},
        {"extra-module", Severity::warning, "module % is no block of the library%",
         "Modules that others are made of may be there; the name of a model is the name of its block, and case "
         "counts."},
        {"missing-port", error, "%: no port % (%)", "The block has pins of that name, the model no port."},
        {"extra-port", error, "%: port % is no pin of the block%",
         "The model has a port of that name, the block no pin, or one that designs do not connect."},
        {"port-direction", error, "%: port % is %, not %",
         "The port of the model has another direction than the pins of the block."},
        {"port-width", error, "%: port % has %, not %",
         "The port of the model has another number of bits than there are from the block's lowest pin of that name to "
         "its "
         "highest. Where parameters decide, their defaults count."},
        {"port-range", error, "%: port % is %, not %",
         "The port of the model has as many bits as the block, but other indices, or the same the other way round."},
        {"missing-parameter", error, "%: no parameter % (%)",
         "The block has a property of that name that designs set, the model no parameter."},
        {"extra-parameter", error, "%: parameter % is no property of the block%",
         "The model has a parameter of that name, the block no property, or one that designs do not set."},
        {"parameter-type", error, "%: parameter % is %, not %",
         "The parameter of the model holds other values than the property of the block: numbers, texts or bits."},
        {"parameter-width", error, "%: parameter % has %, not %",
         "The parameter of the model has another number of bits than the property of the block."},
        {"parameter-default", error, "%: parameter % is % by default, not %",
         "The parameter of the model has another default than the property of the block."},
    };
    return rules;
}

const DiagnosticRule& modelRule(ModelCode code) { return modelRules()[static_cast<std::size_t>(code)]; }

} // namespace hdnt::author
