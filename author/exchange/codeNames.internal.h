#pragma once

#include "author/exchange/BlockJson.h"

#include <string>
#include <vector>

// What programs call the names of a library; the same in C++ and Python.
namespace hdnt::author {

struct ExportNotes;

/// Identifiers for the names of one scope, all of them different when the names are. Letters, digits and "_" are kept;
/// what is none, or a word of one of the languages, becomes one, with a sum of the name where it would be another's.
/// The order of the names makes no difference.
std::vector<std::string> identifiersOf(const std::vector<std::string>& names);

/// Texts of a library, each once, and their identifiers.
struct CodeEnum {
    std::vector<std::string> texts;
    std::vector<std::string> identifiers;

    /// Of one of the texts.
    const std::string& identifierOf(const std::string& text) const;
};

struct CodeProperty {
    const Json* facts;
    CodeEnum values; ///< those that are listed of a text

    /// One that is allowed.
    bool hasDefault() const;
    /// Of that, which is one of the values but for case.
    const std::string& defaultIdentifier() const;
};

/// Names of a block: its pins and buses, by base name where only one has it, and the properties that are found by name.
struct CodeBlock {
    CodeBlock(const Json& block, ExportNotes& notes);

    std::string identifier;
    CodeEnum pins;
    CodeEnum propertyNames;
    std::vector<CodeProperty> properties; ///< in the same order
};

} // namespace hdnt::author
