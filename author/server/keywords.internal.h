#pragma once

#include <string_view>

namespace hdnt::author::server {

/// What a word of the language says, in a sentence; empty for any other text.
std::string_view meaningOf(std::string_view word);

} // namespace hdnt::author::server
