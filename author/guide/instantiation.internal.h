#pragma once

#include "author/exchange/BlockJson.h"

#include <string>

// How a block is placed into a design, as text to copy: from what jsonOf(HDNTBlock&, ...) says. Behind each port stands
// its direction, range, type and tie, behind each parameter its type and what it may be. Parameters have their
// defaults; one without a valid default is a comment, and so is a pin that is no port. Parameters that are read-only,
// hidden, of simulation or of tests are left out, and so are properties of pins, which no instance sets. Pins of one
// base name are one port, from the lowest to the highest bit.
namespace hdnt::author::guide {

/// An instance with named parameters and ports.
std::string verilogInstance(const Json& block);
/// An instance of a component, with generics and ports. Bit vectors are of type bit_vector.
std::string vhdlInstance(const Json& block);
/// Statements of a mapping: an instance, a signal for each of its pins, its properties. What NTL cannot write, such as
/// a name with a control character, is a comment.
std::string ntlInstance(const Json& block);

} // namespace hdnt::author::guide
