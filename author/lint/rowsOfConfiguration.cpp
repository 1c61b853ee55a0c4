#include "author/lint/LintRows.internal.h"

namespace hdnt::author {

using C = LintCode;
static constexpr Severity W = Severity::warning;

static constexpr LintRow rows[] = {
    {C::configUnknownKey,
     {"config-unknown-key", W, "%: unknown key%", "The configuration has a key that nothing asks for.",
      "// HDNTApplicationData.cfg\nCELLS = { TIE_0 = { canTiePin = true; }; };",
      "// HDNTApplicationData.cfg\nCELLS = { TIE_0 = { canTiePins = true; }; };"}},
    {C::configWrongType,
     {"config-wrong-type", W, "%: not %, so that it counts as absent",
      "An entry of the configuration has another type than its key asks for, and counts as absent.",
      "// HDNTApplicationData.cfg\nCELLS = { TIE_0 = { canTiePins = \"yes\"; }; };",
      "// HDNTApplicationData.cfg\nCELLS = { TIE_0 = { canTiePins = true; }; };"}},
    {C::configUnknownCell,
     {"config-unknown-cell", W, "%: no % \"%\"%%", "The configuration names a cell that the libraries lack.",
      "// HDNTApplicationData.cfg\nMASTER_DRIVER_TYPES = [ \"PAD_OVT\" ];",
      "// HDNTApplicationData.cfg\nMASTER_DRIVER_TYPES = [ \"PAD_OUT\" ];"}},
    {C::configUnknownPin,
     {"config-unknown-pin", W, "%: no % \"%\"%%", "The configuration names a pin that the cell lacks.",
      "// HDNTApplicationData.cfg\nCELLS = { PAD_OUT = { masterDriverPin = \"J\"; }; };",
      "// HDNTApplicationData.cfg\nCELLS = { PAD_OUT = { masterDriverPin = \"I\"; }; };"}},
    {C::configUnknownProperty,
     {"config-unknown-property", W, "%: no % \"%\"%%",
      "The configuration names a property that the cell, or every cell, lacks.",
      "// HDNTApplicationData.cfg\nIO_PIN_CONSTRAINTS = { PAD_STANDART = true; };",
      "// HDNTApplicationData.cfg\nIO_PIN_CONSTRAINTS = { PAD_STANDARD = true; };"}},
    {C::configUnknownArchitecture,
     {"config-unknown-architecture", W, "%: no % \"%\"%%",
      "The configuration names an architecture that it does not list.",
      "// HDNTApplicationData.cfg\nARCHITECTURES = { meadow = { master = \"medow\"; }; };",
      "// HDNTApplicationData.cfg\nARCHITECTURES = { meadow = { master = \"meadow\"; }; };"}},
    {C::configUnknownFunction,
     {"config-unknown-function", W, "%: no % \"%\"%%", "The configuration names a function that no library declares.",
      "// HDNTApplicationData.cfg\nPSEUDO_DIFFERENTIAL_FUNCTIONS = [ \"makePseudoPear\" ];",
      "// HDNTApplicationData.cfg\nPSEUDO_DIFFERENTIAL_FUNCTIONS = [ \"makePseudoPair\" ];"}},
    {C::configUnknownPinType,
     {"config-unknown-pin-type", W, "%: no % \"%\"%%", "The configuration gives a bit a type that there is not.",
      "// tessel.desc.cfg\nPINTYPES = { MULTIPLY_ACCUMULATE_16 = { MODE1 = \"sett\"; }; };",
      "// tessel.desc.cfg\nPINTYPES = { MULTIPLY_ACCUMULATE_16 = { MODE1 = \"set\"; }; };"}},
    {C::configNoEffect,
     {"config-no-effect", W, "%: the pin is not \"mixed\", so that its bits have its type",
      "The configuration gives types to the bits of a pin that is not mixed.",
      "// tessel.desc.cfg\nPINTYPES = { PAD_OUT = { I = \"clock\"; }; };", "// tessel.desc.cfg\nPINTYPES = { };"}},
};
static_assert(areInOrder(rows, C::configNoEffect));

std::span<const LintRow> configurationRows() { return rows; }

} // namespace hdnt::author
