#include "author/lint/LintRows.internal.h"

namespace hdnt::author {

using C = LintCode;
static constexpr Severity W = Severity::warning;

static constexpr LintRow rows[] = {
    {C::configUnknownKey,
     {"config-unknown-key", W, "%: unknown key%",
      "The configuration has a key that nothing asks for. Correct it; docs/configuration.md lists the keys.",
      "// HDNTApplicationData.cfg\nCELLS = { TIE_0 = { canTiePin = true; }; };",
      "// HDNTApplicationData.cfg\nCELLS = { TIE_0 = { canTiePins = true; }; };"}},
    {C::configWrongType,
     {"config-wrong-type", W, "%: not %, so that it counts as absent",
      "An entry of the configuration has another type than its key asks for, and counts as absent.",
      "// HDNTApplicationData.cfg\nCELLS = { TIE_0 = { canTiePins = \"yes\"; }; };",
      "// HDNTApplicationData.cfg\nCELLS = { TIE_0 = { canTiePins = true; }; };"}},
    {C::configUnknownCell,
     {"config-unknown-cell", W, "%: no % \"%\"%%",
      "The configuration names a cell that neither the common library, its test extension nor the simulation "
      "library has; case counts here and in the following. Correct the name, or remove the entry.",
      "// HDNTApplicationData.cfg\nMASTER_DRIVER_TYPES = [ \"PAD_OVT\" ];",
      "// HDNTApplicationData.cfg\nMASTER_DRIVER_TYPES = [ \"PAD_OUT\" ];"}},
    {C::configUnknownPin,
     {"config-unknown-pin", W, "%: no % \"%\"%%",
      "The configuration names a pin that the cell lacks. Write D for a pin or a bus and D[7] for a bit; in "
      "PINTYPES, D7.",
      "// HDNTApplicationData.cfg\nCELLS = { PAD_OUT = { masterDriverPin = \"J\"; }; };",
      "// HDNTApplicationData.cfg\nCELLS = { PAD_OUT = { masterDriverPin = \"I\"; }; };"}},
    {C::configUnknownProperty,
     {"config-unknown-property", W, "%: no % \"%\"%%",
      "The configuration names a property that the cell lacks, or every cell. Correct the name.",
      "// HDNTApplicationData.cfg\nIO_PIN_CONSTRAINTS = { PAD_STANDART = true; };",
      "// HDNTApplicationData.cfg\nIO_PIN_CONSTRAINTS = { PAD_STANDARD = true; };"}},
    {C::configUnknownArchitecture,
     {"config-unknown-architecture", W, "%: no % \"%\"%%",
      "The configuration names an architecture that is not among ARCHITECTURES. Correct the name, or give it an "
      "entry, if an empty one. Without such a group, nothing is said.",
      "// HDNTApplicationData.cfg\nARCHITECTURES = { meadow = { master = \"medow\"; }; };",
      "// HDNTApplicationData.cfg\nARCHITECTURES = { meadow = { master = \"meadow\"; }; };"}},
    {C::configUnknownFunction,
     {"config-unknown-function", W, "%: no % \"%\"%%",
      "The configuration names a function that no library declares. Correct the name.",
      "// HDNTApplicationData.cfg\nPSEUDO_DIFFERENTIAL_FUNCTIONS = [ \"makePseudoPear\" ];",
      "// HDNTApplicationData.cfg\nPSEUDO_DIFFERENTIAL_FUNCTIONS = [ \"makePseudoPair\" ];"}},
    {C::configUnknownPinType,
     {"config-unknown-pin-type", W, "%: no % \"%\"%%",
      "The configuration gives a bit a type that is none of the ten types of pins. Correct the type.",
      "// tessel.desc.cfg\nPINTYPES = { MULTIPLY_ACCUMULATE_16 = { MODE1 = \"sett\"; }; };",
      "// tessel.desc.cfg\nPINTYPES = { MULTIPLY_ACCUMULATE_16 = { MODE1 = \"set\"; }; };"}},
    {C::configNoEffect,
     {"config-no-effect", W, "%: the pin is not \"mixed\", so that its bits have its type",
      "The configuration gives a bit a type, but its pin is not declared mixed, and has its own. Declare the "
      "pin mixed, or remove the entry.",
      "// tessel.desc.cfg\nPINTYPES = { PAD_OUT = { I = \"clock\"; }; };", "// tessel.desc.cfg\nPINTYPES = { };"}},
};
static_assert(areInOrder(rows, C::configNoEffect));

std::span<const LintRow> configurationRows() { return rows; }

} // namespace hdnt::author
