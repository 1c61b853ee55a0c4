#pragma once

#include "hdnt/diagnostics/yyltype.h"
#include "hdnt/frontend/PropertyOptions.internal.h"

#include <string>
#include <vector>

class HDNTBlock;
class HDNTDecl;
class HDNTLibrary;
class HDNTNetlist;

// What the builder takes from a text and then loses: a notice each, where it is lost. Internal.
namespace hdnt::frontend::build {

/// What a block says of itself beside pins and properties.
enum class Attribute : unsigned char { Internal, Test, MaturityLevel, PrimGroup };

/// Tells of an attribute that the block being read has already.
void noteAttribute(Attribute attribute, const yyltype& place);
/// The next attribute is one of another block.
void forgetAttributes() noexcept;

/// Notes that an option of the property being read was given before; tellOfOptions tells of it.
void noteRepeat(PropertyOptions& record, Option option, const yyltype& place) noexcept;
/// Of options that were repeated, or are void beside another. `place` is the property's.
void tellOfOptions(const PropertyOptions& record, const yyltype& place);

/// Of functions among the declarations, some null, that have been declared before: in the same text, or otherwise in a
/// text that went into the library before.
void tellOfFunctions(const std::vector<HDNTDecl*>& decls, const HDNTLibrary& library);

/// Of the mapping that a block of the library loses to the new one. Not of one that a map library brought, of which
/// each architecture has its own.
void tellOfReplaced(const HDNTBlock& block, const HDNTNetlist& mapping, bool isOfThisText);

/// Of the numbers in the brackets of a signal's name that are greater than any bit.
void tellOfRange(const std::string& name, const yyltype& place);

} // namespace hdnt::frontend::build
