#pragma once

#include <string_view>

namespace hdnt::author::server {

/// What a word of the language says, in a sentence; empty for any other text.
std::string_view meaningOf(std::string_view word);

/// A function that needs no host: it reads the block that is being mapped. All take one text.
struct StandardFunction {
    std::string_view name;
    std::string_view result; ///< its type
    bool isOfPin;            ///< the text names a pin, else a property
    std::string_view sentence;
};
/// Null: no such function.
const StandardFunction* findStandardFunction(std::string_view name);

} // namespace hdnt::author::server
